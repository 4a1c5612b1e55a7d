#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "api/CDLPSubKeyword.h"
#include "api/CDLPSubKeywordFormater.h"
#include "fuzz/Targets.h"
#include "platform/common/TextConversion.h"
#include "templates/CResultException.h"
#include "templates/MatchRule.h"
#include "templates/Pattern.h"
#include "templates/PatternMatcher.h"

namespace Fuzz {

namespace {

/** The text before the first end of line, and what follows it. */
std::pair<std::wstring, std::wstring> SplitFirstLine(std::string_view strData) {
    const std::wstring strText = OS::WideLenient(std::string(strData));
    const std::size_t iEnd = std::min(strText.find(L'\n'), strText.size());
    return {strText.substr(0, iEnd), strText.substr(std::min(iEnd + 1, strText.size()))};
}

void SearchAll(const CPattern& pattern, const std::wstring& strText) {
    CPatternMatcher matcher(pattern, strText);
    const std::uint64_t iBefore = CPatternMatcher::GetStepCount();
    for (std::size_t iStart = 0; iStart <= strText.size() && matcher.Search(iStart);) {
        const CPatternMatcher::SSpan match = matcher.GetMatch();
        Require(iStart <= match.iStart && match.iStart <= match.iEnd && match.iEnd <= strText.size(),
                "a match lies in the text");
        iStart = std::max(match.iEnd, iStart + 1);
    }
    const std::uint64_t iMost = 8 * (strText.size() + 1) * (pattern.GetSteps().size() + 1);
    Require(CPatternMatcher::GetStepCount() - iBefore <= iMost, "searching costs no more than text times pattern");
}

using Rule = std::pair<std::vector<OS::x_wstring>, std::vector<OS::x_wstring>>;

Rule Format(const SMatchRule& rule) {
    Rule texts;
    FormatMatchRules({rule}, texts.first, texts.second);
    return texts;
}

std::vector<std::tuple<std::wstring, std::wstring, std::wstring, std::wstring>> Values(
    const std::vector<CDLPSubKeyword>& vecKeywords) {
    std::vector<std::tuple<std::wstring, std::wstring, std::wstring, std::wstring>> vecValues;
    for (const CDLPSubKeyword& keyword : vecKeywords) {
        vecValues.emplace_back(keyword.m_strKeyword, keyword.m_strDescription, keyword.m_strScore,
                               keyword.m_strCaseSensitive);
    }
    std::sort(vecValues.begin(), vecValues.end());
    return vecValues;
}

}  // namespace

void Match(std::string_view strData) {
    const auto [strPattern, strText] = SplitFirstLine(strData);
    try {
        SearchAll(CPattern(strPattern), strText);
    } catch (const CResultException&) {
        // No pattern of the dialect.
    }
}

void ParseRule(std::string_view strData) {
    const auto [strOperator, strRule] = SplitFirstLine(strData);
    const SMatchRule rule = ParseMatchRule(strRule, strOperator);
    Require(!rule.vecElements.empty(), "a rule has an element");
    Require(rule.vecElements.front().eOperator == EOperator::UNKNOWN, "the first element has no operator");
    const Rule texts = Format(rule);
    Require(texts.first.size() == 1 && texts.second.size() == 1, "a rule has one text and one operator");
    Require(Format(ParseMatchRule(texts.first[0], texts.second[0])) == texts, "a rule's text is read as that rule");
}

void ParseSubKeywords(std::string_view strData) {
    std::vector<CDLPSubKeyword> vecKeywords;
    CDLPSubKeywordFormater::ToUIFormat(OS::WideLenient(std::string(strData)), vecKeywords);
    const OS::x_wstring strWritten = CDLPSubKeywordFormater::ToXmlFormat(vecKeywords);
    Require(!strWritten.empty(), "what was read can be written");
    std::vector<CDLPSubKeyword> vecReread;
    CDLPSubKeywordFormater::ToUIFormat(strWritten, vecReread);
    Require(Values(vecKeywords) == Values(vecReread), "keywords that are written are read as they were");
}

}  // namespace Fuzz
