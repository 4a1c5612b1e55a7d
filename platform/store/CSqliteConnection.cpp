#include "platform/store/CSqliteConnection.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <system_error>
#include <vector>

#include "platform/common/CException.h"
#include "platform/store/CMemoryStore.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SettingsSchema.h"
#include "platform/store/SqlText.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/SqlitePageSums.h"
#include "platform/store/SqliteUpgrade.h"
#include "platform/store/StoreError.h"

namespace {

/** What says in the file's header that it is a settings store: "DLPS". */
constexpr std::int64_t APPLICATION_ID = 0x444C5053;

constexpr char FOREIGN[] =
    "it is no settings store, or a damaged one, and is left as it is; name another path, or bring back a backup "
    "(\"dlpctl store restore\")";
constexpr char EMPTY[] =
    "it is empty: nobody has finished making it, or it was cut to nothing; the next import makes it, or bring back a "
    "backup (\"dlpctl store restore\")";
constexpr char OTHERS[] = "it is another program's database, and is left as it is; name another path";
constexpr char OLDER[] =
    "it was written by an older version and cannot be brought up where it is; copy it to where it can be written, and "
    "open it there";
constexpr char OLDER_IN_USE[] =
    "it was written by an older version, and is brought up as soon as nobody else has it open; end what has, and try "
    "again";
constexpr char CHANGED[] = "another process changed it while it was read; try again";
constexpr char DAMAGED_PAGE[] = "a page is not as it was written";
constexpr char DAMAGED_BEGINNING[] = "it is damaged: its first page is not as it was written";

/**
 * The page size (that of SqlitePageSums) counts for a new file only and must be set before the first write. The cache
 * (in KiB) takes the indexes of some ten thousand records, so that the time per record does not grow with their number.
 * What a statement would need to take itself back stays in memory: no file beside those of the store is opened.
 */
constexpr char CONNECTION_SETTINGS[] =
    "PRAGMA page_size = 8192;"
    "PRAGMA cache_size = -16384;"
    "PRAGMA synchronous = FULL;"
    "PRAGMA foreign_keys = ON;"
    "PRAGMA temp_store = MEMORY;";
constexpr char READING_SETTING[] = "PRAGMA query_only = ON";
constexpr char JOURNAL_SETTING[] = "PRAGMA journal_mode = WAL";
constexpr char GET_APPLICATION[] = "PRAGMA application_id";
constexpr char GET_VERSION[] = "PRAGMA user_version";
constexpr char COUNT_PAGES[] = "PRAGMA page_count";

/**
 * Shuts all others out until the connection is closed. The journal is emptied into the file, and there is none from
 * then on, since it would be taken for that of the file which comes into this one's place. All that changes in this one
 * then lies in one sector of the disk.
 */
constexpr char SHUT_OTHERS_OUT[] =
    "PRAGMA locking_mode = EXCLUSIVE;"
    "PRAGMA journal_mode = MEMORY;"
    "BEGIN EXCLUSIVE;";
constexpr int STEP_MILLISECONDS = 5;

/** The version of a file in whose place another one stands by now: that one is to be opened. */
constexpr int MOVED_VERSION = 0;

/** How long one wait for a lock is at most, so that its end is noticed soon. */
constexpr int LONGEST_STEP_MILLISECONDS = 25;

/** The header of a database file, as far as it is looked at. */
constexpr char HEADER_MAGIC[] = "SQLite format 3";
constexpr std::size_t HEADER_RESERVED = 20;
constexpr std::size_t HEADER_VERSION = 60;
constexpr std::size_t HEADER_APPLICATION = 68;
constexpr std::size_t HEADER_END = 96;  ///< the version of the engine that wrote it

bool HasMoved(sqlite3* pDb) {
    int iMoved = 1;
    // Asked twice: a question that fails counts as yes.
    for (int iTries = 0; iMoved != 0 && iTries < 2; ++iTries) {
        sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_HAS_MOVED, &iMoved);
    }
    return iMoved != 0;
}

std::int32_t ReadBigEndian(const unsigned char* pBytes) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(pBytes[0]) << 24 |
                                     static_cast<std::uint32_t>(pBytes[1]) << 16 |
                                     static_cast<std::uint32_t>(pBytes[2]) << 8 | pBytes[3]);
}

using Header = std::array<char, HEADER_END>;

bool IsOfStore(const Header& aHeader) {
    return std::memcmp(aHeader.data(), HEADER_MAGIC, sizeof(HEADER_MAGIC)) == 0 &&
           ReadBigEndian(reinterpret_cast<const unsigned char*>(&aHeader[HEADER_APPLICATION])) == APPLICATION_ID;
}

/** What is read where making the store was cut short: an empty one. */
constexpr char IN_MEMORY[] = ":memory:";

/** @return the engine's name for a file that does not change, which it reads without locks and files of its own */
std::string MakeFixedName(const std::string& strPath) {
    std::string strName = "file://";  // of no host, also where the path begins with two slashes
    for (const char c : strPath) {
        strName += c == '%' ? "%25" : c == '?' ? "%3f" : c == '#' ? "%23" : std::string(1, c);
    }
    return strName + "?immutable=1";
}

}  // namespace

CSqliteConnection::CSqliteConnection(const std::string& strPath, int iBusyMilliseconds, EUnitOfWork eUse)
    : m_strUrl(CSqliteStore::SCHEME + strPath),
      m_strPath(FollowSqliteLinks(strPath, m_strUrl)),
      m_note(m_strPath),
      m_iBusyMilliseconds(iBusyMilliseconds),
      m_bRead(eUse == EUnitOfWork::READ) {
    RequireOwnSideFiles(m_strPath, m_strUrl);
    const bool bWritable = !m_bRead || FindSqliteFile(m_strPath, m_strUrl);
    bool bEmpty = !m_bRead && MakeSqliteFile(m_strPath, m_strUrl);
    // Who may write removes the engine's side files in the end, also when nothing is to be written.
    if (m_bRead && IsSqliteFileFixed(m_strPath)) {
        m_fixed = GetSqliteFileState(m_strPath);
        Open(MakeFixedName(m_strPath), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    } else {
        Open(m_strPath, bWritable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY);
    }
    // The power was cut while the store was made. The engine makes the file empty again, and must then open it anew:
    // whether pages have checksums it asks then alone.
    if (!bEmpty && bWritable && WasSqliteFileEmpty(m_strPath) && HasNoHeader()) {
        Number(COUNT_PAGES);
        Open(m_strPath, SQLITE_OPEN_READWRITE);
        bEmpty = IsSqliteFileEmpty(m_strPath);
    }
    for (int iWaited = 0; !OpenStore(bEmpty, iWaited < m_iBusyMilliseconds); iWaited += STEP_MILLISECONDS) {
        OpenAnew();
    }
    // One that came since then must not be emptied into the file when this fails.
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    RequireOwnSideFiles(m_strPath, m_strUrl);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    m_pDb.get_deleter().bOwnJournal = !m_fixed && !HasMoved();
}

/**
 * What is read of an older store locks it for as long as a statement takes where it has no journal. Whoever brings it
 * up in between leaves another file's journal at the path, which the engine then takes for that of this one.
 * @param bAgain whether it can be opened once more
 * @return false when it must be, because another file stands at the path
 */
bool CSqliteConnection::OpenStore(bool bEmpty, bool bAgain) {
    if (!bEmpty) {
        BringUp();
        OpenJournal();
    }
    try {
        Execute(CONNECTION_SETTINGS);
        OpenSchema();
    } catch (const OS::CException&) {
        if (!bAgain || !IsAnotherThere() || !CanLook() || CSettingsStore::IsWaitEnded()) {
            throw;
        }
        return false;
    }
    return true;
}

/** The journal may know more than the header has told, also that nobody has finished making the store. */
void CSqliteConnection::OpenSchema() {
    if (m_bRead && Number(GET_APPLICATION) == 0 && Number(COUNT_PAGES) == 0) {
        Open(IN_MEMORY, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        CreateSchema();
    }
    if (!m_bRead) {
        CreateSchema();
    }
    CheckOwner(Number(GET_APPLICATION));
    m_iVersion = static_cast<int>(Number(GET_VERSION));
    CheckVersion(m_iVersion);
    RequireStillThere();
    if (!m_bRead) {
        ChangeJournal();
        Number(GET_VERSION);  // which opens the journal
    }
    if (m_bRead && m_iVersion < SETTINGS_SCHEMA_VERSION) {
        CopyOlder();
    }
    if (m_bRead) {
        Execute(READING_SETTING);
    }
}

/** Whether this only reads, from a file in whose place another one stands, whose journal it may have by now. */
bool CSqliteConnection::IsAnotherThere() const {
    const bool bFile = *sqlite3_db_filename(Get(), "main") != '\0';
    return m_bRead && bFile && !m_fixed && HasMoved();
}

void CSqliteConnection::RequireStillThere() const {
    if (IsAnotherThere()) {
        Refuse(CHANGED);
    }
}

/** In one transaction, so that it is one state of the store. */
void CSqliteConnection::CopyOlder() {
    CMemoryStore records;
    Execute(SqlText::BEGIN_READ);
    ReadOlderSqliteFile(*this, records);
    Execute(SqlText::COMMIT);
    RequireUnchanged(StoreDoing::OPENING);
    RequireStillThere();
    m_pDb.get_deleter().bOwnJournal = !m_fixed && !HasMoved();
    m_fixed.reset();
    Open(IN_MEMORY, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    CreateSchema(&records);
}

void CSqliteConnection::Open(const std::string& strName, int iFlags) {
    sqlite3* pDb = nullptr;
    const int iCode =
        sqlite3_open_v2(strName.c_str(), &pDb, iFlags | SQLITE_OPEN_NOMUTEX, SqlitePageSums::GetVfsName());
    m_pDb.reset(pDb);
    m_pDb.get_deleter().bOwnJournal = false;
    m_iFlags = iFlags;
    if (iCode != SQLITE_OK) {
        Throw(iCode, StoreDoing::OPENING);
    }
    sqlite3_extended_result_codes(Get(), 1);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_busy_handler(Get(), Wait, this);
}

/** What is only read stays as it is. */
bool CSqliteConnection::IsToBeReplaced(int iVersion) const {
    return iVersion == MOVED_VERSION || (!m_bRead && iVersion < SETTINGS_SCHEMA_VERSION);
}

void CSqliteConnection::RequireReplaceable() const {
    if (IsSqliteFileAnothersToReplace(m_strPath)) {
        ThrowSystemError(m_strPath, StoreDoing::OPENING, EPERM);
    }
    if (!IsSqliteFileReplaceable(m_strPath)) {
        Refuse(OLDER);
    }
}

/**
 * Puts a store of this version in the place of an older one, which nobody else may have open meanwhile: what they wrote
 * would be lost. Whoever is shut out must not wait with the file open, for the others would wait for that.
 */
void CSqliteConnection::BringUp() {
    for (int iWaited = 0; IsToBeReplaced(CheckHeader()); iWaited += STEP_MILLISECONDS) {
        if (!m_bRead && !HasMoved()) {
            RequireReplaceable();
        }
        if (!m_bRead && ShutOthersOut()) {
            m_note.Leave();
            RenewSqliteFile(*this, m_strPath);
            GiveUpFile();
            m_note.Remove();
        } else if (iWaited >= m_iBusyMilliseconds || CSettingsStore::IsWaitEnded()) {
            const std::string strWriter = m_note.Read();
            ThrowStoreError(m_strUrl, StoreDoing::OPENING,
                            OLDER_IN_USE + (strWriter.empty() ? "" : " (" + strWriter + ')'), SQLITE_BUSY);
        }
        OpenAnew();
    }
}

/** What stands beside the path may be another file's, so it is left alone. */
void CSqliteConnection::OpenAnew() {
    sqlite3_close(m_pDb.release());
    sqlite3_sleep(STEP_MILLISECONDS);
    Open(m_strPath, m_iFlags);
}

/** With its first look into the file the engine opens the journal at the path, for as long as it has the file open. */
void CSqliteConnection::OpenJournal() {
    for (int iWaited = 0; !m_fixed && !HasOwnJournal(); iWaited += STEP_MILLISECONDS) {
        if (iWaited >= m_iBusyMilliseconds || CSettingsStore::IsWaitEnded()) {
            ThrowBusy(m_strUrl, StoreDoing::OPENING, m_note.Read(), SQLITE_BUSY);
        }
        OpenAnew();
        BringUp();
    }
}

/**
 * Whoever puts another file in the place of this one has it reserved meanwhile, and moves its journal first: one that
 * was made then, or after it, lies beside the other file.
 */
bool CSqliteConnection::HasOwnJournal() const {
    const int iCode = sqlite3_exec(Get(), COUNT_PAGES, nullptr, nullptr, nullptr);
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(Get(), nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    int iReserved = 0;
    pFile->pMethods->xCheckReservedLock(pFile, &iReserved);
    if (HasMoved()) {
        if (!CanLook()) {
            Refuse(std::generic_category().message(errno));
        }
        return false;
    }
    if (iCode != SQLITE_OK) {
        Throw(iCode, StoreDoing::OPENING);
    }
    return iReserved == 0;
}

/**
 * Whoever had opened the file, and looks into it only now, must not take it for the store: an older program would make
 * a journal for it at the path where the new one stands. If it cannot be written, nothing more can be done about it.
 */
void CSqliteConnection::GiveUpFile() noexcept {
    constexpr unsigned char NEWER[] = {0x7F, 0xFF, 0xFF, 0xFF};
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(Get(), nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    pFile->pMethods->xWrite(pFile, NEWER, sizeof(NEWER), HEADER_VERSION);
}

/**
 * Nobody puts another file in the place of one that is locked; before that is so, the journal at the path may be the
 * other's, which the engine would empty into this one.
 * @return whether nobody else has the file open, which still stands at the path
 */
bool CSqliteConnection::ShutOthersOut() {
    sqlite3_busy_handler(Get(), nullptr, nullptr);
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(Get(), nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    int iCode = pFile->pMethods->xLock(pFile, SQLITE_LOCK_SHARED);
    if (iCode == SQLITE_OK && HasMoved()) {
        if (!CanLook()) {
            Refuse(std::generic_category().message(errno));
        }
        return false;
    }
    if (iCode == SQLITE_OK) {
        iCode = sqlite3_exec(Get(), SHUT_OTHERS_OUT, nullptr, nullptr, nullptr);
    }
    if (iCode != SQLITE_OK && (iCode & 0xFF) != SQLITE_BUSY) {
        Throw(iCode, StoreDoing::OPENING);
    }
    return iCode == SQLITE_OK;
}

/** As the engine's own timeout waits, but that somebody can end it. @return whether to try again */
int CSqliteConnection::Wait(void* pConnection, int iTries) noexcept {
    auto& self = *static_cast<CSqliteConnection*>(pConnection);
    self.m_iWaited = iTries == 0 ? 0 : self.m_iWaited;
    if (self.m_iWaited >= self.m_iBusyMilliseconds || CSettingsStore::IsWaitEnded()) {
        return 0;
    }
    const int iStep = std::min({iTries + 1, LONGEST_STEP_MILLISECONDS, self.m_iBusyMilliseconds - self.m_iWaited});
    sqlite3_sleep(iStep);
    self.m_iWaited += iStep;
    return 1;
}

/**
 * The engine leaves the journal where it is when another file stands at the path by then, and the next to open that
 * file would take it for that file's own. So what it holds goes to the file that is open before, and nothing of it
 * stays, unless somebody else is reading it. Then the engine removes the journal by its name, which may be that file's
 * by then; nobody puts a file in the place of one that is locked.
 */
void CSqliteConnection::SClose::operator()(sqlite3* pDb) const noexcept {
    if (bOwnJournal) {
        if (sqlite3_total_changes(pDb) != 0 || ::HasMoved(pDb)) {
            sqlite3_busy_handler(pDb, nullptr, nullptr);
            sqlite3_wal_checkpoint_v2(pDb, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
        }
        sqlite3_file* pFile = nullptr;
        sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
        if (pFile->pMethods->xLock(pFile, SQLITE_LOCK_EXCLUSIVE) != SQLITE_OK || ::HasMoved(pDb)) {
            sqlite3_db_config(pDb, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        }
    }
    sqlite3_close(pDb);
}

/** The file is read through the engine's own handle, because closing a second one would drop the engine's locks. */
int CSqliteConnection::ReadFirstPage(std::vector<unsigned char>& vecPage) const {
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(Get(), nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    vecPage.resize(SqlitePageSums::PAGE_SIZE);
    return pFile->pMethods->xRead(pFile, vecPage.data(), SqlitePageSums::PAGE_SIZE, 0);
}

bool CSqliteConnection::HasNoHeader() const {
    std::vector<unsigned char> vecPage;
    return ReadFirstPage(vecPage) == SQLITE_OK &&
           std::all_of(vecPage.begin(), vecPage.begin() + HEADER_END, [](unsigned char c) { return c == 0; });
}

/**
 * Looks at the file before the engine does: its first statement may already repair or convert a file that is none of
 * ours.
 */
int CSqliteConnection::CheckHeader() const {
    std::vector<unsigned char> vecPage;
    const int iCode = ReadFirstPage(vecPage);
    if (iCode != SQLITE_OK && iCode != SQLITE_IOERR_SHORT_READ && iCode != SQLITE_IOERR_DATA) {
        Refuse(sqlite3_errstr(iCode));
    }
    // Whoever wrote the page was killed: the journal has it whole, or the one before, and the engine takes that.
    const std::int32_t iApplication = ReadBigEndian(&vecPage[HEADER_APPLICATION]);
    const bool bUnfinished = iApplication == APPLICATION_ID && HasSqliteJournal(m_strPath);
    const bool bAltered = iCode == SQLITE_IOERR_DATA && !bUnfinished;
    if (IsSqliteFileEmpty(m_strPath)) {
        ThrowStoreError(m_strUrl, StoreDoing::OPENING, EMPTY, StoreCode::DAMAGED);
    }
    // A file that is cut within its header may have been a store.
    if (std::memcmp(vecPage.data(), HEADER_MAGIC, sizeof(HEADER_MAGIC)) != 0 ||
        ReadBigEndian(&vecPage[HEADER_END]) == 0) {
        ThrowStoreError(m_strUrl, StoreDoing::OPENING, FOREIGN, StoreCode::DAMAGED);
    }
    if (!bAltered) {
        CheckOwner(iApplication);
    }
    const std::int32_t iVersion = ReadBigEndian(&vecPage[HEADER_VERSION]);
    const bool bSummed = vecPage[HEADER_RESERVED] == SqlitePageSums::SUM_SIZE;
    if (HasMoved() && CanLook()) {
        return MOVED_VERSION;
    }
    // How a newer version sums its pages is its own affair.
    const bool bKnown = iVersion <= SETTINGS_SCHEMA_VERSION;
    if (bAltered || (bKnown && bSummed != (iVersion >= SchemaVersion::PAGE_SUMS))) {
        ThrowStoreError(m_strUrl, StoreDoing::OPENING, std::string(DAMAGED_BEGINNING) + StoreAdvice::DAMAGED,
                        StoreCode::DAMAGED);
    }
    CheckVersion(iVersion);
    return iVersion;
}

bool CSqliteConnection::IsStore(const std::string& strPath) {
    Header aHeader{};
    return std::ifstream(strPath, std::ios::binary).read(aHeader.data(), aHeader.size()) && IsOfStore(aHeader);
}

bool CSqliteConnection::IsStore(sqlite3_file* pFile) {
    Header aHeader{};
    return pFile->pMethods->xRead(pFile, aHeader.data(), aHeader.size(), 0) == SQLITE_OK && IsOfStore(aHeader);
}

void CSqliteConnection::CheckOwner(std::int64_t iApplication) const {
    if (iApplication != APPLICATION_ID) {
        ThrowStoreError(m_strUrl, StoreDoing::OPENING, OTHERS, StoreCode::FOREIGN);
    }
}

void CSqliteConnection::CheckVersion(std::int64_t iVersion) const {
    if (iVersion < SchemaVersion::TABLES) {
        ThrowStoreError(m_strUrl, StoreDoing::OPENING, FOREIGN, StoreCode::DAMAGED);
    }
    if (iVersion > SETTINGS_SCHEMA_VERSION) {
        Refuse("it was written by a newer version (schema " + std::to_string(iVersion) +
               ", known here: " + std::to_string(SETTINGS_SCHEMA_VERSION) + ") and is left as it is; use that version");
    }
}

/** Comes before the change to WAL mode, so that the marks of a new store stand in the header that others look at. */
void CSqliteConnection::CreateSchema(CSettingsStore* pRecords) {
    if (Number(GET_APPLICATION) != APPLICATION_ID) {
        SqlitePageSums::Reserve(Get());
        Execute(SqlText::BEGIN_WRITE);
        if (Number("SELECT count(*) FROM sqlite_schema") == 0) {  // else another process was faster
            for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
                Execute(SqlText::CreateTable(GetSettingsTable(eKind)));
            }
            CreateTotals(*this, pRecords != nullptr ? FillSqliteTables(*this, *pRecords) : AllStoreTotals{});
            Execute(GET_APPLICATION + (" = " + std::to_string(APPLICATION_ID)));
            Execute(GET_VERSION + (" = " + std::to_string(SETTINGS_SCHEMA_VERSION)));
        }
        Execute(SqlText::COMMIT);
    }
}

/** The engine does not wait here for other processes that make the same change at the same time. */
void CSqliteConnection::ChangeJournal() {
    for (int iWaited = 0;; iWaited += STEP_MILLISECONDS) {
        const int iCode = sqlite3_exec(Get(), JOURNAL_SETTING, nullptr, nullptr, nullptr);
        if (iCode == SQLITE_OK) {
            return;
        }
        if ((iCode & 0xFF) != SQLITE_BUSY || iWaited >= m_iBusyMilliseconds || CSettingsStore::IsWaitEnded()) {
            Throw(iCode, StoreDoing::OPENING);
        }
        sqlite3_sleep(STEP_MILLISECONDS);
    }
}

bool CSqliteConnection::IsInTransaction() const {
    return sqlite3_get_autocommit(Get()) == 0;
}

void CSqliteConnection::OverwriteRefused() noexcept {
    char aSql[sizeof(GET_VERSION) + 20];
    std::snprintf(aSql, sizeof(aSql), "%s = %d", GET_VERSION, SETTINGS_SCHEMA_VERSION);  // as it is, but written
    // Another writer that has the lock overwrites it itself.
    sqlite3_busy_handler(Get(), nullptr, nullptr);
    sqlite3_exec(Get(), aSql, nullptr, nullptr, nullptr);
    sqlite3_busy_handler(Get(), Wait, this);
}

bool CSqliteConnection::HasMoved() const {
    return ::HasMoved(Get());
}

bool CSqliteConnection::CanLook() const {
    struct stat status {};
    return ::stat(sqlite3_db_filename(Get(), "main"), &status) == 0 || errno == ENOENT || errno == ENOTDIR;
}

void CSqliteConnection::LeaveMemoryUncounted() noexcept {
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // refused once the engine is in use: then it counts
}

void CSqliteConnection::Execute(const std::string& strSql) {
    const int iCode = sqlite3_exec(Get(), strSql.c_str(), nullptr, nullptr, nullptr);
    if (iCode != SQLITE_OK) {
        Throw(iCode, StoreDoing::OPENING);
    }
}

std::int64_t CSqliteConnection::Number(const std::string& strSql) {
    CSqliteStatement statement(*this, strSql, StoreDoing::OPENING);
    statement.Step();
    return statement.Number(0);
}

void CSqliteConnection::Throw(int iCode, const char* pDoing) const {
    const int iPrimaryCode = iCode & 0xFF;
    if (iPrimaryCode == SQLITE_NOMEM || iCode == SQLITE_IOERR_NOMEM) {
        throw std::bad_alloc();
    }
    std::string strWhy = sqlite3_errmsg(Get());
    if (const int iError = sqlite3_system_errno(Get());
        iError != 0 && (iPrimaryCode == SQLITE_IOERR || iPrimaryCode == SQLITE_CANTOPEN)) {
        strWhy += ": " + std::generic_category().message(iError);
    }
    if (iPrimaryCode == SQLITE_BUSY) {
        ThrowBusy(m_strUrl, pDoing, m_note.Read(), iCode);
    }
    RequireUnchanged(pDoing);
    // The statements are right: an error in one is a table or a column that the file lacks.
    if (iCode == SQLITE_IOERR_DATA || iPrimaryCode == SQLITE_CORRUPT || iPrimaryCode == SQLITE_NOTADB ||
        iPrimaryCode == SQLITE_ERROR) {
        const std::string strDamage = iCode == SQLITE_IOERR_DATA ? DAMAGED_PAGE : strWhy;
        ThrowStoreError(m_strUrl, pDoing, "it is damaged: " + strDamage + StoreAdvice::DAMAGED, StoreCode::DAMAGED);
    }
    ThrowStoreError(m_strUrl, pDoing, strWhy, iCode);
}

void CSqliteConnection::RequireUnchanged(const char* pDoing) const {
    if (m_fixed && *m_fixed != GetSqliteFileState(m_strPath)) {
        ThrowStoreError(m_strUrl, pDoing, CHANGED, SQLITE_BUSY);
    }
}

void CSqliteConnection::Refuse(const std::string& strWhy) const {
    ThrowStoreError(m_strUrl, StoreDoing::OPENING, strWhy);
}
