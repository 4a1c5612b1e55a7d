#include <memory>
#include <string>
#include <vector>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/FileImport.h"
#include "cli/ImportReport.h"
#include "platform/common/TextConversion.h"
#include "templates/DLPTemplateMgr.h"

namespace {

constexpr SCommandHelp HELP = {
    "import",
    "import FILE…",
    "read policies into the store",
    "Each FILE is taken whole or not at all. Its digital assets come first, then its templates; what is not taken\n"
    "is listed with its place, the reason and what to do. A user's item never replaces a built-in one.\n",
    "  dlpctl import examples/starter-policy.xml\n"
    "  dlpctl --json import a.xml b.xml\n"
    "  dlpctl --language English import policy.xml\n",
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
    HELP.pFormat,
    "Next: dlpctl list templates\n"
    "      dlpctl export --all -o FILE",
    true,
    Import,
};

}  // namespace

void AddImportCommand(CCommandLine& line) {
    const auto pFiles = std::make_shared<std::vector<std::string>>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pFiles](CCommandContext& context) { return ImportFiles(context, DOOR, *pFiles); });
    CCommandLine::AddTexts(command, "FILE", "FILE", *pFiles, "policies")->required();
}
