#include <sstream>
#include <string>
#include <vector>

#include "api/DLPMetaDataLoaderImpl.h"
#include "cli/Tool.h"
#include "fuzz/Targets.h"
#include "platform/common/TextConversion.h"
#include "platform/config/CINIReader.h"
#include "platform/system/InstallPath.h"
#include "templates/DLPXmlNormalizer.h"
#include "tests/support/TempDir.h"

namespace Fuzz {

void ReadNameMap(std::string_view strData) {
    const std::wstring strPath = OS::WideText(Folder().Write("names.txt", std::string(strData)));
    CINIReader reader;
    Require(reader.Parse(strPath.c_str(), L"r"), "a file is read");
    CDLPXmlNormalizer::NameMap mapNames;
    CDLPXmlNormalizer::CLineReaderCallback callback(mapNames);
    reader.Enumerate(callback);
    for (const auto& [strOlder, strToday] : mapNames) {
        Require(strOlder.find_first_of(L"\t\n") == std::wstring::npos, "a name ends with its field");
    }
}

void ReadPolicyLists(std::string_view strData) {
    Folder().Write("config/PredefinedDLPPolicy.xml", std::string(strData));
    SYS::SetInstallPath(OS::WideText(Folder().Path()));
    DLPMetaDataLoaderImpl lists;
    using Getter = bool (DLPMetaDataLoaderImpl::*)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);
    for (const Getter fnGet : {&DLPMetaDataLoaderImpl::GetValidators, &DLPMetaDataLoaderImpl::GetExpressionTypes,
                               &DLPMetaDataLoaderImpl::GetKeywordConditions, &DLPMetaDataLoaderImpl::GetIndustries,
                               &DLPMetaDataLoaderImpl::GetRegions}) {
        std::vector<OS::x_wstring> vecNames;
        std::vector<OS::x_wstring> vecDisplayNames;
        const bool bDone = (lists.*fnGet)(vecNames, vecDisplayNames);
        Require(vecNames.size() == vecDisplayNames.size(), "each name has a display name");
        Require(bDone || vecNames.empty(), "a list that fails is empty");
        for (const OS::x_wstring& strName : vecNames) {
            Require(strName.find_first_of(L"<>\"'") == std::wstring::npos, "a name is escaped");
        }
    }
}

void LoadDump(std::string_view strData) {
    std::istringstream in{std::string(strData)};
    std::ostringstream out;
    std::ostringstream err;
    const int iCode = RunTool({"--store", "memory:", "store", "load", "-"}, in, out, err);
    Require(iCode == 0 || iCode == 2, "a dump is taken or refused");
    Require((iCode == 0) == err.str().empty(), "a refused dump is spoken of");
}

}  // namespace Fuzz
