#include <gtest/gtest.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"
#include "tests/support/JsonSchema.h"

namespace {

using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Template;

class RefsCommand : public CToolTest {
  protected:
    RefsCommand() { m_dir.Write("policy.xml", Several()); }

    /** Two templates that share a keyword list, one that needs nothing, an unused and a missing asset. */
    static std::string Several() {
        return Policy(Entity("one") + Entity("spare") + Dictionary("words"),
                      Template("cards", "one", "words") + Template("health", "lost", "words") +
                          R"(<template name="bare" display_name="Bare"/>)");
    }

    SToolRun Refs(std::vector<std::string> vecMore) const {
        vecMore.insert(vecMore.begin(), {"refs", m_dir.Path("policy.xml")});
        return Run(vecMore);
    }
    Json RefsJson(std::vector<std::string> vecMore) const {
        vecMore.emplace_back("--json");
        const SToolRun run = Refs(vecMore);
        EXPECT_EQ(CheckAnswer("refs", run.strOut), "");
        return Json::parse(run.strOut);
    }
};

}  // namespace

TEST_F(RefsCommand, EachAssetIsShownWithWhoUsesIt) {
    const SToolRun run = Refs({});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "KIND          NAME   STATE    USED BY\n"
              "expression    lost   missing  health\n"
              "expression    one    used     cards\n"
              "expression    spare  unused\n"
              "keyword list  words  used     cards, health\n");
    EXPECT_EQ(run.strErr, "");
}

TEST_F(RefsCommand, TemplateIsShownWithAllItNeeds) {
    const SToolRun run = Refs({"--template", "cards"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "KIND          NAME   STATE  USED BY\n"
              "expression    one    used   cards\n"
              "keyword list  words  used   cards, health\n");
    const SToolRun bare = Refs({"--template", "bare"});
    EXPECT_EQ(bare.iCode, 0);
    EXPECT_EQ(bare.strOut, "");
    EXPECT_EQ(bare.strErr, "There is nothing to show.\n");
}

TEST_F(RefsCommand, AssetsAreShownByName) {
    EXPECT_EQ(Refs({"--keyword", "words", "--expression", "one", "--expression", "spare"}).strOut,
              "KIND          NAME   STATE   USED BY\n"
              "expression    one    used    cards\n"
              "expression    spare  unused\n"
              "keyword list  words  used    cards, health\n");
    EXPECT_EQ(Refs({"--template", "cards", "--template", "health", "--expression", "lost"}).strOut,
              "KIND        NAME  STATE    USED BY\n"
              "expression  lost  missing  health\n");
}

TEST_F(RefsCommand, UnusedAssetsAreFindings) {
    const SToolRun run = Refs({"--unused"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "KIND        NAME   STATE   USED BY\n"
              "expression  spare  unused\n");
    EXPECT_EQ(Refs({"--expression", "spare"}).iCode, 0);
    const SToolRun none = Refs({"--unused", "--keyword", "words"});
    EXPECT_EQ(none.iCode, 0);
    EXPECT_EQ(none.strErr, "There is nothing to show.\n");
}

TEST_F(RefsCommand, JsonHoldsAssetsAndTemplates) {
    EXPECT_EQ(
        RefsJson({}).dump(),
        R"({"format":"dlpctl-refs/1","verdict":"findings","policy":")" + m_dir.Path("policy.xml") +
            R"(","left_out":[],"assets":[)"
            R"({"kind":"expression","name":"lost","display_name":null,"state":"missing","used_by":["health"]},)"
            R"({"kind":"expression","name":"one","display_name":"Expression one","state":"used","used_by":["cards"]},)"
            R"({"kind":"expression","name":"spare","display_name":"Expression spare","state":"unused","used_by":[]},)"
            R"({"kind":"keyword","name":"words","display_name":"List words","state":"used",)"
            R"("used_by":["cards","health"]}],"templates":[)"
            R"({"name":"bare","display_name":"Bare","uses":[]},)"
            R"({"name":"cards","display_name":"Template cards","uses":[{"kind":"expression","name":"one"},)"
            R"({"kind":"keyword","name":"words"}]},)"
            R"({"name":"health","display_name":"Template health","uses":[{"kind":"expression","name":"lost"},)"
            R"({"kind":"keyword","name":"words"}]}]})");
    const Json cards = RefsJson({"--template", "cards"});
    EXPECT_EQ(cards["verdict"], "done");
    EXPECT_EQ(cards["assets"].size(), 2U);
    EXPECT_EQ(cards["templates"].size(), 1U);
    const Json one = RefsJson({"--expression", "one"});
    EXPECT_EQ(one["templates"].dump(),
              R"([{"name":"cards","display_name":"Template cards","uses":[{"kind":"expression","name":"one"}]}])");
    EXPECT_EQ(RefsJson({"--unused"})["templates"].dump(), "[]");
}

TEST_F(RefsCommand, GraphShowsWhoUsesWhat) {
    EXPECT_EQ(Refs({"--dot"}).strOut,
              "digraph policy {\n"
              "    rankdir=LR;\n"
              "    \"template bare\" [shape=box, label=\"bare\"];\n"
              "    \"template cards\" [shape=box, label=\"cards\"];\n"
              "    \"template health\" [shape=box, label=\"health\"];\n"
              "    \"expression lost\" [shape=ellipse, label=\"lost\", style=dashed, color=red];\n"
              "    \"expression one\" [shape=ellipse, label=\"one\"];\n"
              "    \"expression spare\" [shape=ellipse, label=\"spare\", style=dotted];\n"
              "    \"keyword words\" [shape=note, label=\"words\"];\n"
              "    \"template cards\" -> \"expression one\";\n"
              "    \"template cards\" -> \"keyword words\";\n"
              "    \"template health\" -> \"expression lost\";\n"
              "    \"template health\" -> \"keyword words\";\n"
              "}\n");
    const SToolRun both = Refs({"--dot", "--json"});
    EXPECT_EQ(both.iCode, 3);
    EXPECT_EQ(both.strErr, "dlpctl: write either --json or --dot, not both\n");
}

TEST_F(RefsCommand, NamesCannotBreakTheGraph) {
    m_dir.Write("policy.xml", Policy(Entity("a&quot;];\\N&#10;x"), ""));
    EXPECT_EQ(
        Refs({"--dot"}).strOut,
        "digraph policy {\n"
        "    rankdir=LR;\n"
        "    \"expression a\\\"];\\\\N\\\\u000Ax\" [shape=ellipse, label=\"a\\\"];\\\\N\\\\u000Ax\", style=dotted];\n"
        "}\n");
}

TEST_F(RefsCommand, BlocksOfAnUnknownTypeReferToNothing) {
    m_dir.Write("policy.xml",
                Policy("", R"(<template name="t" display_name="T"><matchRule>)"
                           R"(<buildingBlock sourceType="FILE" sourceName="f"/></matchRule></template>)"));
    EXPECT_EQ(Refs({}).strOut,
              "KIND          NAME  STATE    USED BY\n"
              "unknown type  f     missing  t\n");
    EXPECT_EQ(RefsJson({})["assets"].dump(),
              R"([{"kind":"unknown","name":"f","display_name":null,"state":"missing","used_by":["t"]}])");
}

TEST_F(RefsCommand, UnknownNamesNameTheNearest) {
    const std::pair<std::vector<std::string>, const char*> aCases[] = {
        {{"--template", "card"}, "no template is named \"card\"; did you mean \"cards\"?"},
        {{"--expression", "spar"}, "no expression is named \"spar\"; did you mean \"spare\"?"},
        {{"--keyword", "one"}, "no keyword list is named \"one\"; dlpctl refs POLICY lists the names"},
    };
    for (const auto& [vecArguments, pMessage] : aCases) {
        const SToolRun run = Refs(vecArguments);
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, std::string("dlpctl: ") + pMessage + '\n');
        EXPECT_EQ(RefsJson(vecArguments).dump(),
                  Json({{"format", "dlpctl-refs/1"}, {"verdict", "findings"}, {"message", pMessage}}).dump());
    }
}

TEST_F(RefsCommand, PolicyMayBeAnyPlace) {
    EXPECT_EQ(Run({"refs"}).strErr, "There is nothing to show.\n");
    EXPECT_EQ(Run({"refs"}).iCode, 0);
    EXPECT_EQ(Run({"-q", "refs", "memory:"}).strErr, "");
    Import(Documents::Small());
    const std::string strSmall =
        "KIND          NAME   STATE   USED BY\n"
        "expression    one    used    cards\n"
        "expression    two    unused\n"
        "keyword list  words  used    cards\n";
    EXPECT_EQ(Get({"refs"}), strSmall);
    EXPECT_EQ(Get({"refs", "store"}), strSmall);
    EXPECT_EQ(Get({"refs", Url("store.db")}), strSmall);
    EXPECT_EQ(Run({"refs", "-"}, Documents::Small()).strOut, strSmall);
    const SToolRun missing = Run({"refs", Url("none.db")});
    EXPECT_EQ(missing.iCode, 4);
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("none.db")));
    EXPECT_EQ(Run({"refs", m_dir.Path("none.xml")}).iCode, 2);
    EXPECT_EQ(Run({"refs", m_dir.Write("bad.xml", "<a")}).iCode, 2);
}

TEST_F(RefsCommand, ANameWhereAPolicyBelongsIsToldApart) {
    const SToolRun run = Run({"refs", "iban"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr,
              "dlpctl: iban: No such file or directory; an item is named by --template, --expression or --keyword "
              "NAME\n");
}

TEST_F(RefsCommand, WhatIsLeftOutIsSaid) {
    m_dir.Write("policy.xml", Policy("", R"(<template name="t"/>)"));
    const SToolRun run = Refs({});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr, "dlpctl: warning: " + m_dir.Path("policy.xml") +
                              ":1:129: template \"t\" skipped: it has no display_name; give it one\n"
                              "There is nothing to show.\n");
    EXPECT_EQ(RefsJson({})["left_out"][0]["reason"], "no-display-name");
}
