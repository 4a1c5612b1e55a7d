#include "platform/store/CSqliteStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "platform/common/CException.h"
#include "platform/store/CReservedFile.h"
#include "platform/store/CWriterNote.h"
#include "platform/store/SqlText.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/SqlitePageSums.h"
#include "platform/store/StoreError.h"
#include "tests/cli/ToolRun.h"
#include "tests/cli/Unprivileged.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/OlderStores.h"
#include "tests/support/Sanitized.h"
#include "tests/support/StoreDump.h"
#include "tests/support/TempDir.h"
#include "tests/support/UndoneJournal.h"

namespace fs = std::filesystem;

namespace {

constexpr int SHORT_WAIT = 50;

CSettingsRow Expression(const std::string& strSubject, const std::string& strPattern = "") {
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(AssetColumn::SUBJECT, strSubject);
    row.SetText(ExpressionColumn::PATTERN, strPattern);
    return row;
}

int Mode(const std::string& strPath) {
    struct stat status {};
    return ::stat(strPath.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
}

/** Runs the function in a process of its own. @return its process id; the exit code is 0 when it returns */
pid_t StartProcess(const std::function<void()>& fnChild) {
    const pid_t iProcess = ::fork();
    if (iProcess == 0) {
        try {
            fnChild();
            ::_exit(0);
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "%s\n", exception.what());
            ::_exit(1);
        }
    }
    return iProcess;
}

/** @return the exit code, or minus the signal that ended the process */
int WaitFor(pid_t iProcess) {
    int iStatus = 0;
    ::waitpid(iProcess, &iStatus, 0);
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -WTERMSIG(iStatus);
}

class SqliteStore : public testing::Test {
  protected:
    std::string Path() const { return m_folder.Path("settings.db"); }
    std::string Opening(const std::string& strPath, const std::string& strWhy) const {
        return "settings store sqlite:" + strPath + ", opening it: " + strWhy;
    }
    /** Every file of the folder with its bytes and its time. */
    std::map<std::string, std::pair<std::string, fs::file_time_type>> Files() const {
        std::map<std::string, std::pair<std::string, fs::file_time_type>> mapFiles;
        for (const auto& entry : fs::directory_iterator(m_folder.Path())) {
            const std::string strName = entry.path().filename().string();
            mapFiles[strName] = {entry.is_regular_file() ? m_folder.Read(strName) : "", entry.last_write_time()};
        }
        return mapFiles;
    }
    /** Of every file of the folder. */
    std::vector<std::string> Names() const {
        std::vector<std::string> vecNames;
        for (const auto& [strName, file] : Files()) {
            vecNames.push_back(strName);
        }
        return vecNames;
    }
    /** Opens the path. @return why that was refused; fails the test when the folder is not as it was */
    std::string RefusalOf(const std::string& strPath) const {
        const auto mapBefore = Files();
        std::string strMessage = ExceptionText([&] { CSqliteStore store(strPath); });
        EXPECT_TRUE(mapBefore == Files()) << strPath;
        return strMessage;
    }

    CTempDir m_folder;
};

TEST_F(SqliteStore, FilesAndFoldersAreTheOwnersAloneWhateverTheUmask) {
    for (const mode_t iMask : {0000U, 0022U, 0277U}) {
        const mode_t iOldMask = ::umask(iMask);
        const std::string strTop = "mask" + std::to_string(iMask);
        CSqliteStore store(m_folder.Path(strTop + "/made too/settings.db"));
        store.Save(Expression("S"));
        ::umask(iOldMask);
        EXPECT_EQ(0700, Mode(m_folder.Path(strTop)));
        EXPECT_EQ(0700, Mode(m_folder.Path(strTop + "/made too")));
        for (const char* pEnd : {"", "-wal", "-shm"}) {
            EXPECT_EQ(0600, Mode(m_folder.Path(strTop + "/made too/settings.db" + pEnd))) << pEnd;
        }
    }
}

TEST_F(SqliteStore, FoldersThatWereThereKeepTheirMode) {
    ::chmod(m_folder.Path().c_str(), 0755);
    CSqliteStore store(Path());
    EXPECT_EQ(0755, Mode(m_folder.Path()));
    EXPECT_EQ(0600, Mode(Path()));
}

TEST_F(SqliteStore, WhatWasSavedIsThereWhenOpenedAgain) {
    CSqliteStore(Path()).Save(Expression("S", "p"));
    {
        CSqliteStore store(Path());
        EXPECT_EQ("expressions subject=\"S\" pattern=\"p\"\n", DumpStore(store));
    }
    EXPECT_EQ(std::vector<std::string>{"settings.db"}, Names());
}

TEST_F(SqliteStore, FileIsMarkedAsASettingsStore) {
    { CSqliteStore store(Path()); }
    const std::string strFile = m_folder.Read("settings.db");
    EXPECT_EQ(std::string("SQLite format 3\0\x20\0\2\2", 20), strFile.substr(0, 20));  // pages of 8192 bytes, WAL
    EXPECT_EQ(8, strFile[20]);  // bytes that each page keeps for its checksum
    EXPECT_EQ(std::string("\0\0\0\3", 4), strFile.substr(60, 4));
    EXPECT_EQ("DLPS", strFile.substr(68, 4));
}

TEST_F(SqliteStore, TellsWhatItIs) {
    CSqliteStore store(Path());
    const SStoreInfo info = store.GetInfo();
    EXPECT_EQ("sqlite:" + Path(), info.strUrl);
    EXPECT_EQ(std::string("SQLite ") + sqlite3_libversion(), info.strEngine);
    EXPECT_EQ(3, info.iSchemaVersion);
}

TEST_F(SqliteStore, EmptyFileBecomesAStore) {
    m_folder.Write("settings.db", "");
    CSqliteStore(Path()).Save(Expression("S"));
    CSqliteStore store(Path());
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(store));
}

TEST_F(SqliteStore, StoreWhoseMakingWasCutShortIsStillToBeMade) {
    { CSqliteStore store(Path()); }
    RunSql(Path(), "PRAGMA journal_mode = DELETE");
    const std::string strMade = m_folder.Read("settings.db");
    for (const EUnitOfWork eUse : {EUnitOfWork::READ, EUnitOfWork::WRITE}) {
        m_folder.Write("settings.db", strMade);
        m_folder.Write("settings.db-journal", JournalOfAnEmptyFile());
        {
            CSqliteStore store(Path(), SHORT_WAIT, eUse);
            EXPECT_EQ("", DumpStore(store));
            EXPECT_FALSE(fs::exists(Path() + "-journal"));
        }
        CSqliteStore(Path()).Save(Expression("S"));
        CSqliteStore store(Path());
        EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(store));
        store.Check([](const SStoreDamage& damage) { ADD_FAILURE() << ToText(damage); });
    }
}

TEST_F(SqliteStore, DiskThatCannotReadIsNoDamage) {
    const std::string strLong(20000, 'p');  // goes on in further pages
    CSqliteStore(Path()).Save(Expression("S", strLong));
    static bool s_bFails = false;
    static int s_iReads = 0;
    sqlite3_vfs* pVfs = sqlite3_vfs_find(nullptr);
    using Read = ssize_t(int, void*, std::size_t, off_t);
    static Read* const fnRead = reinterpret_cast<Read*>(pVfs->xGetSystemCall(pVfs, "pread64"));
    Read* const fnFailing = [](int iFile, void* pBytes, std::size_t iSize, off_t iOffset) -> ssize_t {
        if (s_bFails || ++s_iReads == 0) {
            errno = EIO;
            return -1;
        }
        return fnRead(iFile, pBytes, iSize, iOffset);
    };
    pVfs->xSetSystemCall(pVfs, "pread64", reinterpret_cast<sqlite3_syscall_ptr>(fnFailing));
    CSqliteStore store(Path(), SHORT_WAIT, EUnitOfWork::READ);
    s_bFails = true;
    EXPECT_EQ("settings store sqlite:" + Path() + ", reading records: disk I/O error: Input/output error",
              ExceptionText([&] { DumpStore(store); }));
    s_bFails = false;
    EXPECT_EQ("expressions subject=\"S\" pattern=\"" + strLong + "\"\n", DumpStore(store));
    const auto fnCheck = [&] {
        CSqliteStore checked(Path(), SHORT_WAIT, EUnitOfWork::READ);
        checked.Check([](const SStoreDamage& damage) { ADD_FAILURE() << ToText(damage); });
    };
    s_iReads = 0;
    fnCheck();
    EXPECT_LT(5, s_iReads);
    for (int i = s_iReads; i > 0; --i) {
        s_iReads = -i;  // the last of so many fails
        EXPECT_NE(std::string::npos, ExceptionText(fnCheck).find("disk I/O error")) << i;
    }
    pVfs->xSetSystemCall(pVfs, "pread64", nullptr);
}

/** @return the first page as a log of the engine holds it last */
std::string LastFirstPage(const std::string& strLog) {
    constexpr std::size_t LOG_HEADER = 32;
    constexpr std::size_t FRAME_HEADER = 24;
    constexpr std::size_t FRAME = FRAME_HEADER + SqlitePageSums::PAGE_SIZE;
    std::string strPage;
    for (std::size_t i = LOG_HEADER; i + FRAME <= strLog.size(); i += FRAME) {
        if (strLog.compare(i, 4, std::string("\0\0\0\1", 4)) == 0) {
            strPage = strLog.substr(i + FRAME_HEADER, SqlitePageSums::PAGE_SIZE);
        }
    }
    return strPage;
}

TEST_F(SqliteStore, FirstPageThatIsHalfWrittenIsTakenFromTheJournal) {
    constexpr std::size_t SECTOR = 512;
    CSqliteStore(Path()).Save(Expression("A"));
    const std::string strBefore = m_folder.Read("settings.db");
    std::string strLog;
    {
        CSqliteStore store(Path());
        CSettingsTransaction unit(store, EUnitOfWork::WRITE);
        for (int i = 0; i < 20; ++i) {
            store.Save(Expression("B" + std::to_string(i), std::string(5000, 'p')));
        }
        unit.Commit();
        strLog = m_folder.Read("settings.db-wal");
    }
    const std::string strDump = DumpStore(*std::make_unique<CSqliteStore>(Path()));
    const std::string strPage = LastFirstPage(strLog);
    ASSERT_EQ(strPage.size(), static_cast<std::size_t>(SqlitePageSums::PAGE_SIZE));
    for (std::size_t iWritten = 0; iWritten <= strPage.size(); iWritten += SECTOR) {
        for (const EUnitOfWork eUse : {EUnitOfWork::READ, EUnitOfWork::WRITE}) {
            m_folder.Write("torn.db", strPage.substr(0, iWritten) + strBefore.substr(iWritten));
            m_folder.Write("torn.db-wal", strLog);
            CSqliteStore store(m_folder.Path("torn.db"), SHORT_WAIT, eUse);
            EXPECT_EQ(strDump, DumpStore(store)) << iWritten;
            store.Check([](const SStoreDamage& damage) { ADD_FAILURE() << ToText(damage); });
        }
    }
    m_folder.Write("alone.db", strPage.substr(0, SECTOR) + strBefore.substr(SECTOR));
    EXPECT_EQ(Opening(m_folder.Path("alone.db"),
                      "it is damaged: its first page is not as it was written; \"dlpctl store check\" says what else "
                      "is, \"dlpctl store restore\" brings back a backup"),
              RefusalOf(m_folder.Path("alone.db")));
}

TEST_F(SqliteStore, StoreWhosePowerWasCutWhileItWasMadeIsMadeAnew) {
    for (const EUnitOfWork eUse : {EUnitOfWork::READ, EUnitOfWork::WRITE}) {
        m_folder.Write("settings.db", std::string(SqlitePageSums::PAGE_SIZE, '\0') + std::string(5000, 'p'));
        m_folder.Write("settings.db-journal", JournalOfAnEmptyFile());
        EXPECT_EQ("", DumpStore(*std::make_unique<CSqliteStore>(Path(), SHORT_WAIT, eUse)));
        CSqliteStore(Path()).Save(Expression("A"));
        EXPECT_EQ(SqlitePageSums::SUM_SIZE, m_folder.Read("settings.db")[20]);
        CSqliteStore(Path()).Check([](const SStoreDamage& damage) { ADD_FAILURE() << ToText(damage); });
    }
    m_folder.Write("alone.db", std::string(SqlitePageSums::PAGE_SIZE, '\0'));
    EXPECT_NE(std::string::npos, RefusalOf(m_folder.Path("alone.db")).find("it is no settings store"));
    m_folder.Write("alone.db-journal", "of somebody else, with more bytes");
    EXPECT_NE(std::string::npos, RefusalOf(m_folder.Path("alone.db")).find("it is no settings store"));
    EXPECT_EQ(std::string(SqlitePageSums::PAGE_SIZE, '\0'), m_folder.Read("alone.db"));
}

TEST_F(SqliteStore, FileThatWasCutToNothingIsNotTakenForANewOne) {
    m_folder.Write("settings.db", "");
    m_folder.Write("settings.db-wal", "a journal");
    const std::string strCut =
        Opening(Path(),
                "it is damaged: it was cut to no bytes, and the journal beside it is not empty; \"dlpctl store "
                "check\" says what else is, \"dlpctl store restore\" brings back a backup");
    EXPECT_EQ(strCut, RefusalOf(Path()));
    EXPECT_EQ(strCut, ExceptionText([&] { CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ); }));
    EXPECT_EQ("", m_folder.Read("settings.db"));
    EXPECT_EQ("a journal", m_folder.Read("settings.db-wal"));
    fs::create_directory_symlink(m_folder.Path(), m_folder.Path("here"));
    fs::create_symlink(Path(), m_folder.Path("link.db"));
    EXPECT_TRUE(IsSqliteFileCut(Path()) && IsSqliteFileCut(m_folder.Path("link.db")) &&
                IsSqliteFileCut(m_folder.Path("here/settings.db")));
    m_folder.Write("settings.db-wal", "");
    EXPECT_EQ("", DumpStore(*CSettingsStore::Make("sqlite:" + Path())));
}

TEST_F(SqliteStore, RelativePathCountsFromTheFolderOfTheOpening) {
    const fs::path oldFolder = fs::current_path();
    fs::current_path(m_folder.Path());
    CSqliteStore store("sub/settings.db");
    fs::current_path(oldFolder);
    store.Save(Expression("S"));
    EXPECT_EQ("sqlite:" + fs::canonical(m_folder.Path("sub/settings.db")).string(), store.GetInfo().strUrl);
}

TEST_F(SqliteStore, PathsThatCannotBeAreRefused) {
    m_folder.Write("file", "");
    m_folder.MakeFolder("folder");
    const std::string strNul = std::string("a\0b", 3);
    EXPECT_EQ(Opening("", "it names no file; write sqlite:PATH"), RefusalOf(""));
    EXPECT_EQ("settings store sqlite:a", RefusalOf(strNul).substr(0, 23));
    EXPECT_EQ(Opening(m_folder.Path("folder"), "it is a folder"), RefusalOf(m_folder.Path("folder")));
    EXPECT_EQ(Opening("/dev/null", "it is no file"), RefusalOf("/dev/null"));
    EXPECT_EQ(Opening(m_folder.Path("file/x.db"), "cannot make the file: Not a directory"),
              RefusalOf(m_folder.Path("file/x.db")));
    EXPECT_EQ(Opening(m_folder.Path("file/x/y.db"),
                      "cannot make the folder " + m_folder.Path("file/x") + ": Not a directory"),
              RefusalOf(m_folder.Path("file/x/y.db")));
    EXPECT_EQ(Opening("/proc/none/x.db", "cannot make the folder /proc/none: No such file or directory"),
              RefusalOf("/proc/none/x.db"));
}

TEST_F(SqliteStore, FolderThatIsGoneIsNoPlaceForARelativePath) {
    const fs::path oldFolder = fs::current_path();
    fs::current_path(m_folder.MakeFolder("gone"));
    fs::remove(m_folder.Path("gone"));
    EXPECT_EQ(Opening("x.db", "No such file or directory"), RefusalOf("x.db"));
    fs::current_path(oldFolder);
}

TEST_F(SqliteStore, LinkToAFileIsFollowed) {
    fs::create_symlink(m_folder.Path("real.db"), Path());
    EXPECT_EQ(Opening(Path(), "it is a symbolic link that leads to no file: No such file or directory"),
              ExceptionText([&] { CSqliteStore store(Path()); }));
    m_folder.Write("real.db", "");
    CSqliteStore(Path()).Save(Expression("S"));
    EXPECT_TRUE(fs::is_symlink(Path()));
    EXPECT_EQ(1u, CSqliteStore(m_folder.Path("real.db")).Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, PlacesWithoutPermissionAreRefused) {
    m_folder.Write("settings.db", "");
    ::chmod(Path().c_str(), 0444);
    m_folder.MakeFolder("folder");
    ::chmod(m_folder.Path("folder").c_str(), 0555);
    m_folder.MakeFolder("closed");
    ::chmod(m_folder.Path("closed").c_str(), 0);
    ::chmod(m_folder.Path().c_str(), 0755);
    const bool bRoot = ::geteuid() == 0;
    if (bRoot) {
        ASSERT_EQ(0, ::seteuid(65534));  // root may do anything
    }
    EXPECT_EQ(Opening(Path(), "cannot read and write the file: Permission denied"), RefusalOf(Path()));
    EXPECT_EQ(Opening(m_folder.Path("folder/x.db"), "cannot make the file: Permission denied"),
              RefusalOf(m_folder.Path("folder/x.db")));
    EXPECT_EQ(Opening(m_folder.Path("folder/x/y.db"),
                      "cannot make the folder " + m_folder.Path("folder/x") + ": Permission denied"),
              RefusalOf(m_folder.Path("folder/x/y.db")));
    EXPECT_EQ(Opening(m_folder.Path("closed/x/y.db"),
                      "cannot make the folder " + m_folder.Path("closed/x") + ": Permission denied"),
              ExceptionText([&] { CSqliteStore store(m_folder.Path("closed/x/y.db")); }));
    if (bRoot) {
        ASSERT_EQ(0, ::seteuid(0));
    }
}

const char FOREIGN[] =
    "it is no settings store, or a damaged one, and is left as it is; name another path, or bring back a backup "
    "(\"dlpctl store restore\")";
const char OTHERS[] = "it is another program's database, and is left as it is; name another path";
const char ADVICE[] = "; \"dlpctl store check\" says what else is, \"dlpctl store restore\" brings back a backup";

TEST_F(SqliteStore, FileThatIsNoDatabaseIsLeftAsItIs) {
    const std::string FILES[] = {"x",
                                 "some text\n",
                                 std::string(100, '\0'),
                                 std::string(20000, '\xFF'),
                                 "SQLite format 3",
                                 std::string("SQLite format 3\0", 16),
                                 "SQLite format 3 is not this" + std::string(8192, 'x')};
    for (const std::string& strContent : FILES) {
        m_folder.Write("settings.db", strContent);
        EXPECT_EQ(Opening(Path(), FOREIGN), RefusalOf(Path()));
    }
}

TEST_F(SqliteStore, DatabaseOfAnotherProgramIsLeftAsItIs) {
    const std::pair<const char*, const char*> PROGRAMS[] = {
        {"CREATE TABLE t (x); INSERT INTO t VALUES (1);", OTHERS},
        {"PRAGMA journal_mode = WAL; CREATE TABLE expressions (subject TEXT);", OTHERS},
        {"PRAGMA application_id = 1; PRAGMA user_version = 1; CREATE TABLE t (x);", OTHERS},
        {"PRAGMA application_id = 0x444C5053; CREATE TABLE t (x);", FOREIGN},
        {"PRAGMA application_id = 0x444C5053; PRAGMA user_version = -1;", FOREIGN},
        {"PRAGMA user_version = 1;", OTHERS},
    };
    for (const auto& [pSql, pWhy] : PROGRAMS) {
        fs::remove(Path());
        RunSql(Path(), pSql, nullptr);
        EXPECT_EQ(Opening(Path(), pWhy), RefusalOf(Path())) << pSql;
    }
}

TEST_F(SqliteStore, JournalsOfAnotherProgramAreLeftAsTheyAre) {
    // A process that ends without closing leaves its last changes in the -wal file or a journal to be played back.
    for (const char* pMode : {"WAL", "DELETE"}) {
        fs::remove(Path());
        const pid_t iProcess = StartProcess([&] {
            sqlite3* pDb = nullptr;
            sqlite3_open(Path().c_str(), &pDb);
            const std::string strSql = std::string("PRAGMA journal_mode = ") + pMode +
                                       "; PRAGMA cache_size = 1; CREATE TABLE t (x); BEGIN; INSERT INTO t "
                                       "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 500) "
                                       "SELECT randomblob(1000) FROM n;";
            sqlite3_exec(pDb, strSql.c_str(), nullptr, nullptr, nullptr);
            ::raise(SIGKILL);
        });
        ASSERT_EQ(-SIGKILL, WaitFor(iProcess));
        ASSERT_GE(Files().size(), 2u) << pMode;
        EXPECT_EQ(Opening(Path(), OTHERS), RefusalOf(Path())) << pMode;
        fs::remove(Path() + "-wal");
        fs::remove(Path() + "-shm");
        fs::remove(Path() + "-journal");
    }
}

TEST_F(SqliteStore, NewerSchemaIsLeftAsItIs) {
    CSqliteStore(Path()).Save(Expression("S"));
    RunSql(Path(), "PRAGMA user_version = 4; ALTER TABLE expressions ADD COLUMN more TEXT;");
    EXPECT_EQ(Opening(Path(),
                      "it was written by a newer version (schema 4, known here: 3) and is left as it is; use "
                      "that version"),
              RefusalOf(Path()));
}

TEST_F(SqliteStore, NewerSchemaWhosePagesAreOfAnotherKindIsNoDamage) {
    RunSql(Path(), "PRAGMA application_id = 0x444C5053; PRAGMA user_version = 4; CREATE TABLE expressions (x);", nullptr);
    EXPECT_EQ(Opening(Path(),
                      "it was written by a newer version (schema 4, known here: 3) and is left as it is; use "
                      "that version"),
              RefusalOf(Path()));
}

TEST_F(SqliteStore, NewerSchemaThatOnlyTheJournalKnowsIsRefused) {
    CSqliteStore(Path()).Save(Expression("S"));
    const pid_t iProcess = StartProcess([&] {
        sqlite3* pDb = nullptr;
        sqlite3_open_v2(Path().c_str(), &pDb, SQLITE_OPEN_READWRITE, SqlitePageSums::GetVfsName());
        sqlite3_exec(pDb, "PRAGMA user_version = 4", nullptr, nullptr, nullptr);
        ::raise(SIGKILL);
    });
    ASSERT_EQ(-SIGKILL, WaitFor(iProcess));
    EXPECT_EQ(Opening(Path(),
                      "it was written by a newer version (schema 4, known here: 3) and is left as it is; use "
                      "that version"),
              ExceptionText([&] { CSqliteStore store(Path()); }));
}

TEST_F(SqliteStore, OpenedForReadingItMakesNothing) {
    const std::string strMissing = "cannot read the file: No such file or directory";
    m_folder.MakeFolder("folder");
    const std::pair<std::string, std::string> aRefused[] = {
        {Path(), strMissing},
        {m_folder.Path("none/settings.db"), strMissing},
        {m_folder.Path("folder"), "it is a folder"},
        {"/dev/null", "it is no file"},
        {m_folder.Write("empty.db", ""),
         "it is empty: nobody has finished making it, or it was cut to nothing; the next import makes it, or bring "
         "back "
         "a backup (\"dlpctl store restore\")"},
        {m_folder.Write("text.db", "text"), FOREIGN},
    };
    const auto mapBefore = Files();
    for (const auto& [strPath, strWhy] : aRefused) {
        EXPECT_EQ(Opening(strPath, strWhy), ExceptionText([&strFile = strPath] {
                      CSettingsStore::Make("sqlite:" + strFile, EUnitOfWork::READ);
                  }));
    }
    EXPECT_TRUE(mapBefore == Files());
}

TEST_F(SqliteStore, OpenedForReadingItIsReadAndLeftAsItIs) {
    CSqliteStore(Path()).Save(Expression("S", "p"));
    const auto mapBefore = Files();
    {
        const std::unique_ptr<CSettingsStore> pStore = CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ);
        EXPECT_EQ("expressions subject=\"S\" pattern=\"p\"\n", DumpStore(*pStore));
        EXPECT_EQ(
            "settings store sqlite:" + Path() + ", beginning a unit of work: attempt to write a readonly database",
            ExceptionText([&] { pStore->Save(Expression("T")); }));
    }
    EXPECT_TRUE(mapBefore == Files());
}

TEST_F(SqliteStore, OpenedForReadingItNeedsNoPermissionToWrite) {
    CSqliteStore(Path()).Save(Expression("S"));
    const std::string strClosed = m_folder.Write("closed.db", "");
    ::chmod(Path().c_str(), 0444);
    ::chmod(strClosed.c_str(), 0);
    ::chmod(m_folder.Path().c_str(), 0777);
    const bool bRoot = ::geteuid() == 0;
    if (bRoot) {
        ASSERT_EQ(0, ::seteuid(65534));  // root may do anything
    }
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(*CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ)));
    EXPECT_EQ(Opening(strClosed, "cannot read the file: Permission denied"),
              ExceptionText([&] { CSettingsStore::Make("sqlite:" + strClosed, EUnitOfWork::READ); }));
    if (bRoot) {
        ASSERT_EQ(0, ::seteuid(0));
    }
}

TEST_F(SqliteStore, OpenedForReadingItNeedsNoPermissionToWriteIntoItsFolder) {
    CSqliteStore(Path()).Save(Expression("S"));
    ::chmod(Path().c_str(), 0666);
    ::chmod(m_folder.Path().c_str(), 0555);
    const CUnprivileged unprivileged;
    for (const char* pMore : {"", "/"}) {  // two slashes begin the name of a host in a URI
        EXPECT_EQ("expressions subject=\"S\"\n",
                  DumpStore(*CSettingsStore::Make("sqlite:" + (pMore + Path()), EUnitOfWork::READ)));
    }
}

TEST_F(SqliteStore, OpenedForReadingItSeesWhatOnlyTheJournalHolds) {
    CSqliteStore writer(Path());
    writer.Save(Expression("S"));
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(*CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ)));
    writer.Save(Expression("T"));
    EXPECT_EQ("expressions subject=\"S\"\nexpressions subject=\"T\"\n", DumpStore(writer));
}

TEST_F(SqliteStore, LinkOfAnotherUserIsNotFollowed) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's link";
    }
    CSqliteStore(m_folder.Path("real.db")).Save(Expression("S"));
    fs::create_symlink(m_folder.Path("real.db"), Path());
    ASSERT_EQ(0, ::lchown(Path().c_str(), 65534, 65534));
    const std::string strWhy = "it is another user's symbolic link, which is not followed; name the file itself";
    EXPECT_EQ(Opening(Path(), strWhy), RefusalOf(Path()));
    EXPECT_EQ(Opening(Path(), strWhy),
              ExceptionText([&] { CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ); }));
}

TEST_F(SqliteStore, LinksOfOthersAreNotFollowedBehindOnesOwn) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's link";
    }
    CSqliteStore(m_folder.Path("real.db")).Save(Expression("S"));
    fs::create_symlink("real.db", m_folder.Path("second.db"));
    fs::create_symlink("second.db", Path());
    EXPECT_EQ("", RefusalOf(Path()));
    ASSERT_EQ(0, ::lchown(m_folder.Path("second.db").c_str(), 65534, 65534));
    EXPECT_EQ(Opening(Path(), "it is another user's symbolic link, which is not followed; name the file itself"),
              RefusalOf(Path()));
}

TEST_F(SqliteStore, WhatAnotherUserHasPutBesideItIsNotTakenForItsOwn) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's file";
    }
    constexpr uid_t OTHER = 65534;
    { CSqliteStore(Path()).Save(Expression("S")); }
    const std::string strBefore = m_folder.Read("settings.db");
    const std::string strFolder = m_folder.Path(".");
    const auto fnOpen = [&](EUnitOfWork eUse) {
        return ExceptionText([&] { EXPECT_NE("", DumpStore(*CSettingsStore::Make("sqlite:" + Path(), eUse))); });
    };
    // Says that there was nothing before: the engine would make the file empty again.
    const std::string strJournal = std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8) + std::string(15, '\0') + '\2' +
                                   std::string(4, '\0') + std::string("\0\0\x20\0", 4) + std::string(1000, '\0');
    for (const char* pSuffix : {"-wal", "-shm", "-journal"}) {
        const std::string strSide = m_folder.Write(std::string("settings.db") + pSuffix, strJournal);
        ASSERT_EQ(0, ::chown(strSide.c_str(), OTHER, OTHER));
        ASSERT_EQ(0, ::chmod(strFolder.c_str(), 01777));
        const std::string strWhy = "beside it, where everybody may write, stands another user's " + strSide +
                                   ", which would be taken for a part of it; have that removed, or move the store into "
                                   "a folder of its own";
        EXPECT_EQ(Opening(Path(), strWhy), fnOpen(EUnitOfWork::WRITE));
        EXPECT_EQ(Opening(Path(), strWhy), fnOpen(EUnitOfWork::READ));
        EXPECT_EQ(strBefore, m_folder.Read("settings.db"));
        fs::rename(strSide, m_folder.Path(std::string("new.db") + pSuffix));
        EXPECT_NE("", ExceptionText([&] { CSqliteStore store(m_folder.Path("new.db")); }));
        EXPECT_FALSE(fs::exists(m_folder.Path("new.db")));
        fs::remove(m_folder.Path(std::string("new.db") + pSuffix));
    }
    // Nor is it in the way where it belongs to who may write the store.
    { CSqliteStore(Path()).Save(Expression("T")); }
    for (const bool bStoreIsTheirs : {true, false}) {
        const pid_t iKilled = StartProcess([&] {
            CSqliteStore(Path()).Save(Expression(bStoreIsTheirs ? "U" : "V"));
            CSqliteStore store(Path());
            store.Begin(EUnitOfWork::READ);
            ::raise(SIGKILL);
        });
        ASSERT_EQ(-SIGKILL, WaitFor(iKilled));
        ASSERT_EQ(0, ::chown((Path() + "-wal").c_str(), OTHER, OTHER));
        if (bStoreIsTheirs) {
            ASSERT_EQ(0, ::chown(Path().c_str(), OTHER, OTHER));
        } else {
            ASSERT_EQ(0, ::chown(Path().c_str(), 0, OTHER));
            ASSERT_EQ(0, ::chmod(Path().c_str(), 0660));
        }
        EXPECT_EQ("", fnOpen(EUnitOfWork::WRITE));
    }
}

TEST_F(SqliteStore, LinksAmongItsFoldersAreFollowedOnce) {
    m_folder.MakeFolder("first");
    m_folder.MakeFolder("second");
    fs::create_directory_symlink("first", m_folder.Path("current"));
    const std::string strFirst = fs::canonical(m_folder.Path("first")).string();
    EXPECT_EQ(strFirst + "/settings.db", FollowSqliteLinks(m_folder.Path("current/settings.db"), ""));
    EXPECT_EQ(strFirst + "/more/settings.db", FollowSqliteLinks(m_folder.Path("current/more/settings.db"), ""));
    CSqliteStore store(m_folder.Path("current/settings.db"));
    fs::remove(m_folder.Path("current"));
    fs::create_directory_symlink("second", m_folder.Path("current"));
    store.Begin(EUnitOfWork::WRITE);
    EXPECT_TRUE(fs::exists(strFirst + "/settings.db-writer"));
    store.Commit();
    EXPECT_TRUE(fs::is_empty(m_folder.Path("second")));
}

TEST_F(SqliteStore, DescriptorOfAFileThatIsGoneIsNoPlace) {
    CSqliteStore(Path()).Save(Expression("S"));
    const int iFile = ::open(Path().c_str(), O_RDWR | O_CLOEXEC);
    const std::string strDescriptor = "/proc/self/fd/" + std::to_string(iFile);
    EXPECT_EQ(Path(), FollowSqliteLinks(strDescriptor, ""));
    fs::remove(Path());
    const std::string strRefusal =
        Opening(strDescriptor, "it is a symbolic link that leads to no file: No such file or directory");
    EXPECT_EQ(strRefusal, ExceptionText([&] { CSqliteStore store(strDescriptor); }));
    CSqliteStore(Path() + " (deleted)").Save(Expression("T"));
    EXPECT_EQ(strRefusal, ExceptionText([&] { CSqliteStore store(strDescriptor); }));
    ::close(iFile);
}

TEST_F(SqliteStore, FileThatIsMountedAloneIsRefused) {
    CSqliteStore(Path()).Save(Expression("S"));
    const std::string strMounted = m_folder.Write("mounted.db", "");
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount(Path().c_str(), strMounted.c_str(), nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "mounting is not permitted";
    }
    const std::string strWhy =
        "it is mounted as a single file, and its journal would stand beside it here alone; mount the folder that it is "
        "in";
    EXPECT_EQ(Opening(strMounted, strWhy), ExceptionText([&] { CSqliteStore store(strMounted); }));
    EXPECT_EQ(Opening(strMounted, strWhy),
              ExceptionText([&] { CSettingsStore::Make("sqlite:" + strMounted, EUnitOfWork::READ); }));
    ::umount(strMounted.c_str());
}

TEST_F(SqliteStore, FileWithSeveralNamesIsRefused) {
    CSqliteStore(Path()).Save(Expression("S"));
    fs::create_hard_link(Path(), m_folder.Path("other.db"));
    const std::string strWhy =
        "it has other names (hard links), and under each a journal of its own would stand; remove those, or copy it";
    EXPECT_EQ(Opening(Path(), strWhy), RefusalOf(Path()));
    EXPECT_EQ(Opening(m_folder.Path("other.db"), strWhy),
              ExceptionText([&] { CSettingsStore::Make("sqlite:" + m_folder.Path("other.db"), EUnitOfWork::READ); }));
    fs::remove(m_folder.Path("other.db"));
    EXPECT_EQ("", RefusalOf(Path()));
}

TEST_F(SqliteStore, WhatIsReadThroughALinkIsWhatTheJournalBesideTheFileHolds) {
    CSqliteStore writer(m_folder.MakeFolder("real") + "/store.db");
    writer.Save(Expression("S"));
    m_folder.MakeFolder("links");
    fs::create_symlink("../real/store.db", m_folder.Path("links/store.db"));
    ::chmod(m_folder.Path().c_str(), 0755);
    ::chmod(m_folder.Path("real").c_str(), 0755);
    ::chmod(m_folder.Path("links").c_str(), 0555);
    for (const auto& entry : fs::directory_iterator(m_folder.Path("real"))) {
        ::chmod(entry.path().c_str(), entry.path().extension() == ".db" ? 0444 : 0666);
    }
    const CUnprivileged unprivileged;
    EXPECT_EQ("expressions subject=\"S\"\n",
              DumpStore(*CSettingsStore::Make("sqlite:" + m_folder.Path("links/store.db"), EUnitOfWork::READ)));
}

TEST_F(SqliteStore, ReadWithoutALockAWriterInBetweenIsTold) {
    { CSqliteStore(Path()).Save(Expression("S")); }
    m_folder.MakeFolder("fixed");
    const std::string strFixed = m_folder.Path("fixed/store.db");
    m_folder.Write("fixed/store.db", m_folder.Read("settings.db"));
    ::chmod(m_folder.Path().c_str(), 0755);
    ::chmod(strFixed.c_str(), 0444);
    ::chmod(m_folder.Path("fixed").c_str(), 0555);
    const auto fnRead = [&](const std::function<void()>& fnMeanwhile) {
        std::unique_ptr<CSettingsStore> pStore;
        {
            const CUnprivileged unprivileged;
            pStore = CSettingsStore::Make("sqlite:" + strFixed, EUnitOfWork::READ);
        }
        return ExceptionText([&] {
            CSettingsTransaction unit(*pStore, EUnitOfWork::READ);
            pStore->ReadAll(ESettingsKind::EXPRESSION, [&](CSettingsRow&&) { fnMeanwhile(); });
            unit.Commit();
        });
    };
    EXPECT_EQ("", fnRead([] {}));
    EXPECT_EQ("settings store sqlite:" + strFixed +
                  ", reading records: another process changed it while it was read; try again",
              fnRead([&] {
                  ::chmod(strFixed.c_str(), 0644);
                  m_folder.Write("fixed/store.db", m_folder.Read("settings.db") + std::string(4096, 'x'));
              }));
}

TEST_F(SqliteStore, WhatWasFoundIsNotTakenForThereOnceItMayBeGone) {
    CSqliteStore store(Path());
    const auto fnFind = [&] { ASSERT_NE(nullptr, store.FindOne(ESettingsKind::EXPRESSION, 0, "S")); };
    const auto fnCheck = [&](const char* pWhen) {
        std::string strDamage;
        store.Check([&](const SStoreDamage& damage) { strDamage += ToText(damage); });
        EXPECT_EQ("", strDamage) << pWhen;
        EXPECT_EQ(1u, store.Count(ESettingsKind::EXPRESSION)) << pWhen;
        EXPECT_NE(nullptr, store.FindOne(ESettingsKind::EXPRESSION, 0, "S")) << pWhen;
    };
    store.Save(Expression("S"));
    store.Begin(EUnitOfWork::WRITE);
    fnFind();
    store.Save(Expression("S"));
    store.Save(Expression("S"));
    store.Commit();
    fnCheck("found and saved twice");
    store.Begin(EUnitOfWork::WRITE);
    fnFind();
    store.Remove(ESettingsKind::EXPRESSION, "S");
    store.Save(Expression("S"));
    store.Commit();
    fnCheck("removed in the same unit");
    store.Begin(EUnitOfWork::WRITE);
    fnFind();
    store.ReplaceAll(ESettingsKind::EXPRESSION, {});
    store.Save(Expression("S"));
    store.Commit();
    fnCheck("replaced in the same unit");
    store.Remove(ESettingsKind::EXPRESSION, "S");
    store.Begin(EUnitOfWork::WRITE);
    store.Begin(EUnitOfWork::WRITE);
    store.Save(Expression("S"));
    fnFind();
    store.Rollback();
    store.Save(Expression("S"));
    store.Commit();
    fnCheck("undone with a nested unit");
    store.Begin(EUnitOfWork::WRITE);
    fnFind();
    store.Commit();
    CSqliteStore(Path()).Remove(ESettingsKind::EXPRESSION, "S");
    store.Save(Expression("S"));
    fnCheck("removed by another process");
}

TEST_F(SqliteStore, NetworkFileSystemsAreRefused) {
    { CSqliteStore store(Path()); }
    std::string strAsked;
    long iKind = 0x6969;
    SetFileSystemProbe([&](const std::string& strPath) {
        strAsked = strPath;
        return iKind;
    });
    const auto fnRefused = [&](const char* pName) {
        return std::string("it is on a network file system (") + pName +
               "), where several processes would damage it; name a place on a local disk";
    };
    EXPECT_EQ(Opening(Path(), fnRefused("NFS")), RefusalOf(Path()));
    EXPECT_EQ(Opening(Path(), fnRefused("NFS")),
              ExceptionText([&] { CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ); }));
    EXPECT_EQ(Path(), strAsked);
    iKind = static_cast<std::int32_t>(0xFF534D42);  // as a system tells it whose numbers have a sign
    EXPECT_EQ(Opening(m_folder.Path("new/folder/x.db"), fnRefused("CIFS")),
              RefusalOf(m_folder.Path("new/folder/x.db")));
    EXPECT_EQ(m_folder.Path(), strAsked);
    iKind = 0xEF53;
    { CSqliteStore store(Path()); }
    SetFileSystemProbe([](const std::string&) {
        errno = EIO;
        return UNKNOWN_FILE_SYSTEM;
    });
    EXPECT_EQ(Opening(Path(), "cannot tell whether it is on a network file system: Input/output error"),
              RefusalOf(Path()));
    SetFileSystemProbe({});
    { CSqliteStore store(Path()); }
}

TEST_F(SqliteStore, FileThatIsRemovedOrReplacedTakesNothingMore) {
    const std::string strStore = "settings store sqlite:" + Path() + ", ";
    const std::string strMoved = "its file was removed or replaced meanwhile; nothing was written";
    for (const bool bReplaced : {false, true}) {
        fs::remove(Path());
        CSqliteStore store(Path());
        store.Save(Expression("S"));
        store.Begin(EUnitOfWork::WRITE);
        store.Save(Expression("T"));
        fs::rename(Path(), m_folder.Path("former.db"));
        if (bReplaced) {
            m_folder.Write("settings.db", m_folder.Read("former.db"));
        }
        EXPECT_EQ(strStore + "committing a unit of work: " + strMoved, ExceptionText([&] { store.Commit(); }));
        EXPECT_EQ(strStore + "beginning a unit of work: " + strMoved,
                  ExceptionText([&] { store.Save(Expression("U")); }));
        EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(store));
    }
}

TEST_F(SqliteStore, FileThatIsReplacedTakesWhatItsJournalHolds) {
    const std::string strOther = m_folder.Path("other.db");
    const std::string strFormer = m_folder.Path("former.db");
    CSqliteStore(strOther).Save(Expression("O"));
    {
        CSqliteStore store(Path());
        store.Save(Expression("S"));
        fs::rename(Path(), strFormer);
        fs::rename(strOther, Path());
    }
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(*CSettingsStore::Make("sqlite:" + strFormer)));
    EXPECT_EQ("expressions subject=\"O\"\n", DumpStore(*CSettingsStore::Make("sqlite:" + Path())));
}

/**
 * Whether the file could be reserved, for another to be put in its place, after each look at what stands there while it
 * has its log.
 */
std::vector<bool> s_vecReservable;

void LetEngineLookBy(int (*fnStat)(const char*, struct stat*)) {
    sqlite3_vfs* pVfs = sqlite3_vfs_find(nullptr);
    pVfs->xSetSystemCall(pVfs, "stat", reinterpret_cast<sqlite3_syscall_ptr>(fnStat));
}

int StatAndTryToReserve(const char* pPath, struct stat* pStatus) {
    const int iResult = ::stat(pPath, pStatus);
    if (!fs::exists(pPath + std::string("-wal"))) {
        return iResult;
    }
    const pid_t iOther = StartProcess([&] {
        LetEngineLookBy(nullptr);
        CSettingsStore::SetWaitEnder([] { return true; });
        CReservedFile(pPath, StoreDoing::RESTORING).Reserve();
    });
    s_vecReservable.push_back(WaitFor(iOther) == 0);
    return iResult;
}

TEST_F(SqliteStore, NobodyPutsAnotherFileInItsPlaceWhileItsLogIsRemoved) {
    auto pStore = std::make_unique<CSqliteStore>(Path());
    pStore->Save(Expression("S"));
    ASSERT_TRUE(fs::exists(Path() + "-wal"));
    LetEngineLookBy(StatAndTryToReserve);
    pStore.reset();
    LetEngineLookBy(nullptr);
    ASSERT_FALSE(s_vecReservable.empty());
    EXPECT_FALSE(s_vecReservable.back());
    EXPECT_FALSE(fs::exists(Path() + "-wal"));
}

/** Makes a second name of a file as soon as a new one stands beside it. */
int StatAndLink(const char* pPath, struct stat* pStatus) {
    for (const auto& entry : fs::directory_iterator(fs::path(pPath).parent_path())) {
        if (entry.path().string().rfind(pPath + std::string(".new-"), 0) == 0) {
            [[maybe_unused]] const int iResult = ::link(pPath, (fs::path(pPath).parent_path() / "snapshot").c_str());
            break;
        }
    }
    return ::stat(pPath, pStatus);
}

TEST_F(SqliteStore, SnapshotThatIsMadeWhileAnOlderFileIsBroughtUpStaysWhole) {
    MakeFirstVersion(Path());
    LetEngineLookBy(StatAndLink);
    const std::string strRefusal = ExceptionText([&] { CSqliteStore store(Path()); });
    LetEngineLookBy(nullptr);
    EXPECT_EQ(Opening(Path(),
                      "it has other names (hard links), and under each a journal of its own would stand; "
                      "remove those, or copy it"),
              strRefusal);
    EXPECT_TRUE(fs::equivalent(Path(), m_folder.Path("snapshot")));
    fs::remove(m_folder.Path("snapshot"));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator()));
    EXPECT_EQ("", ExceptionText([&] { CSqliteStore store(Path()); }));
}

TEST_F(SqliteStore, WriterLeavesItsNoteWhileItWrites) {
    CSqliteStore store(Path());
    const auto fnNoted = [&] { return fs::exists(Path() + "-writer"); };
    store.Begin(EUnitOfWork::READ);
    EXPECT_FALSE(fnNoted());
    store.Commit();
    for (const bool bKept : {true, false}) {
        store.Begin(EUnitOfWork::WRITE);
        store.Begin(EUnitOfWork::WRITE);
        EXPECT_TRUE(fnNoted());
        store.Commit();
        EXPECT_TRUE(fnNoted());
        bKept ? store.Commit() : store.Rollback();
        EXPECT_FALSE(fnNoted());
    }
    store.Save(Expression("S"));
    EXPECT_FALSE(fnNoted());
}

TEST_F(SqliteStore, LookupsGoThroughIndexes) {
    { CSqliteStore store(Path()); }
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &pDb));
    const auto fnPlan = [&](const std::string& strSql) {
        sqlite3_stmt* pStatement = nullptr;
        EXPECT_EQ(SQLITE_OK,
                  sqlite3_prepare_v2(pDb, ("EXPLAIN QUERY PLAN " + strSql).c_str(), -1, &pStatement, nullptr));
        std::string strPlan;
        while (sqlite3_step(pStatement) == SQLITE_ROW) {
            strPlan += reinterpret_cast<const char*>(sqlite3_column_text(pStatement, 3));
        }
        sqlite3_finalize(pStatement);
        return strPlan;
    };
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            if (i == 0 || table.pColumns[i].bIndexed) {
                for (const std::string& strSql : {SqlText::SelectFirst(table, i), SqlText::SelectHeld(table, i)}) {
                    const std::string strPlan = fnPlan(strSql);
                    EXPECT_EQ(0u, strPlan.find(std::string("SEARCH ") + table.pName + " USING ")) << strPlan;
                    EXPECT_EQ(std::string::npos, strPlan.find("TEMP B-TREE")) << strPlan;
                }
            }
        }
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        EXPECT_EQ(std::string("SEARCH ") + GetSettingsTable(eKind).pName + " USING INTEGER PRIMARY KEY (rowid=?)",
                  fnPlan(SqlText::UpdateFound(GetSettingsTable(eKind))));
    }
    sqlite3_close(pDb);
}

TEST_F(SqliteStore, RecordsThatAreUpdatedAreNotCopiedForTheUnit) {
    CSqliteStore store(Path());
    const auto fnSave = [&](const char* pDescription) {
        CSettingsTransaction outer(store, EUnitOfWork::WRITE);
        CSettingsTransaction inner(store, EUnitOfWork::WRITE);
        const sqlite3_int64 iBefore = sqlite3_memory_used();
        sqlite3_memory_highwater(1);
        for (int i = 0; i < 1000; ++i) {
            CSettingsRow row = Expression(std::to_string(i), std::string(8000, 'x'));
            row.SetText(AssetColumn::DESCRIPTION, pDescription);
            store.Save(row);
        }
        inner.Commit();
        outer.Commit();
        return sqlite3_memory_highwater(0) - iBefore;
    };
    fnSave("");
    EXPECT_LT(fnSave("other"), 4 << 20);  // the copies would take 8 MB
}

TEST_F(SqliteStore, WhatWasFoundIsWrittenAtItsPlaceAlone) {
    constexpr int RECORDS = 2000;
    const auto fnRow = [](int i, const std::string& strDescription) {
        CSettingsRow row = Expression("subject of the expression " + std::to_string(i));
        row.SetText(AssetColumn::NAME, "name of the expression " + std::to_string(i));
        row.SetText(AssetColumn::DESCRIPTION, strDescription);
        return row;
    };
    // What the log takes: every page that was changed.
    const auto fnWritten = [&](const std::string& strDescription, bool bFind) {
        CSqliteStore store(Path());
        CSettingsTransaction unit(store, EUnitOfWork::WRITE);
        for (int i = 0; i < RECORDS; ++i) {
            const CSettingsRow row = fnRow(i, strDescription);
            if (bFind) {
                store.FindOne(ESettingsKind::EXPRESSION, 0, row.GetSubject());
            }
            store.Save(row);
        }
        unit.Commit();
        return fs::file_size(Path() + "-wal");
    };
    fnWritten("a", false);
    const auto iAll = fnWritten("b", false);
    const auto iFound = fnWritten("c", true);
    EXPECT_LT(iFound, iAll - iAll / 3);
}

TEST_F(SqliteStore, InnerRollbackKeepsTheLock) {
    CSqliteStore store(Path());
    CSqliteStore other(Path(), SHORT_WAIT);
    store.Begin(EUnitOfWork::WRITE);
    store.Begin(EUnitOfWork::WRITE);
    store.Save(Expression("lost"));
    store.Rollback();
    EXPECT_THROW(other.Save(Expression("S")), OS::CException);
    store.Save(Expression("kept"));
    store.Commit();
    other.Save(Expression("S"));
    EXPECT_EQ("expressions subject=\"S\"\nexpressions subject=\"kept\"\n", DumpStore(store));
}

TEST_F(SqliteStore, AnotherHandleSeesAUnitOnlyWhenItIsCommitted) {
    CSqliteStore writer(Path());
    CSqliteStore reader(Path());
    writer.Begin(EUnitOfWork::WRITE);
    writer.Save(Expression("S"));
    EXPECT_EQ("", DumpStore(reader));
    writer.Commit();
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(reader));
}

TEST_F(SqliteStore, ReadingUnitSeesOneStateThroughout) {
    CSqliteStore writer(Path());
    CSqliteStore reader(Path());
    reader.Begin(EUnitOfWork::READ);
    writer.Save(Expression("S"));
    EXPECT_EQ("", DumpStore(reader));
    EXPECT_EQ(0u, reader.Count(ESettingsKind::EXPRESSION));
    reader.Commit();
    EXPECT_EQ(1u, reader.Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, ValuesThatAreLookedUpTogetherAreOfOneState) {
    CSqliteStore reader(Path());
    const pid_t iWriter = StartProcess([this] {
        CSqliteStore writer(Path());
        for (int i = 0; i < 100; ++i) {
            CSettingsTransaction unit(writer, EUnitOfWork::WRITE);
            writer.Save(Expression("A", std::to_string(i)));
            writer.Save(Expression("B", std::to_string(i)));
            unit.Commit();
        }
    });
    std::vector<std::string> vecSubjects(50, "none");
    vecSubjects.front() = "A";
    vecSubjects.back() = "B";
    int iMixed = 0;
    int iStatus = 0;
    while (::waitpid(iWriter, &iStatus, WNOHANG) == 0) {
        std::vector<std::unique_ptr<CSettingsRow>> vecRows;
        reader.Find(ESettingsKind::EXPRESSION, AssetColumn::SUBJECT, vecSubjects, vecRows);
        const auto fnPattern = [](const auto& pRow) { return pRow ? pRow->GetText(ExpressionColumn::PATTERN) : ""; };
        iMixed += fnPattern(vecRows.front()) != fnPattern(vecRows.back()) ? 1 : 0;
    }
    EXPECT_EQ(0, iStatus);
    EXPECT_EQ(0, iMixed);
}

TEST_F(SqliteStore, CountOfOneUnitIsNotThatOfTheNext) {
    CSqliteStore store(Path());
    CSqliteStore other(Path());
    store.Begin(EUnitOfWork::WRITE);
    EXPECT_EQ(0u, store.Count(ESettingsKind::EXPRESSION));
    store.Commit();
    other.Save(Expression("S"));
    store.Begin(EUnitOfWork::WRITE);
    EXPECT_EQ(1u, store.Count(ESettingsKind::EXPRESSION));
    store.Rollback();
}

TEST_F(SqliteStore, WriterThatWaitsInVainSaysWhy) {
    CSqliteStore first(Path());
    CSqliteStore second(Path(), SHORT_WAIT);
    const std::string strStore = "settings store sqlite:" + Path() + ", ";
    first.Begin(EUnitOfWork::WRITE);
    const std::string strWhy = ": another process is writing to it (" + CWriterNote(Path()).Read() + "); try again";
    EXPECT_NE(std::string::npos, strWhy.find("(process " + std::to_string(::getpid()) + " on "));
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy, ExceptionText([&] { second.Begin(EUnitOfWork::WRITE); }));
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy, ExceptionText([&] { second.Save(Expression("S")); }));
    EXPECT_EQ(strStore + "undoing a unit of work: none has been begun", ExceptionText([&] { second.Rollback(); }));
    first.Commit();
    second.Save(Expression("S"));
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(first));
}

TEST_F(SqliteStore, OpeningThatWaitsInVainSaysWhy) {
    { CSqliteStore store(Path()); }
    RunSql(Path(), "PRAGMA journal_mode = DELETE");
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &pDb));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pDb, "BEGIN; SELECT count(*) FROM templates", nullptr, nullptr, nullptr));
    EXPECT_EQ(Opening(Path(), "another process is writing to it; try again"),
              ExceptionText([&] { CSqliteStore store(Path(), SHORT_WAIT); }));
    sqlite3_close(pDb);
    CSqliteStore store(Path(), SHORT_WAIT);
}

TEST_F(SqliteStore, WriterWaitsForTheOneBeforeIt) {
    CSqliteStore store(Path());
    int aReady[2];
    ASSERT_EQ(0, ::pipe(aReady));
    const pid_t iProcess = StartProcess([&] {
        CSqliteStore other(Path());
        other.Begin(EUnitOfWork::WRITE);
        other.Save(Expression("first"));
        [[maybe_unused]] const auto iWritten = ::write(aReady[1], "x", 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        other.Commit();
    });
    char cReady = 0;
    ASSERT_EQ(1, ::read(aReady[0], &cReady, 1));
    CSettingsTransaction transaction(store, EUnitOfWork::WRITE);
    EXPECT_EQ("expressions subject=\"first\"\n", DumpStore(store));
    store.Save(Expression("second"));
    transaction.Commit();
    EXPECT_EQ(0, WaitFor(iProcess));
    EXPECT_EQ(2u, store.Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, ProcessThatDiesLeavesNothingOfItsUnit) {
    CSqliteStore(Path()).Save(Expression("kept"));
    const pid_t iProcess = StartProcess([&] {
        CSqliteStore store(Path());
        store.Save(Expression("kept too"));
        store.Begin(EUnitOfWork::WRITE);
        store.Begin(EUnitOfWork::WRITE);
        store.Save(Expression("lost", std::string(10 << 20, 'x')));
        store.Commit();
        ::raise(SIGKILL);
    });
    EXPECT_EQ(-SIGKILL, WaitFor(iProcess));
    CSqliteStore store(Path());
    EXPECT_EQ("expressions subject=\"kept\"\nexpressions subject=\"kept too\"\n", DumpStore(store));
}

TEST_F(SqliteStore, ManyProcessesMayMakeItAtOnce) {
    constexpr int PROCESSES = 6;
    for (int iRound = 0; iRound < 5; ++iRound) {
        const std::string strPath = m_folder.Path("round" + std::to_string(iRound) + "/settings.db");
        std::vector<pid_t> vecProcesses;
        vecProcesses.reserve(PROCESSES);
        for (int i = 0; i < PROCESSES; ++i) {
            vecProcesses.push_back(StartProcess([&] { CSqliteStore(strPath).Save(Expression(std::to_string(i))); }));
        }
        for (const pid_t iProcess : vecProcesses) {
            EXPECT_EQ(0, WaitFor(iProcess));
        }
        EXPECT_EQ(static_cast<std::size_t>(PROCESSES), CSqliteStore(strPath).Count(ESettingsKind::EXPRESSION));
    }
}

TEST_F(SqliteStore, SecondHandleOfAProcessLeavesTheFirstOnesLocks) {
    CSqliteStore store(Path());
    store.Save(Expression("S"));
    { CSqliteStore second(Path()); }
    EXPECT_THROW(CSqliteStore("/dev/null"), OS::CException);
    // The last one to close the file removes the -wal file; another process must see that it is not the last.
    EXPECT_EQ(0, WaitFor(StartProcess([&] { CSqliteStore other(Path()); })));
    EXPECT_TRUE(fs::exists(Path() + "-wal"));
}

/** While it lives no file of this process can grow beyond a size. */
class CFileSizeLimit {
  public:
    explicit CFileSizeLimit(std::uintmax_t iBytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        struct rlimit limit = m_old;
        limit.rlim_cur = static_cast<rlim_t>(iBytes);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;
    ~CFileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_old); }

  private:
    struct rlimit m_old {};
};

TEST_F(SqliteStore, FailedCommitUndoesTheUnit) {
    CSqliteStore store(Path());
    store.Save(Expression("before"));
    store.Begin(EUnitOfWork::WRITE);
    store.Save(Expression("lost", std::string(100000, 'x')));
    {
        const CFileSizeLimit limit(fs::file_size(Path() + "-wal"));
        EXPECT_EQ("settings store sqlite:" + Path() + ", committing a unit of work: disk I/O error",
                  ExceptionText([&] { store.Commit(); }));
    }
    EXPECT_EQ("expressions subject=\"before\"\n", DumpStore(store));
    EXPECT_THROW(store.Commit(), OS::CException);
    store.Save(Expression("after"));
    EXPECT_EQ(2u, store.Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, FirstPageThatIsBeingWrittenIsReadAgain) {
    CSqliteStore(Path()).Save(Expression("S"));
    static int s_iLooks = 0;  // at the first page
    static int s_iTorn = 0;   // which of them comes while it is written
    sqlite3_vfs* pVfs = sqlite3_vfs_find(nullptr);
    using Read = ssize_t(int, void*, std::size_t, off_t);
    static Read* const fnRead = reinterpret_cast<Read*>(pVfs->xGetSystemCall(pVfs, "pread64"));
    Read* const fnTorn = [](int iFile, void* pBytes, std::size_t iSize, off_t iOffset) -> ssize_t {
        const ssize_t iRead = fnRead(iFile, pBytes, iSize, iOffset);
        if (iSize == SqlitePageSums::PAGE_SIZE && iOffset == 0 && ++s_iLooks == s_iTorn) {
            static_cast<char*>(pBytes)[4096] ^= 1;
        }
        return iRead;
    };
    pVfs->xSetSystemCall(pVfs, "pread64", reinterpret_cast<sqlite3_syscall_ptr>(fnTorn));
    int iTried = 0;
    do {
        s_iLooks = 0;
        s_iTorn = ++iTried;
        EXPECT_EQ("expressions subject=\"S\"\n",
                  DumpStore(*CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ)))
            << iTried;
    } while (s_iLooks >= s_iTorn);
    EXPECT_GT(iTried, 2);
    pVfs->xSetSystemCall(pVfs, "pread64", nullptr);
}

sqlite3_vfs* s_pEngineFiles = nullptr;
sqlite3_io_methods s_logMethods;
int (*s_fnSynchronise)(sqlite3_file*, int) = nullptr;
bool s_bSynchroniseFails = false;

/** The log of the engine can be written, and is not synchronised when that is to fail. */
int OpenWithFailingLog(sqlite3_vfs*, const char* pName, sqlite3_file* pFile, int iFlags, int* pFlagsOut) {
    const int iCode = s_pEngineFiles->xOpen(s_pEngineFiles, pName, pFile, iFlags, pFlagsOut);
    if (iCode == SQLITE_OK && (iFlags & SQLITE_OPEN_WAL) != 0) {
        s_logMethods = *pFile->pMethods;
        s_fnSynchronise = s_logMethods.xSync;
        s_logMethods.xSync = [](sqlite3_file* pLog, int iHow) {
            return s_bSynchroniseFails ? SQLITE_IOERR_FSYNC : s_fnSynchronise(pLog, iHow);
        };
        pFile->pMethods = &s_logMethods;
    }
    return iCode;
}

TEST_F(SqliteStore, CommitThatWasRefusedDoesNotComeBack) {
    s_pEngineFiles = sqlite3_vfs_find(nullptr);
    sqlite3_vfs files = *s_pEngineFiles;
    files.zName = "failing-log";
    files.xOpen = OpenWithFailingLog;
    ASSERT_EQ(SQLITE_OK, sqlite3_vfs_register(&files, 1));
    CSqliteStore store(Path());
    store.Save(Expression("before"));
    s_bSynchroniseFails = true;
    EXPECT_NE(std::string::npos,
              ExceptionText([&] { store.Save(Expression("refused")); }).find("committing a unit of work: disk I/O error"));
    s_bSynchroniseFails = false;
    // As all processes leave it when they are killed.
    for (const char* pSuffix : {"", "-wal"}) {
        fs::copy_file(Path() + pSuffix, m_folder.Path("left.db") + pSuffix);
    }
    EXPECT_EQ("expressions subject=\"before\"\n", DumpStore(*CSettingsStore::Make("sqlite:" + m_folder.Path("left.db"))));
    EXPECT_EQ("expressions subject=\"before\"\n", DumpStore(store));
    sqlite3_vfs_unregister(&files);
}

TEST_F(SqliteStore, UnitThatTheEngineHasUndoneTakesNothingMore) {
    CSqliteStore store(Path());
    store.Save(Expression("before"));
    store.Begin(EUnitOfWork::WRITE);
    EXPECT_EQ(1u, store.Count(ESettingsKind::EXPRESSION));
    store.Begin(EUnitOfWork::WRITE);
    {
        const CFileSizeLimit limit(fs::file_size(Path() + "-wal"));
        // More than the engine's cache takes, so that it has to write before the commit.
        EXPECT_EQ("settings store sqlite:" + Path() + ", saving a record: disk I/O error: File too large",
                  ExceptionText([&] {
                      for (int i = 0; i < 100; ++i) {
                          store.Save(Expression(std::to_string(i), std::string(1 << 20, 'x')));
                      }
                  }));
    }
    const std::string strStore = "settings store sqlite:" + Path() + ", ";
    const std::string strWhy = ": an earlier failure has undone the unit of work around it";
    EXPECT_EQ(strStore + "saving a record" + strWhy, ExceptionText([&] { store.Save(Expression("S")); }));
    EXPECT_EQ(strStore + "removing a record" + strWhy,
              ExceptionText([&] { store.Remove(ESettingsKind::EXPRESSION, "before"); }));
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy,
              ExceptionText([&] { store.ReplaceAll(ESettingsKind::EXPRESSION, {}); }));
    EXPECT_EQ(strStore + "reading records" + strWhy, ExceptionText([&] { DumpStore(store); }));
    EXPECT_EQ(strStore + "reading records" + strWhy,
              ExceptionText([&] { store.FindOne(ESettingsKind::EXPRESSION, 0, "before"); }));
    EXPECT_EQ(strStore + "counting records" + strWhy, ExceptionText([&] { store.Count(ESettingsKind::EXPRESSION); }));
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy, ExceptionText([&] { store.Begin(EUnitOfWork::READ); }));
    EXPECT_EQ(strStore + "committing a unit of work" + strWhy, ExceptionText([&] { store.Commit(); }));
    EXPECT_EQ(strStore + "committing a unit of work" + strWhy, ExceptionText([&] { store.Commit(); }));
    EXPECT_EQ("expressions subject=\"before\"\n", DumpStore(store));
    store.Save(Expression("after"));
    EXPECT_EQ(2u, store.Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, LostUnitCanBeRolledBack) {
    CSqliteStore store(Path());
    store.Begin(EUnitOfWork::WRITE);
    store.Begin(EUnitOfWork::WRITE);
    {
        const CFileSizeLimit limit(fs::file_size(Path()));
        EXPECT_THROW(store.Save(Expression("S", std::string(100 << 20, 'x'))), OS::CException);
    }
    store.Rollback();
    EXPECT_THROW(store.Save(Expression("S")), OS::CException);
    store.Rollback();
    store.Save(Expression("S"));
    EXPECT_EQ("expressions subject=\"S\"\n", DumpStore(store));
}

/** While it lives the engine has only so many bytes more. */
class CMemoryLimit {
  public:
    explicit CMemoryLimit(sqlite3_int64 iSpareBytes) {
        // A limit of 0 would be none.
        sqlite3_hard_heap_limit64(sqlite3_memory_used() + iSpareBytes + 1);
    }
    CMemoryLimit(const CMemoryLimit&) = delete;
    CMemoryLimit& operator=(const CMemoryLimit&) = delete;
    ~CMemoryLimit() { sqlite3_hard_heap_limit64(0); }
};

/** Runs the function with a little more memory each time until there is enough. @return how often there was not */
int RunOutOfMemory(const std::function<void()>& fnRun, const std::function<void()>& fnAfter, int iStep = 4096) {
    for (int iTimes = 0;; ++iTimes) {
        bool bEnough = true;
        try {
            const CMemoryLimit limit(sqlite3_int64{iStep} * iTimes);
            fnRun();
        } catch (const std::bad_alloc&) {
            bEnough = false;
        }
        fnAfter();
        if (bEnough) {
            return iTimes;
        }
    }
}

TEST_F(SqliteStore, UnitsEndWhereverMemoryRunsOut) {
    const std::string strLong(50000, 'x');
    std::string strDone;
    {
        CSqliteStore store(m_folder.Path("done.db"));
        store.Save(Expression("outer", strLong));
        store.Save(Expression("inner"));
        strDone = DumpStore(store);
    }
    int iTimes = 0;
    // A unit before which nothing was changed goes back to where that around it began.
    for (const auto& [bInnerKept, bOuterFirst] :
         {std::pair(true, true), {false, true}, {true, false}, {false, false}}) {
        std::optional<CSqliteStore> optStore;
        const auto fnRun = [&, bInnerKept = bInnerKept, bOuterFirst = bOuterFirst] {
            CSettingsTransaction outer(*optStore, EUnitOfWork::WRITE);
            if (bOuterFirst) {
                optStore->Save(Expression("outer", strLong));
            }
            optStore->Count(ESettingsKind::EXPRESSION);
            {
                CSettingsTransaction inner(*optStore, EUnitOfWork::WRITE);
                optStore->Save(Expression("inner"));
                if (bInnerKept) {
                    inner.Commit();
                }
            }
            if (!bOuterFirst) {
                optStore->Save(Expression("outer", strLong));
            }
            outer.Commit();
            CSettingsTransaction reading(*optStore, EUnitOfWork::READ);
            optStore->FindOne(ESettingsKind::EXPRESSION, 0, "outer");
        };
        optStore.emplace(Path());
        iTimes += RunOutOfMemory(fnRun, [&, bInnerKept = bInnerKept] {
            EXPECT_THROW(optStore->Rollback(), OS::CException);  // no unit is left open
            const std::string strDump = DumpStore(*optStore);
            EXPECT_TRUE(strDump.empty() || (strDump == strDone) == bInnerKept);
            optStore->ReplaceAll(ESettingsKind::EXPRESSION, {});
            optStore.reset();  // statements are prepared anew
            optStore.emplace(Path());
        });
    }
    EXPECT_GT(iTimes, 10);
}

TEST_F(SqliteStore, OpeningFailsCleanlyWhereverMemoryRunsOut) {
    const int iTimes = RunOutOfMemory([&] { CSqliteStore store(Path()); },
                                      [&] {
                                          CSqliteStore store(Path());
                                          EXPECT_EQ("", DumpStore(store));
                                          fs::remove(Path());
                                      });
    EXPECT_GT(iTimes, 10);
}

TEST_F(SqliteStore, DamagedPagesAreReported) {
    {
        CSqliteStore store(Path());
        CSettingsTransaction transaction(store, EUnitOfWork::WRITE);
        for (int i = 0; i < 1000; ++i) {
            store.Save(Expression(std::to_string(i), std::string(500, 'x')));
        }
        transaction.Commit();
    }
    std::string strFile = m_folder.Read("settings.db");
    ASSERT_GT(strFile.size(), 200000u);
    for (std::size_t i = 8192; i < strFile.size(); ++i) {
        strFile[i] = static_cast<char>(i * 31 + 7);
    }
    m_folder.Write("settings.db", strFile);
    CSqliteStore store(Path());
    EXPECT_EQ("settings store sqlite:" + Path() + ", reading records: it is damaged: a page is not as it was written" +
                  ADVICE,
              ExceptionText([&] { DumpStore(store); }));
}

TEST_F(SqliteStore, MissingTableIsReported) {
    { CSqliteStore store(Path()); }
    RunSql(Path(), "DROP TABLE keyword_lists");
    CSqliteStore store(Path());
    EXPECT_EQ(
        "settings store sqlite:" + Path() + ", reading records: it is damaged: no such table: keyword_lists" + ADVICE,
        ExceptionText([&] { store.FindOne(ESettingsKind::KEYWORD, 0, "S"); }));
    EXPECT_EQ(nullptr, store.FindOne(ESettingsKind::TEMPLATE, 0, "S"));
}

/** What a record's damage is called. */
std::string Damaged(const std::string& strPath, const std::string& strWhat) {
    return "settings store sqlite:" + strPath + ", reading records: it is damaged: " + strWhat + ADVICE;
}

/** @return the store's damages, a line each */
std::string CheckText(CSettingsStore& store) {
    std::string strText;
    store.Check([&](const SStoreDamage& damage) {
        strText += damage.strTable + '|' + damage.strSubject + '|' + damage.strWhat + '\n';
    });
    return strText;
}

TEST_F(SqliteStore, CheckFindsEveryDamage) {
    {
        CSqliteStore store(Path());
        for (const char* pSubject : {"A", "B", "C"}) {
            store.Save(Expression(pSubject));
        }
        EXPECT_EQ("", CheckText(store));
    }
    RunSql(Path(),
           "UPDATE expressions SET scope = 'x' WHERE subject <> 'B'; DELETE FROM expressions WHERE subject = 'B';"
           "DROP TABLE keyword_lists;");
    CSqliteStore store(Path());
    EXPECT_EQ(
        "expressions|A|is not as it was written\nexpressions|C|is not as it was written\n"
        "expressions||records are missing\n"
        "keyword_lists||settings store sqlite:" +
            Path() + ", checking it: it is damaged: no such table: keyword_lists" + ADVICE + "\n",
        CheckText(store));
    EXPECT_THROW(store.Check([](const SStoreDamage&) { throw OS::CException(0, L"enough", 0); }), OS::CException);
    EXPECT_THROW(store.Rollback(), OS::CException);  // no unit is left open
}

TEST_F(SqliteStore, NonsenseIsNotBroughtUp) {
    const std::pair<const char*, const char*> NONSENSE[] = {
        {"UPDATE expressions SET pre_defined = 2",
         "the record \"E\" of the table expressions pre_defined is neither 0 nor 1"},
        {"UPDATE templates SET description = CAST(x'610062' AS TEXT)",
         "the record \"T\" of the table templates record \"T\" cannot be saved: description, byte 1: U+0000 cannot be "
         "stored"},
    };
    for (const auto& [pSql, pWhat] : NONSENSE) {
        fs::remove(Path());
        MakeFirstVersion(Path());
        RunSql(Path(), pSql, nullptr);
        EXPECT_EQ(Opening(Path(), std::string("it is damaged: ") + pWhat + ADVICE),
                  ExceptionText([&] { CSqliteStore store(Path()); }));
    }
}

TEST_F(SqliteStore, RecordThatWasAlteredIsRefused) {
    CSettingsRow sample(ESettingsKind::TEMPLATE);
    sample.SetText(TemplateColumn::SUBJECT, "T");
    sample.SetText(TemplateColumn::ELEMENT_NAME, "n");
    sample.SetList(TemplateColumn::INDUSTRIES, {"a", "b"});
    const char* const ALTERED[] = {
        "description = 'x'",
        "description = description || char(0)",
        "pre_defined = 2",

        "name = NULL",
        "industries = 'b' || char(10) || 'a'",
        "checksum = checksum + 1",
        "checksum = -checksum",
        "display_name = scope, scope = display_name || 's'",
    };
    for (const char* pAltered : ALTERED) {
        fs::remove(Path());
        CSqliteStore(Path()).Save(sample);
        RunSql(Path(), std::string("UPDATE templates SET ") + pAltered);
        CSqliteStore store(Path());
        const std::string strWhy = Damaged(Path(), "the record \"T\" of the table templates is not as it was written");
        EXPECT_EQ(strWhy, ExceptionText([&] { DumpStore(store); })) << pAltered;
        EXPECT_EQ(strWhy, ExceptionText([&] { store.FindOne(ESettingsKind::TEMPLATE, 0, "T"); })) << pAltered;
        if (std::string(pAltered).find("checksum") != std::string::npos) {
            continue;
        }
        store.Save(sample);  // written anew, it is whole again
        EXPECT_EQ("templates subject=\"T\" name=\"n\" industries=[\"a\",\"b\"]\n", DumpStore(store)) << pAltered;
    }
}

TEST_F(SqliteStore, RecordThatVanishedOrCameInIsNoticed) {
    const std::string strMissing = Damaged(Path(), "the table expressions: records are missing");
    const char* const CHANGES[] = {
        "DELETE FROM expressions WHERE subject = 'B'",
        "DELETE FROM expressions",
        "UPDATE totals SET records = records + 1 WHERE kind = 0",
        "UPDATE totals SET checksum = checksum + 1 WHERE kind = 0",
    };
    for (const char* pChange : CHANGES) {
        fs::remove(Path());
        for (const char* pSubject : {"A", "B", "C"}) {
            CSqliteStore(Path()).Save(Expression(pSubject));
        }
        RunSql(Path(), pChange);
        CSqliteStore store(Path());
        const auto fnNames = [&] {
            std::vector<std::string> vecNames;
            store.ReadColumn(ESettingsKind::EXPRESSION, AssetColumn::NAME, vecNames);
        };
        // A walk over names reads no record, so it has their number alone to go by.
        const std::string strNames = std::strstr(pChange, "checksum + 1") != nullptr ? "" : strMissing;
        EXPECT_EQ(strMissing, ExceptionText([&] { DumpStore(store); })) << pChange;
        EXPECT_EQ(strNames, ExceptionText(fnNames)) << pChange;
        const CSettingsTransaction unit(store, EUnitOfWork::READ);
        EXPECT_EQ(strMissing, ExceptionText([&] { DumpStore(store); })) << pChange;
        EXPECT_EQ(strNames, ExceptionText(fnNames)) << pChange;
    }
    RunSql(Path(), "DELETE FROM totals WHERE kind = 1");
    EXPECT_EQ(Damaged(Path(), "how many records it holds is missing"), ExceptionText([&] {
                  CSqliteStore store(Path());
                  store.Count(ESettingsKind::EXPRESSION);
              }));
}

/** Puts a text of the file in the place of another one, as long, that stands in it once; the checksum of its page fits.
 */
void Forge(std::string& strFile, const std::string& strFrom, const std::string& strTo) {
    constexpr std::size_t PAGE = SqlitePageSums::PAGE_SIZE;
    const std::size_t iPlace = strFile.find(strFrom);
    ASSERT_NE(std::string::npos, iPlace);
    ASSERT_EQ(std::string::npos, strFile.find(strFrom, iPlace + 1));
    strFile.replace(iPlace, strTo.size(), strTo);
    const std::size_t iPage = iPlace / PAGE * PAGE;
    auto* const pPage = reinterpret_cast<unsigned char*>(strFile.data()) + iPage;
    SqlitePageSums::MakeSum(pPage, static_cast<std::int64_t>(iPage), pPage + PAGE - SqlitePageSums::SUM_SIZE);
}

TEST_F(SqliteStore, IndexThatLeadsToAnotherRecordIsNoticed) {
    for (const char* pSubject : {"A", "B", "C"}) {
        CSqliteStore(Path()).Save(Expression(pSubject));
    }
    // An entry of the index: its head, the key, the number of the row.
    const std::string strHead("\x03\x0f\x01", 3);
    std::string strFile = m_folder.Read("settings.db");
    ASSERT_NO_FATAL_FAILURE(Forge(strFile, strHead + "B\x02", strHead + "B\x03"));
    m_folder.Write("settings.db", strFile);
    CSqliteStore store(Path());
    const std::string strMisled = Damaged(Path(), "the table expressions: an index leads to another record");
    EXPECT_EQ(strMisled, ExceptionText([&] { store.Save(Expression("B", "p")); }));
    EXPECT_EQ(strMisled, ExceptionText([&] { store.Remove(ESettingsKind::EXPRESSION, "B"); }));
    EXPECT_EQ(Damaged(Path(), "the record \"B\" of the table expressions is not as it was written"),
              ExceptionText([&] { store.FindOne(ESettingsKind::EXPRESSION, 0, "B"); }));
    EXPECT_EQ("C", store.FindOne(ESettingsKind::EXPRESSION, 0, "C")->GetSubject());
    EXPECT_EQ(strFile, m_folder.Read("settings.db"));
}

TEST_F(SqliteStore, NumberOfRecordsThatIsNoneIsNoticed) {
    CSqliteStore(Path()).Save(Expression("A"));
    RunSql(Path(),
           "PRAGMA writable_schema = ON;"
           "UPDATE sqlite_schema SET sql = replace(sql, 'NOT NULL', '') WHERE name = 'totals';"
           "PRAGMA writable_schema = RESET;"
           "DELETE FROM expressions; UPDATE totals SET records = NULL, checksum = NULL WHERE kind = 0");
    CSqliteStore store(Path());
    EXPECT_EQ(Damaged(Path(), "how many records it holds is missing"), ExceptionText([&] { DumpStore(store); }));
}

TEST_F(SqliteStore, TotalsFollowEveryChange) {
    CSqliteStore store(Path());
    const auto fnKeep = [&](const std::function<void()>& fnChange, bool bKeep) {
        CSettingsTransaction unit(store, EUnitOfWork::WRITE);
        fnChange();
        DumpStore(store);  // verifies what the unit sees
        if (bKeep) {
            unit.Commit();
        }
    };
    const auto fnNested = [&](bool bKeep) {
        fnKeep([&] { store.Save(Expression("inner", std::to_string(store.Count(ESettingsKind::EXPRESSION)))); }, bKeep);
        store.Save(Expression("after"));
    };
    store.Save(Expression("A", "1"));
    store.Save(Expression("A", "2"));
    fnKeep([&] { store.Remove(ESettingsKind::EXPRESSION, "A"); }, false);
    fnKeep([&] { fnNested(true); }, true);
    fnKeep([&] { fnNested(false); }, true);
    fnKeep([&] { fnNested(true); }, false);
    fnKeep([&] { store.ReplaceAll(ESettingsKind::EXPRESSION, {Expression("B"), Expression("B", "twice")}); }, true);
    fnKeep([&] { store.ReplaceAll(ESettingsKind::EXPRESSION, {}); }, false);
    EXPECT_FALSE(store.Remove(ESettingsKind::EXPRESSION, "A"));
    EXPECT_TRUE(store.Remove(ESettingsKind::EXPRESSION, "B"));
    EXPECT_FALSE(store.Remove(ESettingsKind::EXPRESSION, "B"));
    store.Save(Expression("C"));
    EXPECT_EQ("expressions subject=\"C\"\n", DumpStore(store));
    EXPECT_EQ(1u, store.Count(ESettingsKind::EXPRESSION));
    CSqliteStore again(Path());
    EXPECT_EQ("expressions subject=\"C\"\n", DumpStore(again));
    EXPECT_EQ(1u, again.Count(ESettingsKind::EXPRESSION));
}

TEST_F(SqliteStore, WalkThatChangesTheTableIsNotTakenForDamage) {
    CSqliteStore store(Path());
    store.Save(Expression("A"));
    store.Save(Expression("B"));
    int iRows = 0;
    store.ReadAll(ESettingsKind::EXPRESSION, [&](CSettingsRow&& row) {
        ++iRows;
        store.Save(Expression(row.GetSubject(), "changed"));
    });
    EXPECT_EQ(2, iRows);
    EXPECT_EQ("expressions subject=\"A\" pattern=\"changed\"\nexpressions subject=\"B\" pattern=\"changed\"\n",
              DumpStore(store));
}

TEST_F(SqliteStore, StoreOfTheFirstVersionIsBroughtUp) {
    MakeFirstVersion(Path());
    {
        CSqliteStore store(Path());
        EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(store));
        EXPECT_EQ(3, store.GetInfo().iSchemaVersion);
        EXPECT_EQ(1u, store.Count(ESettingsKind::TEMPLATE));
        store.Save(Expression("F"));
        EXPECT_TRUE(store.Remove(ESettingsKind::EXPRESSION, "E"));
        EXPECT_EQ("expressions subject=\"F\"\ntemplates subject=\"T\" industries=[\"a\"]\n", DumpStore(store));
    }
    RunSql(Path(), "UPDATE templates SET scope = 'x'");
    CSqliteStore store(Path());
    EXPECT_EQ(Damaged(Path(), "the record \"T\" of the table templates is not as it was written"),
              ExceptionText([&] { DumpStore(store); }));
}

TEST_F(SqliteStore, OpenedForReadingAStoreOfAnOlderVersionStaysAsItIs) {
    for (const int iVersion : {1, 2}) {
        fs::remove(Path());
        MakeFirstVersion(Path());
        if (iVersion == 2) {
            MakeSecondVersion(Path());
        }
        const std::string strBefore = m_folder.Read("settings.db");
        {
            CSqliteStore store(Path(), SHORT_WAIT, EUnitOfWork::READ);
            EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(store));
            EXPECT_EQ(iVersion, store.GetInfo().iSchemaVersion);
            EXPECT_EQ("sqlite:" + Path(), store.GetInfo().strUrl);
            EXPECT_EQ(1u, store.Count(ESettingsKind::TEMPLATE));
            EXPECT_EQ("", CheckText(store));
            EXPECT_EQ(
                "settings store sqlite:" + Path() + ", beginning a unit of work: attempt to write a readonly database",
                ExceptionText([&] { store.Save(Expression("F")); }));
            CSqliteStore writer(Path(), SHORT_WAIT);  // which nobody keeps from bringing it up meanwhile
            writer.Save(Expression("F"));
            EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(store));
            fs::remove(Path());
            m_folder.Write("settings.db", strBefore);
        }
        EXPECT_EQ(strBefore, m_folder.Read("settings.db"));
    }
}

TEST_F(SqliteStore, OpenedForReadingWhatOnlyTheJournalOfAnOlderVersionHoldsIsThere) {
    MakeFirstVersion(Path());
    sqlite3* pOther = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &pOther));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pOther, "UPDATE templates SET scope = 'x'", nullptr, nullptr, nullptr));
    EXPECT_NE(std::string::npos,
              DumpStore(*CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ)).find("scope=\"x\""));
    sqlite3_close(pOther);
}

TEST_F(SqliteStore, EveryPageOfWhatWasBroughtUpHasItsChecksum) {
    MakeFirstVersion(Path());
    ::chmod(Path().c_str(), 0640);
    { CSqliteStore store(Path()); }
    EXPECT_EQ(std::vector<std::string>{"settings.db"}, Names());
    EXPECT_EQ(0640, Mode(Path()));
    const std::string strWhole = m_folder.Read("settings.db");
    ASSERT_EQ(8, strWhole[20]);
    for (std::size_t iPage = 0; iPage < strWhole.size() / SqlitePageSums::PAGE_SIZE; ++iPage) {
        std::string strDamaged = strWhole;
        strDamaged[iPage * SqlitePageSums::PAGE_SIZE + 8000] ^= 4;
        m_folder.Write("settings.db", strDamaged);
        std::string strFound;
        const std::string strRefusal = ExceptionText([&] {
            CSqliteStore store(Path());
            strFound = CheckText(store);
            ThrowStoreError("", "", strFound);
        });
        EXPECT_TRUE(!strFound.empty() || strRefusal.find(ADVICE) != std::string::npos) << iPage;
    }
}

TEST_F(SqliteStore, DamagedStoreOfTheFirstVersionIsNotBroughtUp) {
    MakeFirstVersion(Path());
    std::string strDamaged = m_folder.Read("settings.db");
    const std::size_t iIndex = strDamaged.rfind("eE");  // of the index of names: the name and the key
    ASSERT_NE(std::string::npos, iIndex);
    strDamaged[iIndex] = 'f';
    m_folder.Write("settings.db", strDamaged);
    const std::string strRefusal = ExceptionText([&] { CSqliteStore store(Path()); });
    EXPECT_EQ(0u, strRefusal.find(Opening(Path(), "it is damaged: row 1 missing from index"))) << strRefusal;
    EXPECT_EQ(strRefusal, ExceptionText([&] { CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ); }));
    EXPECT_EQ(std::vector<std::string>{"settings.db"}, Names());
}

TEST_F(SqliteStore, SchemaOfAnOlderVersionIsNotTrustedEither) {
    MakeFirstVersion(Path());
    RunSql(Path(),
           "ALTER TABLE templates RENAME TO kept; CREATE VIRTUAL TABLE words USING fts5(x); INSERT INTO words VALUES ('w');"
           "CREATE VIEW templates AS SELECT kept.* FROM kept, words;",
           nullptr);
    const std::string strWhy = "unsafe use of virtual table \"words\"";
    for (const EUnitOfWork eUse : {EUnitOfWork::READ, EUnitOfWork::WRITE}) {
        EXPECT_NE(std::string::npos,
                  ExceptionText([&] { CSettingsStore::Make("sqlite:" + Path(), eUse); }).find(strWhy));
    }
}

TEST_F(SqliteStore, StoreOfTheSecondVersionIsVerifiedAndBroughtUp) {
    const std::pair<const char*, const char*> DAMAGES[] = {
        {"UPDATE templates SET scope = 'x'", "the record \"T\" of the table templates is not as it was written"},
        {"DELETE FROM expressions", "the table expressions: records are missing"},
        {"DELETE FROM totals", "the table expressions: records are missing"},
        {"DROP TABLE totals", "no such table: totals"},
    };
    for (const auto& [pSql, pWhat] : DAMAGES) {
        fs::remove(Path());
        MakeFirstVersion(Path());
        MakeSecondVersion(Path());
        RunSql(Path(), pSql, nullptr);
        for (const EUnitOfWork eUse : {EUnitOfWork::READ, EUnitOfWork::WRITE}) {
            EXPECT_EQ(Opening(Path(), std::string("it is damaged: ") + pWhat + ADVICE),
                      ExceptionText([&] { CSqliteStore store(Path(), SHORT_WAIT, eUse); }));
        }
    }
    fs::remove(Path());
    MakeFirstVersion(Path());
    MakeSecondVersion(Path());
    CSqliteStore store(Path());
    EXPECT_EQ(3, store.GetInfo().iSchemaVersion);
    EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(store));
}

TEST_F(SqliteStore, WhatSomebodyHasOpenIsNotBroughtUp) {
    MakeFirstVersion(Path());
    sqlite3* pOther = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &pOther));
    const auto fnRun = [&](const char* pSql) { return sqlite3_exec(pOther, pSql, nullptr, nullptr, nullptr); };
    ASSERT_EQ(SQLITE_OK, fnRun("SELECT count(*) FROM templates"));
    EXPECT_EQ(Opening(Path(),
                      "it was written by an older version, and is brought up as soon as nobody else has it open; end "
                      "what has, and try again"),
              ExceptionText([&] { CSqliteStore store(Path(), SHORT_WAIT); }));
    EXPECT_EQ(SQLITE_OK, fnRun("UPDATE expressions SET pattern = 'written meanwhile'"));
    sqlite3_close(pOther);
    CSqliteStore store(Path(), SHORT_WAIT);
    EXPECT_NE(std::string::npos, DumpStore(store).find("written meanwhile"));
}

TEST_F(SqliteStore, WhoeverHadOpenedTheFormerFileFindsItGivenUp) {
    MakeFirstVersion(Path());
    sqlite3* pOther = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &pOther));  // without a look into it
    { CSqliteStore store(Path()); }
    sqlite3_stmt* pVersion = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_prepare_v2(pOther, "PRAGMA user_version", -1, &pVersion, nullptr));
    ASSERT_EQ(SQLITE_ROW, sqlite3_step(pVersion));
    EXPECT_EQ(2147483647, sqlite3_column_int(pVersion, 0));
    sqlite3_finalize(pVersion);
    sqlite3_close(pOther);
    EXPECT_EQ(std::vector<std::string>{"settings.db"}, Names());
}

std::string s_strBroughtUp;  // a path
int s_iLocks = 0;            // that the engine takes to read
int s_iBroughtUpAt = 0;      // the one before which another process brings the store up

void LetEngineLockBy(int (*fnControl)(int, int, ...)) {
    sqlite3_vfs* pVfs = sqlite3_vfs_find(nullptr);
    pVfs->xSetSystemCall(pVfs, "fcntl", reinterpret_cast<sqlite3_syscall_ptr>(fnControl));
}

int LockAndBringUp(int iFile, int iCommand, ...) {
    std::va_list arguments;
    va_start(arguments, iCommand);
    auto* const pLock = va_arg(arguments, struct flock*);
    va_end(arguments);
    if (iCommand == F_SETLK && pLock->l_type == F_RDLCK && ++s_iLocks == s_iBroughtUpAt) {
        // A program of its own, since the engine holds locks of its own here; it may find that it cannot.
        // Whoever uses it from then on, and dies, leaves a log.
        CProgram::Shell(std::string("timeout -s INT ") + (SANITIZED ? "1.5" : "0.5") + " \"$DLPCTL\" -q --store 'sqlite:" + s_strBroughtUp +
                        "' expression new F --display-name f --pattern f && python3 -c 'import os, sqlite3\n"
                        "sqlite3.connect(\"" +
                        s_strBroughtUp + "\").execute(\"PRAGMA user_version = 3\")\nos.kill(os.getpid(), 9)'");
    }
    return ::fcntl(iFile, iCommand, pLock);
}

TEST_F(SqliteStore, StoreOfAnOlderVersionThatIsBroughtUpMeanwhileIsReadAsItWasOrIs) {
    s_strBroughtUp = Path();
    int iBroughtUp = 0;
    for (s_iBroughtUpAt = 1; s_iBroughtUpAt == 1 || s_iLocks >= s_iBroughtUpAt; s_iBroughtUpAt += SANITIZED ? 4 : 1) {
        for (const char* pSuffix : {"", "-wal", "-shm"}) {
            fs::remove(Path() + pSuffix);
        }
        MakeFirstVersion(Path());
        RunSql(Path(), "PRAGMA journal_mode = DELETE", nullptr);  // whose readers lock it for as long as a statement takes
        s_iLocks = 0;
        std::string strDump;
        LetEngineLockBy(LockAndBringUp);
        EXPECT_EQ("", ExceptionText([&] {
                      CSqliteStore store(Path(), 5000, EUnitOfWork::READ);
                      strDump = DumpStore(store);
                  }))
            << s_iBroughtUpAt;
        LetEngineLockBy(nullptr);
        const bool bAfter = strDump.find("name=\"F\"") != std::string::npos;
        EXPECT_TRUE(bAfter || strDump == FIRST_VERSION_DUMP) << s_iBroughtUpAt << strDump;
        CSqliteStore store(Path());
        iBroughtUp += store.FindOne(ESettingsKind::EXPRESSION, AssetColumn::NAME, "F") != nullptr ? 1 : 0;
    }
    EXPECT_GT(iBroughtUp, 0);
}

TEST_F(SqliteStore, StoreOfAnOlderVersionIsReadWhereItCannotBeBroughtUp) {
    MakeFirstVersion(Path());
    const std::string strBefore = m_folder.Read("settings.db");
    for (const auto& [iFile, iFolder] : {std::pair<mode_t, mode_t>{0444, 0555}, {0666, 0555}, {0444, 0777}}) {
        ::chmod(Path().c_str(), iFile);
        ::chmod(m_folder.Path().c_str(), iFolder);
        const CUnprivileged unprivileged;
        EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(*CSettingsStore::Make("sqlite:" + Path(), EUnitOfWork::READ)));
        EXPECT_EQ(strBefore, m_folder.Read("settings.db"));
    }
    ::chmod(Path().c_str(), 0666);
    ::chmod(m_folder.Path().c_str(), 0555);
    const CUnprivileged unprivileged;
    EXPECT_EQ(
        Opening(Path(),
                "it was written by an older version and cannot be brought up where it is; copy it to where it can "
                "be written, and open it there"),
        ExceptionText([&] { CSqliteStore store(Path()); }));
}

TEST_F(SqliteStore, BringingUpIsWholeOrNotAtAllWhereverMemoryRunsOut) {
    constexpr int STEP = 40000;
    MakeFirstVersion(Path());
    const int iTimes =
        RunOutOfMemory([&] { CSqliteStore store(Path()); },
                       [&] {
                           EXPECT_EQ(FIRST_VERSION_DUMP, DumpStore(*std::make_unique<CSqliteStore>(Path())));
                           EXPECT_EQ(std::vector<std::string>{"settings.db"}, Names());
                           fs::remove(Path());
                           MakeFirstVersion(Path());
                       },
                       STEP);
    EXPECT_GT(iTimes, 5);
}

TEST_F(SqliteStore, ReadingAnOlderVersionFailsCleanlyWhereverMemoryRunsOut) {
    constexpr int STEP = 40000;
    MakeFirstVersion(Path());
    const auto mapBefore = Files();
    const int iTimes = RunOutOfMemory([&] { CSqliteStore store(Path(), SHORT_WAIT, EUnitOfWork::READ); },
                                      [&] { EXPECT_TRUE(mapBefore == Files()); }, STEP);
    EXPECT_GT(iTimes, 5);
}

TEST_F(SqliteStore, ManyProcessesMayBringItUpAtOnce) {
    for (int iRound = 0; iRound < 5; ++iRound) {
        fs::remove(Path());
        MakeFirstVersion(Path());
        std::vector<pid_t> vecProcesses;
        for (int i = 0; i < 6; ++i) {
            vecProcesses.push_back(StartProcess([&] { CSqliteStore(Path()).Save(Expression(std::to_string(i))); }));
        }
        for (const pid_t iProcess : vecProcesses) {
            EXPECT_EQ(0, WaitFor(iProcess));
        }
        CSqliteStore store(Path());
        DumpStore(store);
        EXPECT_EQ(7u, store.Count(ESettingsKind::EXPRESSION));
        EXPECT_EQ("", CheckText(store));
    }
}

TEST_F(SqliteStore, DamageOfAnyPageIsNoticed) {
    {
        CSqliteStore store(Path());
        for (int i = 0; i < 40; ++i) {
            store.Save(Expression(std::to_string(i), std::string(600, 'x')));
        }
    }
    const std::string strWhole = m_folder.Read("settings.db");
    const std::size_t iPages = strWhole.size() / 8192;
    ASSERT_GE(iPages, 10u);
    for (std::size_t iPage = 1; iPage < iPages; ++iPage) {
        std::string strDamaged = strWhole;
        strDamaged[iPage * 8192 + 8000] ^= 4;
        m_folder.Write("settings.db", strDamaged);
        CSqliteStore store(Path());
        EXPECT_NE("", CheckText(store)) << iPage;
    }
    for (const std::size_t iOffset : {20u, 24u, 50u, 60u, 63u, 95u, 120u, 8000u, 8190u}) {
        std::string strDamaged = strWhole;
        strDamaged[iOffset] ^= 1;
        m_folder.Write("settings.db", strDamaged);
        EXPECT_EQ(Opening(Path(), std::string("it is damaged: its first page is not as it was written") + ADVICE),
                  RefusalOf(Path()))
            << iOffset;
    }
}

}  // namespace
