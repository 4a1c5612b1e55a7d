#include "cli/RecordText.h"

#include <algorithm>

#include "cli/RecordJson.h"
#include "cli/Text.h"
#include "platform/common/TextConversion.h"

std::string MakeKeywordTable(const CSettingsRow& row) {
    CTextTable keywords({"KEYWORD", "SCORE", "CASE", "DESCRIPTION"});
    for (const SKeyword& keyword : ReadKeywords(row)) {
        keywords.Add({keyword.strKeyword, std::to_string(keyword.iScore), Text::YesNo(keyword.bCaseSensitive),
                      keyword.strDescription});
    }
    return keywords.ToString();
}

std::vector<std::string> MakeRuleLines(const std::vector<SMatchRule>& vecRules) {
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules(vecRules, vecTexts, vecOperators);
    std::vector<std::string> vecLines;
    for (std::size_t i = 0; i < vecTexts.size(); ++i) {
        std::replace(vecTexts[i].begin(), vecTexts[i].end(), L'\t', L' ');
        const EOperator eOperator = vecRules[i].eOperator;
        const std::string strOperator =
            eOperator == EOperator::UNKNOWN ? "" : OperatorText(eOperator) + std::string(" ");
        vecLines.push_back(strOperator + OS::Utf8Lenient(vecTexts[i]));
    }
    return vecLines;
}
