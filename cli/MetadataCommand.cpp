#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "api/DLPMetaDataLoaderImpl.h"
#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InstalledFiles.h"
#include "cli/Text.h"
#include "platform/common/DataFileFailure.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "metadata",
    "metadata",
    "list the predefined validators, types, industries and regions",
    "They are read from config/PredefinedDLPPolicy.xml below the installation directory (--home).\n",
    "  dlpctl metadata\n"
    "  dlpctl --json metadata\n",
    "dlpctl-metadata/1",
};

using Names = std::vector<OS::x_wstring>;

struct SMetaList {
    const char* pHead;
    const char* pKey;
    bool (DLPMetaDataLoaderImpl::*fnRead)(Names&, Names&);
};

constexpr SMetaList LISTS[] = {
    {"Validators", "validators", &DLPMetaDataLoaderImpl::GetValidators},
    {"Expression types", "expression_types", &DLPMetaDataLoaderImpl::GetExpressionTypes},
    {"Keyword conditions", "keyword_conditions", &DLPMetaDataLoaderImpl::GetKeywordConditions},
    {"Industries", "industries", &DLPMetaDataLoaderImpl::GetIndustries},
    {"Regions", "regions", &DLPMetaDataLoaderImpl::GetRegions},
};

/** @throws CToolError (USAGE) when there is no such file, or it is no XML: the lists would be empty without a word */
void CheckPolicyFile() {
    const SInstalledFile file = FindPolicyFile();
    if (!file.bFound) {
        throw CToolError(EVerdict::USAGE, Text::Printable(file.strPath) +
                                              " is missing; --home DIR or $DLP_INSTALL_PATH sets the installation "
                                              "directory");
    }
    try {
        CXMLParser(OS::WideText(file.strPath).c_str());
    } catch (const OS::CException& error) {
        throw CToolError(EVerdict::USAGE, Text::Printable(error.what()));
    }
}

std::string Plain(const OS::x_wstring& strEscaped) {
    return Text::Unescaped(OS::Utf8Lenient(strEscaped));
}

EVerdict ShowMetadata(CCommandContext& context) {
    CheckPolicyFile();
    DLPMetaDataLoaderImpl metadata;
    if (const std::string strFailure = OS::TakeDataFileFailure(); !strFailure.empty()) {
        throw CToolError(EVerdict::USAGE, Text::Printable(strFailure));
    }
    Json object = {{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}};
    std::string strText;
    for (const SMetaList& list : LISTS) {
        Names vecNames;
        Names vecDisplayNames;
        (metadata.*list.fnRead)(vecNames, vecDisplayNames);
        Json items = Json::array();
        CTextTable table;
        for (std::size_t i = 0; i < vecNames.size(); ++i) {
            const std::string strName = Plain(vecNames[i]);
            const std::string strDisplayName = Plain(vecDisplayNames[i]);
            items.push_back({{"name", strName}, {"display_name", strDisplayName}});
            table.Add({"  " + strName, strDisplayName});
        }
        object[list.pKey] = std::move(items);
        strText +=
            (strText.empty() ? "" : "\n") + std::string(list.pHead) + '\n' + table.ToString(context.GetDataWidth());
    }
    if (context.IsJson()) {
        context.WriteJson(object);
    } else {
        context.Write(strText);
    }
    return EVerdict::DONE;
}

}  // namespace

void AddMetadataCommand(CCommandLine& line) {
    line.AddCommand(line.GetTop(), HELP, ShowMetadata);
}
