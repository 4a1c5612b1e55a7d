#include "cli/check/ImportTrial.h"

#include "cli/CommandContext.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "digital_assets/DigitalAssets.h"
#include "templates/DLPTemplateMgr.h"

namespace {

class CCollector : public CImportObserver {
  public:
    explicit CCollector(ReportItems& vecItems) : m_vecItems(vecItems) {}

    /** Only what is not taken is told. */
    void OnItem(const SImportItem& item) override {
        CProgress::Step();
        Signals::ThrowIfCaught();
        if (item.eDisposition == EDisposition::SKIPPED || item.eDisposition == EDisposition::FAILED) {
            m_vecItems.emplace_back(item);
        }
    }

  private:
    ReportItems& m_vecItems;
};

}  // namespace

STrial TryImport(const CCommandContext& context, CPolicyDocument& document, bool bAssetsOnly) {
    STrial trial;
    CCollector collector(trial.vecItems);
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecAssets;
    trial.iResult =
        bAssetsOnly
            ? DigitalAssets::Import(DigitalAssets::EImport::ALL, context.GetScope(), document, vecAssets, &collector)
            : CTemplateMgr(context.GetScope()).ImportDocument(document, vecImported, vecSkipped, vecAssets, &collector);
    return trial;
}
