#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/** How much a diagnostic weighs, the heaviest first. */
enum class ESeverity { ERROR, WARNING, NOTE };

/** What a check can find; a row of the table of codes each, in its order. */
enum class ECode {
    UNREADABLE,
    NOT_UTF8,
    NOT_XML,
    WRONG_ROOT,
    WRONG_LANGUAGE,
    NO_TEMPLATES,
    OLDER_LAYOUT,
    OLDER_SECTION,
    OLDER_BUILT_IN,
    OLDER_NAME_LOST,
    UNKNOWN_ELEMENT,
    MISPLACED_ELEMENT,
    UNKNOWN_ATTRIBUTE,
    MISPLACED_ATTRIBUTE,
    STRAY_TEXT,
    FOREIGN_RULE,
    CHILD_TWICE,
    LOST_ELEMENT,
    ODD_VERSION,
    NO_NAME,
    NO_DISPLAY_NAME,
    MISSING_CHILD,
    BUILT_IN,
    DUPLICATE_NAME,
    UNKNOWN_TYPE,
    UNCLEAR_FLAG,
    UNCLEAR_NUMBER,
    MIN_ABOVE_MAX,
    UNKNOWN_VALIDATOR,
    UNKNOWN_ASSET,
    SOURCE_TYPE,
    OPERATION,
    UNKNOWN_TEMPLATE,
    UNKNOWN_CATEGORY,
    UNUSED_ASSET,
    NAME_IN_TEXT,
    MISSING_OPERATION,
    FIRST_OPERATION,
    BLANK_IN_NAME,
    PATTERN_REFUSED,
    PATTERN_BACKTRACKS,
    PATTERN_EMPTY,
    PATTERN_UNTRIED,
    MISSING_NUMBER,
    SENSELESS_NUMBER,
    OTHER_SPELLING,
    SAME_PATTERN,
    LIST_EMPTY,
    KEYWORD_BLANK,
    KEYWORD_TWICE,
    THRESHOLD_UNREACHABLE,
    DISTANCE_OF_ONE,
    SCORES_ZERO,
    TEMPLATE_EMPTY,
    HITS_BELOW_ONE,
    SAME_TEMPLATE,
    RULE_POINTLESS,
    CATEGORY_TWICE,
    MIXED_OPERATIONS,
    SAME_DISPLAY_NAME,
    ALREADY_STORED,
    NOT_IN_DOCUMENT,
    IMPORT_FAILED,
    COUNT,
};

struct SCodeRow {
    ECode eCode;
    const char* pCode;  ///< stays with its meaning for ever
    ESeverity eSeverity;
    const char* pName;
    const char* pWhat;    ///< one sentence without its point; {} stands for what a diagnostic fills in
    const char* pAdvice;  ///< what to do
    const char* pMore;    ///< why it matters, for who asks
    const char* pBad;     ///< markup that gives it, or a description that begins with "("
    const char* pGood;    ///< markup that is near it and does not
};

/** @return a row's sentence with a text for each {} */
std::string FillSentence(std::string_view strSentence, const std::vector<std::string>& vecTexts);

/** In the order of ECode. */
std::span<const SCodeRow> GetCodeTable();
const SCodeRow& GetCodeRow(ECode eCode);
/** @param strCode a code or its name, in any case @return null when there is none */
const SCodeRow* FindCode(const std::string& strCode);
/** @return the code or name that is nearest, or where all are listed: how to go on after FindCode gave null */
std::string SuggestCode(const std::string& strCode);

/** @param strCode what --allow is given @throws CToolError (USAGE) when there is none, or it cannot be allowed */
ECode FindAllowed(const std::string& strCode);

/** @return "error", "warning" or "note" */
const char* GetSeverityName(ESeverity eSeverity);

/** @return whether the code says that the file is no document at all */
bool IsAboutNoDocument(ECode eCode);
/** @return whether the code says that a value is read as another one */
bool IsAboutValue(ECode eCode);
/** @return whether --fix replaces what such a code tells, or counts it as left */
bool IsFixable(ECode eCode);
