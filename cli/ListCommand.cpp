#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Kinds.h"
#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "platform/store/CSettingsStore.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "list",
    "list templates|expressions|keywords",
    "list what the store holds",
    "One line per record, in the order of the store, which is also that of export --all.\n",
    "  dlpctl list templates\n"
    "  dlpctl --json list expressions\n",
    "dlpctl-list/1",
};

/** One column of a list: a column of the table, or something that is counted. */
struct SListColumn {
    const char* pHead;
    const char* pKey;
    Json (*fnRead)(const CSettingsRow& row);
};

template <std::size_t COLUMN>
Json ReadText(const CSettingsRow& row) {
    return row.GetText(COLUMN);
}

template <std::size_t COLUMN>
Json ReadFlag(const CSettingsRow& row) {
    return row.GetFlag(COLUMN);
}

Json CountKeywords(const CSettingsRow& row) {
    return ReadKeywords(row).size();
}
Json CountRules(const CSettingsRow& row) {
    return ReadRules(row).size();
}

const std::vector<SListColumn>& GetColumns(ESettingsKind eKind) {
    static const SListColumn s_name = {"NAME", "name", ReadText<NAME_COLUMN>};
    static const SListColumn s_display = {"DISPLAY NAME", "display_name", ReadText<DISPLAY_NAME_COLUMN>};
    static const std::vector<SListColumn> s_aColumns[SETTINGS_KINDS] = {
        {s_name,
         s_display,
         {"BUILT-IN", "pre_defined", ReadFlag<AssetColumn::PRE_DEFINED>},
         {"TYPE", "type", ReadText<ExpressionColumn::TYPE>},
         {"VALIDATOR", "validator", ReadText<ExpressionColumn::VALIDATOR>}},
        {s_name,
         s_display,
         {"BUILT-IN", "pre_defined", ReadFlag<AssetColumn::PRE_DEFINED>},
         {"CONDITION", "condition", ReadText<KeywordColumn::CONDITION>},
         {"KEYWORDS", "keyword_count", CountKeywords}},
        {s_name,
         s_display,
         {"BUILT-IN", "pre_defined", ReadFlag<TemplateColumn::PRE_DEFINED>},
         {"RULES", "rule_count", CountRules}},
    };
    return s_aColumns[static_cast<std::size_t>(eKind)];
}

std::string ToCell(const Json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    return value.is_boolean() ? Text::YesNo(value.get<bool>()) : value.dump();
}

std::vector<Json> ReadItems(ESettingsKind eKind) {
    std::vector<Json> vecItems;
    CSettingsTransaction unit(EUnitOfWork::READ);
    CSettingsStore::Current().ReadAll(eKind, [&](CSettingsRow&& row) {
        Signals::ThrowIfCaught();
        Json item = Json::object();
        for (const SListColumn& column : GetColumns(eKind)) {
            item[column.pKey] = column.fnRead(row);
        }
        vecItems.push_back(std::move(item));
    });
    unit.Commit();
    return vecItems;
}

std::string MakeTable(ESettingsKind eKind, const std::vector<Json>& vecItems, std::size_t iWidth) {
    std::vector<std::string> vecHeads;
    for (const SListColumn& column : GetColumns(eKind)) {
        vecHeads.emplace_back(column.pHead);
    }
    CTextTable table(vecHeads);
    for (const Json& item : vecItems) {
        std::vector<std::string> vecCells;
        for (const Json& value : item) {
            vecCells.push_back(ToCell(value));
        }
        table.Add(vecCells);
    }
    return table.ToString(iWidth);
}

EVerdict List(CCommandContext& context, const std::string& strKind) {
    const SKind& kind = FindKind(strKind);
    const CStoreSession& store = context.GetStoreToRead();
    const std::vector<Json> vecItems = ReadItems(kind.eKind);
    store.ThrowIfFailed();
    if (context.IsJson()) {
        context.WriteJson({{"format", HELP.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"kind", kind.pSingular},
                           {"items", vecItems}});
    } else if (vecItems.empty()) {
        context.Note(std::string("The store holds no ") + kind.pWords + "; dlpctl import FILE reads a policy into it.");
    } else {
        context.Write(MakeTable(kind.eKind, vecItems, context.GetDataWidth()));
    }
    return EVerdict::DONE;
}

}  // namespace

void AddListCommand(CCommandLine& line) {
    const auto pKind = std::make_shared<std::string>();
    CLI::App& command =
        line.AddCommand(line.GetTop(), HELP, [pKind](CCommandContext& context) { return List(context, *pKind); });
    CCommandLine::AddText(command, "KIND", "KIND", *pKind, "what to list")->required();
}
