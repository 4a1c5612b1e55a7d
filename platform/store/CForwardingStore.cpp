#include "platform/store/CForwardingStore.h"

#include <exception>

CForwardingStore::~CForwardingStore() = default;

void CForwardingStore::Before(const char*) {}

void CForwardingStore::Failed(const char*) {}

template <class Operation>
auto CForwardingStore::Forward(const char* pName, Operation&& fnOperation) {
    try {
        Before(pName);
        return fnOperation();
    } catch (...) {
        Failed(pName);
        throw;
    }
}

/** What the caller's own function throws is no failure of the store. */
template <class Told, class Walk>
void CForwardingStore::ForwardWalk(const char* pName, const std::function<void(Told)>& fnTold, Walk&& fnWalk) {
    bool bCallersFault = false;
    const std::function<void(Told)> fnWatched = [&](Told told) {
        bCallersFault = true;
        fnTold(std::forward<Told>(told));
        bCallersFault = false;
    };
    try {
        Before(pName);
        fnWalk(fnWatched);
    } catch (...) {
        if (!bCallersFault) {
            Failed(pName);
        }
        throw;
    }
}

SStoreInfo CForwardingStore::GetInfo() {
    return Forward("GetInfo", [&] { return m_pInner->GetInfo(); });
}

void CForwardingStore::Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                            std::vector<std::unique_ptr<CSettingsRow>>& vecRows) {
    Forward("Find", [&] { m_pInner->Find(eKind, iColumn, vecValues, vecRows); });
}

void CForwardingStore::FindHeld(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                                std::vector<bool>& vecHeld) {
    Forward("FindHeld", [&] { m_pInner->FindHeld(eKind, iColumn, vecValues, vecHeld); });
}

void CForwardingStore::ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) {
    ForwardWalk("ReadAll", fnRow, [&](const auto& fnWatched) { m_pInner->ReadAll(eKind, fnWatched); });
}

void CForwardingStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    Forward("ReadColumn", [&] { m_pInner->ReadColumn(eKind, iColumn, vecValues); });
}

std::size_t CForwardingStore::Count(ESettingsKind eKind) {
    return Forward("Count", [&] { return m_pInner->Count(eKind); });
}

void CForwardingStore::Check(const std::function<void(const SStoreDamage&)>& fnDamage) {
    ForwardWalk("Check", fnDamage, [&](const auto& fnWatched) { m_pInner->Check(fnWatched); });
}

void CForwardingStore::Save(const CSettingsRow& row) {
    Forward("Save", [&] { m_pInner->Save(row); });
}

bool CForwardingStore::Remove(ESettingsKind eKind, const std::string& strSubject) {
    return Forward("Remove", [&] { return m_pInner->Remove(eKind, strSubject); });
}

void CForwardingStore::ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) {
    Forward("ReplaceAll", [&] { m_pInner->ReplaceAll(eKind, vecRows); });
}

void CForwardingStore::Begin(EUnitOfWork eUnit) {
    Forward("Begin", [&] { m_pInner->Begin(eUnit); });
}

void CForwardingStore::Commit() {
    static constexpr const char NAME[] = "Commit";
    bool bReached = false;
    try {
        Before(NAME);
        bReached = true;
        m_pInner->Commit();
    } catch (...) {
        Failed(NAME);
        if (!bReached) {
            m_pInner->Rollback();
        }
        throw;
    }
}

void CForwardingStore::Rollback() {
    static constexpr const char NAME[] = "Rollback";
    try {
        Before(NAME);
    } catch (const std::exception&) {
        // The unit is undone all the same: whoever asks for it cannot do anything else.
    }
    try {
        m_pInner->Rollback();
    } catch (...) {
        Failed(NAME);
        throw;
    }
}
