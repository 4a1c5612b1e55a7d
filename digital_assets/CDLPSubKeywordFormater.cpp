#include "api/CDLPSubKeywordFormater.h"

#include <algorithm>

#include "digital_assets/AssetLog.h"
#include "digital_assets/KeywordText.h"
#include "platform/logging/DebugLog.h"
#include "platform/xml/CXMLParser.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

using DigitalAssets::LOG_SOURCE;

namespace {

void AppendKeyword(CXMLParser& document, CXMLNode& dictionary, const CDLPSubKeyword& keyword) {
    OS::CAutoObjPtr<CXMLNode> pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, Tag::KEYWORD);
    pNode->SetText(keyword.m_strKeyword);
    const OS::CAutoObjPtr<CXMLElement> pElement = pNode->ToElement();
    pElement->SetAttribute(Tag::DESCRIPTION, keyword.m_strDescription);
    pElement->SetAttribute(Tag::SCORE, keyword.m_strScore);
    pElement->SetAttribute(Tag::CASE_SENSITIVE, keyword.m_strCaseSensitive);
    dictionary.AppendChild(pNode);
}

}  // namespace

CDLPSubKeywordFormater& CDLPSubKeywordFormater::operator=(const CDLPSubKeywordFormater&) {
    return *this;
}

OS::x_wstring CDLPSubKeywordFormater::ToXmlFormat(std::vector<CDLPSubKeyword>& vecKeywords) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CDLPSubKeywordFormater::ToXmlFormat()");
    OS::x_wstring strXml;
    try {
        CXMLParser document;
        document.LoadXML(XmlHelpers::EmptyElement(Tag::DICTIONARY));
        const OS::CAutoObjPtr<CXMLNode> pDictionary =
            document.XPathSelectSingleNode(XmlHelpers::RootPath({Tag::DICTIONARY}));
        if (pDictionary == nullptr) {
            DLP_LOG(DBG::LEVEL_FAILURE, DigitalAssets::NOT_FOUND, Tag::SA_POLICY);
            return strXml;
        }
        for (const CDLPSubKeyword& keyword : vecKeywords) {
            AppendKeyword(document, *pDictionary, keyword);
        }
        document.SaveXML(strXml);
        DLP_LOG(DBG::LEVEL_LEAVE, L"CDLPSubKeywordFormater::ToXmlFormat() xml =\n %s", strXml);
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to convert subkeyword to xml format, Error: %s", error.GetErrorMessage());
    }
    return strXml;
}

void CDLPSubKeywordFormater::ToUIFormat(const OS::x_wstring& strXml, std::vector<CDLPSubKeyword>& vecKeywords) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CDLPSubKeywordFormater::ToUIFormat()");
    try {
        CXMLParser document;
        document.LoadXML(strXml);
        const std::wstring strPath = XmlHelpers::RootPath({Tag::DICTIONARY, Tag::KEYWORD});
        const OS::CAutoObjPtr<CXMLNodeList> pNodes = document.XPathSelectNodes(strPath);
        if (pNodes == nullptr || !DigitalAssets::FindDictionary(document)) {
            DLP_LOG(DBG::LEVEL_FAILURE,
                    L"CDLPSubKeywordFormater::ToUIFormat() Unable to find node %s.                    The xml file "
                    L"format is incompatible.",
                    strPath);
            return;
        }
        for (int i = 0; i < pNodes->GetLength(); ++i) {
            const OS::CAutoObjPtr<CXMLNode> pNode = pNodes->GetItem(i);
            vecKeywords.emplace_back(pNode->GetText(), pNode->GetAttribute(Tag::DESCRIPTION),
                                     pNode->GetAttribute(Tag::SCORE), pNode->GetAttribute(Tag::CASE_SENSITIVE));
        }
        // operator< calls equal keywords less both ways; turned round it is the strict order that std::sort needs.
        std::sort(vecKeywords.begin(), vecKeywords.end(),
                  [](const CDLPSubKeyword& left, const CDLPSubKeyword& right) { return !(right < left); });
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to convert subkeyword xml to UI format, Error: %s", error.GetErrorMessage());
    }
}
