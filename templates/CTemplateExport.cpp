#include "templates/CTemplateExport.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "api/DLPMetaDataLoaderImpl.h"
#include "digital_assets/DigitalAssets.h"
#include "metadata/ProcessMetaData.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/SettingsSchema.h"
#include "platform/xml/CXMLWriter.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "templates/DLPTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/TemplateLog.h"
#include "xml/Vocabulary.h"

// The requested templates are read from the store together, and so are the names of the assets that they refer to; what
// comes of each is logged afterwards, in the order of the request, as if it had been looked up then.

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

/** Display names by name; of equal names the last one counts. A list that cannot be had gives none. */
std::map<std::string, std::string> ReadDisplayNames(CTemplateExport::ListOperation pList) {
    std::vector<OS::x_wstring> vecNames;
    std::vector<OS::x_wstring> vecDisplayNames;
    (GetProcessMetaData().*pList)(vecNames, vecDisplayNames);
    std::map<std::string, std::string> displayNames;
    for (std::size_t i = 0; i < vecNames.size(); ++i) {
        displayNames[OS::Utf8Loose(vecNames[i])] = OS::Utf8Loose(vecDisplayNames[i]);
    }
    return displayNames;
}

/** In the order of names, each once. Most names are referred to many times: their entries are sorted out first. */
std::vector<OS::x_wstring> MakeSubjects(const wchar_t* pPrefix, std::vector<const CAssetNames::Entry*> vecNames) {
    std::sort(vecNames.begin(), vecNames.end(), std::less<>());
    vecNames.erase(std::unique(vecNames.begin(), vecNames.end()), vecNames.end());
    std::sort(vecNames.begin(), vecNames.end(),
              [](const auto* pLeft, const auto* pRight) { return pLeft->first < pRight->first; });
    std::vector<OS::x_wstring> vecSubjects;
    vecSubjects.reserve(vecNames.size());
    for (const CAssetNames::Entry* pName : vecNames) {
        vecSubjects.push_back(pPrefix + OS::WideText(pName->first));
    }
    return vecSubjects;
}

void AddTo(std::set<std::wstring>* pSubjects, const std::vector<OS::x_wstring>& vecSubjects) {
    if (pSubjects != nullptr) {
        pSubjects->insert(vecSubjects.begin(), vecSubjects.end());
    }
}

/** Logs the section that is not there. @return false */
bool NotMade(const char* pTag) {
    DLP_LOG(DBG::LEVEL_FAILURE, TemplateLog::NODE_NOT_FOUND, OS::WideText(pTag));
    return false;
}

}  // namespace

CTemplateExport::CTemplateExport(const std::vector<OS::x_wstring>& vecNames, const SSubjectSets& sets,
                                 CExportObserver* pObserver)
    : m_sets(sets), m_pObserver(pObserver) {
    for (const OS::x_wstring& strName : vecNames) {
        m_vecNames.push_back(OS::Utf8Loose(strName));
    }
}

std::string CTemplateExport::Run() {
    std::string strOut;
    // The last line carries the whole text, if anybody listens.
    CXMLWriter writer(strOut, DBG::IsListened(DBG::LEVEL_LEAVE) ? nullptr : DigitalAssets::MakeTaker(m_pObserver));
    if (!DigitalAssets::StartRoot(writer) || !writer.IsIn(TagUtf8::SA_POLICY)) {
        DLP_LOG(DBG::LEVEL_FAILURE, TemplateLog::NOT_FOUND, Tag::SA_POLICY);
        return std::string();
    }
    ReadTemplates();
    if (!AskForAssets()) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to get digital assets configuration.");
        return std::string();
    }
    for (std::size_t i = 0; i < m_vecNames.size(); ++i) {
        TakeTemplate(i);
    }
    if (!MakeTemplates() || !WriteAssets(writer) || !MakeCategories()) {
        return std::string();
    }
    constexpr std::size_t END = 100;  // more than the root's end tag
    strOut.reserve(strOut.size() + m_strTemplates.size() + m_strIndustries.size() + m_strRegions.size() + END);
    for (const std::string* pSection : {&m_strTemplates, &m_strIndustries, &m_strRegions}) {
        writer.Raw(*pSection);
    }
    writer.EndElement();
    DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::ExportTemplate returns <%s>", OS::WideText(strOut));
    return strOut;
}

void CTemplateExport::ReadTemplates() {
    std::vector<CTemplateMgr::Record> vecRecords;
    try {
        CCfgSettingDLPFilterTemplateMgr::Instance()->FindBy(TemplateColumn::ELEMENT_NAME, m_vecNames, vecRecords);
        m_bListRead = true;
    } catch (const OS::CException&) {
        vecRecords.assign(m_vecNames.size(), nullptr);  // logged for each template when its turn comes
    }
    m_vecPrepared.resize(m_vecNames.size());
    for (std::size_t i = 0; i < vecRecords.size(); ++i) {
        if (vecRecords[i]) {
            m_vecPrepared[i] = SPreparedTemplate::Make(vecRecords[i]->Row(), m_assets);
            vecRecords[i].reset();
        }
    }
}

bool CTemplateExport::AskForAssets() {
    try {
        m_assets.Ask();
        return true;
    } catch (const OS::CException&) {
        return false;
    }
}

void CTemplateExport::LogLookup(std::size_t iRequest) const {
    TemplateLog::FindEntered(CTemplateMgr::SEARCH_ELEMENT_NAME, m_vecNames[iRequest]);
    if (m_bListRead) {
        TemplateLog::ListRead();
        TemplateLog::FindLeft(m_vecPrepared[iRequest].has_value());
    } else {
        TemplateLog::ListFailed();
        TemplateLog::ListUnavailable();
    }
}

void CTemplateExport::TakeTemplate(std::size_t iRequest) {
    LogLookup(iRequest);
    if (m_pObserver != nullptr) {
        m_pObserver->OnRecord();
    }
    if (!m_vecPrepared[iRequest]) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Unable to find template.");
        LeaveOut(iRequest, ELeftOut::NOT_STORED, std::string());
        return;
    }
    const SPreparedTemplate& prepared = *m_vecPrepared[iRequest];
    if (const std::optional<std::string> strInvalid = FindInvalidReference(prepared)) {
        DLP_LOG(DBG::LEVEL_ERROR, L"template contain invalid digital assets.");
        LeaveOut(iRequest, ELeftOut::INVALID_ASSETS, *strInvalid);
        return;
    }
    if (prepared.failure) {
        Fail(*prepared.failure, prepared.strSubject);
    }
    if (!prepared.bTemplate) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Unable to find template node. skip this one.");
        LeaveOut(iRequest, ELeftOut::NO_TEMPLATE, std::string());
        return;
    }
    m_vecTaken.push_back(&prepared);
    for (const std::string& strIndustry : prepared.vecIndustries) {
        m_industries[strIndustry].push_back(&prepared);
    }
    for (const std::string& strRegion : prepared.vecRegions) {
        m_regions[strRegion].push_back(&prepared);
    }
}

/** Logs and describes the first reference that no stored asset answers, if there is one. */
std::optional<std::string> CTemplateExport::FindInvalidReference(const SPreparedTemplate& prepared) const {
    for (const SPreparedTemplate::SReference& reference : prepared.vecReferences) {
        const auto& [strName, bStored] = *reference.pName;
        if (reference.bChecked && !bStored) {
            const bool bExpression = reference.eType == EElementType::ENTITY;
            DLP_LOG(DBG::LEVEL_CONTENT,
                    bExpression ? L"template contain invalid expression %s" : L"template contain invalid keyword %s",
                    OS::WideText(strName));
            return std::string(ElementTypeText(reference.eType)) + " \"" + strName + '"';
        }
    }
    if (prepared.strUnsupportedType) {
        DLP_LOG(DBG::LEVEL_CONTENT, TemplateLog::TYPE_NOT_SUPPORTED, OS::WideText(*prepared.strUnsupportedType));
        return std::string(TagUtf8::SOURCE_TYPE) + " \"" + *prepared.strUnsupportedType + '"';
    }
    return std::nullopt;
}

void CTemplateExport::LeaveOut(std::size_t iRequest, ELeftOut eReason, const std::string& strDetail) {
    if (m_pObserver != nullptr) {
        m_pObserver->OnLeftOut(m_vecNames[iRequest], eReason, strDetail);
    }
}

void CTemplateExport::Fail(const CXMLException& exception, const std::string& strSubject) {
    if (m_pObserver != nullptr) {
        m_pObserver->OnRecordFailed(strSubject, OS::Utf8Lenient(exception.GetErrorMessage()));
    }
    throw CXMLException(exception.GetErrorCode(), OS::WideLenient(strSubject) + L": " + exception.GetErrorMessage(),
                        exception.GetErrorLine());
}

bool CTemplateExport::MakeTemplates() {
    m_strTemplates = CComplianceTemplates::MakeDocument([this](CXMLWriter& writer) {
        for (const SPreparedTemplate* pPrepared : m_vecTaken) {
            writer.Raw(pPrepared->strMarkup);
        }
    });
    return StartsWithElement(m_strTemplates, TagUtf8::COMPLIANCE_TEMPLATES) || NotMade(TagUtf8::COMPLIANCE_TEMPLATES);
}

bool CTemplateExport::WriteAssets(CXMLWriter& writer) {
    std::vector<const CAssetNames::Entry*> vecExpressionNames;
    std::vector<const CAssetNames::Entry*> vecKeywordNames;
    for (const SPreparedTemplate* pPrepared : m_vecTaken) {
        for (const SPreparedTemplate::SReference& reference : pPrepared->vecReferences) {
            (reference.eType == EElementType::ENTITY ? vecExpressionNames : vecKeywordNames).push_back(reference.pName);
        }
    }
    const std::vector<OS::x_wstring> vecExpressions = MakeSubjects(SUBJECT_EXPRESSION, std::move(vecExpressionNames));
    const std::vector<OS::x_wstring> vecKeywords = MakeSubjects(SUBJECT_KEYWORD, std::move(vecKeywordNames));
    if (!DigitalAssets::Generate(vecExpressions, vecKeywords, writer, m_pObserver) ||
        !writer.HasEnded(TagUtf8::DIGITAL_ASSETS)) {
        return NotMade(TagUtf8::DIGITAL_ASSETS);
    }
    AddTo(m_sets.pExpressions, vecExpressions);
    AddTo(m_sets.pKeywords, vecKeywords);
    return true;
}

bool CTemplateExport::MakeCategories() {
    if (!MakeCategory(TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY, &DLPMetaDataLoaderImpl::GetIndustries, m_industries,
                      m_strIndustries) ||
        !MakeCategory(TagUtf8::REGIONS, TagUtf8::REGION, &DLPMetaDataLoaderImpl::GetRegions, m_regions, m_strRegions)) {
        return false;
    }
    if (!StartsWithElement(m_strIndustries, TagUtf8::INDUSTRIES) ||
        !StartsWithElement(m_strRegions, TagUtf8::REGIONS)) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to make category %s, %s", Tag::INDUSTRIES, Tag::REGIONS);
        return false;
    }
    return true;
}

bool CTemplateExport::MakeCategory(const char* pTag, const char* pSubTag, ListOperation pList,
                                   const Categories& categories, std::string& strOut) {
    const std::map<std::string, std::string> displayNames = ReadDisplayNames(pList);
    DLP_LOG(DBG::LEVEL_INFO, L"strTag = %s, strSubTag = %s", OS::WideText(pTag), OS::WideText(pSubTag));
    CXMLWriter writer(strOut);
    writer.StartElement(pTag);
    if (!writer.IsIn(pTag)) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Unable to find node %s.", OS::WideText(pTag));
        return false;
    }
    for (const auto& [strName, vecTemplates] : categories) {
        const auto itDisplayName = displayNames.find(strName);
        writer.StartElement(pSubTag);
        try {
            writer.Attribute(TagUtf8::NAME, strName);
        } catch (const CXMLException& exception) {
            Fail(exception, vecTemplates.front()->strSubject);
        }
        writer.Attribute(TagUtf8::DISPLAY_NAME, itDisplayName == displayNames.end() ? "" : itDisplayName->second);
        for (const SPreparedTemplate* pPrepared : vecTemplates) {
            writer.TextElement(TagUtf8::TEMPLATE_ID, pPrepared->strName);
        }
        writer.EndElement();
    }
    writer.EndElement();
    return true;
}
