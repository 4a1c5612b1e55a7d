#include "cli/Kinds.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "cli/Text.h"
#include "cli/Verdict.h"
#include "settings/CSubjectID.h"
#include "xml/Vocabulary.h"

const SKind KINDS[SETTINGS_KINDS] = {
    {ESettingsKind::EXPRESSION, "expression", "expressions", "expressions", "expression", "expressions",
     SUBJECT_EXPRESSION},
    {ESettingsKind::KEYWORD, "keyword", "keywords", "keyword_lists", "keyword list", "keyword lists", SUBJECT_KEYWORD},
    {ESettingsKind::TEMPLATE, "template", "templates", "templates", "template", "templates", SUBJECT_TEMPLATE},
};

namespace {

constexpr const char KIND_WORDS[] = "; write template, expression or keyword";

/** Elements of documents, which are called otherwise there. */
struct SElementWord {
    std::string_view strElement;
    ESettingsKind eKind;
};
constexpr SElementWord ELEMENT_WORDS[] = {{TagUtf8::ENTITY, ESettingsKind::EXPRESSION},
                                          {TagUtf8::DICTIONARY, ESettingsKind::KEYWORD}};

}  // namespace

const SKind& FindKind(const std::string& strWord) {
    for (const SKind& kind : KINDS) {
        if (strWord == kind.pSingular || strWord == kind.pPlural) {
            return kind;
        }
    }
    const auto* pElement = std::find_if(std::begin(ELEMENT_WORDS), std::end(ELEMENT_WORDS),
                                        [&](const SElementWord& word) { return strWord == word.strElement; });
    throw CToolError(EVerdict::USAGE,
                     "there is no kind " + Text::Quoted(strWord) +
                         (pElement == std::end(ELEMENT_WORDS)
                              ? KIND_WORDS
                              : std::string("; here it is called ") + GetKind(pElement->eKind).pSingular));
}
