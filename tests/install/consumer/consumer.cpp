// Uses every exported class through the installed headers and libraries, as C++17.
#include <iostream>
#include <string>
#include <vector>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPSubKeyword.h"
#include "api/CDLPSubKeywordFormater.h"
#include "api/CDLPTemplateParse.h"
#include "api/DLPMetaDataLoaderImpl.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"
#include "platform/system/InstallPath.h"

int main(int argc, char** argv) {
    CSettingsStore::Open("memory:");

    DLPMetaDataLoaderImpl metaData;
    std::vector<OS::x_wstring> vecNames;
    std::vector<OS::x_wstring> vecDisplayNames;
    if (!metaData.GetValidators(vecNames, vecDisplayNames) || vecNames.empty()) {
        std::cout << "no validators under " << OS::Utf8Lenient(SYS::GetInstallPath()) << "\n";
        return 1;
    }

    if (argc > 1) {
        OS::x_wstring strPath = OS::WideLenient(argv[1]);
        CDLPTemplateParse parse{OS::x_wstring()};
        if (!parse.ImportDLPTemplateFromFile(strPath)) {
            std::cout << "not imported\n";
            return 1;
        }
    }

    std::vector<CDLPSubKeyword> vecKeywords{CDLPSubKeyword(L"word", L"", L"1", L"false")};
    const OS::x_wstring strKeywords = CDLPSubKeywordFormater::ToXmlFormat(vecKeywords);
    std::wstring strAssets;
    CDLPDigitalAssetsParser assets;
    const bool bExported = assets.ExportDigitalAssets(L"", {}, {}, strAssets);
    std::cout << OS::Utf8Lenient(strKeywords) << "\n" << OS::Utf8Lenient(strAssets) << "\n";
    return bExported ? 0 : 1;
}
