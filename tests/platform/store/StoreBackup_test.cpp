#include "platform/store/StoreBackup.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>

#include "platform/common/CException.h"
#include "platform/store/CMemoryStore.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/CWriterNote.h"
#include "platform/store/SqlitePageSums.h"
#include "tests/cli/Unprivileged.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/OlderStores.h"
#include "tests/support/StoreDump.h"
#include "tests/support/TempDir.h"
#include "tests/support/UndoneJournal.h"

namespace fs = std::filesystem;

namespace {

CSettingsRow Expression(const std::string& strSubject) {
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(AssetColumn::SUBJECT, strSubject);
    return row;
}

void NoStep() {}

class StoreBackupTest : public testing::Test {
  protected:
    StoreBackupTest() { CSqliteStore(Path()).Save(Expression("kept")); }

    std::string Path() const { return m_folder.Path("settings.db"); }
    std::string BackupPath() const { return m_folder.Path("backup.db"); }
    std::set<std::string> Names() const {
        std::set<std::string> setNames;
        for (const auto& entry : fs::directory_iterator(m_folder.Path())) {
            setNames.insert(entry.path().filename().string());
        }
        return setNames;
    }
    std::string DumpFile(const std::string& strPath) const {
        return DumpStore(*CSettingsStore::Make("sqlite:" + strPath, EUnitOfWork::READ));
    }
    void Damage(const std::string& strPath, std::size_t iOffset) const {
        const std::string strName = fs::path(strPath).filename().string();
        std::string strBytes = m_folder.Read(strName);
        strBytes[iOffset] ^= 1;
        m_folder.Write(strName, strBytes);
    }

    static constexpr const char KEPT[] = "expressions subject=\"kept\"\n";
    CTempDir m_folder;
};

TEST_F(StoreBackupTest, HoldsTheStoreAsItWasAtOneMoment) {
    CSqliteStore store(Path());
    CSqliteStore other(Path());
    bool bFirst = true;
    const StoreBackup::Counts aCounts = StoreBackup::Save(store, BackupPath(), [&] {
        if (bFirst) {
            other.Save(Expression("too late"));
        }
        bFirst = false;
    });
    EXPECT_EQ((StoreBackup::Counts{1, 0, 0}), aCounts);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
    struct stat status {};
    ASSERT_EQ(0, ::stat(BackupPath().c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 07777);
}

TEST_F(StoreBackupTest, ReplacesAFileWholeOrNotAtAll) {
    CSqliteStore(BackupPath()).Save(Expression("former"));
    CSqliteStore store(Path());
    const auto fnFail = [] { throw std::runtime_error("enough"); };
    EXPECT_THROW(StoreBackup::Save(store, BackupPath(), fnFail), std::runtime_error);
    EXPECT_EQ("expressions subject=\"former\"\n", DumpFile(BackupPath()));
    EXPECT_EQ((std::set<std::string>{"backup.db", "settings.db", "settings.db-shm", "settings.db-wal"}), Names());
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
    CSqliteStore used(m_folder.Path("used.db"));
    EXPECT_EQ("settings store sqlite:" + m_folder.Path("used.db") +
                  ", writing a backup: it is a store that is in use; name another file",
              ExceptionText([&] { StoreBackup::Save(store, m_folder.Path("used.db"), NoStep); }));
    EXPECT_EQ("settings store sqlite:/proc/none.db, writing a backup: No such file or directory",
              ExceptionText([&] { StoreBackup::Save(store, "/proc/none.db", NoStep); }));
}

TEST_F(StoreBackupTest, FileBesideWhichAJournalLiesIsNeitherMadeNorReplaced) {
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    for (const std::string strFile : {"backup.db", "new.db"}) {
        for (const char* pJournal : {"-wal", "-journal"}) {
            const std::string strWhy = "settings store sqlite:" + m_folder.Path(strFile) +
                                       ", writing a backup: it is a store that is in use; name another file";
            const auto fnMake = [&] { m_folder.Write(strFile + pJournal, JournalOfAnEmptyFile()); };
            fnMake();
            const std::set<std::string> setBefore = Names();
            EXPECT_EQ(strWhy, ExceptionText([&] { StoreBackup::Save(store, m_folder.Path(strFile), NoStep); }));
            fs::remove(m_folder.Path(strFile + pJournal));
            EXPECT_EQ(strWhy, ExceptionText([&] { StoreBackup::Save(store, m_folder.Path(strFile), fnMake); }));
            EXPECT_EQ(setBefore, Names());
            fs::remove(m_folder.Path(strFile + pJournal));
        }
    }
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, WhatIsPutAsideComesBesideNobodysJournal) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    m_folder.Write("settings.db.before-restore-journal", JournalOfAnEmptyFile());
    const auto restored = StoreBackup::Restore(*pBackup, Path(), false, NoStep);
    EXPECT_EQ(Path() + ".before-restore-2", restored.strFormer);
    EXPECT_EQ(KEPT, DumpFile(restored.strFormer));
    Damage(Path(), 0);
    m_folder.Write("settings.db.damaged-wal", "of another time");
    EXPECT_EQ(Path() + ".damaged-2", StoreBackup::Restore(*pBackup, Path(), false, NoStep).strFormer);
    EXPECT_EQ("of another time", m_folder.Read("settings.db.damaged-wal"));
}

TEST_F(StoreBackupTest, WhatAKilledOneHasLeftGoesWithTheNextAndWhatOthersMakeStays) {
    const auto fnStart = [&](int iSignal) {
        const pid_t iProcess = ::fork();
        if (iProcess == 0) {
            CSqliteStore store(Path());
            StoreBackup::Save(store, BackupPath(), [&] { ::raise(iSignal); });
            ::_exit(1);
        }
        int iStatus = 0;
        ::waitpid(iProcess, &iStatus, WUNTRACED);
        return iProcess;
    };
    const auto fnNew = [&] {
        std::set<std::string> setNames;
        for (const std::string& strName : Names()) {
            if (strName.rfind("backup.db.new-", 0) == 0) {
                setNames.insert(strName);
            }
        }
        return setNames;
    };
    m_folder.Write("backup.db.new-laptop", "named so by somebody");
    const pid_t iStopped = fnStart(SIGSTOP);
    const auto setBefore = fnNew();
    EXPECT_EQ(6u, setBefore.size());  // somebody's, and one with its notes, log and index
    fnStart(SIGKILL);
    EXPECT_LT(setBefore.size(), fnNew().size());
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(setBefore, fnNew());
    ::kill(iStopped, SIGKILL);
    ::waitpid(iStopped, nullptr, 0);
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(std::set<std::string>{"backup.db.new-laptop"}, fnNew());
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, DamagedBackupIsRefusedWherever) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    const std::string strWhole = m_folder.Read("backup.db");
    for (std::size_t iOffset = 21; iOffset < strWhole.size(); iOffset += 4096) {
        m_folder.Write("backup.db", strWhole);
        Damage(BackupPath(), iOffset);
        EXPECT_NE("", ExceptionText([&] { StoreBackup::Open(BackupPath()); })) << iOffset;
    }
    EXPECT_NE("", ExceptionText([&] { StoreBackup::Open(m_folder.Path("none.db")); }));
}

TEST_F(StoreBackupTest, StoreThatNobodyFinishedMakingIsNoBackup) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    m_folder.Write("backup.db-journal", JournalOfAnEmptyFile());
    EXPECT_EQ("settings store sqlite:" + BackupPath() +
                  ", opening it: it is a store that nobody has finished making, and no backup",
              ExceptionText([&] { StoreBackup::Open(BackupPath()); }));
    EXPECT_NE("", ExceptionText([&] { StoreBackup::Open(BackupPath()); }));
}

TEST_F(StoreBackupTest, RestoresIntoALiveStoreAndKeepsWhatWasThere) {
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    store.Save(Expression("later"));
    const std::string strLater = DumpStore(store);
    const auto pBackup = StoreBackup::Open(BackupPath());
    const auto tried = StoreBackup::Restore(*pBackup, Path(), true, NoStep);
    EXPECT_EQ(strLater, DumpStore(store));
    EXPECT_FALSE(fs::exists(tried.strFormer));
    for (const char* pFormer : {"settings.db.before-restore", "settings.db.before-restore-2"}) {
        const auto restored = StoreBackup::Restore(*pBackup, Path(), false, NoStep);
        EXPECT_EQ((StoreBackup::Counts{1, 0, 0}), restored.aRestored);
        EXPECT_FALSE(restored.bDamaged);
        EXPECT_EQ(fs::canonical(m_folder.Path(pFormer)), restored.strFormer);
        EXPECT_EQ(KEPT, DumpStore(store));  // the handle that was open before
    }
    EXPECT_EQ((StoreBackup::Counts{2, 0, 0}), tried.aReplaced);
    EXPECT_EQ(strLater, DumpFile(m_folder.Path("settings.db.before-restore")));
}

TEST_F(StoreBackupTest, RestoringThatIsInterruptedChangesNothing) {
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    store.Save(Expression("later"));
    const std::string strLater = DumpStore(store);
    const auto pBackup = StoreBackup::Open(BackupPath());
    for (int iSteps = 0; iSteps < 3; ++iSteps) {
        int iStep = 0;
        const auto fnStep = [&] {
            if (iStep++ == iSteps) {
                throw std::runtime_error("enough");
            }
        };
        EXPECT_THROW(StoreBackup::Restore(*pBackup, Path(), false, fnStep), std::runtime_error);
        EXPECT_EQ(strLater, DumpStore(store));
    }
}

TEST_F(StoreBackupTest, RestoringThatFailsLeavesNoCopyOfWhatWasThere) {
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::set<std::string> setBefore = Names();
    int iSteps = 0;
    const auto fnLast = [&] {
        if (++iSteps == 2) {  // the copy is made with the first
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(StoreBackup::Restore(*pBackup, Path(), false, fnLast), std::runtime_error);
    EXPECT_EQ(setBefore, Names());
}

TEST_F(StoreBackupTest, WhatWasThereIsKeptWhenTheRestoredStoreIsMovedAway) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
        store.Save(Expression("later"));
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    static std::string s_strMoved;
    s_strMoved = Path();
    int (*const pOpened)(sqlite3*, const char**, const void*) = [](sqlite3* pDb, const char**, const void*) {
        const auto fnMove = [](void*) { return std::rename(s_strMoved.c_str(), (s_strMoved + ".moved").c_str()); };
        if (sqlite3_db_filename(pDb, "main") == s_strMoved) {
            sqlite3_commit_hook(pDb, fnMove, nullptr);
        }
        return SQLITE_OK;
    };
    ASSERT_EQ(SQLITE_OK, sqlite3_auto_extension(reinterpret_cast<void (*)()>(pOpened)));
    EXPECT_EQ("settings store sqlite:" + Path() +
                  ", committing a unit of work: its file was removed or replaced meanwhile; what was written is in the "
                  "file that stood there before",
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }));
    sqlite3_reset_auto_extension();
    EXPECT_EQ(KEPT, DumpFile(Path() + ".moved"));
    EXPECT_EQ("expressions subject=\"kept\"\nexpressions subject=\"later\"\n", DumpFile(Path() + ".before-restore"));
}

TEST_F(StoreBackupTest, DamagedStoreThatCannotBeReplacedKeepsItsNames) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    m_folder.Write("settings.db-wal", "log");
    m_folder.Write("settings.db-journal", "hot");
    fs::create_hard_link(Path(), Path() + ".damaged");
    m_folder.MakeFolder("settings.db.damaged-journal");
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::set<std::string> setBefore = Names();
    EXPECT_EQ("settings store sqlite:" + Path() + ", restoring it: Is a directory",
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }));
    EXPECT_EQ(setBefore, Names());
    EXPECT_EQ("log", m_folder.Read("settings.db-wal"));
}

TEST_F(StoreBackupTest, PutsADamagedStoreAside) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    ::chmod(Path().c_str(), 0640);
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::string strSound = m_folder.Read("settings.db");
    int iAside = 0;
    for (const std::size_t iOffset :
         {std::size_t{0}, std::size_t{70}, std::size_t{5000}, 3 * 8192 + std::size_t{8000}}) {
        m_folder.Write("settings.db", strSound);
        Damage(Path(), iOffset);
        const std::string strDamaged = m_folder.Read("settings.db");
        m_folder.Write("settings.db-wal", "left behind");
        EXPECT_TRUE(StoreBackup::Restore(*pBackup, Path(), true, NoStep).bDamaged);
        const auto restored = StoreBackup::Restore(*pBackup, Path(), false, NoStep);
        EXPECT_TRUE(restored.bDamaged);
        const std::string strAside = "settings.db.damaged" + (++iAside > 1 ? "-" + std::to_string(iAside) : "");
        EXPECT_EQ(fs::canonical(m_folder.Path(strAside)), restored.strFormer);
        EXPECT_EQ(strDamaged, m_folder.Read(strAside)) << iOffset;
        EXPECT_FALSE(fs::exists(Path() + "-wal"));
        EXPECT_EQ(KEPT, DumpFile(Path()));
        struct stat status {};
        ASSERT_EQ(0, ::stat(Path().c_str(), &status));
        EXPECT_EQ(0640u, status.st_mode & 07777);
    }
}

TEST_F(StoreBackupTest, OtherGroupThanTheStoresMayDoNothing) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes a user who may become others";
    }
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    const std::string strFolder = fs::path(Path()).parent_path().string();
    for (const std::string& strShared : {strFolder, fs::path(strFolder).parent_path().string()}) {
        ::chmod(strShared.c_str(), 0777);
    }
    ::chmod(Path().c_str(), 0666);
    ::chmod(BackupPath().c_str(), 0666);
    ASSERT_EQ(0, ::chown(Path().c_str(), 1001, 2000));
    ASSERT_EQ(0, ::setgroups(0, nullptr));
    ASSERT_EQ(0, ::setegid(1002));
    ASSERT_EQ(0, ::seteuid(1002));
    EXPECT_TRUE(StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), false, NoStep).bDamaged);
    struct stat status {};
    ASSERT_EQ(0, ::stat(Path().c_str(), &status));
    EXPECT_EQ(1002u, status.st_uid);
    EXPECT_EQ(1002u, status.st_gid);
    EXPECT_EQ(0606u, status.st_mode & 07777);
    ASSERT_EQ(0, ::seteuid(0));  // who removes the folder
}

TEST_F(StoreBackupTest, DamagedStoreThatIsHalfPutAsideIsPutAsideWhole) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    const std::string strDamaged = m_folder.Read("settings.db");
    m_folder.Write("settings.db.damaged", "of another time");
    fs::create_hard_link(Path(), Path() + ".damaged-2");
    m_folder.Write("settings.db.damaged-2-wal", "its log");
    const auto restored = StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), false, NoStep);
    EXPECT_TRUE(restored.bDamaged);
    EXPECT_EQ(Path() + ".damaged-2", restored.strFormer);
    EXPECT_EQ(strDamaged, m_folder.Read("settings.db.damaged-2"));
    EXPECT_EQ("its log", m_folder.Read("settings.db.damaged-2-wal"));
    EXPECT_EQ(KEPT, DumpFile(Path()));
    EXPECT_EQ((std::set<std::string>{"backup.db", "settings.db", "settings.db.damaged", "settings.db.damaged-2",
                                     "settings.db.damaged-2-wal"}),
              Names());
}

TEST_F(StoreBackupTest, StoreThatAnotherHasRestoredMeanwhileIsNotPutAside) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    const auto pBackup = StoreBackup::Open(BackupPath());
    std::unique_ptr<CSqliteStore> pOther;
    const auto fnOther = [&] {
        if (pOther == nullptr) {
            StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), false, NoStep);
            pOther = std::make_unique<CSqliteStore>(Path());
            pOther->Save(Expression("new"));
        }
    };
    const auto restored = StoreBackup::Restore(*pBackup, Path(), false, fnOther);
    EXPECT_FALSE(restored.bDamaged);
    EXPECT_EQ(Path() + ".before-restore", restored.strFormer);
    EXPECT_EQ("expressions subject=\"kept\"\nexpressions subject=\"new\"\n", DumpFile(restored.strFormer));
    EXPECT_EQ(KEPT, DumpStore(*pOther));
}

TEST_F(StoreBackupTest, DamagedStoreIsNotPutAsideWhileSomebodyWrites) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    CWriterNote writer(Path());
    writer.Leave();
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::set<std::string> setBefore = Names();
    CSettingsStore::SetWaitEnder([] { return true; });
    EXPECT_EQ("settings store sqlite:" + Path() + ", restoring it: another process is writing to it (" + writer.Read() +
                  "); try again",
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }));
    fs::resize_file(Path() + "-writer", 0);  // it has the note, and is about to write it
    EXPECT_EQ("settings store sqlite:" + Path() + ", restoring it: another process is writing to it; try again",
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }));
    CSettingsStore::SetWaitEnder(nullptr);
    EXPECT_EQ(setBefore, Names());
    writer.Remove();
    EXPECT_TRUE(StoreBackup::Restore(*pBackup, Path(), false, NoStep).bDamaged);
    EXPECT_FALSE(fs::exists(Path() + "-writer"));
}

TEST_F(StoreBackupTest, DamagedStoreThatStaysReservedIsNotWaitedForWithoutEnd) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    const auto pBackup = StoreBackup::Open(BackupPath());
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(Path().c_str(), &pDb, SQLITE_OPEN_READWRITE, "unix"));
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    ASSERT_EQ(SQLITE_OK, pFile->pMethods->xLock(pFile, SQLITE_LOCK_SHARED));
    ASSERT_EQ(SQLITE_OK, pFile->pMethods->xLock(pFile, SQLITE_LOCK_RESERVED));
    const std::set<std::string> setBefore = Names();
    CSettingsStore::SetWaitEnder([] { return true; });
    EXPECT_EQ("settings store sqlite:" + Path() + ", restoring it: another process is writing to it; try again",
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }));
    CSettingsStore::SetWaitEnder(nullptr);
    EXPECT_EQ(setBefore, Names());
    sqlite3_close(pDb);
    EXPECT_TRUE(StoreBackup::Restore(*pBackup, Path(), false, NoStep).bDamaged);
}

TEST_F(StoreBackupTest, AnotherProgramsDatabaseStays) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::string strOther = m_folder.Path("other.db");
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(strOther.c_str(), &pDb));
    sqlite3_exec(pDb, "CREATE TABLE theirs (x); INSERT INTO theirs VALUES (1)", nullptr, nullptr, nullptr);
    sqlite3_close(pDb);
    m_folder.Write("other.db-journal", "hot");
    const std::string strBytes = m_folder.Read("other.db");
    EXPECT_NE(std::string::npos, ExceptionText([&] {
                                     StoreBackup::Restore(*pBackup, strOther, false, NoStep);
                                 }).find("it is another program's database"));
    EXPECT_EQ(strBytes, m_folder.Read("other.db"));
    EXPECT_EQ("hot", m_folder.Read("other.db-journal"));
}

TEST_F(StoreBackupTest, JournalsGoWithADamagedStore) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    Damage(Path(), 0);
    m_folder.Write("settings.db-wal", "log");
    m_folder.Write("settings.db-journal", "hot");
    StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), false, NoStep);
    EXPECT_EQ("log", m_folder.Read("settings.db.damaged-wal"));
    EXPECT_EQ("hot", m_folder.Read("settings.db.damaged-journal"));
    EXPECT_FALSE(fs::exists(Path() + "-journal"));
    EXPECT_EQ(KEPT, DumpFile(Path()));
}

TEST_F(StoreBackupTest, WhatIsNoFileIsNotReplaced) {
    CSqliteStore store(Path());
    ASSERT_EQ(0, ::mkfifo(BackupPath().c_str(), 0600));
    EXPECT_EQ("settings store sqlite:" + BackupPath() + ", writing a backup: it is no file; name another",
              ExceptionText([&] { StoreBackup::Save(store, BackupPath(), NoStep); }));
    EXPECT_EQ(fs::file_type::fifo, fs::status(BackupPath()).type());
}

TEST_F(StoreBackupTest, FileOfAnotherKindIsNotReplacedButAnEmptyOneIs) {
    CSqliteStore store(Path());
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(m_folder.Path("others.db").c_str(), &pDb));
    sqlite3_exec(pDb, "CREATE TABLE t (x)", nullptr, nullptr, nullptr);
    sqlite3_close(pDb);
    m_folder.Write("doc.xml", "<policy/>");
    m_folder.Write("long.xml", std::string(9000, ' '));
    for (const char* pFile : {"others.db", "doc.xml", "long.xml"}) {
        const std::string strBefore = m_folder.Read(pFile);
        EXPECT_EQ("settings store sqlite:" + m_folder.Path(pFile) +
                      ", writing a backup: it is no settings store, and is left as it is; name another file",
                  ExceptionText([&] { StoreBackup::Save(store, m_folder.Path(pFile), NoStep); }));
        EXPECT_EQ(strBefore, m_folder.Read(pFile));
    }
    m_folder.Write("backup.db", "");
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, WhatComesWhileABackupIsWrittenIsNotReplaced) {
    CSqliteStore store(Path());
    for (const char* pBefore : {"", "made"}) {
        fs::remove(BackupPath());
        if (*pBefore != '\0') {
            StoreBackup::Save(store, BackupPath(), NoStep);
        }
        const auto fnCome = [&] {
            fs::remove(BackupPath());
            m_folder.Write("backup.db", "precious");
        };
        EXPECT_EQ("settings store sqlite:" + BackupPath() +
                      ", writing a backup: it is no settings store, and is left as it is; name another file",
                  ExceptionText([&] { StoreBackup::Save(store, BackupPath(), fnCome); }));
        EXPECT_EQ("precious", m_folder.Read("backup.db"));
    }
    fs::remove(BackupPath());
    StoreBackup::Save(store, BackupPath(), [&] { CSqliteStore(BackupPath()).Save(Expression("later")); });
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));  // nobody uses it any more
}

TEST_F(StoreBackupTest, BackupWaitsForWhoeverReplacesItsPlace) {
    CSqliteStore store(Path());
    CSqliteStore(BackupPath()).Save(Expression("former"));
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(BackupPath().c_str(), &pDb, SQLITE_OPEN_READWRITE, "unix"));
    sqlite3_file* pFile = nullptr;
    sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_FILE_POINTER, &pFile);
    ASSERT_EQ(SQLITE_OK, pFile->pMethods->xLock(pFile, SQLITE_LOCK_SHARED));
    ASSERT_EQ(SQLITE_OK, pFile->pMethods->xLock(pFile, SQLITE_LOCK_RESERVED));
    const std::string strBefore = m_folder.Read("backup.db");
    CSettingsStore::SetWaitEnder([] { return true; });
    EXPECT_EQ(
        "settings store sqlite:" + BackupPath() + ", writing a backup: another process is writing to it; try again",
        ExceptionText([&] { StoreBackup::Save(store, BackupPath(), NoStep); }));
    CSettingsStore::SetWaitEnder(nullptr);
    EXPECT_EQ(strBefore, m_folder.Read("backup.db"));
    sqlite3_close(pDb);
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, EmptyLogThatNobodyHasOpenKeepsNoBackupFromBeingReplaced) {
    CSqliteStore store(Path());
    CSqliteStore(BackupPath()).Save(Expression("former"));
    m_folder.Write("backup.db-wal", "");
    {
        CSqliteStore used(BackupPath());
        DumpStore(used);
        ASSERT_EQ("", m_folder.Read("backup.db-wal"));
        EXPECT_EQ("settings store sqlite:" + BackupPath() +
                      ", writing a backup: it is a store that is in use; name another file",
                  ExceptionText([&] { StoreBackup::Save(store, BackupPath(), NoStep); }));
        used.Save(Expression("later"));
    }
    m_folder.Write("backup.db-wal", "");
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
    CSqliteStore(BackupPath()).Save(Expression("later"));
    EXPECT_EQ("expressions subject=\"kept\"\nexpressions subject=\"later\"\n", DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, BackupThatMayOnlyBeReadIsReplaced) {
    CSqliteStore store(Path());
    CSqliteStore(BackupPath()).Save(Expression("former"));
    ::chmod(BackupPath().c_str(), 0444);
    ::chmod(m_folder.Path().c_str(), 0777);
    const auto pBackup = StoreBackup::Open(Path());
    const CUnprivileged unprivileged;
    StoreBackup::Save(*pBackup, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, DamagedBackupIsReplaced) {
    CSqliteStore store(Path());
    StoreBackup::Save(store, BackupPath(), NoStep);
    Damage(BackupPath(), 8192 + 8100);
    StoreBackup::Save(store, BackupPath(), NoStep);
    EXPECT_EQ(KEPT, DumpFile(BackupPath()));
}

TEST_F(StoreBackupTest, PutsTheJournalOfAStoreThatWasCutToNothingAside) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    m_folder.Write("settings.db", "");
    m_folder.Write("settings.db-wal", "a journal");
    EXPECT_TRUE(StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), false, NoStep).bDamaged);
    EXPECT_EQ("a journal", m_folder.Read("settings.db.damaged-wal"));
    EXPECT_EQ(KEPT, DumpFile(Path()));
}

TEST_F(StoreBackupTest, OlderBackupThatMayNotBeChangedIsRestoredFrom) {
    m_folder.MakeFolder("old");
    const std::string strBackup = m_folder.Path("old/backup.db");
    MakeFirstVersion(strBackup);
    const std::string strBytes = m_folder.Read("old/backup.db");
    ::chmod(strBackup.c_str(), 0444);
    ::chmod(m_folder.Path("old").c_str(), 0555);
    ::chmod(m_folder.Path().c_str(), 0777);
    ::chmod(Path().c_str(), 0666);
    {
        const CUnprivileged unprivileged;
        StoreBackup::Restore(*StoreBackup::Open(strBackup), Path(), false, NoStep);
        EXPECT_EQ(FIRST_VERSION_DUMP, DumpFile(Path()));
    }
    EXPECT_EQ(strBytes, m_folder.Read("old/backup.db"));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(m_folder.Path("old")), fs::directory_iterator()));
    RunSql(strBackup, "UPDATE expressions SET pre_defined = 2", nullptr);
    EXPECT_EQ("settings store sqlite:" + strBackup +
                  ", opening it: it is damaged: the record \"E\" of the table expressions pre_defined is neither 0 "
                  "nor 1; \"dlpctl store check\" says what else is, \"dlpctl store restore\" brings back a backup",
              ExceptionText([&] { StoreBackup::Open(strBackup); }));
}

TEST_F(StoreBackupTest, OlderBackupStaysAsItIsWhenItIsRestoredFrom) {
    MakeFirstVersion(BackupPath());
    const std::string strBytes = m_folder.Read("backup.db");
    for (const bool bTry : {true, false}) {
        StoreBackup::Restore(*StoreBackup::Open(BackupPath()), Path(), bTry, NoStep);
        EXPECT_EQ(bTry ? KEPT : FIRST_VERSION_DUMP, DumpFile(Path()));
        EXPECT_EQ(strBytes, m_folder.Read("backup.db"));
    }
}

TEST_F(StoreBackupTest, StoreThatTheStickyBitKeepsIsNotReplaced) {
    const std::string strWhy =
        ": Operation not permitted; the file is another user's, and the sticky bit of its folder lets nobody else "
        "replace it: have its owner do this";
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    ::chmod(BackupPath().c_str(), 0444);
    m_folder.MakeFolder("shared");
    ::chmod(m_folder.Path().c_str(), 0755);
    ::chmod(m_folder.Path("shared").c_str(), 01777);
    const std::string strStore = m_folder.Path("shared/settings.db");
    const auto fnRefusal = [&](const char* pDoing, const std::function<void()>& fnRun) {
        ::chmod(strStore.c_str(), 0666);
        const std::string strBytes = m_folder.Read("shared/settings.db");
        const CUnprivileged unprivileged;
        EXPECT_EQ("settings store sqlite:" + strStore + ", " + pDoing + strWhy, ExceptionText(fnRun));
        EXPECT_TRUE(strBytes == m_folder.Read("shared/settings.db")) << pDoing;
        for (const auto& entry : fs::directory_iterator(m_folder.Path("shared"))) {
            EXPECT_EQ(strStore, entry.path().string()) << pDoing;
        }
    };
    MakeFirstVersion(strStore);
    fnRefusal("opening it", [&] { CSqliteStore store(strStore); });
    m_folder.Write("shared/settings.db", m_folder.Read("backup.db"));
    fnRefusal("writing a backup", [&] { StoreBackup::Save(*StoreBackup::Open(BackupPath()), strStore, NoStep); });
    std::string strDamaged = m_folder.Read("backup.db");
    strDamaged[0] ^= 1;
    m_folder.Write("shared/settings.db", strDamaged);
    fnRefusal("restoring it", [&] { StoreBackup::Restore(*StoreBackup::Open(BackupPath()), strStore, false, NoStep); });
}

TEST_F(StoreBackupTest, RestoresWhereNothingIs) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::string strNew = m_folder.Path("new.db");
    StoreBackup::Restore(*pBackup, strNew, true, NoStep);
    EXPECT_FALSE(fs::exists(strNew));
    EXPECT_EQ("", StoreBackup::Restore(*pBackup, strNew, false, NoStep).strFormer);
    EXPECT_EQ(KEPT, DumpFile(strNew));
    EXPECT_NE("", ExceptionText([&] { StoreBackup::Restore(*pBackup, m_folder.MakeFolder("folder"), false, NoStep); }));
}

TEST_F(StoreBackupTest, AnotherUsersLinkIsNoWayToRestore) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's link";
    }
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
        store.Save(Expression("later"));
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    const std::string strLink = m_folder.Path("link.db");
    fs::create_symlink("settings.db", strLink);
    const auto fnRefusal = [&](const std::string& strWhy) {
        for (const bool bTry : {true, false}) {
            EXPECT_EQ("settings store sqlite:" + strLink + ", opening it: " + strWhy,
                      ExceptionText([&] { StoreBackup::Restore(*pBackup, strLink, bTry, NoStep); }));
        }
    };
    ASSERT_EQ(0, ::lchown(strLink.c_str(), 65534, 65534));
    fnRefusal("it is another user's symbolic link, which is not followed; name the file itself");
    EXPECT_EQ("expressions subject=\"kept\"\nexpressions subject=\"later\"\n", DumpFile(Path()));
    ASSERT_EQ(0, ::lchown(strLink.c_str(), 0, 0));
    EXPECT_EQ(Path() + ".before-restore", StoreBackup::Restore(*pBackup, strLink, false, NoStep).strFormer);
    EXPECT_EQ(KEPT, DumpFile(Path()));
    EXPECT_TRUE(fs::is_symlink(strLink));
    fs::remove(Path());
    fnRefusal("it is a symbolic link that leads to no file: No such file or directory");
}

TEST_F(StoreBackupTest, WhatIsRenewedStaysAsItIsWhenTheLastLookFails) {
    CMemoryStore records;
    records.Save(Expression("new"));
    const std::string strBefore = m_folder.Read("settings.db");
    EXPECT_EQ("gone",
              ExceptionText([&] { StoreBackup::Renew(records, Path(), [] { throw OS::CException(0, L"gone", 0); }); }));
    EXPECT_EQ(strBefore, m_folder.Read("settings.db"));
    StoreBackup::Renew(records, Path(), [] {});
    EXPECT_EQ("expressions subject=\"new\"\n", DumpFile(Path()));
    EXPECT_EQ(std::set<std::string>{"settings.db"}, Names());
}

TEST_F(StoreBackupTest, StoreOfANewerVersionIsNotPutAside) {
    {
        CSqliteStore store(Path());
        StoreBackup::Save(store, BackupPath(), NoStep);
    }
    const auto pBackup = StoreBackup::Open(BackupPath());
    fs::remove(Path());
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(Path().c_str(), &pDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                                         SqlitePageSums::GetVfsName()));
    SqlitePageSums::Reserve(pDb);
    sqlite3_exec(pDb, "PRAGMA page_size = 8192; PRAGMA application_id = 0x444C5053; PRAGMA user_version = 9", nullptr,
                 nullptr, nullptr);
    sqlite3_close(pDb);
    EXPECT_NE(std::string::npos,
              ExceptionText([&] { StoreBackup::Restore(*pBackup, Path(), false, NoStep); }).find("newer version"));
    EXPECT_FALSE(fs::exists(Path() + ".damaged"));
}

}  // namespace
