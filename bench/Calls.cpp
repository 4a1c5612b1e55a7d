// One exported call in a process of its own, for bench/table: dlp_calls import DOCUMENT URL | dlp_calls export
// DATABASE. Says on standard error how long the call alone took, as "import 1.2 ms".

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPTemplateParse.h"
#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

namespace {

template <class Call>
bool Measure(const char* pName, Call&& fnCall) {
    const auto start = std::chrono::steady_clock::now();
    const bool bDone = fnCall();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "%s %.1f ms\n", pName, passed.count());
    return bDone;
}

bool Import(const std::string& strFile, const std::string& strUrl) {
    CSettingsStore::Open(strUrl);
    const OS::x_wstring strDocument = OS::WideText(OS::ReadWholeFile(strFile));
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecAssets;
    return Measure("import", [&] {
        CDLPTemplateParse parse{OS::x_wstring()};
        return parse.DoTemplateImport(L"", strDocument, vecImported, vecSkipped, vecAssets) == 0 && vecSkipped.empty();
    });
}

bool Export(const std::string& strDatabase) {
    CSettingsStore::Open("sqlite:" + strDatabase);
    std::vector<std::string> vecStored;
    CSettingsStore::Current().ReadColumn(ESettingsKind::TEMPLATE, TemplateColumn::ELEMENT_NAME, vecStored);
    std::vector<OS::x_wstring> vecNames;
    for (const std::string& strName : vecStored) {
        vecNames.push_back(OS::WideText(strName));
    }
    OS::x_wstring strDocument;
    return Measure("export", [&] {
        CDLPTemplateParse parse{OS::x_wstring()};
        parse.DoTemplateExport(L"", vecNames, strDocument);
        return !strDocument.empty();
    });
}

}  // namespace

int main(int iArguments, char** apArguments) {
    const std::vector<std::string> vecArguments(apArguments, apArguments + iArguments);
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    try {
        const bool bImport = vecArguments.size() == 4 && vecArguments[1] == "import";
        const bool bExport = vecArguments.size() == 3 && vecArguments[1] == "export";
        const bool bDone = bImport   ? Import(vecArguments[2], vecArguments[3])
                           : bExport ? Export(vecArguments[2])
                                     : false;
        CSettingsStore::Close();
        return bDone ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
