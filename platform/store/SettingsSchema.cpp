#include "platform/store/SettingsSchema.h"

#include <iterator>

namespace {

using enum EColumnType;

constexpr SColumn EXPRESSION_COLUMNS[] = {
    {"subject", TEXT, false},
    {"name", TEXT, true},
    {"display_name", TEXT, false},
    {"description", TEXT, false},
    {"pre_defined", FLAG, false},
    {"modified", FLAG, false},
    {"scope", TEXT, false},
    {"type", TEXT, false},
    {"validator", TEXT, false},
    {"case_sensitive", FLAG, false},
    {"min_length", NUMBER, false},
    {"max_length", NUMBER, false},
    {"suffix_length", NUMBER, false},
    {"min_left_radius", NUMBER, false},
    {"max_left_radius", NUMBER, false},
    {"max_right_radius", NUMBER, false},
    {"pattern", TEXT, false},
    {"alphabet_charset", TEXT, false},
    {"display_format", TEXT, false},
    {"example", TEXT, false},
};

constexpr SColumn KEYWORD_COLUMNS[] = {
    {"subject", TEXT, false},     {"name", TEXT, true},         {"display_name", TEXT, false},
    {"description", TEXT, false}, {"pre_defined", FLAG, false}, {"modified", FLAG, false},
    {"scope", TEXT, false},       {"condition", TEXT, false},   {"threshold", NUMBER, false},
    {"number", NUMBER, false},    {"text", TEXT, false},
};

constexpr SColumn TEMPLATE_COLUMNS[] = {
    {"subject", TEXT, false},         {"name", NULLABLE_TEXT, true}, {"display_name", TEXT, true},
    {"description", TEXT, false},     {"pre_defined", FLAG, false},  {"scope", TEXT, false},
    {"industries", TEXT_LIST, false}, {"regions", TEXT_LIST, false}, {"element", TEXT, false},
};

static_assert(std::size(EXPRESSION_COLUMNS) == ExpressionColumn::COUNT);
static_assert(std::size(KEYWORD_COLUMNS) == KeywordColumn::COUNT);
static_assert(std::size(TEMPLATE_COLUMNS) == TemplateColumn::COUNT);

constexpr STable TABLES[] = {
    {ESettingsKind::EXPRESSION, "expressions", EXPRESSION_COLUMNS, ExpressionColumn::COUNT},
    {ESettingsKind::KEYWORD, "keyword_lists", KEYWORD_COLUMNS, KeywordColumn::COUNT},
    {ESettingsKind::TEMPLATE, "templates", TEMPLATE_COLUMNS, TemplateColumn::COUNT},
};
static_assert(std::size(TABLES) == SETTINGS_KINDS);

}  // namespace

const STable& GetSettingsTable(ESettingsKind eKind) noexcept {
    return TABLES[static_cast<std::size_t>(eKind)];
}
