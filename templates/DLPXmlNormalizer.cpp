#include "templates/DLPXmlNormalizer.h"

#include "digital_assets/DigitalAssets.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/xml/CXMLWriter.h"
#include "templates/TemplateLog.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

constexpr wchar_t MAP_FILE[] = L"config\\cfg_dlp_da_map.txt";

/** Sections beside the templates, which the older layout does not carry over. */
constexpr const char* DROPPED_SECTIONS[] = {TagUtf8::DIGITAL_ASSETS, TagUtf8::INDUSTRIES, TagUtf8::REGIONS};

// Lines that stand at both ends of an operation, or in both forms of one.
constexpr wchar_t INIT_LINE[] = L"CDLPXmlNormalizer::InitDigitalAssetsMappingTable()";
constexpr wchar_t NORMALIZE_LINE[] = L"CDLPXmlNormalizer::NormailzeXml()";
constexpr wchar_t NODES_LINE[] = L"CDLPXmlNormalizer::GetAllTemplateNodes()";
constexpr wchar_t TEMPLATE_LINE[] = L"CDLPXmlNormalizer::NormalizeTemplate()";
constexpr wchar_t BLOCKS_LINE[] = L"CDLPXmlNormalizer::NormalizeBuildingBlocks()";
constexpr wchar_t MAP_LINE[] = L"CDLPXmlNormalizer::MapDigitalAssetsSourceName()";
constexpr wchar_t WRAP_LINE[] = L"CDLPXmlNormalizer::WrapTemplateList()";

CDLPXmlNormalizer::NameMap& Names() {
    static CDLPXmlNormalizer::NameMap s_names;
    return s_names;
}

/** Runs the steps of a normalisation; what they throw is logged and makes it fail. */
template <class F>
bool Guard(const F& fnSteps) {
    DLP_LOG(DBG::LEVEL_ENTER, NORMALIZE_LINE);
    try {
        fnSteps();
    } catch (const OS::CException& exception) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"CDLPXmlNormalizer::NormailzeXml(), Error: %s", exception.GetErrorMessage());
        return false;
    }
    DLP_LOG(DBG::LEVEL_LEAVE, NORMALIZE_LINE);
    return true;
}

/** @return the root of a document @throws OS::CException without a message, logged, when it is another element */
OS::CAutoObjPtr<CXMLNode> RequireRoot(const CXMLParser& document, const std::wstring& strTag) {
    OS::CAutoObjPtr<CXMLNode> pRoot = document.XPathSelectSingleNode(XmlHelpers::RootPath({strTag}));
    if (!pRoot) {
        DLP_LOG(DBG::LEVEL_FAILURE, TemplateLog::NODE_NOT_FOUND, strTag);
        throw OS::CException(0, OS::x_wstring(), 0);
    }
    return pRoot;
}

void ReportDropped(CImportObserver* pObserver, EItemKind eKind, EReason eReason, const CXMLView& element) {
    const std::string_view strName = eKind == EItemKind::SECTION ? element.Name() : element.Attribute(TagUtf8::NAME);
    if (pObserver == nullptr || pObserver->PassesOver(eKind, strName)) {
        return;
    }
    SImportItem report;
    report.eKind = eKind;
    report.strName = strName;
    report.strDisplayName = element.Attribute(CDLPXmlNormalizer::OLDER_DISPLAY_NAME);
    report.eDisposition = EDisposition::SKIPPED;
    report.eReason = eReason;
    report.iOffset = element.Offset();
    pObserver->OnItem(report);
}

void ReportDroppedSections(CImportObserver* pObserver, const CXMLView& root) {
    for (const char* pSection : DROPPED_SECTIONS) {
        for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
            if (section.FirstChild()) {
                ReportDropped(pObserver, EItemKind::SECTION, EReason::OLDER_SECTION, section);
            }
        }
    }
}

void ReportUnknownElements(CImportObserver* pObserver, const CPolicyDocument& document, const CXMLView& root) {
    constexpr const char* SECTION = TagUtf8::COMPLIANCE_TEMPLATES;
    TellUnknownElements(document, root, {SECTION, TagUtf8::DIGITAL_ASSETS, TagUtf8::INDUSTRIES, TagUtf8::REGIONS},
                        pObserver);
    for (CXMLView section = root.FirstChild(SECTION); section; section = section.NextSibling(SECTION)) {
        TellUnknownElements(document, section, {TagUtf8::TEMPLATE}, pObserver);
    }
}

}  // namespace

void CDLPXmlNormalizer::InitDigitalAssetsMappingTable() {
    DLP_LOG(DBG::LEVEL_ENTER, INIT_LINE);
    if (!Names().empty()) {
        return;
    }
    CLineReaderCallback callback(Names());
    CINIReader reader;
    reader.Parse(MAP_FILE, L"r");
    reader.Enumerate(callback);
    DLP_LOG(DBG::LEVEL_LEAVE, INIT_LINE);
}

bool CDLPXmlNormalizer::NormailzeXml(const OS::x_wstring& strXml, OS::x_wstring& strResult) {
    return Guard([&] {
        CPolicyDocument document(strXml);
        CXMLParser result;
        if (Convert(document, result, nullptr)) {
            result.SaveXML(strResult);
        }
    });
}

bool CDLPXmlNormalizer::Normalize(CPolicyDocument& document, CXMLParser& result, CImportObserver* pObserver) {
    return Guard([&] { Convert(document, result, pObserver); });
}

/** There may be many templates, so they are moved, not copied. @return false when the document has no root */
bool CDLPXmlNormalizer::Convert(CPolicyDocument& document, CXMLParser& result, CImportObserver* pObserver) {
    OS::CAutoObjPtr<CXMLNodeList> pNodes;
    if (!GetAllTemplateNodes(document, pNodes)) {
        return false;
    }
    CXMLParser templates = document.Take();
    const CXMLView root = templates.RootView();
    const OS::CAutoObjPtr<CXMLNode> pParent = templates.CreateNode(XMLPARSER_NODE_ELEMENT, Tag::COMPLIANCE_TEMPLATES);
    const int iNodes = pNodes->GetLength();
    for (int i = 0; i < iNodes; ++i) {
        DLP_LOG(DBG::LEVEL_ENTER, TEMPLATE_LINE);
        OS::CAutoObjPtr<CXMLNode> pTemplate = pNodes->GetItem(i);
        if (IsBuiltIn(pTemplate->View())) {
            ReportDropped(pObserver, EItemKind::TEMPLATE, EReason::OLDER_BUILT_IN, pTemplate->View());
            continue;
        }
        pParent->AppendChild(pTemplate);
        Rewrite(pTemplate);
        DLP_LOG(DBG::LEVEL_LEAVE, TEMPLATE_LINE);
    }
    ReportDroppedSections(pObserver, root);
    ReportUnknownElements(pObserver, document, root);
    pNodes = nullptr;  // holds what goes now
    templates.SetRoot(pParent);
    WrapTemplateList(templates, result);
    return true;
}

bool CDLPXmlNormalizer::GetAllTemplateNodes(const OS::x_wstring& strXml, OS::CAutoObjPtr<CXMLNodeList>& pNodes) {
    CPolicyDocument document(strXml);
    return GetAllTemplateNodes(document, pNodes);
}

bool CDLPXmlNormalizer::GetAllTemplateNodes(CPolicyDocument& document, OS::CAutoObjPtr<CXMLNodeList>& pNodes) {
    DLP_LOG(DBG::LEVEL_ENTER, NODES_LINE);
    const std::wstring strPath = XmlHelpers::RootPath({Tag::SA_POLICY, Tag::COMPLIANCE_TEMPLATES, Tag::TEMPLATE});
    OS::CAutoObjPtr<CXMLNodeList> pSelected = document.Load().XPathSelectNodes(strPath);
    if (!pSelected) {
        DLP_LOG(DBG::LEVEL_FAILURE,
                L"CDLPXmlNormalizer::GetAllTemplateNodes() Unable to find node %s. The xml file format is "
                L"incompatible.",
                strPath);
        return false;
    }
    pNodes = std::move(pSelected);
    DLP_LOG(DBG::LEVEL_LEAVE, NODES_LINE);
    return true;
}

void CDLPXmlNormalizer::NormalizeTemplate(OS::CAutoObjPtr<CXMLNode>& pTemplate, OS::x_wstring& strText) {
    DLP_LOG(DBG::LEVEL_ENTER, TEMPLATE_LINE);
    strText.clear();
    if (IsBuiltIn(pTemplate->View())) {
        return;
    }
    Rewrite(pTemplate);
    strText = pTemplate->ToElement()->GetXML();
    DLP_LOG(DBG::LEVEL_LEAVE, TEMPLATE_LINE);
}

void CDLPXmlNormalizer::Rewrite(OS::CAutoObjPtr<CXMLNode>& pTemplate) {
    static const std::wstring s_strOlderName = OS::WideText(OLDER_DISPLAY_NAME);
    static const std::wstring s_strBuiltIn = OS::WideText(OLDER_BUILT_IN);
    static const std::wstring s_strFalse = OS::WideText(Value::FALSE_TEXT);
    static const std::wstring s_strMedium = OS::WideText(Value::MEDIUM);
    const OS::CAutoObjPtr<CXMLElement> pElement = pTemplate->ToElement();
    pElement->SetAttribute(Tag::DISPLAY_NAME, pElement->GetAttribute(s_strOlderName));
    pElement->SetAttribute(Tag::PRE_DEFINED, s_strFalse);
    pElement->SetAttribute(Tag::SEVERITY, s_strMedium);
    pElement->RemoveAttribute(s_strOlderName);
    pElement->RemoveAttribute(s_strBuiltIn);
    NormalizeBuildingBlocks(pTemplate);
}

bool CDLPXmlNormalizer::IsBuiltIn(const CXMLView& element) {
    return element.Attribute(OLDER_BUILT_IN) == BUILT_IN_VALUE;
}

void CDLPXmlNormalizer::NormalizeBuildingBlocks(OS::CAutoObjPtr<CXMLNode>& pTemplate) {
    DLP_LOG(DBG::LEVEL_ENTER, BLOCKS_LINE);
    static const std::wstring s_strPath = XmlHelpers::RelativePath({Tag::MATCH_RULE, Tag::BUILDING_BLOCK});
    const OS::CAutoObjPtr<CXMLNodeList> pBlocks = pTemplate->ToElement()->XPathSelectNodes(s_strPath);
    const int iBlocks = pBlocks->GetLength();
    for (int i = 0; i < iBlocks; ++i) {
        const OS::CAutoObjPtr<CXMLElement> pBlock = pBlocks->GetItem(i)->ToElement();
        pBlock->SetAttribute(Tag::SOURCE_NAME, MapDigitalAssetsSourceName(pBlock->GetAttribute(Tag::SOURCE_NAME)));
    }
    DLP_LOG(DBG::LEVEL_LEAVE, BLOCKS_LINE);
}

const CDLPXmlNormalizer::NameMap& CDLPXmlNormalizer::GetOlderNames() {
    return Names();
}

std::wstring CDLPXmlNormalizer::MapDigitalAssetsSourceName(const std::wstring& strSourceName) {
    DLP_LOG(DBG::LEVEL_ENTER, MAP_LINE);
    const auto itName = Names().find(strSourceName);
    const bool bFound = itName != Names().end();
    if (!bFound) {
        DLP_LOG(DBG::LEVEL_ERROR, L"can't map digital asset source name: %s", strSourceName);
    }
    DLP_LOG(DBG::LEVEL_LEAVE, MAP_LINE);
    return bFound ? itName->second : strSourceName;
}

void CDLPXmlNormalizer::WrapTemplateList(const OS::x_wstring& strTemplates, OS::x_wstring& strResult) {
    const std::wstring& strTag = Tag::COMPLIANCE_TEMPLATES;
    CXMLParser templates;
    templates.LoadXML(L"<" + strTag + L">" + strTemplates + L"</" + strTag + L">");
    CXMLParser result;
    WrapTemplateList(templates, result);
    result.SaveXML(strResult);
}

void CDLPXmlNormalizer::WrapTemplateList(CXMLParser& templates, CXMLParser& result) {
    DLP_LOG(DBG::LEVEL_ENTER, WRAP_LINE);
    OS::CAutoObjPtr<CXMLNode> pTemplates = RequireRoot(templates, Tag::COMPLIANCE_TEMPLATES);
    pTemplates->ToElement()->SetAttribute(Tag::COMMAND, OS::WideText(Value::OVERWRITE));
    std::string strRoot;
    CXMLWriter writer(strRoot);
    // A root that fails on its way stays open, and what is open is no document.
    if (DigitalAssets::StartRoot(writer)) {
        writer.EndElement();
    }
    result.LoadUtf8(strRoot);
    RequireRoot(result, Tag::SA_POLICY);
    result.AppendRoot(std::move(templates));
    DLP_LOG(DBG::LEVEL_LEAVE, WRAP_LINE);
}
