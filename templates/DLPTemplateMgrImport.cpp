#include <utility>

#include "digital_assets/CReportedImport.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLParser.h"
#include "templates/CTemplateImport.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/DLPXmlNormalizer.h"
#include "templates/TemplateLog.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

void LogImportFailure(const OS::CException& exception) {
    DLP_LOG(DBG::LEVEL_ERROR, L"Fail to construct ImportTemplateImpl, Error: %s", exception.GetErrorMessage());
}

}  // namespace

int CTemplateMgr::ImportTemplate(const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecImported,
                                 std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets) {
    CPolicyDocument document(strXml);
    CReportedImport reported(strXml);
    const int iResult = ImportDocument(document, vecImported, vecSkipped, vecAssets, reported.GetObserver());
    reported.Finish();
    return iResult;
}

int CTemplateMgr::ImportDocument(CPolicyDocument& document, std::vector<OS::x_wstring>& vecImported,
                                 std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets,
                                 CImportObserver* pObserver) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::ImportTemplate(strXmlContent length = [%d])",
            static_cast<int>(document.GetLength()));
    int iResult = RESULT_NO_POLICY;
    bool bNeedConvert = false;
    const bool bPolicy = CheckFormat(document, bNeedConvert);
    if (bPolicy && bNeedConvert) {
        CDLPXmlNormalizer normalizer;
        normalizer.InitDigitalAssetsMappingTable();
        CXMLParser normalized;
        iResult = RESULT_FAILED;
        if (normalizer.Normalize(document, normalized, pObserver)) {
            CPolicyDocument standard(std::move(normalized));
            iResult = ImportTemplateImpl(standard, vecImported, vecSkipped, vecAssets, pObserver);
        }
    } else if (bPolicy) {
        iResult = ImportTemplateImpl(document, vecImported, vecSkipped, vecAssets, pObserver);
    }
    DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::ImportTemplate result = %d", iResult);
    return iResult;
}

bool CTemplateMgr::CheckFormat(const OS::x_wstring& strXml, bool& bNeedConvert) {
    CPolicyDocument document(strXml);
    return CheckFormat(document, bNeedConvert);
}

bool CTemplateMgr::CheckFormat(CPolicyDocument& document, bool& bNeedConvert) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::CheckFormat()");
    try {
        const OS::CAutoObjPtr<CXMLNode> pRoot =
            document.Load().XPathSelectSingleNode(XmlHelpers::RootPath({Tag::SA_POLICY}));
        if (!pRoot) {
            DLP_LOG(DBG::LEVEL_FAILURE,
                    L"CTemplateMgr::IsStandardFormat Unable to find node %s. The xml file format is incompatible.",
                    Tag::SA_POLICY);
            return false;
        }
        bNeedConvert = pRoot->View().Attribute(TagUtf8::TEMPLATE_VERSION).empty();
        DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::CheckFormat() bNeedConvert = %d", bNeedConvert);
        return true;
    } catch (const OS::CException& exception) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"CTemplateMgr::IsStandardFormat(), Error: %s", exception.GetErrorMessage());
        return false;
    }
}

bool CTemplateMgr::MakeCategoryMap(const OS::x_wstring& strXml, const std::wstring& strContainer,
                                   const std::wstring& strItem, CategoryMap& categories) {
    CPolicyDocument document(strXml);
    CategoryIndex index;
    const bool bMade = MakeCategoryMap(document, strContainer, strItem, index);
    for (const auto& [strTemplate, vecCategories] : index) {
        std::vector<std::wstring>& vecWide = categories[OS::WideText(strTemplate)];
        for (const std::string& strCategory : vecCategories) {
            vecWide.push_back(OS::WideText(strCategory));
        }
    }
    return bMade;
}

bool CTemplateMgr::MakeCategoryMap(CPolicyDocument& document, const std::wstring& strContainer,
                                   const std::wstring& strItem, CategoryIndex& categories) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::MakeCategoryMap()");
    try {
        const OS::CAutoObjPtr<CXMLNodeList> pEntries = document.Load().XPathSelectNodes(
            XmlHelpers::RootPath({Tag::SA_POLICY, strContainer, strItem, Tag::TEMPLATE_ID}));
        const int iEntries = pEntries ? pEntries->GetLength() : 0;
        for (int i = 0; i < iEntries; ++i) {
            const CXMLView entry = pEntries->ViewAt(i);
            categories[entry.Text()].emplace_back(entry.Parent().Attribute(TagUtf8::NAME));
        }
        return true;
    } catch (const OS::CException& exception) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"CTemplateMgr::MakeCategoryMap(), Error: %s", exception.GetErrorMessage());
        return false;
    }
}

int CTemplateMgr::ImportTemplateImpl(const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecImported,
                                     std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets) {
    CPolicyDocument document(strXml);
    return ImportTemplateImpl(document, vecImported, vecSkipped, vecAssets, nullptr);
}

int CTemplateMgr::ImportTemplateImpl(CPolicyDocument& document, std::vector<OS::x_wstring>& vecImported,
                                     std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets,
                                     CImportObserver* pObserver) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::ImportTemplateImpl()");
    const std::size_t iImportedBefore = vecImported.size();
    int iResult = RESULT_FAILED;
    try {
        CSettingsTransaction unit;
        try {
            CTemplateImport import(*this, m_strScope, document, {vecImported, vecSkipped, vecAssets}, pObserver);
            iResult = import.Run();
        } catch (const OS::CException& exception) {
            LogImportFailure(exception);  // what was saved before it stays saved
            TellStoreFailure(pObserver, exception);
        }
        unit.Commit();
    } catch (const OS::CException& exception) {
        vecImported.resize(iImportedBefore);
        LogImportFailure(exception);
        TellStoreFailure(pObserver, exception);
        if (pObserver != nullptr) {
            pObserver->OnUndone();
        }
        return RESULT_FAILED;
    } catch (...) {
        vecImported.resize(iImportedBefore);  // the unit of work undoes what the names stood for
        throw;
    }
    if (iResult == RESULT_DONE) {
        DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::ImportTemplateImpl");
    }
    return iResult;
}
