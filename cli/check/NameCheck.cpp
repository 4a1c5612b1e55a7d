#include <string>
#include <unordered_map>
#include <vector>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "platform/common/TextConversion.h"
#include "templates/MatchRule.h"

namespace {

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

/** A rule of this name and another element, written as text and read again. */
bool SurvivesText(EElementType eType, const std::string& strName) {
    SRuleElement named;
    named.strName = OS::WideText(strName);
    named.eType = eType;
    named.iCount = eType == EElementType::ENTITY ? 1 : 0;
    SRuleElement other;
    other.strName = L"x";
    other.eType = EElementType::KEYWORD;
    other.eOperator = EOperator::AND;
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({{{named, other}}}, vecTexts, vecOperators);
    const SMatchRule read = ParseMatchRule(vecTexts.front(), vecOperators.front());
    return read.vecElements.size() == 2 && read.vecElements.front().strName == named.strName &&
           read.vecElements.front().eType == eType;
}

}  // namespace

void CheckNames(const SCheckedDocument& document) {
    for (const SNamed& named : NAMED) {
        std::unordered_map<std::string, std::size_t> mapFirst;
        document.ForEach(named.pSection, named.pElement, [&](const CXMLView& element) {
            const std::string strName(element.Attribute(TagUtf8::NAME));
            if (strName.empty()) {
                return;
            }
            const auto [itFirst, bNew] = mapFirst.try_emplace(strName, element.Offset());
            if (!bNew) {
                document.diagnostics.Relate(
                    document.diagnostics.Add(ECode::DUPLICATE_NAME, document.Find(element, TagUtf8::NAME).iName,
                                             {named.pWords, Text::Quoted(strName)}),
                    itFirst->second, "the first one is here");
            } else if (named.eType != EElementType::UNKNOWN && !SurvivesText(named.eType, strName)) {
                document.diagnostics.Add(ECode::NAME_IN_TEXT, document.Find(element, TagUtf8::NAME).iName,
                                         {Text::Quoted(strName)});
            }
        });
    }
}
