#include "platform/store/CSettingsStore.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <string_view>

#include "platform/store/CMemoryStore.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/StoreError.h"

namespace {

struct SProcessStore {
    CSettingsStore::Wrapper fnWrapper;
    std::function<bool()> fnEndsWait;
    std::unique_ptr<CSettingsStore> pStore;
};

SProcessStore& GetProcessStore() {
    static SProcessStore s_store;
    return s_store;
}

std::unique_ptr<CSettingsStore> MakeMemory(const std::string& strRest, EUnitOfWork) {
    if (!strRest.empty()) {
        ThrowStoreError(CMemoryStore::URL + strRest, StoreDoing::OPENING, "nothing may follow \"memory:\"");
    }
    return std::make_unique<CMemoryStore>();
}

std::unique_ptr<CSettingsStore> MakeSqlite(const std::string& strRest, EUnitOfWork eUse) {
    return std::make_unique<CSqliteStore>(strRest, CSqliteStore::BUSY_MILLISECONDS, eUse);
}

/** The rest of such a URL may hold a password, so no message repeats it. */
std::unique_ptr<CSettingsStore> MakePostgresql(const std::string&, EUnitOfWork) {
    ThrowStoreError("postgresql://", StoreDoing::OPENING, "PostgreSQL is not built into this version; use sqlite:PATH");
}

struct SMake {
    std::string_view strScheme;
    std::unique_ptr<CSettingsStore> (*fnMake)(const std::string& strRest, EUnitOfWork eUse);
};

constexpr SMake MAKES[] = {
    {"memory:", MakeMemory},
    {"sqlite:", MakeSqlite},
    {"postgresql://", MakePostgresql},
    {"postgres://", MakePostgresql},
};

/** @return null when no kind of store has such URLs */
const SMake* FindMake(const std::string& strUrl) {
    const auto* pMake = std::find_if(std::begin(MAKES), std::end(MAKES), [&](const SMake& make) {
        return strUrl.compare(0, make.strScheme.size(), make.strScheme) == 0;
    });
    return pMake == std::end(MAKES) ? nullptr : pMake;
}

/** @return the variable's value, "" when it is not set */
std::string GetVariable(const char* pName) {
    const char* pValue = std::getenv(pName);
    return pValue != nullptr ? pValue : "";
}

}  // namespace

CSettingsStore::~CSettingsStore() = default;

std::unique_ptr<CSettingsStore> CSettingsStore::Make(const std::string& strUrl, EUnitOfWork eUse) {
    if (const SMake* pMake = FindMake(strUrl)) {
        return pMake->fnMake(strUrl.substr(pMake->strScheme.size()), eUse);
    }
    // What follows a foreign scheme may hold a password.
    ThrowStoreError('"' + strUrl.substr(0, strUrl.find("://")) + '"', StoreDoing::OPENING,
                    "no such kind of store; write sqlite:PATH or memory:");
}

bool CSettingsStore::IsUrl(const std::string& strText) {
    return FindMake(strText) != nullptr;
}

void CSettingsStore::Open(const std::string& strUrl) {
    Open(strUrl, EUnitOfWork::WRITE);
}

void CSettingsStore::Open(const std::string& strUrl, EUnitOfWork eUse) {
    Close();
    Open(Make(strUrl, eUse));
}

void CSettingsStore::Open(std::unique_ptr<CSettingsStore> pStore) {
    SProcessStore& process = GetProcessStore();
    process.pStore = std::move(pStore);
    if (process.fnWrapper) {
        process.pStore = process.fnWrapper(std::move(process.pStore));
    }
}

void CSettingsStore::Close() {
    GetProcessStore().pStore.reset();
}

CSettingsStore& CSettingsStore::Current() {
    SProcessStore& process = GetProcessStore();
    if (process.pStore == nullptr) {
        Open(GetDefaultUrl());
    }
    return *process.pStore;
}

void CSettingsStore::SetWrapper(Wrapper fnWrapper) {
    GetProcessStore().fnWrapper = std::move(fnWrapper);
}

void CSettingsStore::SetWaitEnder(std::function<bool()> fnEndsWait) {
    GetProcessStore().fnEndsWait = std::move(fnEndsWait);
}

bool CSettingsStore::IsWaitEnded() {
    const SProcessStore& process = GetProcessStore();
    return process.fnEndsWait && process.fnEndsWait();
}

void CSettingsStore::PutInFront(const Wrapper& fnWrapper) {
    Current();
    SProcessStore& process = GetProcessStore();
    process.pStore = fnWrapper(std::move(process.pStore));
}

std::string CSettingsStore::GetDefaultUrl() {
    static constexpr const char FILE_BELOW_DATA[] = "/dlpparser/settings.db";
    std::string strUrl = GetVariable("DLP_STORE");
    if (!strUrl.empty()) {
        return strUrl;
    }
    // A relative XDG_DATA_HOME counts as none, as the base directory rules want it.
    const std::string strData = GetVariable("XDG_DATA_HOME");
    if (!strData.empty() && strData[0] == '/') {
        return CSqliteStore::SCHEME + strData + FILE_BELOW_DATA;
    }
    const std::string strHome = GetVariable("HOME");
    if (strHome.empty()) {
        ThrowStoreError("(default)", StoreDoing::OPENING, "set DLP_STORE to its URL, or HOME to your home directory");
    }
    return CSqliteStore::SCHEME + strHome + "/.local/share" + FILE_BELOW_DATA;
}

std::unique_ptr<CSettingsRow> CSettingsStore::FindOne(ESettingsKind eKind, std::size_t iColumn,
                                                      const std::string& strValue) {
    std::vector<std::unique_ptr<CSettingsRow>> vecRows;
    Find(eKind, iColumn, {strValue}, vecRows);
    return std::move(vecRows.front());
}

CSettingsTransaction::CSettingsTransaction(EUnitOfWork eUnit)
    : CSettingsTransaction(CSettingsStore::Current(), eUnit) {}

CSettingsTransaction::CSettingsTransaction(CSettingsStore& store, EUnitOfWork eUnit) : m_store(store) {
    m_store.Begin(eUnit);
    m_bOpen = true;
}

CSettingsTransaction::~CSettingsTransaction() {
    if (!m_bOpen) {
        return;
    }
    try {
        m_store.Rollback();
    } catch (const std::exception&) {
        // A destructor has nobody to tell; what was not committed is undone when the store is closed, if not now.
    }
}

void CSettingsTransaction::Commit() {
    m_bOpen = false;
    m_store.Commit();
}
