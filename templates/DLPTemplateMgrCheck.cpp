#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/xml/CXMLParser.h"
#include "templates/CAssetNames.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/STemplateFinding.h"
#include "templates/TemplateLog.h"
#include "templates/TemplateXml.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

struct SFaultLine {
    const wchar_t* pFormat;
    const char* pAttribute;  ///< whose value the line shows
};

/** In the order of ETemplateFault. */
constexpr SFaultLine FAULT_LINES[] = {
    {L"expression internal name %s is invalid", TagUtf8::SOURCE_NAME},
    {L"keyword internal name %s is invalid", TagUtf8::SOURCE_NAME},
    {TemplateLog::TYPE_NOT_SUPPORTED, TagUtf8::SOURCE_TYPE},
    {L"buildingblock operation %s is invalid", TagUtf8::OPERATION},
    {L"matchRule operation %s is invalid", TagUtf8::OPERATION},
};

/** Calls fnBlock for each building block of a template until it answers false. */
template <class F>
void WalkBlocks(const CXMLView& element, const F& fnBlock) {
    for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule; rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
        CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK);
        for (; block; block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
            if (!fnBlock(block)) {
                return;
            }
        }
    }
}

void CollectNames(const CXMLView& element, CAssetNames& names) {
    WalkBlocks(element, [&](const CXMLView& block) {
        const EElementType eType = TemplateXml::ReadExactType(block);
        if (eType != EElementType::UNKNOWN) {
            names.Add(eType, block.Attribute(TagUtf8::SOURCE_NAME));
        }
        return true;
    });
}

/** Looks at the templates of one document. */
class CTemplateCheck {
  public:
    CTemplateCheck(const CAssetNames& names, std::vector<STemplateFinding>& vecFindings)
        : m_names(names), m_vecFindings(vecFindings) {}

    void Check(const CXMLView& element, std::size_t iTemplate) {
        m_element = element;
        m_iTemplate = iTemplate;
        WalkBlocks(element, [this](const CXMLView& block) { return CheckBlock(block); });
        CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE);
        while (rule && (TemplateXml::IsOperationAccepted(rule) || Refuse(ETemplateFault::RULE_OPERATION, rule))) {
            rule = rule.NextSibling(TagUtf8::MATCH_RULE);
        }
    }

  private:
    bool CheckBlock(const CXMLView& block) {
        const EElementType eType = TemplateXml::ReadExactType(block);
        if (eType == EElementType::UNKNOWN) {
            return Refuse(ETemplateFault::SOURCE_TYPE, block);
        }
        if (!m_names.IsStored(eType, block.Attribute(TagUtf8::SOURCE_NAME))) {
            const bool bExpression = eType == EElementType::ENTITY;
            return Refuse(bExpression ? ETemplateFault::UNKNOWN_EXPRESSION : ETemplateFault::UNKNOWN_KEYWORD, block);
        }
        return TemplateXml::IsOperationAccepted(block) || Refuse(ETemplateFault::BLOCK_OPERATION, block);
    }

    /** @return false */
    bool Refuse(ETemplateFault eFault, const CXMLView& node) {
        const SFaultLine& line = FAULT_LINES[static_cast<std::size_t>(eFault)];
        DLP_LOG(DBG::LEVEL_INFO, line.pFormat, OS::WideText(node.Attribute(line.pAttribute)));
        m_vecFindings.push_back({std::string(m_element.Attribute(TagUtf8::NAME)), m_iTemplate, eFault, node});
        return false;
    }

    const CAssetNames& m_names;
    std::vector<STemplateFinding>& m_vecFindings;
    CXMLView m_element;
    std::size_t m_iTemplate = 0;
};

}  // namespace

bool CTemplateMgr::CheckImportTemplate(const OS::x_wstring& strXmlContent, std::vector<OS::x_wstring>&,
                                       std::vector<OS::x_wstring>& vecInvalid) {
    CPolicyDocument document(strXmlContent);
    std::vector<STemplateFinding> vecFindings;
    const bool bResult = CheckImportTemplate(document, vecFindings);
    for (const STemplateFinding& finding : vecFindings) {
        vecInvalid.push_back(OS::WideText(finding.strTemplate));
    }
    return bResult;
}

bool CTemplateMgr::CheckImportTemplate(CPolicyDocument& document, std::vector<STemplateFinding>& vecFindings) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::CheckImportTemplate(strXmlContent = %s)", document.GetText());
    const std::wstring strPath = XmlHelpers::RootPath({Tag::SA_POLICY, Tag::COMPLIANCE_TEMPLATES, Tag::TEMPLATE});
    const OS::CAutoObjPtr<CXMLNodeList> pTemplates = document.Load().XPathSelectNodes(strPath);
    const int iTemplates = pTemplates ? pTemplates->GetLength() : 0;
    CAssetNames names;
    for (int i = 0; i < iTemplates; ++i) {
        CollectNames(pTemplates->ViewAt(i), names);
    }
    names.Ask();
    if (iTemplates == 0) {
        DLP_LOG(DBG::LEVEL_FAILURE,
                L"CTemplateMgr::CheckImportTemplate Unable to find node %s. The xml file format is incompatible.",
                strPath);
        return false;
    }
    CTemplateCheck check(names, vecFindings);
    for (int i = 0; i < iTemplates; ++i) {
        const CXMLView element = pTemplates->ViewAt(i);
        if (!element.Attribute(TagUtf8::NAME).empty()) {
            check.Check(element, static_cast<std::size_t>(i));
        }
    }
    DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::CheckImportTemplate");
    return true;
}
