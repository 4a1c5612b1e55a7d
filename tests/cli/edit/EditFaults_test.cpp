#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/Signals.h"
#include "cli/Tool.h"
#include "platform/store/CForwardingStore.h"
#include "tests/cli/edit/EditRun.h"
#include "tests/support/FaultStore.h"

namespace {

using Json = nlohmann::ordered_json;

/** Every command that changes single records. */
const std::vector<std::string> COMMANDS[] = {
    {"delete", "expression", "two"},          {"delete", "expression", "one", "--force"},
    {"rename", "expression", "one", "uno"},   {"rename", "keyword", "words", "terms"},
    {"keywords", "new", "terms", "three"},    {"keywords", "add", "words", "three"},
    {"keywords", "remove", "words", "one"},   {"expression", "set", "one", "--pattern", "x"},
    {"template", "set", "cards", "P:one(3)"}, {"keywords", "set", "words", "--type", "All"},
};

/** And those that look at one. */
const std::vector<std::string> READING_COMMANDS[] = {
    {"keywords", "show", "words"},
    {"keywords", "export", "words"},
    {"expression", "show", "one"},
    {"template", "show", "cards"},
};

std::string Describe(const std::vector<std::string>& vecArguments) {
    std::string strLine;
    for (const std::string& strArgument : vecArguments) {
        strLine += strArgument + ' ';
    }
    return strLine;
}

/** A signal comes as the command's unit of work begins. */
class CSignallingStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    void Begin(EUnitOfWork eUnit) override {
        CForwardingStore::Begin(eUnit);
        if (!Signals::IsCaught()) {
            std::raise(SIGINT);
        }
    }
};

class EditFaults : public CEditTest {
  protected:
    EditFaults() {
        Import(Documents::Small());
        m_strDump = Dump();
    }

    std::string m_strDump;
};

}  // namespace

TEST_F(EditFaults, AnyFailureOfTheStoreIsFourAndChangesNothing) {
    for (std::vector<std::string> vecArguments : COMMANDS) {
        vecArguments.emplace_back("--json");
        std::size_t iCount = 0;
        {
            CStoreFaults faults;
            vecArguments.emplace_back("--dry-run");
            faults.CountOnly();
            Run(vecArguments);
            vecArguments.pop_back();
            iCount = faults.GetCount();  // its last one undoes what the command's own last one keeps
        }
        EXPECT_GT(iCount, 3U);
        for (std::size_t i = 1; i <= iCount; ++i) {
            SToolRun run;
            {
                CStoreFaults faults;
                faults.FailAt(i);
                run = Run(vecArguments);
                EXPECT_TRUE(faults.IsReached());
            }
            EXPECT_EQ(run.iCode, 4) << Describe(vecArguments) << i << run.strErr;
            EXPECT_EQ(run.strErr, "dlpctl: the store does not answer\n") << Describe(vecArguments) << i;
            EXPECT_EQ(Json::parse(run.strOut)["verdict"], "store");
            EXPECT_EQ(Dump(), m_strDump) << Describe(vecArguments) << i;
        }
    }
}

TEST_F(EditFaults, AnyFailureOfTheStoreIsFourWhereARecordIsShown) {
    for (const std::vector<std::string>& vecArguments : READING_COMMANDS) {
        std::size_t iCount = 0;
        {
            CStoreFaults faults;
            faults.CountOnly();
            EXPECT_EQ(Run(vecArguments).iCode, 0);
            iCount = faults.GetCount() - 1;  // undoing cannot fail
        }
        EXPECT_GT(iCount, 1U);
        for (std::size_t i = 1; i <= iCount; ++i) {
            CStoreFaults faults;
            faults.FailAt(i);
            const SToolRun run = Run(vecArguments);
            EXPECT_EQ(run.iCode, 4) << Describe(vecArguments) << i;
            EXPECT_EQ(run.strOut, "");
            EXPECT_EQ(run.strErr, "dlpctl: the store does not answer\n") << Describe(vecArguments) << i;
        }
    }
}

TEST_F(EditFaults, OutputThatTakesNothingLeavesTheStore) {
    for (const std::vector<std::string>& vecArguments : COMMANDS) {
        for (const char* pJson : {"", "--json "}) {
            std::istringstream in;
            std::ofstream out("/dev/full");
            std::ostringstream err;
            std::vector<std::string> vecAll = vecArguments;
            if (*pJson != '\0') {
                vecAll.emplace_back("--json");
            }
            EXPECT_EQ(RunTool(vecAll, in, out, err), 4) << Describe(vecAll);
            EXPECT_EQ(err.str(), "dlpctl: cannot write standard output: No space left on device\n");
            EXPECT_EQ(Dump(), m_strDump) << Describe(vecAll);
        }
    }
}

TEST_F(EditFaults, ClosedPipeEndsQuietlyAndLeavesTheStore) {
    const SToolRun run = CProgram::Shell("{ sleep 0.3; \"$DLPCTL\" delete template cards; echo $? >'" +
                                         m_dir.Path("code") + "'; } | true");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(m_dir.Read("code"), "4\n");
    EXPECT_EQ(Dump(), m_strDump);
}

TEST_F(EditFaults, EmptyStoreHasNothingToChange) {
    for (const std::vector<std::string>& vecArguments : COMMANDS) {
        const int iCode = vecArguments[1] == "new" ? 0 : 1;
        EXPECT_EQ(RunOn("memory:", vecArguments).iCode, iCode) << Describe(vecArguments);
    }
}

TEST_F(EditFaults, WhatIsRefusedMakesNoStore) {
    const std::vector<std::string> aRefused[] = {
        {"template", "new", "x", "P:none(1)"},
        {"template", "new", "x", "P:"},
        {"expression", "new", "BRAND", "--pattern", "x"},
        {"expression", "new", "x", "--pattern", "x", "--display-name", ""},
        {"keywords", "new", "x", " "},
        {"keywords", "new", "x", "\x01"},
    };
    for (const std::vector<std::string>& vecArguments : aRefused) {
        EXPECT_EQ(RunOn(Url("ne.db"), vecArguments).iCode, 2) << Describe(vecArguments);
        EXPECT_FALSE(std::filesystem::exists(m_dir.Path("ne.db"))) << Describe(vecArguments);
    }
    EXPECT_EQ(RunOn(Url("ne.db"), {"keywords", "new", "x", "word"}).iCode, 0);
    EXPECT_EQ(RunOn(Url("ne.db"), {"keywords", "show", "x"}).iCode, 0);
}

TEST_F(EditFaults, StoreThatCannotBeUsedIsFour) {
    for (const std::vector<std::string>& vecArguments : COMMANDS) {
        EXPECT_EQ(RunOn("sqlite:" + m_dir.Path(), vecArguments).iCode, 4) << Describe(vecArguments);
    }
}

TEST_F(EditFaults, InterruptionUndoes) {
    Signals::Watch();
    CSettingsStore::SetWrapper(
        [](std::unique_ptr<CSettingsStore> pInner) { return std::make_unique<CSignallingStore>(std::move(pInner)); });
    for (std::vector<std::string> vecArguments : COMMANDS) {
        vecArguments.emplace_back("--json");
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(run.iCode, 130) << Describe(vecArguments);
        EXPECT_EQ(run.strErr, "dlpctl: interrupted\n");
        EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" store dump").strOut, m_strDump);
    }
}
