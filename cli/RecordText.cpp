#include "cli/RecordText.h"

#include <utility>

#include "cli/RecordJson.h"
#include "cli/Text.h"
#include "cli/compare/RuleText.h"

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

std::string Prefix(EOperator eOperator) {
    return eOperator == EOperator::UNKNOWN ? std::string() : OperatorText(eOperator) + std::string(" ");
}

}  // namespace

std::string MakeFieldTable(const CSettingsRow& row, std::size_t iWidth) {
    const STable& table = GetSettingsTable(row.GetKind());
    CTextTable fields;
    fields.WrapLast();
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (!IsMarkup(row.GetKind(), i)) {
            fields.Add({table.pColumns[i].pName, ToCell(row, table.pColumns[i].eType, i)});
        }
    }
    return fields.ToString(iWidth);
}

std::string MakeKeywordTable(const CSettingsRow& row, std::size_t iWidth) {
    CTextTable keywords({"KEYWORD", "SCORE", "CASE", "DESCRIPTION"});
    keywords.WrapLast();
    for (const SKeyword& keyword : ReadKeywords(row)) {
        keywords.Add({keyword.strKeyword, std::to_string(keyword.iScore), Text::YesNo(keyword.bCaseSensitive),
                      keyword.strDescription});
    }
    return keywords.ToString(iWidth);
}

std::string MakeRuleText(const SMatchRule& rule) {
    std::string strText;
    for (const SRuleElement& element : rule.vecElements) {
        strText += &element == &rule.vecElements.front() ? "" : ' ' + Prefix(element.eOperator);
        strText += FormatCondition({element.eType, element.strName, element.iCount});
    }
    return strText;
}

std::vector<std::string> MakeRuleLines(const std::vector<SMatchRule>& vecRules) {
    std::vector<std::string> vecLines;
    for (const SMatchRule& rule : vecRules) {
        vecLines.push_back(Prefix(rule.eOperator) + MakeRuleText(rule));
    }
    return vecLines;
}
