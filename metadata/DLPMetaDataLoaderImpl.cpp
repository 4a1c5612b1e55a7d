#include "api/DLPMetaDataLoaderImpl.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/common/DataFileFailure.h"
#include "platform/common/Paths.h"
#include "platform/logging/DebugLog.h"
#include "platform/system/InstallPath.h"
#include "platform/xml/CXMLParser.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr char LOG_SOURCE[] = ".\\util_ParseDLPTemplate.cpp";
constexpr wchar_t POLICY_FILE[] = L"config\\PredefinedDLPPolicy.xml";

constexpr wchar_t VALIDATORS[] = L"validators";
constexpr wchar_t ENTITY_TYPES[] = L"entity_types";
constexpr wchar_t DICTIONARY_TYPES[] = L"dictionary_types";
constexpr wchar_t INDUSTRIES[] = L"industries";
constexpr wchar_t REGIONS[] = L"regions";

}  // namespace

DLPMetaDataLoaderImpl::DLPMetaDataLoaderImpl() {
    Load();
}
DLPMetaDataLoaderImpl::DLPMetaDataLoaderImpl(const DLPMetaDataLoaderImpl&) = default;
DLPMetaDataLoaderImpl& DLPMetaDataLoaderImpl::operator=(const DLPMetaDataLoaderImpl&) = default;
DLPMetaDataLoaderImpl::~DLPMetaDataLoaderImpl() = default;

bool DLPMetaDataLoaderImpl::Load() {
    if (m_bLoaded) {
        return true;
    }
    const std::pair<const wchar_t*, OS::x_wstring*> aSections[] = {{VALIDATORS, &m_strValidators},
                                                                   {ENTITY_TYPES, &m_strEntityTypes},
                                                                   {DICTIONARY_TYPES, &m_strDictionaryTypes},
                                                                   {INDUSTRIES, &m_strIndustries},
                                                                   {REGIONS, &m_strRegions}};
    DLP_LOG(DBG::LEVEL_ENTER, L"DLPMetaDataLoaderImpl::Load()");
    try {
        const CXMLParser document(NS_StringUtils::concatPath(SYS::GetInstallPath(), POLICY_FILE).c_str());
        if (const OS::CAutoObjPtr<CXMLElement> pRoot = document.GetRootElement()) {
            for (const auto& [pName, pMarkup] : aSections) {
                const auto pSection = pRoot->XPathSelectSingleNode(XmlHelpers::RootPath({Tag::SA_POLICY, pName}));
                if (pSection != nullptr) {
                    *pMarkup = pSection->ToElement()->GetXML();
                }
            }
        }
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_ERROR, L"DLPMetaDataLoaderImpl::Load() failed: %s", error.GetErrorMessage());
        OS::NoteDataFileFailure(error.GetErrorCode(), error.what());
        return false;
    } catch (...) {
        DLP_LOG(DBG::LEVEL_ERROR, L"DLPMetaDataLoaderImpl::Load() unknown exception");
        OS::NoteDataFileFailure(ENOMEM, "memory ran out while the predefined lists were read");
        return false;
    }
    m_bLoaded = true;
    DLP_LOG(DBG::LEVEL_LEAVE, L"DLPMetaDataLoaderImpl::Load(), loaded = %d", m_bLoaded);
    return m_bLoaded;
}

OS::CAutoObjPtr<CXMLNode> DLPMetaDataLoaderImpl::MakeDOMNode(const OS::x_wstring& strXml,
                                                             const wchar_t* pRootNodeName) {
    DLP_LOG(DBG::LEVEL_ENTER, L"DLPMetaDataLoaderImpl::MakeDOMNode(xmllength=%d, rootNodeName='%s')",
            static_cast<int>(strXml.size()), pRootNodeName);
    if (!m_bLoaded || strXml.empty()) {
        return nullptr;
    }
    try {
        CXMLParser document;
        if (!document.LoadXML(strXml)) {
            return nullptr;
        }
        OS::CAutoObjPtr<CXMLNode> pNode = document.XPathSelectSingleNode(pRootNodeName);
        DLP_LOG(DBG::LEVEL_LEAVE, L"DLPMetaDataLoaderImpl::MakeDOMNode() return %p", pNode.Get());
        return pNode;
    } catch (const CXMLException& error) {
        DLP_LOG(DBG::LEVEL_ERROR, L"DLPMetaDataLoaderImpl::MakeDOMNode() failed: %s", error.GetErrorMessage());
        return nullptr;
    }
}

bool DLPMetaDataLoaderImpl::GetNameList(const wchar_t* pRootNodeName, const OS::x_wstring& strXml,
                                        std::vector<OS::x_wstring>& vecNames,
                                        std::vector<OS::x_wstring>& vecDisplayNames) {
    vecNames.clear();
    vecDisplayNames.clear();
    const OS::CAutoObjPtr<CXMLNode> pSection = MakeDOMNode(strXml, pRootNodeName);
    if (pSection == nullptr) {
        return false;
    }
    for (OS::CAutoObjPtr<CXMLNode> pItem = pSection->GetFirstChild(); pItem != nullptr;
         pItem = pItem->GetNextSibling()) {
        vecNames.push_back(pItem->GetAttribute(Tag::NAME).EscapeSpecialCharacters());
        vecDisplayNames.push_back(pItem->GetAttribute(Tag::DISPLAY_NAME).EscapeSpecialCharacters());
    }
    return true;
}

bool DLPMetaDataLoaderImpl::GetValidators(std::vector<OS::x_wstring>& vecNames,
                                          std::vector<OS::x_wstring>& vecDisplayNames) {
    if (!GetNameList(XmlHelpers::RootPath({VALIDATORS}).c_str(), m_strValidators, vecNames, vecDisplayNames)) {
        return false;
    }
    std::vector<std::pair<OS::x_wstring, OS::x_wstring>> vecItems;
    for (std::size_t i = 0; i < vecNames.size(); ++i) {
        vecItems.emplace_back(std::move(vecNames[i]), std::move(vecDisplayNames[i]));
    }
    std::sort(vecItems.begin(), vecItems.end(),
              [](const auto& left, const auto& right) { return left.second < right.second; });
    for (std::size_t i = 0; i < vecItems.size(); ++i) {
        vecNames[i] = std::move(vecItems[i].first);
        vecDisplayNames[i] = std::move(vecItems[i].second);
    }
    return true;
}

bool DLPMetaDataLoaderImpl::GetExpressionTypes(std::vector<OS::x_wstring>& vecNames,
                                               std::vector<OS::x_wstring>& vecDisplayNames) {
    return GetNameList(XmlHelpers::RootPath({ENTITY_TYPES}).c_str(), m_strEntityTypes, vecNames, vecDisplayNames);
}

bool DLPMetaDataLoaderImpl::GetKeywordConditions(std::vector<OS::x_wstring>& vecNames,
                                                 std::vector<OS::x_wstring>& vecDisplayNames) {
    return GetNameList(XmlHelpers::RootPath({DICTIONARY_TYPES}).c_str(), m_strDictionaryTypes, vecNames,
                       vecDisplayNames);
}

bool DLPMetaDataLoaderImpl::GetIndustries(std::vector<OS::x_wstring>& vecNames,
                                          std::vector<OS::x_wstring>& vecDisplayNames) {
    return GetNameList(XmlHelpers::RootPath({INDUSTRIES}).c_str(), m_strIndustries, vecNames, vecDisplayNames);
}

bool DLPMetaDataLoaderImpl::GetRegions(std::vector<OS::x_wstring>& vecNames,
                                       std::vector<OS::x_wstring>& vecDisplayNames) {
    return GetNameList(XmlHelpers::RootPath({REGIONS}).c_str(), m_strRegions, vecNames, vecDisplayNames);
}
