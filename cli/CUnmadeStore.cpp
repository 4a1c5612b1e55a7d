#include "cli/CUnmadeStore.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "platform/store/StoreError.h"

namespace {

constexpr const char MEMORY[] = "memory:";
constexpr const char MADE_MEANWHILE[] = "another process is writing to it; try again";

}  // namespace

CUnmadeStore::CUnmadeStore(std::string strUrl, EMade eMade)
    : CForwardingStore(CSettingsStore::Make(MEMORY)), m_strUrl(std::move(strUrl)), m_eMade(eMade) {}

SStoreInfo CUnmadeStore::GetInfo() {
    SStoreInfo info = CForwardingStore::GetInfo();
    info.strUrl = m_strUrl;
    return info;
}

void CUnmadeStore::Save(const CSettingsRow& row) {
    BeforeWrite();
    CForwardingStore::Save(row);
}

bool CUnmadeStore::Remove(ESettingsKind eKind, const std::string& strSubject) {
    BeforeWrite();
    return CForwardingStore::Remove(eKind, strSubject);
}

void CUnmadeStore::ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) {
    BeforeWrite();
    CForwardingStore::ReplaceAll(eKind, vecRows);
}

void CUnmadeStore::Begin(EUnitOfWork eUnit) {
    m_vecUnits.reserve(m_vecUnits.size() + 1);  // lack of memory must not leave a unit that is not known here
    CForwardingStore::Begin(eUnit);
    m_vecUnits.push_back(eUnit);
}

void CUnmadeStore::Commit() {
    try {
        if (!m_bMade && m_vecUnits.size() == 1 && HoldsAnything()) {
            Make();
        }
    } catch (...) {
        Rollback();
        throw;
    }
    m_vecUnits.pop_back();
    CForwardingStore::Commit();
}

void CUnmadeStore::Rollback() {
    m_vecUnits.pop_back();
    CForwardingStore::Rollback();
}

/** Outside a unit of work each change is one of its own. */
void CUnmadeStore::BeforeWrite() {
    const bool bWrites = m_vecUnits.empty() || m_vecUnits.back() == EUnitOfWork::WRITE;
    if (!m_bMade && bWrites && (m_eMade == EMade::AT_FIRST_WRITE || m_vecUnits.empty())) {
        Make();
    }
}

bool CUnmadeStore::HoldsAnything() {
    return std::any_of(std::begin(ALL_SETTINGS_KINDS), std::end(ALL_SETTINGS_KINDS),
                       [this](ESettingsKind eKind) { return Count(eKind) != 0; });
}

/** The same units are open in it then, and what was written to memory is part of them. */
void CUnmadeStore::Make() {
    std::unique_ptr<CSettingsStore> pStore = CSettingsStore::Make(m_strUrl);
    for (const EUnitOfWork eUnit : m_vecUnits) {
        pStore->Begin(eUnit);
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        if (pStore->Count(eKind) != 0) {  // whatever was looked up was not found in it
            ThrowStoreError(m_strUrl, StoreDoing::OPENING, MADE_MEANWHILE, StoreCode::MADE_MEANWHILE);
        }
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        ReadAll(eKind, [&](CSettingsRow&& row) { pStore->Save(row); });
    }
    m_pInner = std::move(pStore);
    m_bMade = true;
}
