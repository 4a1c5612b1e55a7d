#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <tuple>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPTemplateParse.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/LogRecorder.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char STARTER[] = DLP_SOURCE_DIR "/examples/starter-policy.xml";
constexpr const char OLDER[] = DLP_SOURCE_DIR "/examples/older-layout.xml";

/** What a newcomer does with the policies that come along, and with the lists and the map that do. */
class Acceptance : public CToolTest {
  protected:
    Acceptance() { ::setenv("DLP_INSTALL_PATH", DLP_SOURCE_DIR, 1); }

    std::string DumpOf(const std::string& strUrl) const { return RunOn(strUrl, {"store", "dump"}).strOut; }
};

/** @return the dump without what an export writes in its own way */
Json WithoutMarkup(const std::string& strDump) {
    Json dump = Json::parse(strDump);
    for (Json& record : dump["keyword_lists"]) {
        record.erase("text");
    }
    for (Json& record : dump["templates"]) {
        record.erase("element");
    }
    return dump;
}

}  // namespace

TEST_F(Acceptance, ExportImportExportIsByteEqual) {
    const std::string strFile = m_dir.Path("out.xml");
    ASSERT_EQ(Run({"import", STARTER}).iCode, 0);
    ASSERT_EQ(Run({"export", "--all", "-o", strFile}).iCode, 0);
    ASSERT_EQ(RunOn(Url("second.db"), {"import", strFile}).iCode, 0);
    EXPECT_EQ(RunOn(Url("second.db"), {"export", "--all"}).strOut, m_dir.Read("out.xml"));
    EXPECT_EQ(WithoutMarkup(DumpOf(Url("second.db"))).dump(1), WithoutMarkup(Dump()).dump(1));
}

TEST_F(Acceptance, ASecondImportChangesNothing) {
    ASSERT_EQ(Run({"import", STARTER}).iCode, 0);
    const std::string strDump = Dump();
    const SToolRun run = Run({"--json", "import", STARTER});
    EXPECT_EQ(run.iCode, 0);
    const Json report = Json::parse(run.strOut);
    for (const Json& item : report["items"]) {
        EXPECT_EQ(item["disposition"], "unchanged") << item.dump();
    }
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(Acceptance, DumpAndLoadGiveTheSameStore) {
    ASSERT_EQ(Run({"import", STARTER}).iCode, 0);
    const std::string strDump = Dump();
    ASSERT_EQ(RunOn(Url("second.db"), {"store", "load", "-"}, strDump).iCode, 0);
    EXPECT_EQ(DumpOf(Url("second.db")), strDump);
}

TEST_F(Acceptance, TheOlderLayoutIsImportedByTranslatedNames) {
    ASSERT_EQ(Run({"import", STARTER}).iCode, 0);
    const SToolRun run = Run({"--json", "import", OLDER});
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["result"], 0);
    EXPECT_FALSE(report["imported"].empty());
    for (const Json& item : report["items"]) {
        EXPECT_TRUE(item["disposition"] == "created" || item["reason"] == "older-built-in") << item.dump();
    }
}

TEST_F(Acceptance, TheOlderLayoutWithAnEmptyMapIsSkippedAndSaidSo) {
    m_dir.Write("bare/config/cfg_dlp_da_map.txt", "");
    ASSERT_EQ(Run({"import", STARTER}).iCode, 0);
    const SToolRun run = Run({"--home", m_dir.Path("bare"), "--json", "import", OLDER});
    EXPECT_EQ(run.iCode, 1);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["result"], 0);
    EXPECT_EQ(report["verdict"], "findings");
    std::size_t iUnsupported = 0;
    for (const Json& item : report["items"]) {
        iUnsupported += item["reason"] == "unsupported-assets" ? 1 : 0;
    }
    EXPECT_GT(iUnsupported, 0U);
    EXPECT_EQ(report["skipped"].size(), iUnsupported);
}

TEST_F(Acceptance, MetadataNamesTheListsThatComeAlong) {
    const Json metadata = Json::parse(Get({"--json", "metadata"}));
    for (const char* pList : {"validators", "expression_types", "keyword_conditions", "industries", "regions"}) {
        EXPECT_FALSE(metadata[pList].empty()) << pList;
    }
}

namespace {

/** What an import through one door gave. */
struct SDoor {
    int iResult = -1;
    Json lists;  ///< imported, skipped, skipped assets
    std::string strLog;
    std::string strDump;
};

Json ToJson(const std::vector<OS::x_wstring>& vecTexts) {
    Json list = Json::array();
    for (const OS::x_wstring& strText : vecTexts) {
        list.push_back(OS::Utf8Lenient(strText));
    }
    return list;
}

/** @return the lines as one text; a record's address is another one each time */
std::string Join(const std::vector<std::string>& vecLines) {
    static const std::regex s_address("pTemplate = -?[0-9]+");
    std::string strJoined;
    for (const std::string& strLine : vecLines) {
        strJoined += std::regex_replace(strLine, s_address, "pTemplate = *") + '\n';
    }
    return strJoined;
}

/** The same document through each door, each on a store of its own that is prepared alike. */
class Doors : public Acceptance {
  protected:
    /** The name map lasts as long as a process, so it is filled before anything is compared. */
    Doors() {
        std::filesystem::current_path(DLP_SOURCE_DIR);
        RunOn("memory:", {"import", OLDER});
    }

    void Compare(const std::string& strDocument, bool bAfterStarter) {
        const std::string strFile = m_dir.Write("document.xml", strDocument);
        const SDoor wide = Through(bAfterStarter, [&] {
            std::vector<OS::x_wstring> aLists[3];
            CDLPTemplateParse parse{OS::x_wstring()};
            const int iResult = parse.DoTemplateImport(L"", OS::WideText(strDocument), aLists[0], aLists[1], aLists[2]);
            return std::pair(iResult, Json{ToJson(aLists[0]), ToJson(aLists[1]), ToJson(aLists[2])});
        });
        const SDoor file = Through(bAfterStarter, [&] {
            OS::x_wstring strPath = OS::WideText(strFile);
            CDLPTemplateParse parse{OS::x_wstring()};
            return std::pair(parse.ImportDLPTemplateFromFile(strPath) ? 0 : 1, Json());
        });
        const SDoor tool = Through(bAfterStarter, [&] {
            const Json report = Json::parse(Run({"--json", "--store", m_strUrl, "import", strFile}).strOut);
            return std::pair(report["result"].get<int>(),
                             Json{report["imported"], report["skipped"], report["skipped_assets"]});
        });
        EXPECT_EQ(tool.iResult, wide.iResult);
        EXPECT_EQ(tool.lists, wide.lists);
        EXPECT_EQ(tool.strLog, wide.strLog);
        EXPECT_EQ(tool.strDump, wide.strDump);
        EXPECT_EQ(file.iResult, 0);
        EXPECT_EQ(file.strLog, wide.strLog + "0x102 util_ParseDLPTemplate.cpp nImportResult value is = " +
                                   std::to_string(wide.iResult) + '\n');
        EXPECT_EQ(file.strDump, wide.strDump);
        EXPECT_NE(wide.strLog, "");
    }

  private:
    template <class Door>
    SDoor Through(bool bAfterStarter, const Door& fnDoor) {
        std::filesystem::remove(m_dir.Path("door.db"));
        m_strUrl = Url("door.db");
        if (bAfterStarter) {
            EXPECT_EQ(RunOn(m_strUrl, {"import", STARTER}).iCode, 0);
        }
        CDLPDigitalAssetsParser::SetVersion(L"3.0.1000");
        SDoor door;
        CSettingsStore::Open(m_strUrl);
        {
            const CLogRecorder log;
            std::tie(door.iResult, door.lists) = fnDoor();
            door.strLog = Join(log.Lines());
        }
        CSettingsStore::Close();
        door.strDump = DumpOf(m_strUrl);
        return door;
    }

    std::string m_strUrl;
};

std::string ReadFile(const char* pPath) {
    std::ifstream stream(pPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

TEST_F(Doors, GiveTheSameForAPolicyIntoAnEmptyStore) {
    Compare(ReadFile(STARTER), false);
}

TEST_F(Doors, GiveTheSameForAPolicyThatIsStored) {
    Compare(ReadFile(STARTER), true);
}

TEST_F(Doors, GiveTheSameForTheOlderLayout) {
    Compare(ReadFile(OLDER), true);
}

TEST_F(Doors, GiveTheSameForUnknownReferences) {
    Compare(ReadFile(OLDER), false);
}

TEST_F(Doors, GiveTheSameForWhatIsRefused) {
    Compare("<other/>", true);
    Compare("<SAPolicy template_version='1' localization_language='x'/>", true);
    Compare("<SAPolicy template_version='1'><digitalAssets/></SAPolicy>", true);
}
