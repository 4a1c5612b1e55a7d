#include "digital_assets/CReportedImport.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/common/SourcePlaces.h"
#include "platform/common/TextConversion.h"

namespace {

using EReportReason = CDLPImportReport::EReason;

/**
 * In the order of EReason. Why rules cannot be imported is told by their faults; nothing here keeps what is stored, and
 * what was undone has failed.
 */
constexpr EReportReason REASONS[] = {
    EReportReason::NONE,
    EReportReason::NO_NAME,
    EReportReason::NO_DISPLAY_NAME,
    EReportReason::BUILT_IN,
    EReportReason::NONE,
    EReportReason::MISSING_CHILD,
    EReportReason::NONE,
    EReportReason::OLDER_BUILT_IN,
    EReportReason::OLDER_SECTION,
    EReportReason::UNKNOWN_TEMPLATE,
    EReportReason::STORE,
    EReportReason::UNKNOWN_ELEMENT,
    EReportReason::NONE,
};

/** In the order of ETemplateFault. */
constexpr EReportReason FAULTS[] = {
    EReportReason::UNKNOWN_EXPRESSION,    EReportReason::UNKNOWN_KEYWORD,       EReportReason::UNSUPPORTED_TYPE,
    EReportReason::UNSUPPORTED_OPERATION, EReportReason::UNSUPPORTED_OPERATION,
};

}  // namespace

CDLPImportReport::SState*& CDLPImportReport::SState::Listening() {
    thread_local SState* s_pListening = nullptr;
    return s_pListening;
}

CReportedImport::CReportedImport(const OS::x_wstring& strText) : m_pWide(&strText) {}

CReportedImport::CReportedImport(std::string_view strBytes, std::size_t iStart)
    : m_strBytes(strBytes), m_iStart(iStart) {}

void CReportedImport::Finish() {
    if (m_pReport == nullptr) {
        return;
    }
    std::stable_sort(m_vecItems.begin(), m_vecItems.end(),
                     [](const SItem& left, const SItem& right) { return left.iOffset < right.iOffset; });
    FindPlaces();
    m_pReport->vecItems.insert(m_pReport->vecItems.end(), std::make_move_iterator(m_vecItems.begin()),
                               std::make_move_iterator(m_vecItems.end()));
    m_vecItems.clear();
}

void CReportedImport::OnItem(const SImportItem& item) {
    SItem told;
    told.eKind = item.eKind;
    told.strName = OS::WideText(item.strName);
    told.strDisplayName = OS::WideText(item.strDisplayName);
    told.eDisposition = item.eDisposition;
    told.eReason =
        item.fault ? FAULTS[static_cast<std::size_t>(*item.fault)] : REASONS[static_cast<std::size_t>(item.eReason)];
    told.strDetail = OS::WideLenient(item.fault ? item.strFaulty : item.strDetail);
    told.iOffset = item.iOffset;
    m_vecItems.push_back(std::move(told));
    m_pReport->bStoreFailed = m_pReport->bStoreFailed || item.eDisposition == EDisposition::FAILED;
}

void CReportedImport::OnStoreFailed(const std::string& strMessage) {
    m_pReport->bStoreFailed = true;
    if (m_pReport->strStoreFailure.empty()) {
        m_pReport->strStoreFailure = OS::WideLenient(strMessage);
    }
}

void CReportedImport::OnUndone() {
    for (SItem& item : m_vecItems) {
        if (item.eReason == EReportReason::NONE) {
            item.eDisposition = EDisposition::FAILED;
            item.eReason = EReportReason::STORE;
            item.strDetail = m_pReport->strStoreFailure;
        }
    }
}

void CReportedImport::FindPlaces() {
    const std::string strUtf8 = m_pWide == nullptr ? std::string() : OS::Utf8Loose(*m_pWide);
    const CSourcePlaces places(m_pWide == nullptr ? m_strBytes : std::string_view(strUtf8));
    for (SItem& item : m_vecItems) {
        if (item.iOffset == CDLPImportReport::NO_PLACE) {
            continue;
        }
        item.iOffset += m_iStart;
        const SPlace place = places.Find(item.iOffset);
        item.iLine = place.iLine;
        item.iColumn = place.iColumn;
        if (m_pWide != nullptr) {
            item.iOffset = places.CountCodePoints(item.iOffset);
        }
    }
}
