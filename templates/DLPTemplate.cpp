#include "templates/DLPTemplate.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/CXMLWriter.h"
#include "templates/TemplateLog.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr char LOG_SOURCE[] = ".\\DLPTemplate.cpp";

/** Runs one step of reading or writing; what it throws is logged and ends the step. */
template <class F>
void Guard(const F& fnStep) {
    try {
        fnStep();
    } catch (const OS::CException& exception) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Fail to construct CComplianceTemplates, Error: %s", exception.GetErrorMessage());
    }
}

SRuleElement ReadElement(const CXMLView& node) {
    const TemplateXml::SBuildingBlock block = TemplateXml::ReadBuildingBlock(node);
    return {OS::WideText(block.strName), block.iCount, block.eOperator, block.eType};
}

SMatchRule ReadRule(const CXMLView& node) {
    SMatchRule rule;
    rule.eOperator = TemplateXml::ReadOperation(node);
    for (CXMLView block = node.FirstChild(); block; block = block.NextSibling()) {
        rule.vecElements.push_back(ReadElement(block));
    }
    return rule;
}

void WriteRule(CXMLWriter& writer, const SMatchRule& rule) {
    TemplateXml::StartMatchRule(writer, rule.eOperator);
    for (const SRuleElement& element : rule.vecElements) {
        const std::string strName = OS::WCharToChar(element.strName);
        TemplateXml::WriteBuildingBlock(writer, {element.eType, element.iCount, strName, element.eOperator});
    }
    writer.EndElement();
}

}  // namespace

CComplianceTemplates::CComplianceTemplates(const OS::x_wstring& strXml) {
    Guard([&] {
        CXMLParser document;
        document.LoadXML(strXml);
        const OS::CAutoObjPtr<CXMLNode> pNode = document.XPathSelectSingleNode(XmlHelpers::RootPath({Tag::TEMPLATE}));
        if (pNode) {
            Read(pNode->View());
        }
    });
}

CComplianceTemplates::CComplianceTemplates(const CXMLView& element) {
    Read(element);
}

CComplianceTemplates::CComplianceTemplates(OS::x_wstring strName, OS::x_wstring strDisplayName,
                                           OS::x_wstring strDescription, const std::vector<OS::x_wstring>& vecRules,
                                           const std::vector<OS::x_wstring>& vecOperators)
    : m_template{std::move(strName), std::move(strDisplayName), std::move(strDescription), false, {}} {
    const std::size_t iRules = std::min(vecRules.size(), vecOperators.size());
    for (std::size_t i = 0; i < iRules; ++i) {
        m_template.vecRules.push_back(ParseMatchRule(vecRules[i], vecOperators[i]));
    }
}

void CComplianceTemplates::Read(const CXMLView& element) {
    m_template.strName = OS::WideText(element.Attribute(TagUtf8::NAME));
    m_template.strDisplayName = OS::WideText(element.Attribute(TagUtf8::DISPLAY_NAME));
    m_template.strDescription = OS::WideText(element.Attribute(TagUtf8::DESCRIPTION));
    m_template.bPreDefined = element.Attribute(TagUtf8::PRE_DEFINED) == Value::TRUE_TEXT;
    for (CXMLView rule = element.FirstChild(); rule; rule = rule.NextSibling()) {
        m_template.vecRules.push_back(ReadRule(rule));
    }
}

void CComplianceTemplates::GetRuleTexts(std::vector<OS::x_wstring>& vecRules,
                                        std::vector<OS::x_wstring>& vecOperators) const {
    FormatMatchRules(m_template.vecRules, vecRules, vecOperators);
}

void CComplianceTemplates::Write(CXMLWriter& writer) const {
    TemplateXml::StartTemplate(writer, OS::WCharToChar(m_template.strName), OS::WCharToChar(m_template.strDisplayName),
                               OS::WCharToChar(m_template.strDescription), m_template.bPreDefined);
    for (const SMatchRule& rule : m_template.vecRules) {
        WriteRule(writer, rule);
    }
    writer.EndElement();
}

OS::x_wstring CComplianceTemplates::ToXmlString() const {
    OS::x_wstring strResult;
    Guard([&] {
        std::string strXml;
        CXMLWriter writer(strXml);
        Write(writer);
        strResult = OS::WideText(strXml);
    });
    return strResult;
}

OS::x_wstring CComplianceTemplates::MakeComplianceTemplatesXml(const std::vector<CComplianceTemplates>& vecTemplates) {
    return OS::WideText(MakeDocument([&](CXMLWriter& writer) {
        for (const CComplianceTemplates& compliance : vecTemplates) {
            compliance.Write(writer);
        }
    }));
}

std::string CComplianceTemplates::MakeDocument(const std::function<void(CXMLWriter&)>& fnWrite) {
    std::string strResult;
    Guard([&] {
        std::string strXml;
        CXMLWriter writer(strXml);
        writer.StartElement(TagUtf8::COMPLIANCE_TEMPLATES);
        if (!writer.IsIn(TagUtf8::COMPLIANCE_TEMPLATES)) {
            DLP_LOG(DBG::LEVEL_FAILURE, TemplateLog::NODE_NOT_FOUND, Tag::COMPLIANCE_TEMPLATES);
            return;
        }
        writer.Attribute(TagUtf8::COMMAND, Value::OVERWRITE);
        fnWrite(writer);
        writer.EndElement();
        strResult = std::move(strXml);
    });
    return strResult;
}
