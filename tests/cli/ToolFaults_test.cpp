#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"
#include "tests/support/FaultStore.h"

namespace {

using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Template;

/** Items of every fate: new ones, old ones, one that a built-in one forbids, an unknown reference. */
std::string Second() {
    return Policy(
        Entity("one", "description=\"new\"") + Entity("three") + Dictionary("more"),
        Template("cards", "one", "words") + Template("other", "three", "more") + Template("bad", "on", "more"));
}

struct SCommand {
    const char* pName;
    std::vector<std::string> vecArguments;
    std::string strInput;
    bool bOutput;  ///< writes a file
};

/** Fails every operation of the store in turn, in every command that uses it. */
class ToolFaults : public CToolTest {
  protected:
    ToolFaults() {
        Import(Documents::Small());
        m_strDump = Dump();
    }

    std::vector<SCommand> GetCommands() const {
        std::string strLoad = m_strDump;
        strLoad.replace(strLoad.find("Expression one"), 14, "Changed");
        return {
            {"import", {"import", "-"}, Second(), false},
            {"import of the same", {"import", "-"}, Documents::Small(), false},
            {"assets import", {"assets", "import", "-"}, Second(), false},
            {"export", {"export", "--all", "-o", m_dir.Path("out")}, "", true},
            {"export of names", {"export", "cards", "card", "-o", m_dir.Path("out")}, "", true},
            {"assets export", {"assets", "export", "--all", "-o", m_dir.Path("out")}, "", true},
            {"assets export of names",
             {"assets", "export", "--keyword", "words", "--expression", "on", "-o", m_dir.Path("out")},
             "",
             true},
            {"list templates", {"list", "templates"}, "", false},
            {"list expressions", {"list", "expressions"}, "", false},
            {"list keywords", {"list", "keywords"}, "", false},
            {"show", {"show", "template", "cards"}, "", false},
            {"show of no name", {"show", "keyword", "word"}, "", false},
            {"diff", {"diff", "memory:", "store"}, "", false},
            {"refs", {"refs"}, "", false},
            {"check", {"check", "-"}, Second(), false},
            {"check of assets", {"check", "--assets", "-"}, Second(), false},
            {"dump", {"store", "dump"}, "", false},
            {"dump to a file", {"store", "dump", "-o", m_dir.Path("out")}, "", true},
            {"load", {"store", "load", "-"}, strLoad, false},
            {"info", {"store", "info"}, "", false},
        };
    }

    /** @return how many operations of the store the command takes, at most those up to its commit */
    std::size_t Count(const SCommand& command) {
        CStoreFaults faults;
        faults.CountOnly();
        RunOn(Url("copy.db"), command.vecArguments, command.strInput);
        m_vecOperations = faults.GetOperations();
        return m_vecOperations.size();
    }

    void MakeCopy() { ASSERT_EQ(RunOn(Url("copy.db"), {"store", "load", "-"}, m_strDump).iCode, 0); }
    std::string DumpCopy() const { return RunOn(Url("copy.db"), {"store", "dump"}).strOut; }

    void ExpectFailure(const SCommand& command, const SToolRun& run, const std::string& strWhere, bool bJson) {
        EXPECT_EQ(run.iCode, 4) << strWhere << run.strOut << run.strErr;
        EXPECT_NE(run.strErr.find("the store does not answer"), std::string::npos) << strWhere << run.strErr;
        EXPECT_EQ(run.strErr.find("the store does not answer"), run.strErr.rfind("the store does not answer"));
        EXPECT_EQ(m_dir.Read("out"), "") << strWhere;
        EXPECT_EQ(DumpCopy(), m_strDump) << strWhere;
        if (bJson) {
            const Json answer = Json::parse(run.strOut);
            EXPECT_EQ(answer["verdict"], "store") << strWhere;
            EXPECT_EQ(answer["format"].get<std::string>().find("dlpctl-"), 0U) << strWhere;
        } else if (command.strInput.empty()) {
            EXPECT_EQ(run.strOut, "") << strWhere;
        }
    }

    void Sweep(bool bJson) {
        for (SCommand& command : GetCommands()) {
            if (bJson) {
                command.vecArguments.emplace_back("--json");
            }
            MakeCopy();
            const std::size_t iCount = Count(command);
            EXPECT_GT(iCount, 1U) << command.pName;
            MakeCopy();
            std::filesystem::remove(m_dir.Path("out"));
            for (std::size_t i = 1; i <= iCount; ++i) {
                if (m_vecOperations[i - 1] == "Rollback") {
                    continue;  // undoing cannot fail
                }
                SToolRun run;
                {
                    CStoreFaults faults;
                    faults.FailAt(i);
                    run = RunOn(Url("copy.db"), command.vecArguments, command.strInput);
                    EXPECT_TRUE(faults.IsReached()) << command.pName << i;
                }
                ExpectFailure(command, run, std::string(command.pName) + ", operation " + std::to_string(i) + "\n",
                              bJson);
            }
        }
    }

    std::string m_strDump;
    std::vector<std::string> m_vecOperations;
};

}  // namespace

TEST_F(ToolFaults, AnyFailureOfTheStoreIsFourAndChangesNothing) {
    Sweep(false);
}

TEST_F(ToolFaults, AnyFailureOfTheStoreIsSaidInJson) {
    Sweep(true);
}

TEST_F(ToolFaults, MemoryThatRunsOutInTheStoreIsSaidAndChangesNothing) {
    const SCommand command = {"import", {"--json", "import", "-"}, Second(), false};
    MakeCopy();
    const std::size_t iCount = Count(command);
    MakeCopy();
    for (std::size_t i = 1; i <= iCount; ++i) {
        SToolRun run;
        {
            CStoreFaults faults;
            faults.FailAt(i, CStoreFaults::MemoryFault);
            run = RunOn(Url("copy.db"), command.vecArguments, command.strInput);
        }
        EXPECT_EQ(run.iCode, 4) << i;
        EXPECT_EQ(Json::parse(run.strOut)["verdict"], "memory") << i;
        EXPECT_EQ(run.strErr, "dlpctl: -: memory ran out in the settings store; nothing was written\n") << i;
        EXPECT_EQ(DumpCopy(), m_strDump) << i;
    }
}

TEST_F(ToolFaults, TheItemThatCouldNotBeWrittenIsListedWithItsPlace) {
    MakeCopy();
    const SCommand command = {"import", {"--json", "import", "-"}, Second(), false};
    Count(command);
    const auto itSave = std::find(m_vecOperations.begin(), m_vecOperations.end(), "Save");
    ASSERT_NE(itSave, m_vecOperations.end());
    MakeCopy();
    CStoreFaults faults;
    faults.FailAt(static_cast<std::size_t>(itSave - m_vecOperations.begin()) + 1);
    const Json report = Json::parse(RunOn(Url("copy.db"), command.vecArguments, command.strInput).strOut);
    EXPECT_EQ(report["result"], 3);
    EXPECT_EQ(report["verdict"], "store");
    ASSERT_EQ(report["items"].size(), 1U);
    EXPECT_EQ(report["items"][0]["name"], "one");
    EXPECT_EQ(report["items"][0]["disposition"], "failed");
    EXPECT_EQ(report["items"][0]["reason"], "store");
    EXPECT_EQ(report["items"][0]["line"], 1);
    EXPECT_EQ(report["items"][0]["column"], Second().find("<entity") + 1);
}

TEST_F(ToolFaults, FilesFinishedBeforeTheFailureStayAndLaterOnesAreNotTried) {
    const std::string strFirst = m_dir.Write("first.xml", Policy(Entity("x"), "<template name='x' display_name='X'/>"));
    const std::string strSecond = m_dir.Write("second.xml", Second());
    ASSERT_EQ(RunOn(Url("copy.db"), {"import", strFirst}).iCode, 0);
    const std::string strAfterFirst = DumpCopy();
    std::filesystem::remove(m_dir.Path("copy.db"));
    std::size_t iFirst = 0;
    {
        CStoreFaults faults;
        faults.CountOnly();
        RunOn(Url("copy.db"), {"import", strFirst});
        iFirst = faults.GetCount();
    }
    std::filesystem::remove(m_dir.Path("copy.db"));
    SToolRun run;
    {
        CStoreFaults faults;
        faults.FailAt(iFirst + 4);
        run = RunOn(Url("copy.db"), {"--json", "import", strFirst, strSecond, strFirst});
    }
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(std::count(run.strOut.begin(), run.strOut.end(), '\n'), 2);
    EXPECT_EQ(DumpCopy(), strAfterFirst);
}
