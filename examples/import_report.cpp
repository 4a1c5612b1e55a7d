// Imports a policy file into a store in memory and tells what became of each of its items, and where it stands:
//     import_report FILE
// The names of assets in a document of the older layout are translated by config/cfg_dlp_da_map.txt of the working
// directory; elsewhere they are taken as they stand.

#include <iostream>
#include <string>

#include "api/CDLPImportReport.h"
#include "api/CDLPTemplateParse.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

namespace {

using SItem = CDLPImportReport::SItem;

// In the order of the enumerations.
const char* const KINDS[] = {"expression", "keyword list", "template", "category entry", "section", "element"};
const char* const DISPOSITIONS[] = {"created", "updated", "unchanged", "skipped", "failed"};

void Print(const SItem& item) {
    std::cout << item.iLine << ":" << item.iColumn << ": " << KINDS[static_cast<int>(item.eKind)] << " "
              << OS::WCharToChar(item.strName) << " " << DISPOSITIONS[static_cast<int>(item.eDisposition)];
    if (item.eReason == CDLPImportReport::EReason::UNKNOWN_EXPRESSION ||
        item.eReason == CDLPImportReport::EReason::UNKNOWN_KEYWORD) {
        std::cout << ": " << OS::WCharToChar(item.strDetail) << " is not stored";
    }
    std::cout << "\n";
}

}  // namespace

int main(int iArguments, char** aArguments) {
    if (iArguments != 2) {
        std::cerr << "usage: import_report FILE\n";
        return 3;
    }
    try {
        CSettingsStore::Open("memory:");
        OS::x_wstring strPath = OS::WideText(aArguments[1]);
        const CDLPImportReport report;  // hears of every import of this thread from here on
        if (!CDLPTemplateParse(L"").ImportDLPTemplateFromFile(strPath)) {
            std::cerr << "cannot read " << aArguments[1] << "\n";
            return 2;
        }
        for (const SItem& item : report.GetItems()) {
            Print(item);
        }
        return report.HasStoreFailed() ? 4 : 0;
    } catch (const OS::CException& error) {
        std::cerr << error.what() << "\n";
        return 4;
    }
}
