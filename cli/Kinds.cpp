#include "cli/Kinds.h"

#include "cli/Text.h"
#include "cli/Verdict.h"
#include "settings/CSubjectID.h"

const SKind KINDS[SETTINGS_KINDS] = {
    {ESettingsKind::EXPRESSION, "expression", "expressions", "expressions", "expression", "expressions",
     SUBJECT_EXPRESSION},
    {ESettingsKind::KEYWORD, "keyword", "keywords", "keyword_lists", "keyword list", "keyword lists", SUBJECT_KEYWORD},
    {ESettingsKind::TEMPLATE, "template", "templates", "templates", "template", "templates", SUBJECT_TEMPLATE},
};

const SKind& FindKind(const std::string& strWord) {
    for (const SKind& kind : KINDS) {
        if (strWord == kind.pSingular || strWord == kind.pPlural) {
            return kind;
        }
    }
    throw CToolError(EVerdict::USAGE,
                     "there is no kind " + Text::Quoted(strWord) + "; write templates, expressions or keywords");
}
