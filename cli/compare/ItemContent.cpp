#include "cli/compare/ItemContent.h"

#include <algorithm>
#include <set>

#include "cli/Kinds.h"
#include "cli/RecordJson.h"

namespace {

/** By kind: the columns that are not compared as they stand, the name because items are paired by it. */
const std::set<std::size_t> PASSED_OVER[SETTINGS_KINDS] = {
    {AssetColumn::SUBJECT, AssetColumn::NAME, AssetColumn::MODIFIED, AssetColumn::SCOPE},
    {AssetColumn::SUBJECT, AssetColumn::NAME, AssetColumn::MODIFIED, AssetColumn::SCOPE, KeywordColumn::TEXT},
    {TemplateColumn::SUBJECT, TemplateColumn::ELEMENT_NAME, TemplateColumn::SCOPE, TemplateColumn::ELEMENT},
};

/** With its length, so that no two sequences of values give the same text. */
void Append(std::string& strContent, const std::string& strValue) {
    strContent += std::to_string(strValue.size()) + ':' + strValue;
}

void AppendAll(std::string& strContent, const std::vector<std::string>& vecValues) {
    strContent += std::to_string(vecValues.size()) + '[';
    for (const std::string& strValue : vecValues) {
        Append(strContent, strValue);
    }
}

void AppendColumn(std::string& strContent, const CSettingsRow& row, std::size_t iColumn) {
    switch (GetSettingsTable(row.GetKind()).pColumns[iColumn].eType) {
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            Append(strContent, std::to_string(row.GetNumber(iColumn)));
            break;
        case EColumnType::TEXT_LIST: {
            const std::set<std::string> names(row.GetList(iColumn).begin(), row.GetList(iColumn).end());
            AppendAll(strContent, {names.begin(), names.end()});
            break;
        }
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            Append(strContent, row.GetText(iColumn));
            break;
    }
}

}  // namespace

bool IsCompared(ESettingsKind eKind, std::size_t iColumn) {
    return PASSED_OVER[static_cast<std::size_t>(eKind)].count(iColumn) == 0;
}

std::string MakeFieldContent(const CSettingsRow& row) {
    std::string strContent;
    for (std::size_t i = 0; i < GetSettingsTable(row.GetKind()).iColumns; ++i) {
        if (i != DISPLAY_NAME_COLUMN && IsCompared(row.GetKind(), i)) {
            AppendColumn(strContent, row, i);
        }
    }
    return strContent;
}

std::string MakeKeywordContent(const CSettingsRow& row) {
    std::vector<std::string> vecKeywords;
    for (const SKeyword& keyword : ReadKeywords(row)) {
        std::string& strKeyword = vecKeywords.emplace_back();
        Append(strKeyword, keyword.strKeyword);
        Append(strKeyword, keyword.strDescription);
        strKeyword += std::to_string(keyword.iScore) + (keyword.bCaseSensitive ? '=' : '~');
    }
    std::sort(vecKeywords.begin(), vecKeywords.end());
    std::string strContent;
    AppendAll(strContent, vecKeywords);
    return strContent;
}

std::string MakeRuleContent(const std::vector<std::string>& vecRules) {
    std::string strContent;
    AppendAll(strContent, vecRules);
    return strContent;
}
