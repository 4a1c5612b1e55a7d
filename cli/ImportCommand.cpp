#include <memory>
#include <string>
#include <vector>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/FileImport.h"
#include "cli/ImportOptions.h"
#include "cli/ImportReport.h"
#include "platform/common/TextConversion.h"
#include "templates/DLPTemplateMgr.h"

namespace {

constexpr SCommandHelp HELP = {
    "import",
    "import FILE…",
    "read policies into the store",
    "Each FILE is taken whole or not at all. Its digital assets come first, then its templates; what is not taken\n"
    "is listed with its place, the reason and what to do. What is taken and most likely is a mistake all the same,\n"
    "dlpctl check tells. A user's item never replaces a built-in one.\n"
    "Exit codes: 1 an item was skipped or refers to what is not stored, or --only names what a FILE does not hold;\n"
    "2 a FILE is invalid, or an item of it cannot be taken so and --fail-on-skip is given: nothing of that FILE is\n"
    "written. What --skip-existing skips is no fault to --fail-on-skip. A dry run gives the items and exit codes of\n"
    "the import itself.\n",
    "  dlpctl import policy.xml\n"
    "  dlpctl import --dry-run assets.xml policy.xml\n"
    "  dlpctl import --only card-data --fail-on-skip policy.xml\n"
    "  dlpctl import --skip-existing --report import.sarif policy.xml\n"
    "  dlpctl --json --language English import policy.xml\n",
    "dlpctl-import/1",
};

std::vector<std::string> ToUtf8(const std::vector<OS::x_wstring>& vecTexts) {
    std::vector<std::string> vecUtf8;
    vecUtf8.reserve(vecTexts.size());
    for (const OS::x_wstring& strText : vecTexts) {
        vecUtf8.push_back(OS::Utf8Lenient(strText));
    }
    return vecUtf8;
}

int Import(CCommandContext& context, CPolicyDocument& document, SImportReport& report, CImportObserver& observer) {
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecSkippedAssets;
    const int iResult =
        CTemplateMgr(context.GetScope()).ImportDocument(document, vecImported, vecSkipped, vecSkippedAssets, &observer);
    report.vecImported = ToUtf8(vecImported);
    report.vecSkipped = ToUtf8(vecSkipped);
    report.vecSkippedAssets = ToUtf8(vecSkippedAssets);
    return iResult;
}

constexpr SImportDoor DOOR = {
    "import",
    HELP.pFormat,
    "Next: dlpctl list templates\n"
    "      dlpctl export --all -o FILE",
    true,
    Import,
};

}  // namespace

void AddImportCommand(CCommandLine& line) {
    const auto pOptions = std::make_shared<SImportOptions>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pOptions](CCommandContext& context) { return ImportFiles(context, DOOR, *pOptions); });
    AddImportOptions(command, *pOptions, "policies");
}
