#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <nlohmann/json.hpp>

#include "cli/Signals.h"
#include "platform/store/CForwardingStore.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::ordered_json;

struct SCommand {
    const char* pName;
    std::vector<std::string> vecArguments;
    const char* pFormat;
};

/** A signal comes as the command's unit of work begins; a second one would end the program. */
class CSignallingStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    void Begin(EUnitOfWork eUnit) override {
        CForwardingStore::Begin(eUnit);
        if (!Signals::IsCaught()) {
            std::raise(SIGTERM);
        }
    }
};

/** A signal comes as the last table is read. */
class CLateSignallingStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    void ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) override {
        if (eKind == ESettingsKind::TEMPLATE) {
            std::raise(SIGTERM);
        }
        CForwardingStore::ReadAll(eKind, fnRow);
    }
};

class Interruption : public CToolTest, public ::testing::WithParamInterface<SCommand> {};

const SCommand COMMANDS[] = {
    {"Export", {"export", "--all", "-o", "OUT"}, "dlpctl-export/1"},
    {"AssetExport", {"assets", "export", "--all", "-o", "OUT"}, "dlpctl-assets-export/1"},
    {"List", {"list", "expressions"}, "dlpctl-list/1"},
    {"Diff", {"diff", "memory:", "store"}, "dlpctl-diff/1"},
    {"Refs", {"refs"}, "dlpctl-refs/1"},
    {"Check", {"check", DLP_SOURCE_DIR "/examples/starter-policy.xml"}, "dlpctl-check/1"},
    {"Dump", {"store", "dump", "-o", "OUT"}, "dlpctl-dump/1"},
    {"Load", {"store", "load", "-"}, "dlpctl-store-load/1"},
};

}  // namespace

TEST_P(Interruption, EndsTheCommandAndChangesNothing) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    std::vector<std::string> vecArguments = GetParam().vecArguments;
    for (std::string& strArgument : vecArguments) {
        strArgument = strArgument == "OUT" ? m_dir.Path("out") : strArgument;
    }
    vecArguments.emplace_back("--json");
    std::string strEmpty =
        "{\"format\": \"dlpctl-dump/1\", \"expressions\": [], \"keyword_lists\": [], \"templates\": []}";
    Signals::Watch();
    CSettingsStore::SetWrapper(
        [](std::unique_ptr<CSettingsStore> pInner) { return std::make_unique<CSignallingStore>(std::move(pInner)); });
    const SToolRun run = Run(vecArguments, strEmpty);
    EXPECT_EQ(run.iCode, 143);
    EXPECT_EQ(run.strErr, "dlpctl: interrupted\n");
    const Json answer = Json::parse(run.strOut);
    EXPECT_EQ(answer["format"], GetParam().pFormat);
    EXPECT_EQ(answer["verdict"], "interrupted");
    EXPECT_EQ(m_dir.Read("out"), "");
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" store dump").strOut, strDump);
}

INSTANTIATE_TEST_SUITE_P(Commands, Interruption, ::testing::ValuesIn(COMMANDS),
                         [](const auto& command) { return std::string(command.param.pName); });

using InterruptedDump = CToolTest;

TEST_F(InterruptedDump, InJsonIsTheAnswerThatSaysSo) {
    std::string strEntities;
    for (int i = 0; i < 1000; ++i) {
        strEntities += Documents::Entity("e" + std::to_string(i));
    }
    Import(Documents::Policy(strEntities + Documents::Dictionary("w"), Documents::Template("t", "e1", "w")));
    ASSERT_GT(Dump().size(), 500000U);
    Signals::Watch();
    CSettingsStore::SetWrapper([](std::unique_ptr<CSettingsStore> pInner) {
        return std::make_unique<CLateSignallingStore>(std::move(pInner));
    });
    EXPECT_EQ(Json::parse(Run({"--json", "store", "dump"}).strOut),
              Json({{"format", "dlpctl-dump/1"}, {"verdict", "interrupted"}, {"message", "interrupted"}}));
}
