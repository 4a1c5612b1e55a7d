#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/compare/RefsReport.h"

namespace {

constexpr SCommandHelp HELP = {
    "refs",
    "refs [POLICY] [--KIND NAME]…",
    "show which templates use which assets",
    "POLICY is a FILE (- for standard input), the word store for the store of --store (that is also meant when none\n"
    "is given), or another store's URL, which is only read. Names narrow it down: --template to all that these\n"
    "templates need, --expression and --keyword to who uses these assets. Exit code 1: a template refers to what\n"
    "the policy does not hold, or with --unused there is such an asset.\n",
    "  dlpctl refs\n"
    "  dlpctl refs policy.xml --unused\n"
    "  dlpctl --json refs --template card-data\n"
    "  dlpctl refs policy.xml --dot\n",
    "dlpctl-refs/1",
};

struct SArguments {
    std::string strPlace;
    SRefsChoice choice;
    bool bGraph = false;
};

constexpr const char NAMED[] = "; an item is named by --template, --expression or --keyword NAME";
constexpr const char NONE[] = "There is nothing to show.";

/** A name where a policy belongs is taken for a file that is not there. */
SPolicy Read(CCommandContext& context, const std::string& strPlace) {
    try {
        return ReadPolicyOf(context, strPlace);
    } catch (const CInputError& error) {
        std::error_code code;
        if (std::filesystem::exists(context.GetAbsolute(strPlace), code)) {
            throw;
        }
        throw CInputError(strPlace, error.GetReason() + NAMED);
    }
}

EVerdict Show(CCommandContext& context, const SArguments& arguments) {
    if (arguments.bGraph && context.IsJson()) {
        throw CToolError(EVerdict::USAGE, "write either --json or --dot, not both");
    }
    const SPolicy policy = Read(context, arguments.strPlace.empty() ? STORE_WORD : arguments.strPlace);
    WarnOfLeftOut(context, policy);
    const SRefsReport report = MakeRefsReport(policy, arguments.choice);
    if (context.IsJson()) {
        context.WriteJson(MakeRefsJson(report, HELP.pFormat));
        return report.GetVerdict();
    }
    context.Write(arguments.bGraph ? MakeRefsGraph(report) : MakeRefsText(report, context.GetDataWidth()));
    context.Flush();
    if (report.chosen.mapAssets.empty()) {
        context.Note(NONE);
    }
    return report.GetVerdict();
}

}  // namespace

void AddRefsCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP,
                                        [pArguments](CCommandContext& context) { return Show(context, *pArguments); });
    CCommandLine::AddText(command, "POLICY", "POLICY", pArguments->strPlace, "where to look");
    CCommandLine::AddTexts(command, "--template", "NAME", pArguments->choice.vecTemplates, "what this one needs");
    CCommandLine::AddTexts(command, "--expression", "NAME", pArguments->choice.vecExpressions, "who uses this one");
    CCommandLine::AddTexts(command, "--keyword", "NAME", pArguments->choice.vecKeywords, "who uses this one");
    CCommandLine::AddFlag(command, "--unused", pArguments->choice.bUnused, "only assets that no template uses");
    CCommandLine::AddFlag(command, "--dot", pArguments->bGraph, "a graph for Graphviz");
}
