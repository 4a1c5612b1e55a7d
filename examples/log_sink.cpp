// Listens to what the library says about a document that it cannot take whole: all levels but the entering and leaving
// of operations.

#include <iostream>
#include <vector>

#include "api/CDLPTemplateParse.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"

namespace {

constexpr wchar_t DOCUMENT[] =
    LR"(<SAPolicy template_version="3.0.1000"><complianceTemplates>
  <template name="orphan" display_name="Orphan">
    <matchRule><buildingBlock sourceType="KEYWORD" sourceName="nowhere"/></matchRule>
  </template>
</complianceTemplates></SAPolicy>)";

void Listen() {
    DBG::SetLogFilter([](int iLevel) { return iLevel != DBG::LEVEL_ENTER && iLevel != DBG::LEVEL_LEAVE; });
    DBG::SetLogSink([](const DBG::CLogRecord& record) {
        // The message may hold text of the document: a terminal gets it with its control characters escaped.
        std::cout << std::hex << record.iLevel << std::dec << " "
                  << OS::Utf8Lenient(DBG::EscapeControls(record.strMessage)) << "\n";
    });
}

}  // namespace

int main() {
    CSettingsStore::Open("memory:");
    Listen();
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecSkippedAssets;
    const int iResult =
        CDLPTemplateParse(L"").DoTemplateImport(L"", DOCUMENT, vecImported, vecSkipped, vecSkippedAssets);
    DBG::SetLogSink({});
    std::cout << "result " << iResult << ", skipped " << OS::WCharToChar(vecSkipped.at(0)) << "\n";
    return 0;
}
