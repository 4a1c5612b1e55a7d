#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/Progress.h"
#include "cli/compare/DiffReport.h"

namespace {

constexpr SCommandHelp HELP = {
    "diff",
    "diff A B",
    "compare two policies by what they mean",
    "A policy is a FILE (- for standard input), the word store for the store of --store, or another store's URL,\n"
    "which is only read. A file of the older layout is converted first, as import does. Items are paired by their\n"
    "internal names; one of another name with the same content was renamed. Rules are compared by what they match:\n"
    "same, reordered, stricter, looser, different, or unknown with more than 16 conditions. Order, indentation and\n"
    "defaults make no difference. Exit code 1: they differ.\n",
    "  dlpctl diff policy.xml store\n"
    "  dlpctl diff sqlite:yesterday.db store\n"
    "  dlpctl --json diff old.xml new.xml\n",
    "dlpctl-diff/1",
};

struct SArguments {
    std::string strBefore;
    std::string strAfter;
};

std::vector<SItemChange> Compare(CCommandContext& context, const SPolicy& before, const SPolicy& after) {
    const CProgress progress(context, HELP.pName);
    return ComparePolicies(before, after);
}

EVerdict Diff(CCommandContext& context, const SArguments& arguments) {
    RequireOneInput({arguments.strBefore, arguments.strAfter});
    const SPolicy before = ReadPolicyOf(context, arguments.strBefore);
    const SPolicy after = ReadPolicyOf(context, arguments.strAfter);
    const SDiffReport report{before, after, Compare(context, before, after)};
    WarnOfLeftOut(context, before);
    WarnOfLeftOut(context, after);
    if (context.IsJson()) {
        context.WriteJson(MakeDiffJson(report, HELP.pFormat));
        return report.GetVerdict();
    }
    for (const SItemChange& change : report.vecChanges) {
        context.Write(MakeChangeText(change, context.ColoursData()));
    }
    context.Flush();
    context.Note(MakeDiffSummary(report));
    return report.GetVerdict();
}

}  // namespace

void AddDiffCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP,
                                        [pArguments](CCommandContext& context) { return Diff(context, *pArguments); });
    CCommandLine::AddText(command, "A", "A", pArguments->strBefore, "the policy as it was")->required();
    CCommandLine::AddText(command, "B", "B", pArguments->strAfter, "the policy as it is")->required();
}
