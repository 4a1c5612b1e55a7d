#include "cli/RecordText.h"

#include <algorithm>

#include "cli/RecordJson.h"
#include "cli/Text.h"
#include "platform/common/TextConversion.h"

namespace {

/** Markup is for machines; people get what it says below the fields. */
bool IsMarkup(ESettingsKind eKind, std::size_t iColumn) {
    return (eKind == ESettingsKind::KEYWORD && iColumn == KeywordColumn::TEXT) ||
           (eKind == ESettingsKind::TEMPLATE && iColumn == TemplateColumn::ELEMENT);
}

std::string Join(const std::vector<std::string>& vecTexts) {
    std::string strJoined;
    for (const std::string& strText : vecTexts) {
        strJoined += (strJoined.empty() ? "" : ", ") + strText;
    }
    return strJoined;
}

std::string ToCell(const CSettingsRow& row, EColumnType eType, std::size_t iColumn) {
    switch (eType) {
        case EColumnType::NUMBER:
            return std::to_string(row.GetNumber(iColumn));
        case EColumnType::FLAG:
            return Text::YesNo(row.GetFlag(iColumn));
        case EColumnType::TEXT_LIST:
            return Join(row.GetList(iColumn));
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            break;
    }
    return row.GetText(iColumn);
}

}  // namespace

std::string MakeFieldTable(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    CTextTable fields;
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (!IsMarkup(row.GetKind(), i)) {
            fields.Add({table.pColumns[i].pName, ToCell(row, table.pColumns[i].eType, i)});
        }
    }
    return fields.ToString();
}

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
