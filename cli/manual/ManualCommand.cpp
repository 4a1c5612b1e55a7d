#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/manual/ManualCommands.h"
#include "cli/manual/ManualPages.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "manual",
    "manual [PAGE]",
    "write a page of the manual, or list the pages",
    "A PAGE is called dlpctl-check.1 or dlp-policy.5, or without its section, or as its command, and is written as\n"
    "man reads it: dlpctl manual check | man -l -. Installed, man dlpctl-check shows the same.\n",
    "  dlpctl manual\n"
    "  dlpctl manual check\n"
    "  dlpctl manual dlpctl-check > dlpctl-check.1\n"
    "  dlpctl manual dlp-policy > dlp-policy.5\n",
    "dlpctl-manual/1",
};

constexpr const char PREFIX[] = "dlpctl-";
constexpr const char MARKUP[] = "This is what man reads: dlpctl manual PAGE | man -l - shows it.";

std::string GetFileName(const SManualPage& page) {
    return page.strName + '.' + std::to_string(page.iSection);
}

/** Of two pages of one name the first is meant, as man has it. */
const SManualPage& FindPage(const std::vector<SManualPage>& vecPages, const std::string& strName) {
    std::vector<std::string> vecNames;
    for (const SManualPage& page : vecPages) {
        if (strName == GetFileName(page) || (page.iSection == 1 && PREFIX + strName == page.strName)) {
            return page;
        }
        vecNames.push_back(page.strName);
    }
    const auto fnBefore = [&](const SManualPage& left, const SManualPage& right) {
        return (left.strName == strName ? left.iSection : 10) < (right.strName == strName ? right.iSection : 10);
    };
    const auto itPage = std::min_element(vecPages.begin(), vecPages.end(), fnBefore);
    if (itPage->strName != strName) {
        const std::string strNearest = FindNearestName(strName, vecNames);
        throw CToolError(EVerdict::USAGE,
                         "there is no page " + Text::Quoted(strName) +
                             (strNearest.empty() ? "; dlpctl manual lists the pages"
                                                 : "; did you mean " + Text::Quoted(strNearest) + '?'));
    }
    return *itPage;
}

EVerdict List(CCommandContext& context, const std::vector<SManualPage>& vecPages) {
    Json answer = {{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}, {"pages", Json::array()}};
    CTextTable table;
    for (const SManualPage& page : vecPages) {
        answer["pages"].push_back({{"page", GetFileName(page)}, {"summary", page.strSummary}});
        table.Add({GetFileName(page), page.strSummary});
    }
    if (context.IsJson()) {
        context.WriteJson(answer);
    } else {
        context.Write(table.ToString(context.GetDataWidth()));
    }
    return EVerdict::DONE;
}

EVerdict Show(CCommandContext& context, CCommandLine& line, const std::string& strName) {
    const std::vector<SManualPage> vecPages = ListManualPages(line);
    if (strName.empty()) {
        return List(context, vecPages);
    }
    const SManualPage& page = FindPage(vecPages, strName);
    const std::string strText = MakeManualPage(line, page);
    if (context.IsJson()) {
        context.WriteJson({{"format", HELP.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"page", GetFileName(page)},
                           {"text", strText}});
    } else {
        context.Write(strText);
        if (context.GetDataWidth() > 0) {
            context.Note(MARKUP);
        }
    }
    return EVerdict::DONE;
}

}  // namespace

void AddManualCommand(CCommandLine& line) {
    const auto pName = std::make_shared<std::string>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [&line, pName](CCommandContext& context) { return Show(context, line, *pName); });
    CCommandLine::AddText(command, "PAGE", "PAGE", *pName, "which page");
}
