#include "cli/Tool.h"

#include <algorithm>
#include <chrono>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Signals.h"
#include "cli/Verdict.h"
#include "cli/configuration/ConfigCommand.h"
#include "cli/configuration/Configuration.h"
#include "cli/manual/ManualCommands.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char VERSION_FORMAT[] = "dlpctl-version/1";
constexpr const char HELP_FORMAT[] = "dlpctl-help/1";

/** In the order of the help. */
constexpr void (*ADD_COMMANDS[])(CCommandLine&) = {
    AddImportCommand,  AddExportCommand,    AddAssetCommands,    AddListCommand,        AddShowCommand,
    AddDiffCommand,    AddRefsCommand,      AddCheckCommand,     AddExplainCommand,     AddFmtCommand,
    AddConvertCommand, AddTemplateCommands, AddKeywordsCommands, AddExpressionCommands, AddRenameCommand,
    AddDeleteCommand,  AddMetadataCommand,  AddStoreCommands,
};

void CheckArguments(const std::vector<std::string>& vecArguments) {
    for (std::size_t i = 0; i < vecArguments.size(); ++i) {
        if (OS::FindInvalidUtf8(vecArguments[i]) != std::string::npos) {
            throw CToolError(EVerdict::USAGE, "argument " + std::to_string(i + 1) + " is not UTF-8");
        }
    }
}

EVerdict Show(CCommandContext& context, const CCommandLine::SParsed& parsed) {
    if (context.IsJson()) {
        context.WriteJson({{"format", parsed.bVersion ? VERSION_FORMAT : HELP_FORMAT},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {parsed.bVersion ? "version" : "help", parsed.strShow}});
    } else {
        context.Write(parsed.bVersion ? "dlpctl " + parsed.strShow + '\n' : parsed.strShow);
    }
    return EVerdict::DONE;
}

/** Options set elsewhere count for the answer to a command line that cannot be read as well. */
CCommandLine::SParsed Parse(const std::vector<std::string>& vecArguments, CCommandLine& line,
                            CConfiguration& configuration, CCommandContext& context) {
    try {
        CheckArguments(vecArguments);
        return line.Parse(vecArguments);
    } catch (const CToolError&) {
        try {
            configuration.Apply(context);
        } catch (const CToolError&) {
            // The first fault is the one to tell.
        }
        throw;
    }
}

EVerdict Run(const std::vector<std::string>& vecArguments, CCommandLine& line, CConfiguration& configuration,
             CCommandContext& context) {
    const CCommandLine::SParsed parsed = Parse(vecArguments, line, configuration, context);
    if (!parsed.fnRun) {
        return Show(context, parsed);
    }
    configuration.Apply(context);
    CConfiguration::WarnOfUnread(context);
    try {
        context.Prepare();
        return parsed.fnRun(context);
    } catch (const CToolError& error) {
        if (error.GetVerdict() != EVerdict::USAGE) {
            throw;
        }
        throw CToolError(EVerdict::USAGE, configuration.Explain(error.what()));
    }
}

/** A failure to say so cannot be told to anyone. */
EVerdict Tell(CCommandContext& context, const char* pFormat, const CToolError& error) {
    try {
        context.Fail(pFormat, error);
    } catch (const CToolError&) {
        return EVerdict::OUTPUT;
    }
    return error.GetVerdict();
}

}  // namespace

int RunTool(const std::vector<std::string>& vecArguments, std::istream& in, std::ostream& out, std::ostream& err) {
    CCommandContext context(in, out, err);
    CSettingsStore::SetWaitEnder(Signals::IsCaught);
    // Read before the rest, so that a command line that cannot be read is answered in the form that was asked for.
    context.Options().bJson = std::find(vecArguments.begin(), vecArguments.end(), "--json") != vecArguments.end();
    CCommandLine line(context.Options(), context.GetDataWidth());
    for (const auto fnAdd : ADD_COMMANDS) {
        fnAdd(line);
    }
    CConfiguration configuration(line);
    AddConfigCommand(line, configuration);
    AddCompletionCommand(line);
    AddManualCommand(line);
    AddHelpCommand(line);
    const auto start = std::chrono::steady_clock::now();
    EVerdict eVerdict = EVerdict::DONE;
    try {
        eVerdict = Run(vecArguments, line, configuration, context);
        if (eVerdict != EVerdict::OUTPUT) {
            context.Flush();
        }
    } catch (const CToolError& error) {
        eVerdict = Tell(context, line.GetFormat(), error);
    } catch (...) {
        eVerdict = Tell(context, line.GetFormat(), context.ExplainException());
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    context.Detail(std::string(GetVerdictName(eVerdict)) + " after " + std::to_string(seconds.count()) + " s");
    return GetExitCode(eVerdict);
}
