#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/FolderFiles.h"
#include "cli/InputFile.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/check/CheckFormats.h"
#include "cli/check/FileCheck.h"

namespace {

namespace fs = std::filesystem;

constexpr SCommandHelp HELP = {
    "check",
    "check FILE… | DIR…",
    "find what is wrong in policies before anything is stored",
    "Tells with its place whatever an import would refuse, skip or silently replace, and what most likely is a\n"
    "mistake. Below a DIR every .xml file is checked. Each file is tried against the store by itself, and the\n"
    "store holds what it held afterwards. For that it must be one that may be written, and one of an older version\n"
    "is brought up, as with --dry-run elsewhere. Exit codes: 0 nothing of the level of --fail-on, 1 something, 2 a\n"
    "file that is no XML. dlpctl explain CODE says more about a code.\n",
    "  dlpctl check policy.xml\n"
    "  dlpctl check --no-store --strict policies/\n"
    "  dlpctl check --format sarif policies/ > policies.sarif\n"
    "  dlpctl check --fix policy.xml\n",
    CHECK_JSON_FORMAT,
};

constexpr const char STANDARD_STREAM[] = "-";
constexpr ESeverity SEVERITIES[] = {ESeverity::ERROR, ESeverity::WARNING, ESeverity::NOTE};

struct SArguments {
    std::vector<std::string> vecFiles;
    std::vector<std::string> vecAllow;
    std::string strFailOn;
    std::string strFormat;
    SFileCheck check;
    bool bNoStore = false;
};

ESeverity FindSeverity(const std::string& strName) {
    for (const ESeverity eSeverity : SEVERITIES) {
        if (strName == GetSeverityName(eSeverity)) {
            return eSeverity;
        }
    }
    throw CToolError(EVerdict::USAGE,
                     "--fail-on: there is no level " + Text::Quoted(strName) + "; write error, warning or note");
}

const SCheckFormat& ChooseFormat(const CCommandContext& context, const std::string& strFormat) {
    const SCheckFormat& format = FindCheckFormat("--format", !strFormat.empty() ? strFormat
                                                             : context.IsJson() ? CHECK_JSON
                                                                                : CHECK_TEXT);
    if (context.IsJson() && format.fnWrite != WriteCheckJson) {
        throw CToolError(EVerdict::USAGE, "write either --json or --format " + strFormat);
    }
    return format;
}

SFileReport MakeUnreadable(const SFileCheck& check, const std::string& strFile, const std::string& strWhy) {
    CDiagnostics diagnostics(check.choice);
    diagnostics.Add(ECode::UNREADABLE, std::string::npos, {strWhy});
    return {strFile, nullptr, diagnostics.Finish({}), {}};
}

SCheckReport CheckAll(CCommandContext& context, const SArguments& arguments) {
    const CProgress progress(context, HELP.pName);
    SCheckReport report;
    report.bAll = arguments.check.choice.bAll;
    report.bFix = arguments.check.bFix;
    for (const std::string& strFile : arguments.vecFiles) {
        std::vector<std::string> vecFiles;
        try {
            vecFiles = ListFiles(context, strFile);
            if (vecFiles.empty()) {
                throw CInputError(strFile, NO_FILES);
            }
        } catch (const CInputError& error) {
            report.vecFiles.push_back(MakeUnreadable(arguments.check, strFile, error.GetReason()));
        }
        CProgress::Expect(vecFiles.size());
        for (const std::string& strEach : vecFiles) {
            Signals::ThrowIfCaught();
            report.vecFiles.push_back(CheckFile(context, arguments.check, strEach));
            CProgress::Step();
        }
    }
    return report;
}

void CheckFixable(const SArguments& arguments) {
    const auto& vecFiles = arguments.vecFiles;
    if (arguments.check.bFix && std::find(vecFiles.begin(), vecFiles.end(), STANDARD_STREAM) != vecFiles.end()) {
        throw CToolError(EVerdict::USAGE, "--fix needs a file that it can write");
    }
    if (arguments.check.bDryRun && !arguments.check.bFix) {
        throw CToolError(EVerdict::USAGE, "--dry-run goes with --fix: without it nothing is written anyway");
    }
}

EVerdict Check(CCommandContext& context, SArguments& arguments) {
    const SCheckFormat& format = ChooseFormat(context, arguments.strFormat);
    const ESeverity eFailOn = FindSeverity(arguments.strFailOn.empty() ? "error" : arguments.strFailOn);
    RequireOneInput(arguments.vecFiles);
    CheckFixable(arguments);
    for (const std::string& strCode : arguments.vecAllow) {
        arguments.check.choice.vecAllow.push_back(FindAllowed(strCode));
    }
    if (arguments.bNoStore) {
        context.TakeEmptyStore();
    } else {
        context.MakeNoStore();
    }
    SCheckReport report = CheckAll(context, arguments);
    report.eFailOn = eFailOn;
    report.bColour = context.ColoursData();
    report.bQuiet = context.Options().bQuiet;
    format.fnWrite(report, [&context](std::string_view strPiece) { context.Write(strPiece); });
    return report.GetVerdict();
}

}  // namespace

void AddCheckCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP,
                                        [pArguments](CCommandContext& context) { return Check(context, *pArguments); });
    CCommandLine::AddTexts(command, "FILE", "FILE", pArguments->vecFiles, "policies, or folders of them")->required();
    CCommandLine::AddFlag(command, "--no-store", pArguments->bNoStore, "check against an empty store");
    CCommandLine::AddFlag(command, "--assets", pArguments->check.bAssetsOnly,
                          "check what dlpctl assets import takes: the digital assets alone");
    CCommandLine::AddFlag(command, "--strict", pArguments->check.choice.bStrict, "every warning is an error");
    CCommandLine::AddTexts(command, "--allow", "CODE", pArguments->vecAllow, "do not tell this code; may be repeated");
    CCommandLine::AddText(command, "--fail-on", "error|warning|note", pArguments->strFailOn,
                          "exit with 1 from this level on; error as without it")
        ->take_last();
    CCommandLine::AddText(command, "--format", "text|json|sarif|junit|github", pArguments->strFormat,
                          "how to write the report; text as without it")
        ->take_last();
    CCommandLine::AddFlag(command, "--all", pArguments->check.choice.bAll,
                          "tell everything; otherwise text ends after 100, and each file after 1000 of a code");
    CCommandLine::AddFlag(command, "--fix", pArguments->check.bFix, "write plainly what is written in another way");
    CCommandLine::AddFlag(command, "--dry-run", pArguments->check.bDryRun, "with --fix: only say what would be");
}
