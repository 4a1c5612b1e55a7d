#pragma once

#include <string>

#include "platform/common/CTime.h"

/**
 * Every tag and attribute name of the policy formats and the few fixed texts, each stated once: as wide text in Tag, as
 * UTF-8 in TagUtf8. Names are case-sensitive.
 */
#define DLP_VOCABULARY(ENTRY)                                        \
    /* relative path and XPaths of the element definitions */        \
    ENTRY(ELEMENT_FILE, "web\\xml\\DLP_Element.xml")                 \
    ENTRY(ELEMENT_PATTERNS, "//DLP_Elements/patterns/pattern")       \
    ENTRY(ELEMENT_KEYWORDS, "//DLP_Elements/keywords/keyword")       \
    /* starts the text of a newly made document */                   \
    ENTRY(DECLARATION, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>") \
    /* elements */                                                   \
    ENTRY(SA_POLICY, "SAPolicy")                                     \
    ENTRY(DIGITAL_ASSETS, "digitalAssets")                           \
    ENTRY(DICTIONARY, "dictionary")                                  \
    ENTRY(ENTITY, "entity")                                          \
    ENTRY(REGULAR_EXPRESSION, "regularExpression")                   \
    ENTRY(PATTERN_FOR_DISPLAY, "patternForDisplay")                  \
    ENTRY(EXAMPLES, "examples")                                      \
    ENTRY(ALPHABET_CHARSET, "alphabetCharset")                       \
    ENTRY(KEYWORD, "keyword")                                        \
    ENTRY(COMPLIANCE_TEMPLATES, "complianceTemplates")               \
    ENTRY(TEMPLATE, "template")                                      \
    ENTRY(MATCH_RULE, "matchRule")                                   \
    ENTRY(BUILDING_BLOCK, "buildingBlock")                           \
    ENTRY(INDUSTRIES, "industries")                                  \
    ENTRY(INDUSTRY, "industry")                                      \
    ENTRY(TEMPLATE_ID, "template_id")                                \
    ENTRY(REGIONS, "regions")                                        \
    ENTRY(REGION, "region")                                          \
    /* attributes */                                                 \
    ENTRY(TEMPLATE_VERSION, "template_version")                      \
    ENTRY(LOCALIZATION_LANGUAGE, "localization_language")            \
    ENTRY(COMMAND, "command")                                        \
    ENTRY(NAME, "name")                                              \
    ENTRY(VALIDATOR, "validator")                                    \
    ENTRY(TYPE, "type")                                              \
    ENTRY(DISPLAY_NAME, "display_name")                              \
    ENTRY(DESCRIPTION, "description")                                \
    ENTRY(PRE_DEFINED, "pre-defined")                                \
    ENTRY(SEVERITY, "severity")                                      \
    ENTRY(MIN_LENGTH, "minLength")                                   \
    ENTRY(MAX_LENGTH, "maxLength")                                   \
    ENTRY(SUFFIX_LENGTH, "suffixLength")                             \
    ENTRY(MIN_LEFT_RADIUS, "minLeftRadius")                          \
    ENTRY(MAX_LEFT_RADIUS, "maxLeftRadius")                          \
    ENTRY(MAX_RIGHT_RADIUS, "maxRightRadius")                        \
    ENTRY(CASE_SENSITIVE, "caseSensitive")                           \
    ENTRY(THRESHOLD, "threshold")                                    \
    ENTRY(NUMBER, "number")                                          \
    ENTRY(SCORE, "score")                                            \
    ENTRY(SOURCE_NAME, "sourceName")                                 \
    ENTRY(SOURCE_TYPE, "sourceType")                                 \
    ENTRY(ENTITY_HITS, "entityHits")                                 \
    ENTRY(OPERATION, "operation")

namespace Tag {
#define DLP_WIDE_ENTRY(name, text) inline const std::wstring name = L##text;
DLP_VOCABULARY(DLP_WIDE_ENTRY)
#undef DLP_WIDE_ENTRY
}  // namespace Tag

namespace TagUtf8 {
#define DLP_UTF8_ENTRY(name, text) inline constexpr const char name[] = text;
DLP_VOCABULARY(DLP_UTF8_ENTRY)
#undef DLP_UTF8_ENTRY
}  // namespace TagUtf8

/** Values that attributes take. */
namespace Value {
inline constexpr const char OVERWRITE[] = "overwrite";
inline constexpr const char MEDIUM[] = "medium";
inline constexpr const char TRUE_TEXT[] = "true";
inline constexpr const char FALSE_TEXT[] = "false";
}  // namespace Value

/** OLE automation date 0.0: 30 December 1899, 00:00:00. */
inline const OS::CTime OLE_DATE_ZERO = [] {
    OS::SSystemTime time;
    OS::VariantTimeToSystemTime(0.0, &time);
    return OS::CTime(time);
}();
