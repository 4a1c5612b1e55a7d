#include "cli/ImportOptions.h"

#include "cli/CommandLine.h"

void AddImportOptions(CLI::App& command, SImportOptions& options, const char* pFiles) {
    CCommandLine::AddTexts(command, "FILE", "FILE", options.vecFiles, pFiles)->required();
    CCommandLine::AddFlag(command, "--dry-run", options.bDryRun,
                          "import, tell what became of everything, and keep nothing");
    CCommandLine::AddTexts(command, "--only", "NAME", options.vecOnly,
                           "take the items of this internal name and what they refer to; may be repeated");
    CCommandLine::AddFlag(command, "--skip-existing", options.bSkipExisting, "skip items whose name is stored already");
    CCommandLine::AddFlag(command, "--fail-on-skip", options.bFailOnSkip,
                          "take nothing of a FILE of which an item cannot be taken");
    CCommandLine::AddText(command, "--report", "FILE", options.strReport, "write a report of all files to FILE")
        ->take_last();
    CCommandLine::AddText(command, "--report-format", "text|json|sarif|junit|github", options.strReportFormat,
                          "how to write the report; by default as FILE ends, else json")
        ->take_last();
}
