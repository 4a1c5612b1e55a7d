#include "templates/CTemplateImport.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "digital_assets/AssetLog.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/SettingsSchema.h"
#include "platform/xml/CXMLParser.h"
#include "settings/CMgmtClass.h"
#include "templates/TemplateLog.h"
#include "templates/TemplateReport.h"
#include "templates/TemplateXml.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

std::vector<std::string> CategoriesOf(const CTemplateMgr::CategoryIndex& categories, const std::string& strName) {
    const auto itEntry = categories.find(strName);
    return itEntry == categories.end() ? std::vector<std::string>() : itEntry->second;
}

}  // namespace

CTemplateImport::CTemplateImport(CTemplateMgr& manager, const OS::x_wstring& strScope, CPolicyDocument& document,
                                 const SImportLists& lists, CImportObserver* pObserver)
    : m_manager(manager),
      m_strScope(strScope),
      m_strScopeUtf8(OS::Utf8Loose(strScope)),
      m_document(document),
      m_lists(lists),
      m_pObserver(pObserver) {}

int CTemplateImport::Run() {
    if (!MakeCategoryMaps()) {
        return CTemplateMgr::RESULT_FAILED;
    }
    const int iAssets =
        DigitalAssets::Import(DigitalAssets::EImport::ALL, m_strScope, m_document, m_lists.vecAssets, m_pObserver);
    if (iAssets != CTemplateMgr::RESULT_DONE) {
        return iAssets;
    }
    if (!m_manager.CheckImportTemplate(m_document, m_vecFindings)) {
        return CTemplateMgr::RESULT_FAILED;
    }
    for (const STemplateFinding& finding : m_vecFindings) {
        m_invalid.try_emplace(finding.strTemplate, &finding);
    }
    if (!ImportTemplates()) {
        return CTemplateMgr::RESULT_FAILED;
    }
    if (m_pObserver != nullptr) {
        const CXMLView root = m_document.Load().RootView();
        TemplateReport::TellCategories(root, m_names, *m_pObserver);
        TemplateReport::TellUnknownElements(m_document, m_pObserver);
    }
    return CTemplateMgr::RESULT_DONE;
}

bool CTemplateImport::MakeCategoryMaps() {
    return m_manager.MakeCategoryMap(m_document, Tag::INDUSTRIES, Tag::INDUSTRY, m_industries) &&
           m_manager.MakeCategoryMap(m_document, Tag::REGIONS, Tag::REGION, m_regions);
}

bool CTemplateImport::ImportTemplates() {
    const std::wstring strPath = XmlHelpers::RootPath({Tag::SA_POLICY, Tag::COMPLIANCE_TEMPLATES, Tag::TEMPLATE});
    const OS::CAutoObjPtr<CXMLNodeList> pTemplates = m_document.Load().XPathSelectNodes(strPath);
    if (!pTemplates) {
        DLP_LOG(DBG::LEVEL_FAILURE,
                L"CTemplateMgr::ImportTemplate Unable to find node %s. The xml file format is incompatible.", strPath);
        return false;
    }
    const int iTemplates = pTemplates->GetLength();
    for (int i = 0; i < iTemplates; ++i) {
        SItem item;
        item.node = pTemplates->ViewAt(i);
        item.iIndex = static_cast<std::size_t>(i);
        item.strName = item.node.Attribute(TagUtf8::NAME);
        item.strDisplayName = item.node.Attribute(TagUtf8::DISPLAY_NAME);
        item.bPreDefined = TemplateXml::IsPreDefined(item.node);
        if (m_pObserver == nullptr || !m_pObserver->PassesOver(EItemKind::TEMPLATE, item.strName)) {
            ImportItem(item);
        }
        if (m_pObserver != nullptr) {
            m_names.insert(std::move(item.strName));
        }
    }
    return true;
}

void CTemplateImport::ImportItem(const SItem& item) {
    if (item.strName.empty() || item.strDisplayName.empty()) {
        DLP_LOG(DBG::LEVEL_ERROR,
                L"Skip this template since it's name attribute is empty (strInternalName = %s, strDisplayName = %s)",
                OS::WideText(item.strName), OS::WideText(item.strDisplayName));
        Skip(item, EDisposition::SKIPPED, item.strName.empty() ? EReason::NO_NAME : EReason::NO_DISPLAY_NAME);
    } else if (m_invalid.count(item.strName) != 0) {
        DLP_LOG(DBG::LEVEL_ERROR,
                L"Skip this template since it contain unsupported digital assets (strInternalName = %s, strDisplayName "
                L"= %s)",
                OS::WideText(item.strName), OS::WideText(item.strDisplayName));
        Skip(item, EDisposition::SKIPPED, EReason::UNSUPPORTED_ASSETS);
    } else {
        Store(item);
    }
}

void CTemplateImport::Store(const SItem& item) {
    try {
        const CTemplateMgr::Record pStored = m_manager.FindStored(CTemplateMgr::SEARCH_ELEMENT_NAME, item.strName);
        if (!pStored) {
            Create(item);
        } else if (m_pObserver != nullptr && m_pObserver->KeepsStored()) {
            Skip(item, EDisposition::SKIPPED, EReason::EXISTING);
        } else {
            Update(item, pStored);
        }
    } catch (const OS::CException&) {
        Report(item, EDisposition::FAILED, EReason::STORE);
        throw;
    }
}

void CTemplateImport::Update(const SItem& item, const CTemplateMgr::Record& pRecord) {
    if (pRecord->IsBuiltIn() && !item.bPreDefined) {
        DLP_LOG(DBG::LEVEL_INFO, DigitalAssets::BUILT_IN_KEPT);
        Skip(item, EDisposition::SKIPPED, EReason::BUILT_IN);
        return;
    }
    const CSettingsRow stored = pRecord->Row();
    Fill(item, *pRecord);
    const bool bChanged = pRecord->Row() != stored;
    if (m_manager.ReplaceStored(pRecord, bChanged)) {
        Take(item, bChanged ? EDisposition::UPDATED : EDisposition::UNCHANGED);
    } else {
        Skip(item, EDisposition::FAILED, EReason::STORE);
    }
}

void CTemplateImport::Create(const SItem& item) {
    const OS::x_wstring strInstance = SUBJECT_TEMPLATE + OS::WideText(item.strName);
    CMgmtClass management(CCfgSettingDLPFilterTemplate::GetCategroyName().c_str(), true);
    management.CreateInstance(strInstance.c_str());
    const auto pRecord = boost::make_shared<CCfgSettingDLPFilterTemplate>(strInstance);
    Fill(item, *pRecord);
    pRecord->SaveThis();
    Take(item, EDisposition::CREATED);
}

void CTemplateImport::Fill(const SItem& item, CCfgSettingDLPFilterTemplate& record) {
    TemplateXml::ReadTemplate(item.node, CategoriesOf(m_industries, item.strName),
                              CategoriesOf(m_regions, item.strName), record);
    record.EditRow().SetText(TemplateColumn::SCOPE, m_strScopeUtf8);
}

void CTemplateImport::Skip(const SItem& item, EDisposition eDisposition, EReason eReason) {
    m_lists.vecSkipped.push_back(OS::WideText(item.strDisplayName));
    Report(item, eDisposition, eReason);
}

void CTemplateImport::Take(const SItem& item, EDisposition eDisposition) {
    m_lists.vecImported.push_back(OS::WideText(item.strDisplayName));
    Report(item, eDisposition, EReason::NONE);
}

void CTemplateImport::Report(const SItem& item, EDisposition eDisposition, EReason eReason) {
    if (m_pObserver == nullptr) {
        return;
    }
    SImportItem report;
    report.eKind = EItemKind::TEMPLATE;
    report.strName = item.strName;
    report.strDisplayName = item.strDisplayName;
    report.eDisposition = eDisposition;
    report.eReason = eReason;
    report.iOffset = item.node.Offset();
    TemplateReport::FindForeignChildren(item.node, report);
    if (eReason == EReason::UNSUPPORTED_ASSETS) {
        TemplateReport::Describe(FindingFor(item), report);
    }
    m_pObserver->OnItem(report);
}

/** Its own finding, or that of another template of the same name. */
const STemplateFinding& CTemplateImport::FindingFor(const SItem& item) const {
    const auto itOwn = std::lower_bound(
        m_vecFindings.begin(), m_vecFindings.end(), item.iIndex,
        [](const STemplateFinding& finding, std::size_t iTemplate) { return finding.iTemplate < iTemplate; });
    const bool bOwn = itOwn != m_vecFindings.end() && itOwn->iTemplate == item.iIndex;
    return bOwn ? *itOwn : *m_invalid.at(item.strName);
}
