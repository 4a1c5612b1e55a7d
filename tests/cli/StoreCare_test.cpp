#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/JsonSchema.h"

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

class StoreCare : public CToolTest {
  protected:
    StoreCare() { Import(Documents::Small()); }

    void Damage(const std::string& strFile, std::size_t iOffset) const {
        std::string strBytes = m_dir.Read(strFile);
        strBytes[iOffset] ^= 1;
        m_dir.Write(strFile, strBytes);
    }
    /** @return what the command answers in JSON, held against its schema */
    Json Answer(const std::string& strCommand, std::vector<std::string> vecArguments, int iCode) const {
        vecArguments.insert(vecArguments.begin(), {"--json", "store", strCommand});
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(run.iCode, iCode) << run.strErr;
        EXPECT_EQ(CheckAnswer("store-" + strCommand, run.strOut), "");
        return Json::parse(run.strOut);
    }
    std::string Store() const { return fs::canonical(m_dir.Path("store.db")).string(); }
};

}  // namespace

TEST_F(StoreCare, SoundStoreIsCalledSound) {
    EXPECT_EQ(Get({"store", "check"}), Url("store.db") + " is sound.\n");
    const Json answer = Answer("check", {}, 0);
    EXPECT_EQ(answer["schema"], 3);
    EXPECT_EQ(answer["damages"], Json::array());
    EXPECT_EQ(answer["missing"], Json::array());
}

TEST_F(StoreCare, CheckMakesNoStoreAndWritesNothing) {
    const std::string strBefore = m_dir.Read("store.db");
    Get({"store", "check"});
    EXPECT_EQ(m_dir.Read("store.db"), strBefore);
    const SToolRun run = RunOn(Url("none.db"), {"store", "check"});
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(run.strErr, "dlpctl: settings store " + Url("none.db") +
                              ", opening it: cannot read the file: No such file or directory\n");
    EXPECT_FALSE(fs::exists(m_dir.Path("none.db")));
    EXPECT_EQ(RunOn("memory:", {"store", "check"}).strErr,
              "dlpctl: this store is no file; name one with --store sqlite:PATH\n");
}

TEST_F(StoreCare, DamagedPageIsFoundAndNothingIsReadFromIt) {
    const std::size_t iSize = m_dir.Read("store.db").size();
    for (std::size_t iOffset = 8192 + 8100; iOffset < iSize; iOffset += 8192) {
        Damage("store.db", iOffset);
        const Json answer = Answer("check", {}, 1);
        EXPECT_EQ(answer["verdict"], "findings");
        EXPECT_NE(answer["damages"].size(), 0u) << iOffset;
        EXPECT_EQ(Run({"store", "check"}).strOut.find("damaged: "), 0u);
        Damage("store.db", iOffset);
    }
    EXPECT_EQ(Answer("check", {}, 0)["verdict"], "done");
}

TEST_F(StoreCare, DamagedBeginningCannotBeOpened) {
    Damage("store.db", 4000);
    const Json answer = Answer("check", {}, 4);
    EXPECT_EQ(answer["verdict"], "store");
    EXPECT_EQ(
        answer["message"],
        "settings store " + Url("store.db") +
            ", opening it: it is damaged: its first page is not as it was written; \"dlpctl store check\" says what "
            "else is, \"dlpctl store restore\" brings back a backup");
}

TEST_F(StoreCare, WhatTemplatesLackIsFound) {
    const std::unique_ptr<CSettingsStore> pStore = CSettingsStore::Make(Url("store.db"));
    pStore->ReplaceAll(ESettingsKind::EXPRESSION, {});
    pStore->ReplaceAll(ESettingsKind::KEYWORD, {});
    const SToolRun run = Run({"store", "check"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "missing: the template \"cards\" refers to the expression \"one\"\n"
              "missing: the template \"cards\" refers to the keyword list \"words\"\n");
    EXPECT_EQ(Answer("check", {}, 1)["missing"],
              Json::parse(R"([{"template":"cards","kind":"expression","name":"one"},)"
                          R"({"template":"cards","kind":"keyword","name":"words"}])"));
}

TEST_F(StoreCare, BackupBringsBackWhatWasThere) {
    const std::string strBefore = Dump();
    EXPECT_EQ(Get({"store", "backup", m_dir.Path("backup.db")}), "Saved 2 expressions, 1 keyword list, 1 template.\n");
    EXPECT_EQ(RunOn(Url("backup.db"), {"store", "dump"}).strOut, strBefore);
    EXPECT_EQ(Run({"assets", "import", "-"}, Documents::Policy(Documents::Entity("later"), "")).iCode, 0);
    const std::string strLater = Dump();
    const Json tried = Answer("restore", {"--dry-run", m_dir.Path("backup.db")}, 0);
    EXPECT_EQ(Dump(), strLater);
    EXPECT_EQ(tried["former"], Store() + ".before-restore");
    EXPECT_EQ(Get({"store", "restore", "--dry-run", m_dir.Path("backup.db")}),
              "Would restore 2 expressions, 1 keyword list, 1 template in place of 3 expressions, 1 keyword list, 1 "
              "template.\nWhat was there would be kept as " +
                  Store() + ".before-restore.\n");
    EXPECT_EQ(Get({"store", "restore", m_dir.Path("backup.db")}),
              "Restored 2 expressions, 1 keyword list, 1 template in place of 3 expressions, 1 keyword list, 1 "
              "template.\nWhat was there is kept as " +
                  Store() + ".before-restore.\n");
    EXPECT_EQ(Dump(), strBefore);
    EXPECT_EQ(RunOn(Url("store.db.before-restore"), {"store", "dump"}).strOut, strLater);
}

TEST_F(StoreCare, DamagedStoreIsPutAside) {
    const std::string strBefore = Dump();
    EXPECT_EQ(Answer("backup", {m_dir.Path("backup.db")}, 0)["saved"]["expressions"], 2);
    Damage("store.db", 4000);
    const std::string strDamaged = m_dir.Read("store.db");
    EXPECT_TRUE(Answer("restore", {"--dry-run", m_dir.Path("backup.db")}, 0)["damaged"]);
    EXPECT_EQ(m_dir.Read("store.db"), strDamaged);
    EXPECT_EQ(
        Get({"store", "restore", m_dir.Path("backup.db")}),
        "Restored 2 expressions, 1 keyword list, 1 template.\nThe damaged store is kept as " + Store() + ".damaged.\n");
    EXPECT_EQ(Dump(), strBefore);
    EXPECT_EQ(m_dir.Read("store.db.damaged"), strDamaged);
}

TEST_F(StoreCare, BackupThatIsNoneIsRefusedAndTheStoreStays) {
    const std::string strBefore = Dump();
    Get({"store", "backup", m_dir.Path("backup.db")});
    Damage("backup.db", 8192 + 8100);
    m_dir.Write("text", "text");
    for (const char* pFile : {"backup.db", "text", "none"}) {
        const SToolRun run = Run({"store", "restore", m_dir.Path(pFile)});
        EXPECT_EQ(run.iCode, 2) << pFile;
        EXPECT_EQ(run.strErr.find("dlpctl: " + m_dir.Path(pFile) + ": settings store "), 0u) << run.strErr;
        EXPECT_EQ(Dump(), strBefore);
    }
    EXPECT_EQ(Answer("restore", {m_dir.Path("none")}, 2)["verdict"], "invalid");
}

TEST_F(StoreCare, StoreItselfIsNoBackup) {
    for (const char* pCommand : {"backup", "restore"}) {
        for (const std::string& strFile : {m_dir.Path("store.db"), std::string("-")}) {
            const SToolRun run = Run({"store", pCommand, strFile});
            EXPECT_EQ(run.iCode, 3);
            EXPECT_EQ(run.strErr, "dlpctl: \"" + strFile + "\" cannot be a backup of this store; name a file\n");
        }
        EXPECT_EQ(RunOn("memory:", {"store", pCommand, m_dir.Path("b.db")}).iCode, 3);
    }
    EXPECT_EQ(Run({"store", "backup", m_dir.Path("none/b.db")}).iCode, 4);
}

TEST_F(StoreCare, BackupGoesWhereALinkLeads) {
    const std::string strFolder = m_dir.MakeFolder("backups");
    fs::create_symlink("backups/today.db", m_dir.Path("link"));
    for (const char* pCase : {"the file is made", "the file is replaced"}) {
        Get({"store", "backup", m_dir.Path("link")});
        EXPECT_TRUE(fs::is_symlink(m_dir.Path("link"))) << pCase;
        EXPECT_EQ(RunOn(Url("backups/today.db"), {"store", "dump"}).strOut, Dump()) << pCase;
    }
    const std::unique_ptr<CSettingsStore> pUser = CSettingsStore::Make(Url("backups/today.db"));
    EXPECT_EQ(Run({"store", "backup", m_dir.Path("link")}).strErr,
              "dlpctl: settings store " + Url("backups/today.db") +
                  ", writing a backup: it is a store that is in use; name another file\n");
}

TEST_F(StoreCare, BackupTakesNoDocumentsPlace) {
    const std::string strFile = m_dir.Write("policy.xml", Documents::Small());
    EXPECT_EQ(Answer("backup", {strFile}, 4)["message"],
              "settings store " + Url("policy.xml") +
                  ", writing a backup: it is no settings store, and is left as it is; name another file");
    EXPECT_EQ(m_dir.Read("policy.xml"), Documents::Small());
}

TEST_F(StoreCare, WideOpenStoreIsWarnedOf) {
    ::chmod(m_dir.Path("store.db").c_str(), 0602);
    EXPECT_EQ(
        Run({"list", "templates"}).strErr,
        "dlpctl: warning: everybody may change the store; take that away: chmod o= " + m_dir.Path("store.db") + '\n');
    ::chmod(m_dir.Path("store.db").c_str(), 0604);
    EXPECT_EQ(
        Run({"list", "templates"}).strErr,
        "dlpctl: warning: everybody may read the store; take that away: chmod o= " + m_dir.Path("store.db") + '\n');
    ::chmod(m_dir.Path("store.db").c_str(), 0660);
    ::chmod(m_dir.Path().c_str(), 0777);
    EXPECT_EQ(Run({"list", "templates"}).strErr,
              "dlpctl: warning: everybody may replace the store in its folder; take that away: chmod o-w " +
                  m_dir.Path() + '\n');
    ::chmod(m_dir.Path().c_str(), 01777);
    EXPECT_EQ(Run({"list", "templates"}).strErr, "");
}

TEST_F(StoreCare, WideOpenStoreIsWarnedOfOnceByWhoeverOpensIt) {
    Get({"store", "backup", m_dir.Path("backup.db")});
    ::chmod(m_dir.Path("store.db").c_str(), 0604);
    const std::vector<std::string> aCommands[] = {{"store", "check"},
                                                  {"store", "backup", m_dir.Path("backup.db")},
                                                  {"store", "restore", "--dry-run", m_dir.Path("backup.db")},
                                                  {"store", "restore", m_dir.Path("backup.db")},
                                                  {"store", "dump"},
                                                  {"store", "info"}};
    for (const std::vector<std::string>& vecCommand : aCommands) {
        const SToolRun run = Run(vecCommand);
        EXPECT_EQ(run.iCode, 0) << vecCommand[1];
        EXPECT_EQ(run.strErr, "dlpctl: warning: everybody may read the store; take that away: chmod o= " +
                                  m_dir.Path("store.db") + '\n')
            << vecCommand[1];
    }
}

TEST_F(StoreCare, DiskThatFillsUpLeavesTheStoreAsItWas) {
    const std::string strBefore = Dump();
    std::string strAssets;
    for (int i = 0; i < 2000; ++i) {
        strAssets += Documents::Dictionary("list " + std::to_string(i));
    }
    const std::string strFile = m_dir.Write("much.xml", Documents::Policy(strAssets, ""));
    const std::string aCommands[] = {"assets import '" + strFile + "'",
                                     "store backup '" + m_dir.Path("backup.db") + "'"};
    for (const std::string& strCommand : aCommands) {
        const SToolRun run = CProgram::Shell("ulimit -f 40; \"$DLPCTL\" " + strCommand);
        EXPECT_EQ(run.iCode, 4);
        EXPECT_NE(run.strErr.find("disk I/O error"), std::string::npos) << run.strErr;
        EXPECT_EQ(Dump(), strBefore);
        EXPECT_FALSE(fs::exists(m_dir.Path("backup.db")));
    }
    EXPECT_EQ(Run({"assets", "import", strFile}).iCode, 0);
}
