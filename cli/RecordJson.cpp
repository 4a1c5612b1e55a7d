#include "cli/RecordJson.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "platform/xml/CXMLParser.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "templates/DLPTemplate.h"
#include "xml/Vocabulary.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char NAME[] = "name";
constexpr const char KEYWORDS[] = "keywords";
constexpr const char MATCH_RULES[] = "match_rules";

const char* OperationText(EOperator eOperator) {
    return eOperator == EOperator::UNKNOWN ? "" : OperatorText(eOperator);
}

Json KeywordsToJson(const CSettingsRow& row) {
    Json list = Json::array();
    for (const SKeyword& keyword : ReadKeywords(row)) {
        list.push_back({{"keyword", keyword.strKeyword},
                        {"description", keyword.strDescription},
                        {"score", keyword.iScore},
                        {"case_sensitive", keyword.bCaseSensitive}});
    }
    return list;
}

Json RulesToJson(const CSettingsRow& row) {
    Json list = Json::array();
    for (const SMatchRule& rule : ReadRules(row)) {
        Json blocks = Json::array();
        for (const SRuleElement& element : rule.vecElements) {
            blocks.push_back({{"source_type", ElementTypeText(element.eType)},
                              {"entity_hits", element.iCount},
                              {"source_name", OS::Utf8Lenient(element.strName)},
                              {"operation", OperationText(element.eOperator)}});
        }
        list.push_back({{"operation", OperationText(rule.eOperator)}, {"blocks", std::move(blocks)}});
    }
    return list;
}

[[noreturn]] void Refuse(const std::string& strPath, const std::string& strReason) {
    throw CToolError(EVerdict::INVALID, Text::Printable(strPath) + ": " + strReason);
}

std::int32_t ReadNumber(const Json& value, const std::string& strPath) {
    using Limits = std::numeric_limits<std::int32_t>;
    const bool bUnsigned = value.is_number_unsigned();
    const bool bFits = bUnsigned ? value.get<std::uint64_t>() <= static_cast<std::uint64_t>(Limits::max())
                                 : value.is_number_integer() && value.get<std::int64_t>() >= Limits::min();
    if (!bFits) {
        Refuse(strPath, "a whole number of 32 bits is needed here");
    }
    return value.get<std::int32_t>();
}

std::vector<std::string> ReadList(const Json& value, const std::string& strPath) {
    const auto fnIsText = [](const Json& text) { return text.is_string(); };
    if (!value.is_array() || !std::all_of(value.begin(), value.end(), fnIsText)) {
        Refuse(strPath, "a list of texts is needed here");
    }
    return value.get<std::vector<std::string>>();
}

void ColumnFromJson(const Json& value, EColumnType eType, std::size_t iColumn, const std::string& strPath,
                    CSettingsRow& row) {
    switch (eType) {
        case EColumnType::NUMBER:
            row.SetNumber(iColumn, ReadNumber(value, strPath));
            return;
        case EColumnType::FLAG:
            if (!value.is_boolean()) {
                Refuse(strPath, "true or false is needed here");
            }
            row.SetFlag(iColumn, value.get<bool>());
            return;
        case EColumnType::TEXT_LIST:
            row.SetList(iColumn, ReadList(value, strPath));
            return;
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            if (!value.is_string()) {
                Refuse(strPath, "a text is needed here");
            }
            row.SetText(iColumn, value.get<std::string>());
            return;
    }
}

/** The name is the element's; a document that says another one has been edited in one place only. */
CSettingsRow WithElementName(CSettingsRow&& row, const std::string& strPath) {
    const std::string strName = row.GetText(TemplateColumn::ELEMENT_NAME);
    const OS::x_wstring strElement = OS::WideText(row.GetText(TemplateColumn::ELEMENT));
    CCfgSettingDLPFilterTemplate record(std::move(row));
    record.SetElement(strElement);
    const std::string strElementName = record.Row().GetText(TemplateColumn::ELEMENT_NAME);
    if (strName != strElementName) {
        Refuse(strPath + '/' + NAME, "the element's name is " + Text::Quoted(strElementName) + "; write the same here");
    }
    return record.Row();
}

}  // namespace

SKeyword ReadKeyword(const CXMLView& element) {
    return {element.Text(), std::string(element.Attribute(TagUtf8::DESCRIPTION)),
            OS::TextToInt(element.Attribute(TagUtf8::SCORE)),
            OS::EqualsNoCase(element.Attribute(TagUtf8::CASE_SENSITIVE), Value::TRUE_TEXT)};
}

std::vector<SKeyword> ReadKeywords(const CSettingsRow& row) {
    std::vector<SKeyword> vecKeywords;
    CXMLParser document;
    if (!document.LoadUtf8(row.GetText(KeywordColumn::TEXT)) || document.RootView().Name() != TagUtf8::DICTIONARY) {
        return vecKeywords;
    }
    for (CXMLView view = document.RootView().FirstChild(TagUtf8::KEYWORD); view;
         view = view.NextSibling(TagUtf8::KEYWORD)) {
        vecKeywords.push_back(ReadKeyword(view));
    }
    return vecKeywords;
}

std::vector<SMatchRule> ReadRules(const CSettingsRow& row) {
    return CComplianceTemplates(OS::WideLenient(row.GetText(TemplateColumn::ELEMENT))).GetTemplate().vecRules;
}

Json ColumnToJson(const CSettingsRow& row, std::size_t iColumn) {
    switch (GetSettingsTable(row.GetKind()).pColumns[iColumn].eType) {
        case EColumnType::NUMBER:
            return row.GetNumber(iColumn);
        case EColumnType::FLAG:
            return row.GetFlag(iColumn);
        case EColumnType::TEXT_LIST:
            return row.GetList(iColumn);
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            break;
    }
    return row.GetText(iColumn);
}

Json RecordToJson(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    Json object = Json::object();
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        object[table.pColumns[i].pName] = ColumnToJson(row, i);
    }
    if (row.GetKind() == ESettingsKind::KEYWORD) {
        object[KEYWORDS] = KeywordsToJson(row);
    } else if (row.GetKind() == ESettingsKind::TEMPLATE) {
        object[MATCH_RULES] = RulesToJson(row);
    }
    return object;
}

CSettingsRow RecordFromJson(ESettingsKind eKind, const Json& object, const std::string& strPath) {
    if (!object.is_object()) {
        Refuse(strPath, "a record is needed here");
    }
    const STable& table = GetSettingsTable(eKind);
    CSettingsRow row(eKind);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        const SColumn& column = table.pColumns[i];
        const auto itValue = object.find(column.pName);
        if (itValue == object.end()) {
            Refuse(strPath, std::string("the field \"") + column.pName + "\" is missing");
        }
        ColumnFromJson(*itValue, column.eType, i, strPath + '/' + column.pName, row);
    }
    try {
        row.Validate();
    } catch (const OS::CException& error) {
        Refuse(strPath, Text::Printable(error.what()));
    }
    return eKind == ESettingsKind::TEMPLATE ? WithElementName(std::move(row), strPath) : row;
}
