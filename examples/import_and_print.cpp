// Imports a policy file into a store in memory and prints the rules of one of its templates:
//     import_and_print FILE NAME

#include <iostream>
#include <string>
#include <vector>

#include "api/CDLPTemplateParse.h"
#include "platform/common/CException.h"
#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"

namespace {

bool Import(const std::string& strPath) {
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecSkippedAssets;
    const int iResult = CDLPTemplateParse(L"").DoTemplateImport(L"", OS::WideText(OS::ReadWholeFile(strPath)),
                                                                vecImported, vecSkipped, vecSkippedAssets);
    std::cout << "result " << iResult << ": " << vecImported.size() << " templates imported, " << vecSkipped.size()
              << " skipped, " << vecSkippedAssets.size() << " assets skipped\n";
    return iResult == 0;
}

bool PrintRules(const std::string& strName) {
    std::vector<boost::shared_ptr<CCfgSettingDLPFilterTemplate>> vecFound;
    CCfgSettingDLPFilterTemplateMgr::Instance()->FindBy(TemplateColumn::ELEMENT_NAME, {strName}, vecFound);
    if (vecFound.front() == nullptr) {
        std::cerr << "no template " << strName << "\n";
        return false;
    }
    OS::x_wstring strElement;
    vecFound.front()->GetElement(strElement);
    std::vector<OS::x_wstring> vecRules;
    std::vector<OS::x_wstring> vecOperators;
    CDLPTemplateParse(strElement).ParseContent(vecRules, vecOperators);
    for (std::size_t i = 0; i < vecRules.size(); ++i) {
        std::cout << OS::WCharToChar(vecOperators[i]) << ": " << OS::WCharToChar(vecRules[i]) << "\n";
    }
    return true;
}

}  // namespace

int main(int iArguments, char** aArguments) {
    if (iArguments != 3) {
        std::cerr << "usage: import_and_print FILE NAME\n";
        return 3;
    }
    try {
        CSettingsStore::Open("memory:");
        return Import(aArguments[1]) && PrintRules(aArguments[2]) ? 0 : 1;
    } catch (const OS::CException& error) {
        std::cerr << error.what() << "\n";
        return 2;
    }
}
