#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "api/CDLPImportReport.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/x_wstring.h"

struct CDLPImportReport::SState {
    std::vector<SItem> vecItems;
    bool bStoreFailed = false;
    OS::x_wstring strStoreFailure;
    SState* pOuter = nullptr;  ///< what this thread's imports told before

    /** @return what this thread's imports tell; null when nothing wants to hear */
    static SState*& Listening();
};

/** One import by an exported operation, as the thread's report hears of it. */
class CReportedImport : private CImportObserver {
  public:
    /** @param strText must outlive it, as the bytes below */
    explicit CReportedImport(const OS::x_wstring& strText);
    /** @param strBytes a file @param iStart where the document begins in it */
    CReportedImport(std::string_view strBytes, std::size_t iStart);

    /** @return who is to hear of the items; null when nobody is */
    CImportObserver* GetObserver() { return m_pReport == nullptr ? nullptr : this; }
    /** The import has ended: the report has its items from now on. */
    void Finish();

  private:
    using SItem = CDLPImportReport::SItem;

    void OnItem(const SImportItem& item) override;
    void OnStoreFailed(const std::string& strMessage) override;
    void OnUndone() override;
    void FindPlaces();

    CDLPImportReport::SState* m_pReport = CDLPImportReport::SState::Listening();
    const OS::x_wstring* m_pWide = nullptr;
    std::string_view m_strBytes;
    std::size_t m_iStart = 0;
    std::vector<SItem> m_vecItems;
};
