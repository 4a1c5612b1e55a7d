#include "cli/TemplateSuggestions.h"

#include "cli/NearestName.h"
#include "xml/Vocabulary.h"

namespace {

constexpr std::size_t MAX_SUGGESTIONS = 20;

}  // namespace

std::string CTemplateSuggestions::Find(const std::string& strName) {
    if (++m_iFound > MAX_SUGGESTIONS) {
        return {};
    }
    for (CXMLView section = m_root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES); section && m_iFound == 1;
         section = section.NextSibling(TagUtf8::COMPLIANCE_TEMPLATES)) {
        for (CXMLView element = section.FirstChild(TagUtf8::TEMPLATE); element;
             element = element.NextSibling(TagUtf8::TEMPLATE)) {
            m_vecNames.emplace_back(element.Attribute(TagUtf8::NAME));
        }
    }
    return FindNearestName(strName, m_vecNames);
}
