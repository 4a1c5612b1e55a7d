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
    static constexpr const char NAME[] = "ReadAll";
    bool bCallersFault = false;
    try {
        Before(NAME);
        m_pInner->ReadAll(eKind, [&](CSettingsRow&& row) {
            bCallersFault = true;
            fnRow(std::move(row));
            bCallersFault = false;
        });
    } catch (...) {
        if (!bCallersFault) {
            Failed(NAME);
        }
        throw;
    }
}

void CForwardingStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    Forward("ReadColumn", [&] { m_pInner->ReadColumn(eKind, iColumn, vecValues); });
}

std::size_t CForwardingStore::Count(ESettingsKind eKind) {
    return Forward("Count", [&] { return m_pInner->Count(eKind); });
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
