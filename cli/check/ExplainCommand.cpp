#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Text.h"
#include "cli/check/DiagnosticsPage.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "explain",
    "explain [CODE…]",
    "say more about the codes of a check",
    "CODE is one like DLP030, its number alone (30), or its name. Without one all are listed.\n",
    "  dlpctl explain\n"
    "  dlpctl explain DLP030\n"
    "  dlpctl explain unknown-asset pattern-backtracks\n",
    "dlpctl-explain/1",
};

struct SArguments {
    std::vector<std::string> vecCodes;
    bool bMarkdown = false;
};

std::vector<const SCodeRow*> FindRows(const std::vector<std::string>& vecCodes) {
    std::vector<const SCodeRow*> vecRows;
    for (const std::string& strCode : vecCodes) {
        vecRows.push_back(FindCode(strCode));
        if (vecRows.back() == nullptr) {
            throw CToolError(EVerdict::USAGE,
                             "there is no code " + Text::Quoted(strCode) + "; " + SuggestCode(strCode));
        }
    }
    for (const SCodeRow& row : GetCodeTable()) {
        if (vecCodes.empty()) {
            vecRows.push_back(&row);
        }
    }
    return vecRows;
}

Json ToJson(const SCodeRow& row) {
    return {{"code", row.pCode},       {"name", row.pName},        {"severity", GetSeverityName(row.eSeverity)},
            {"what", row.pWhat},       {"advice", row.pAdvice},    {"explanation", row.pMore},
            {"bad_example", row.pBad}, {"good_example", row.pGood}};
}

std::string MakeList(const std::vector<const SCodeRow*>& vecRows, std::size_t iWidth) {
    CTextTable table({"CODE", "LEVEL", "NAME", "WHAT"});
    table.WrapLast();
    for (const SCodeRow* pRow : vecRows) {
        table.Add({pRow->pCode, GetSeverityName(pRow->eSeverity), pRow->pName, WithBlanks(pRow->pWhat)});
    }
    return table.ToString(iWidth);
}

EVerdict Explain(CCommandContext& context, const SArguments& arguments) {
    const std::vector<const SCodeRow*> vecRows = FindRows(arguments.vecCodes);
    if (context.IsJson()) {
        Json codes = Json::array();
        for (const SCodeRow* pRow : vecRows) {
            codes.push_back(ToJson(*pRow));
        }
        context.WriteJson(
            {{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}, {"codes", std::move(codes)}});
    } else if (arguments.bMarkdown) {
        context.Write(MakeDiagnosticsPage());
    } else if (arguments.vecCodes.empty()) {
        context.Write(MakeList(vecRows, context.GetDataWidth()));
    } else {
        for (const SCodeRow* pRow : vecRows) {
            context.Write((pRow == vecRows.front() ? "" : "\n") + MakeExplanation(*pRow));
        }
    }
    return EVerdict::DONE;
}

}  // namespace

void AddExplainCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pArguments](CCommandContext& context) { return Explain(context, *pArguments); });
    CCommandLine::AddTexts(command, "CODE", "CODE", pArguments->vecCodes, "codes or their names");
    CCommandLine::AddFlag(command, "--markdown", pArguments->bMarkdown, "all of them as a page, docs/diagnostics.md");
}
