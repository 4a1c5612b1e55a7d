#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLView.h"
#include "templates/MatchRule.h"

class CXMLWriter;

/** One compliance template in memory. */
struct STemplate {
    std::wstring strName;
    std::wstring strDisplayName;
    std::wstring strDescription;
    bool bPreDefined = false;  ///< true only for the text "true"
    std::vector<SMatchRule> vecRules;
};

/**
 * A template between its three shapes: the XML element that is stored, the rules in memory, and the texts that an
 * editing screen shows. Failures of the XML layer are logged, never thrown.
 */
class CComplianceTemplates {
  public:
    /** Reads a template's XML text; text without a template as its root gives an empty one. */
    explicit CComplianceTemplates(const OS::x_wstring& strXml);
    /** Reads a template element: every child element as a rule, every child of a rule as a building block. */
    explicit CComplianceTemplates(const CXMLView& element);
    /** Makes a user's template; rules and operators are read in pairs as far as the shorter list goes. */
    CComplianceTemplates(OS::x_wstring strName, OS::x_wstring strDisplayName, OS::x_wstring strDescription,
                         const std::vector<OS::x_wstring>& vecRules, const std::vector<OS::x_wstring>& vecOperators);

    const STemplate& GetTemplate() const { return m_template; }
    /** Appends the rules as an editing screen shows them; see FormatMatchRules. */
    void GetRuleTexts(std::vector<OS::x_wstring>& vecRules, std::vector<OS::x_wstring>& vecOperators) const;
    /** @return the template as an XML element; empty when it cannot be written */
    OS::x_wstring ToXmlString() const;

    /** @return a complianceTemplates document with these templates, in order; empty when one cannot be written */
    static OS::x_wstring MakeComplianceTemplatesXml(const std::vector<CComplianceTemplates>& vecTemplates);
    /** The same in UTF-8. @param fnWrite writes the template elements */
    static std::string MakeDocument(const std::function<void(CXMLWriter&)>& fnWrite);

  private:
    void Read(const CXMLView& element);
    void Write(CXMLWriter& writer) const;

    STemplate m_template;
};
