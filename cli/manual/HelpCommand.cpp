#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/manual/ManualCommands.h"

namespace {

constexpr SCommandHelp HELP = {
    "help",
    "help [COMMAND…]",
    "show the help of the tool or of a command",
    "The same as --help. dlpctl manual has the whole pages.\n",
    "  dlpctl help\n"
    "  dlpctl help check\n"
    "  dlpctl help store dump\n",
    "dlpctl-help/1",
};

EVerdict Show(CCommandContext& context, const std::string& strHelp) {
    if (context.IsJson()) {
        context.WriteJson({{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}, {"help", strHelp}});
    } else {
        context.Write(strHelp);
    }
    return EVerdict::DONE;
}

}  // namespace

void AddHelpCommand(CCommandLine& line) {
    const auto pWords = std::make_shared<std::vector<std::string>>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [&line, pWords](CCommandContext& context) {
        return Show(context, line.GetHelp(*pWords));
    });
    CCommandLine::AddTexts(command, "COMMAND", "COMMAND", *pWords, "which command");
}
