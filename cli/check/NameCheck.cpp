#include <string>
#include <string_view>

#include "cli/RuleName.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "platform/common/TextHash.h"
#include "platform/common/TextTools.h"
#include "templates/DLPXmlNormalizer.h"
#include "templates/MatchRule.h"

namespace {

constexpr const char FIRST_HERE[] = "the first one is here";

struct SNamed {
    const char* pSection;
    const char* pElement;
    const char* pWords;
    EElementType eType;  ///< how rules refer to it; UNKNOWN: they do not
};
constexpr SNamed NAMED[] = {
    {TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, "expressions", EElementType::ENTITY},
    {TagUtf8::DIGITAL_ASSETS, TagUtf8::DICTIONARY, "keyword lists", EElementType::KEYWORD},
    {TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE, "templates", EElementType::UNKNOWN},
};

void CheckBlanks(const SCheckedDocument& document, const CXMLView& element) {
    for (const char* pAttribute : {TagUtf8::NAME, TagUtf8::DISPLAY_NAME}) {
        const std::string_view strName = element.Attribute(pAttribute);
        if (OS::Trim(strName).size() != strName.size()) {
            document.diagnostics.Add(ECode::BLANK_IN_NAME, document.Find(element, pAttribute).iName,
                                     {pAttribute, Text::Quoted(strName)});
        }
    }
}

/** Of one kind, those of one internal name aside: that these are one item is told already. */
void CheckDisplayNames(const SCheckedDocument& document, const SNamed& named) {
    const char* pAttribute = document.bOlder ? CDLPXmlNormalizer::OLDER_DISPLAY_NAME : TagUtf8::DISPLAY_NAME;
    OS::TextMap<std::string_view, CXMLView> mapFirst;
    document.ForEach(named.pSection, named.pElement, [&](const CXMLView& element) {
        const std::string_view strDisplayName = element.Attribute(pAttribute);
        if (strDisplayName.empty()) {
            return;
        }
        const auto [itFirst, bNew] = mapFirst.try_emplace(strDisplayName, element);
        if (!bNew && itFirst->second.Attribute(TagUtf8::NAME) != element.Attribute(TagUtf8::NAME)) {
            document.diagnostics.Relate(
                document.diagnostics.Add(ECode::SAME_DISPLAY_NAME, document.Find(element, pAttribute).iName,
                                         {named.pWords, Text::Quoted(strDisplayName)}),
                itFirst->second.Offset(), FIRST_HERE);
        }
    });
}

}  // namespace

void CheckNames(const SCheckedDocument& document) {
    for (const SNamed& named : NAMED) {
        document.ForEach(named.pSection, named.pElement,
                         [&](const CXMLView& element) { CheckBlanks(document, element); });
        CheckDisplayNames(document, named);
        OS::TextMap<std::string_view, std::size_t> mapFirst;
        document.ForEach(named.pSection, named.pElement, [&](const CXMLView& element) {
            const std::string_view strName = element.Attribute(TagUtf8::NAME);
            if (strName.empty()) {
                return;
            }
            const auto [itFirst, bNew] = mapFirst.try_emplace(strName, element.Offset());
            if (!bNew) {
                document.diagnostics.Relate(
                    document.diagnostics.Add(ECode::DUPLICATE_NAME, document.Find(element, TagUtf8::NAME).iName,
                                             {named.pWords, Text::Quoted(strName)}),
                    itFirst->second, FIRST_HERE);
            } else if (named.eType != EElementType::UNKNOWN && !SurvivesRuleText(named.eType, std::string(strName))) {
                document.diagnostics.Add(ECode::NAME_IN_TEXT, document.Find(element, TagUtf8::NAME).iName,
                                         {Text::Quoted(strName)});
            }
        });
    }
}
