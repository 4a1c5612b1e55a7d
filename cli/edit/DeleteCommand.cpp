#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/Referrers.h"
#include "cli/edit/StoreEdit.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "delete",
    "delete template|expression|keyword NAME",
    "delete one record",
    "NAME is the internal name. What templates refer to, and what is built in, is not deleted (exit code 1) unless\n"
    "--force says so.\n",
    "  dlpctl delete template card-data\n"
    "  dlpctl delete expression old-card --dry-run\n"
    "  dlpctl --json delete keyword card-words --force\n",
    "dlpctl-delete/1",
};

constexpr const char FORCE[] = "; --force deletes it all the same";

struct SArguments {
    std::string strKind;
    std::string strName;
    SEditOptions options;
    bool bForce = false;
};

std::vector<std::string> GetNames(const std::vector<CSettingsRow>& vecRows) {
    std::vector<std::string> vecNames;
    std::transform(vecRows.begin(), vecRows.end(), std::back_inserter(vecNames),
                   [](const CSettingsRow& row) { return row.GetText(NAME_COLUMN); });
    return vecNames;
}

std::string Quote(const std::vector<std::string>& vecNames) {
    std::string strQuoted;
    for (const std::string& strName : vecNames) {
        strQuoted += (strQuoted.empty() ? "" : ", ") + Text::Quoted(strName);
    }
    return strQuoted;
}

/** @return why the record is not deleted without force; empty when nothing is against it */
std::string FindObjection(const CSettingsRow& row, const std::vector<std::string>& vecUsers) {
    const std::string strCalled = Called(GetKind(row.GetKind()), row.GetText(NAME_COLUMN));
    if (!vecUsers.empty()) {
        return strCalled + " is in use: " + (vecUsers.size() == 1 ? "template " : "templates ") + Quote(vecUsers) +
               (vecUsers.size() == 1 ? " refers" : " refer") + " to it";
    }
    return IsBuiltIn(row) ? strCalled + " is built in" : std::string();
}

EVerdict Refuse(CCommandContext& context, Json&& members, const std::string& strWhy) {
    context.Error(strWhy);
    if (context.IsJson()) {
        Json answer = {{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::FINDINGS)}};
        answer.update(members);
        answer["message"] = strWhy;
        context.WriteJson(answer);
    }
    return EVerdict::FINDINGS;
}

EVerdict Delete(CCommandContext& context, const SArguments& arguments) {
    const SKind& kind = FindKind(arguments.strKind);
    CStoreEdit edit(context, HELP.pFormat, arguments.options);
    const CSettingsRow row = ReadStored(kind, arguments.strName);
    const std::vector<std::string> vecUsers = GetNames(FindReferrers(kind.eKind, arguments.strName));
    Json members = {{"kind", kind.pSingular}, {"name", arguments.strName}, {"used_by", vecUsers}};
    const std::string strObjection = FindObjection(row, vecUsers);
    if (!strObjection.empty() && !arguments.bForce) {
        return Refuse(context, std::move(members), strObjection + FORCE);
    }
    if (!strObjection.empty()) {
        edit.Warn(strObjection);
    }
    CSettingsStore::Current().Remove(kind.eKind, row.GetSubject());
    return edit.Finish(members, "- " + Called(kind, arguments.strName) + '\n');
}

}  // namespace

void AddDeleteCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pArguments](CCommandContext& context) { return Delete(context, *pArguments); });
    CCommandLine::AddText(command, "KIND", "KIND", pArguments->strKind, "what to delete")->required();
    CCommandLine::AddText(command, "NAME", "NAME", pArguments->strName, "its internal name")->required();
    CCommandLine::AddFlag(command, "--force", pArguments->bForce, "also what is referred to or built in");
    AddEditOptions(command, pArguments->options);
}
