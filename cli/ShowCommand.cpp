#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Kinds.h"
#include "cli/RecordJson.h"
#include "cli/RecordText.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "platform/store/CSettingsStore.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "show",
    "show template|expression|keyword NAME",
    "show one record with all it holds",
    "NAME is the internal name, the first column of dlpctl list. Rules read as P:expression(hits) and K:keyword "
    "list.\n",
    "  dlpctl show template payment-cards\n"
    "  dlpctl --json show keyword payment-card-words\n",
    "dlpctl-show/1",
};

std::string MakeRules(const CSettingsRow& row, std::size_t iWidth) {
    CTextTable rules({"OPERATOR", "RULE"});
    rules.WrapLast();
    for (const SMatchRule& rule : ReadRules(row)) {
        rules.Add({rule.eOperator == EOperator::UNKNOWN ? "" : OperatorText(rule.eOperator), MakeRuleText(rule)});
    }
    return '\n' + rules.ToString(iWidth);
}

std::string MakeText(const CSettingsRow& row, std::size_t iWidth) {
    switch (row.GetKind()) {
        case ESettingsKind::KEYWORD:
            return MakeFieldTable(row, iWidth) + '\n' + MakeKeywordTable(row, iWidth);
        case ESettingsKind::TEMPLATE:
            return MakeFieldTable(row, iWidth) + MakeRules(row, iWidth);
        case ESettingsKind::EXPRESSION:
            break;
    }
    return MakeFieldTable(row, iWidth);
}

EVerdict Show(CCommandContext& context, const std::string& strKind, const std::string& strName) {
    const SKind& kind = FindKind(strKind);
    const CStoreSession& store = context.GetStoreToRead();
    CSettingsTransaction unit(EUnitOfWork::READ);
    const CSettingsRow row = ReadStored(kind, strName);
    store.ThrowIfFailed();
    unit.Commit();
    if (context.IsJson()) {
        context.WriteJson({{"format", HELP.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"kind", kind.pSingular},
                           {"record", RecordToJson(row)}});
    } else {
        context.Write(MakeText(row, context.GetDataWidth()));
    }
    return EVerdict::DONE;
}

struct SArguments {
    std::string strKind;
    std::string strName;
};

}  // namespace

void AddShowCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [pArguments](CCommandContext& context) {
        return Show(context, pArguments->strKind, pArguments->strName);
    });
    CCommandLine::AddText(command, "KIND", "KIND", pArguments->strKind, "what to show")->required();
    CCommandLine::AddText(command, "NAME", "NAME", pArguments->strName, "its internal name")->required();
}
