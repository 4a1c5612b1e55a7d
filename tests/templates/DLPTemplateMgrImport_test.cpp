#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "api/CDLPDigitalAssetsParser.h"
#include "templates/DLPTemplateMgr.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"
#include "xml/CPolicyDocument.h"

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

std::string Template(const std::string& strName, const std::string& strAttributes = "",
                     const std::string& strRules = "") {
    return "<template name=\"" + strName + "\" display_name=\"" + strName + " shown\" " + strAttributes + ">" +
           strRules + "</template>";
}

/** An empty name shows as "-". */
std::string Joined(const Names& vecNames) {
    std::string strText;
    for (const OS::x_wstring& strName : vecNames) {
        strText += (&strName == &vecNames.front() ? "" : ",") + (strName.empty() ? "-" : OS::Utf8Lenient(strName));
    }
    return strText;
}

/** A store that holds the expression Card and the keyword list Words; no map file. */
class TemplateImport : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::current_path(m_folder.Path());
        CSettingsStore::Open(TemplateStore::MEMORY);
        AddAssets();
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    static void AddAssets() {
        TemplateStore::AddExpression("Card");
        TemplateStore::AddKeyword("Words");
    }

    /** @return the code and the lists, such as "0 imported: a skipped: b assets: c" */
    std::string Import(const std::string& strXml) {
        Names vecImported;
        Names vecSkipped;
        Names vecAssets;
        const int iResult = m_manager.ImportTemplate(OS::WideText(strXml), vecImported, vecSkipped, vecAssets);
        return std::to_string(iResult) + " imported: " + Joined(vecImported) + " skipped: " + Joined(vecSkipped) +
               " assets: " + Joined(vecAssets);
    }

    /** @return the stored templates, one line each */
    static std::string Templates() {
        const std::string strDump = TemplateStore::Dump();
        const std::size_t iStart = strDump.find("templates ");
        return iStart == std::string::npos ? "" : strDump.substr(iStart);
    }

    CTempDir m_folder;
    CTemplateMgr m_manager{L"scope"};
};

std::string Line(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " DLPTemplateMgr.cpp CTemplateMgr::" + strMessage;
}

std::string AssetLine(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::" + strMessage;
}

/** @return the lines of an import as far as the first template */
Lines StartLines(const std::string& strXml) {
    return {Line("0x110", "ImportTemplate(strXmlContent length = [" + std::to_string(strXml.size()) + "])"),
            Line("0x110", "CheckFormat()"),
            Line("0x111", "CheckFormat() bNeedConvert = 0"),
            Line("0x110", "ImportTemplateImpl()"),
            Line("0x110", "MakeCategoryMap()"),
            Line("0x110", "MakeCategoryMap()"),
            AssetLine("0x110", "CheckImportVersion()"),
            AssetLine("0x111", "CheckImportVersion(), result = 1"),
            AssetLine("0x110", "ImportEntity()"),
            AssetLine("0x111", "ImportEntity()"),
            AssetLine("0x111", "ImportDictionary()"),
            AssetLine("0x111", "ImportDigitalAssets()"),
            Line("0x110", "CheckImportTemplate(strXmlContent = " + strXml + ")"),
            Line("0x111", "CheckImportTemplate")};
}

Lines FindLines(const std::string& strName, bool bFound) {
    return {Line("0x110", "FindTemplate, iSearchField = 2, strFieldValue = " + strName),
            Line("0x102", "GetTemplateList successfully"),
            bFound ? Line("0x111", "FindTemplate") : "0x111 DLPTemplateMgr.cpp Unable to find the template"};
}

const Lines END_LINES = {Line("0x111", "ImportTemplateImpl"), Line("0x111", "ImportTemplate result = 0")};

Lines Concat(std::initializer_list<Lines> lstParts) {
    Lines vecAll;
    for (const Lines& vecPart : lstParts) {
        vecAll.insert(vecAll.end(), vecPart.begin(), vecPart.end());
    }
    return vecAll;
}

}  // namespace

TEST_F(TemplateImport, FormatIsKnownByTheRootsVersion) {
    struct SCase {
        const char* pXml;
        const char* pResult;
    };
    const SCase aCases[] = {
        {"<SAPolicy template_version=\"x\"/>", "standard"},    {"<SAPolicy template_version=\" \"/>", "standard"},
        {"<SAPolicy template_version=\"\"/>", "older"},        {"<SAPolicy/>", "older"},
        {"<SAPolicy Template_Version=\"x\"/>", "older"},       {"<sapolicy template_version=\"x\"/>", "none"},
        {"<a><SAPolicy template_version=\"x\"/></a>", "none"}, {"", "none"},
        {"<SAPolicy template_version=\"x\">", "none"},
    };
    for (const SCase& row : aCases) {
        const std::string strExpected = row.pResult;
        bool bNeedConvert = strExpected == "none";
        CLogRecorder log;
        EXPECT_EQ(m_manager.CheckFormat(OS::WideText(row.pXml), bNeedConvert), strExpected != "none") << row.pXml;
        EXPECT_EQ(bNeedConvert, strExpected != "standard") << row.pXml;
        EXPECT_EQ(log.Lines(),
                  (Lines{Line("0x110", "CheckFormat()"),
                         strExpected == "none"    ? Line("0x1004",
                                                         "IsStandardFormat Unable to find node SAPolicy. The xml "
                                                            "file format is incompatible.")
                         : strExpected == "older" ? Line("0x111", "CheckFormat() bNeedConvert = 1")
                                                  : Line("0x111", "CheckFormat() bNeedConvert = 0")}));
    }
}

TEST_F(TemplateImport, CategoriesAreCollectedByTemplateInDocumentOrder) {
    CTemplateMgr::CategoryMap categories;
    CLogRecorder log;
    EXPECT_TRUE(m_manager.MakeCategoryMap(
        L"<SAPolicy><industries><industry name=\"b\"><template_id>T</template_id><template_id> T</template_id>"
        L"<template_id>T</template_id></industry><industry name=\"a\"><template_id><![CDATA[T]]></template_id>"
        L"<template_id/></industry><other name=\"c\"><template_id>T</template_id></other></industries>"
        L"<regions><region name=\"r\"><template_id>T</template_id></region></regions></SAPolicy>",
        L"industries", L"industry", categories));
    EXPECT_EQ(categories, (CTemplateMgr::CategoryMap{{L"T", {L"b", L"b", L"a"}}, {L" T", {L"b"}}, {L"", {L"a"}}}));
    EXPECT_EQ(log.Lines(), Lines{Line("0x110", "MakeCategoryMap()")});
}

TEST_F(TemplateImport, CategoriesOfADocumentWithoutThemAreNone) {
    for (const wchar_t* pXml : {L"", L"<SAPolicy/>", L"<other/>", L"<SAPolicy><industries/></SAPolicy>"}) {
        CTemplateMgr::CategoryMap categories;
        EXPECT_TRUE(m_manager.MakeCategoryMap(pXml, L"industries", L"industry", categories));
        EXPECT_TRUE(categories.empty());
    }
}

TEST_F(TemplateImport, NewTemplateIsStoredWhole) {
    EXPECT_EQ(Import(Policy(R"(<template pre-defined="TRUE" x="1" name="T" display_name="Shown" description="about" )"
                            R"(severity="low"><!-- c --><matchRule/> </template>)",
                            "<industries><industry name=\"Finance\"><template_id>T</template_id></industry><industry "
                            "name=\"Health\"><template_id>T</template_id></industry></industries><regions><region "
                            "name=\"Europe\"><template_id>T</template_id></region></regions>")),
              "0 imported: Shown skipped:  assets: ");
    EXPECT_EQ(Templates(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATET\" name=\"T\" display_name=\"Shown\" "
              "description=\"about\" pre_defined=1 scope=\"scope\" industries=[\"Finance\",\"Health\"] "
              "regions=[\"Europe\"] element=\"<template x=\\\"1\\\" name=\\\"T\\\" severity=\\\"low\\\">"
              "<!-- c --><matchRule/></template>\"\n");
}

TEST_F(TemplateImport, AssetsAreImportedBeforeTheTemplatesThatNeedThem) {
    EXPECT_EQ(Import(Policy(Template("T", "", Rule(Block("ENTITY", "New"))),
                            "<digitalAssets><entity name=\"New\" display_name=\"N\"><regularExpression/></entity>"
                            "<entity name=\"Bad\" display_name=\"B\"/></digitalAssets>")),
              "0 imported: T shown skipped:  assets: B");
    const std::string strDump = TemplateStore::Dump();
    const std::size_t iAsset = strDump.find("ORVAL_SUB_CFG_DLP_EXPRESSIONNew");
    ASSERT_NE(iAsset, std::string::npos);
    EXPECT_NE(strDump.substr(iAsset, strDump.find('\n', iAsset) - iAsset).find("scope=\"scope\""), std::string::npos);
}

TEST_F(TemplateImport, StepsOfANewTemplateAreLogged) {
    const std::string strXml = Policy(Template("T"));
    CLogRecorder log;
    Import(strXml);
    EXPECT_EQ(log.Lines(), Concat({StartLines(strXml), FindLines("T", false), END_LINES}));
}

TEST_F(TemplateImport, StepsOfAnUpdateAreLogged) {
    TemplateStore::AddTemplate({"T", "old", "", true});
    TemplateStore::AddTemplate({"U", "old"});
    const std::string strXml = Policy(Template("T", "pre-defined=\"true\"") + Template("U"));
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "0 imported: T shown,U shown skipped:  assets: ");
    Lines vecLines = log.Lines();
    const auto Edited = [&](std::size_t iFirst, const char* pFlag) {
        return Lines{vecLines.at(iFirst),
                     Line("0x102", "GetTemplateList successfully"),
                     std::string("0x102 DLPTemplateMgr.cpp isBuildin = ") + pFlag,
                     Line("0x110", "SaveSetting, vecTemplateList.size() = 2"),
                     Line("0x110", "SaveSetting successfully"),
                     Line("0x111", "EditTemplate = 1")};
    };
    EXPECT_EQ(vecLines, Concat({StartLines(strXml), FindLines("T", true), Edited(17, "1"), FindLines("U", true),
                                Edited(26, "0"), END_LINES}));
    EXPECT_EQ(vecLines.at(17).find(Line("0x110", "EditTemplate (pTemplate = ")), 0U);
    EXPECT_EQ(vecLines.at(26).find(Line("0x110", "EditTemplate (pTemplate = ")), 0U);
}

TEST_F(TemplateImport, SizeOfTheListCountsTheTemplatesCreatedBefore) {
    TemplateStore::AddTemplate({"U", "old"});
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(Template("U") + Template("A") + Template("B") + Template("U", "description=\"d\"") +
                            Template("A"))),
              "0 imported: U shown,A shown,B shown,U shown,A shown skipped:  assets: ");
    Lines vecSizes;
    for (const std::string& strMessage : log.Messages(0x110)) {
        if (strMessage.find("vecTemplateList.size()") != std::string::npos) {
            vecSizes.push_back(strMessage);
        }
    }
    EXPECT_EQ(vecSizes, (Lines{"CTemplateMgr::SaveSetting, vecTemplateList.size() = 1",
                               "CTemplateMgr::SaveSetting, vecTemplateList.size() = 3",
                               "CTemplateMgr::SaveSetting, vecTemplateList.size() = 3"}));
}

TEST_F(TemplateImport, UpdateReplacesEveryField) {
    TemplateStore::AddTemplate(
        {"T", "old", Rule(Block("ENTITY", "Card")), true, {"Finance"}, {"Europe"}, "old", "Key"});
    EXPECT_EQ(Import(Policy(Template("T", "pre-defined=\"true\""))), "0 imported: T shown skipped:  assets: ");
    EXPECT_EQ(Templates(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATEKey\" name=\"T\" display_name=\"T shown\" "
              "pre_defined=1 scope=\"scope\" element=\"<template name=\\\"T\\\"/>\"\n");
}

TEST_F(TemplateImport, BuiltInIsReplacedByABuiltInOnly) {
    struct SCase {
        bool bStored;
        const char* pImported;
        bool bTaken;
    };
    const SCase aCases[] = {
        {true, "", false},
        {true, "pre-defined=\"false\"", false},
        {true, "pre-defined=\"FALSE\"", false},
        {true, "pre-defined=\"1\"", false},
        {true, "pre-defined=\" true\"", false},
        {true, "pre-defined=\"true\"", true},
        {true, "pre-defined=\"True\"", true},
        {false, "", true},
        {false, "pre-defined=\"false\"", true},
        {false, "pre-defined=\"TRUE\"", true},
    };
    for (const SCase& row : aCases) {
        TemplateStore::AddTemplate({"T", "old", "", row.bStored});
        const std::string strBefore = TemplateStore::Dump();
        const std::string strXml = Policy(Template("T", row.pImported));
        CLogRecorder log;
        EXPECT_EQ(Import(strXml),
                  row.bTaken ? "0 imported: T shown skipped:  assets: " : "0 imported:  skipped: T shown assets: ")
            << row.pImported;
        EXPECT_EQ(TemplateStore::Dump() != strBefore, row.bTaken);
        if (!row.bTaken) {
            EXPECT_EQ(log.Lines(),
                      Concat({StartLines(strXml),
                              FindLines("T", true),
                              {"0x102 DLPTemplateMgr.cpp existed one is pre-defined but imported one is not, skip"},
                              END_LINES}));
        }
    }
}

TEST_F(TemplateImport, BuiltInIsNotReplacedByUserItem) {
    TemplateStore::AddExpression("Own", true);
    TemplateStore::AddTemplate({"T", "old", "", true});
    const std::string strBefore = TemplateStore::Dump();
    EXPECT_EQ(Import(Policy(Template("T"),
                            "<digitalAssets><entity name=\"Own\" display_name=\"O\" "
                            "pre-defined=\"false\"><regularExpression/></entity></digitalAssets>")),
              "0 imported:  skipped: T shown assets: O");
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateImport, TemplateWithoutNameOrDisplayNameIsSkipped) {
    struct SCase {
        const char* pTemplate;
        const char* pSkipped;
        const char* pNames;
    };
    const SCase aCases[] = {
        {"<template display_name=\"D\"/>", "D", "(strInternalName = , strDisplayName = D)"},
        {"<template name=\"\" display_name=\"D\"/>", "D", "(strInternalName = , strDisplayName = D)"},
        {"<template name=\"N\"/>", "-", "(strInternalName = N, strDisplayName = )"},
        {"<template/>", "-", "(strInternalName = , strDisplayName = )"},
    };
    for (const SCase& row : aCases) {
        const std::string strXml = Policy(row.pTemplate);
        CLogRecorder log;
        EXPECT_EQ(Import(strXml), std::string("0 imported:  skipped: ") + row.pSkipped + " assets: ");
        EXPECT_EQ(Templates(), "");
        EXPECT_EQ(
            log.Lines(),
            Concat({StartLines(strXml),
                    {std::string("0x1003 DLPTemplateMgr.cpp Skip this template since it's name attribute is empty ") +
                     row.pNames},
                    END_LINES}));
    }
}

TEST_F(TemplateImport, EmptyDisplayNameIsNoticedBeforeUnsupportedAssets) {
    const std::string strXml = Policy("<template name=\"N\"><matchRule operation=\"x\"/></template>");
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "0 imported:  skipped: - assets: ");
    EXPECT_EQ(log.Messages(0x1003), Lines{"Skip this template since it's name attribute is empty (strInternalName = N, "
                                          "strDisplayName = )"});
}

TEST_F(TemplateImport, ListsAreAppendedTo) {
    Names vecImported = {L"1"};
    Names vecSkipped = {L"2"};
    Names vecAssets = {L"3"};
    EXPECT_EQ(m_manager.ImportTemplate(
                  OS::WideText(Policy(Template("T") + "<template display_name=\"D\"/>",
                                      "<digitalAssets><entity name=\"e\" display_name=\"E\"/></digitalAssets>")),
                  vecImported, vecSkipped, vecAssets),
              0);
    EXPECT_EQ(vecImported, (Names{L"1", L"T shown"}));
    EXPECT_EQ(vecSkipped, (Names{L"2", L"D"}));
    EXPECT_EQ(vecAssets, (Names{L"3", L"E"}));
}

TEST_F(TemplateImport, OnlyTheTemplatesOwnAttributesAreTakenOut) {
    Import(Policy(R"(<template name="T" display_name="D" display_Name="x"><matchRule display_name="a" description="b" )"
                  R"(pre-defined="true"><x pre-defined="c"/></matchRule></template>)"));
    EXPECT_EQ(Templates(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATET\" name=\"T\" display_name=\"D\" scope=\"scope\" "
              "element=\"<template name=\\\"T\\\" display_Name=\\\"x\\\"><matchRule display_name=\\\"a\\\" "
              "description=\\\"b\\\" pre-defined=\\\"true\\\"><x pre-defined=\\\"c\\\"/></matchRule></template>"
              "\"\n");
}

TEST_F(TemplateImport, ReplacedTemplateBecomesWhatItsDocumentSays) {
    TemplateStore::AddTemplate({"T", "old"});
    Import(Policy(Template("T", "pre-defined=\"True\"")));
    EXPECT_NE(Templates().find(" pre_defined=1 "), std::string::npos);
}

TEST_F(TemplateImport, NamesOfAnyCharactersAndLengthAreKept) {
    const std::string strName = " \xF0\x9F\x98\x80\xC2\x85\xE2\x80\xA8 " + std::string(100000, 'n') + " ";
    const std::string strXml = Policy(
        "<template name=\"" + strName + "&#9;\" display_name=\"" + strName + "&#10;\"/>",
        "<industries><industry name=\"i\"><template_id>" + strName + "&#9;</template_id></industry></industries>");
    EXPECT_EQ(Import(strXml), "0 imported: " + strName + "\n skipped:  assets: ");
    EXPECT_EQ(Import(strXml), "0 imported: " + strName + "\n skipped:  assets: ");
    CCfgSettingDLPFilterTemplateMgr::List lstTemplates;
    ASSERT_TRUE(CCfgSettingDLPFilterTemplateMgr::Instance()->GetTemplateList(lstTemplates));
    ASSERT_EQ(lstTemplates.size(), 1U);
    const CSettingsRow& row = (*lstTemplates.begin())->Row();
    EXPECT_EQ(row.GetSubject(), "ORVAL_SUB_CFG_DLP_TEMPLATE" + strName + "\t");
    EXPECT_EQ(row.GetText(TemplateColumn::DISPLAY_NAME), strName + "\n");
    EXPECT_EQ(row.GetText(TemplateColumn::ELEMENT), "<template name=\"" + strName + "&#9;\"/>");
    EXPECT_EQ(row.GetList(TemplateColumn::INDUSTRIES), Lines{"i"});
}

TEST_F(TemplateImport, TemplateWithUnsupportedAssetsIsSkipped) {
    const std::string strXml = Policy(Template("T", "", Rule(Block("ENTITY", "none"))) + Template("U"));
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "0 imported: U shown skipped: T shown assets: ");
    Lines vecStart = StartLines(strXml);
    vecStart.insert(vecStart.end() - 1, "0x102 DLPTemplateMgr.cpp expression internal name none is invalid");
    EXPECT_EQ(log.Lines(),
              Concat({vecStart,
                      {"0x1003 DLPTemplateMgr.cpp Skip this template since it contain unsupported digital assets "
                       "(strInternalName = T, strDisplayName = T shown)"},
                      FindLines("U", false),
                      END_LINES}));
}

TEST_F(TemplateImport, ExceptIsSkipped) {
    EXPECT_EQ(Import(Policy(Template("T", "", "<matchRule operation=\"EXCEPT\"/>"))),
              "0 imported:  skipped: T shown assets: ");
}

TEST_F(TemplateImport, OneInvalidTemplateSpoilsAllOfItsName) {
    EXPECT_EQ(Import(Policy(Template("T") + Template("t") + Template("T", "", "<matchRule operation=\"x\"/>"))),
              "0 imported: t shown skipped: T shown,T shown assets: ");
}

TEST_F(TemplateImport, LaterTemplateOfTheSameNameReplacesTheEarlier) {
    EXPECT_EQ(Import(Policy(R"(<template name="T" display_name="1"/><template name="T" display_name="2"/>)")),
              "0 imported: 1,2 skipped:  assets: ");
    EXPECT_NE(Templates().find("display_name=\"2\""), std::string::npos);
    EXPECT_EQ(Import(Policy(R"(<template name="U" display_name="1" pre-defined="true"/>)"
                            R"(<template name="U" display_name="2"/>)")),
              "0 imported: 1 skipped: 2 assets: ");
}

TEST_F(TemplateImport, CategoriesThatNoLongerNameATemplateAreTakenFromIt) {
    TemplateStore::AddTemplate({"T", "old", "", false, {"Finance"}, {"Europe"}});
    Import(Policy(Template("T")));
    EXPECT_EQ(Templates().find("industries"), std::string::npos);
    EXPECT_EQ(Templates().find("regions"), std::string::npos);
}

TEST_F(TemplateImport, DocumentThatIsNoPolicyIsRefused) {
    const std::string strBefore = TemplateStore::Dump();
    for (const std::string strXml : {"", "text", "<other template_version=\"1\"/>", "<!DOCTYPE SAPolicy><SAPolicy/>"}) {
        CLogRecorder log;
        EXPECT_EQ(Import(strXml), "1 imported:  skipped:  assets: ") << strXml;
        EXPECT_EQ(
            log.Lines(),
            (Lines{Line("0x110", "ImportTemplate(strXmlContent length = [" + std::to_string(strXml.size()) + "])"),
                   Line("0x110", "CheckFormat()"),
                   Line("0x1004",
                        "IsStandardFormat Unable to find node SAPolicy. The xml file format is "
                        "incompatible."),
                   Line("0x111", "ImportTemplate result = 1")}));
    }
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateImport, TextWithEmbeddedZeroIsRefused) {
    for (const std::size_t iPlace : {std::size_t{0}, std::size_t{30}, Policy(Template("T")).size()}) {
        std::string strXml = Policy(Template("T"));
        strXml.insert(iPlace, 1, '\0');
        EXPECT_EQ(Import(strXml), "1 imported:  skipped:  assets: ");
    }
    EXPECT_EQ(Templates(), "");
}

TEST_F(TemplateImport, TextWithWhatIsNoCharacterIsRefused) {
    for (const wchar_t c : {wchar_t{1}, wchar_t{0xD800}, wchar_t{0xFFFE}, wchar_t{0x110000}}) {
        OS::x_wstring strXml = OS::WideText(Policy(Template("T")));
        strXml.insert(strXml.find(L"\"T"), 1, c);
        Names vecImported;
        Names vecSkipped;
        Names vecAssets;
        EXPECT_EQ(m_manager.ImportTemplate(strXml, vecImported, vecSkipped, vecAssets), 1);
    }
    EXPECT_EQ(Templates(), "");
}

TEST_F(TemplateImport, LengthIsCountedInCharacters) {
    CLogRecorder log;
    Import("<\xC3\xA9\xF0\x9F\x98\x80/>");
    EXPECT_EQ(log.Lines().at(0), Line("0x110", "ImportTemplate(strXmlContent length = [5])"));
}

TEST_F(TemplateImport, CodeOfTheAssetImportIsPassedOn) {
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    const std::string strXml =
        "<SAPolicy template_version=\"1\" localization_language=\"French\"><complianceTemplates>" + Template("T") +
        "</complianceTemplates></SAPolicy>";
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "2 imported:  skipped:  assets: ");
    EXPECT_EQ(Templates(), "");
    EXPECT_EQ(log.Lines().back(), Line("0x111", "ImportTemplate result = 2"));
    for (const std::string& strLine : log.Lines()) {
        EXPECT_EQ(strLine.find("CheckImportTemplate"), std::string::npos);
    }
}

TEST_F(TemplateImport, DocumentWithoutTemplatesFailsButKeepsItsAssets) {
    const std::string strXml = Policy("",
                                      "<digitalAssets><entity name=\"New\" display_name=\"N\"><regularExpression/>"
                                      "</entity></digitalAssets>");
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "3 imported:  skipped:  assets: ");
    EXPECT_NE(TemplateStore::Dump().find("EXPRESSIONNew"), std::string::npos);
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.end() - 2, vecLines.end()),
              (Lines{Line("0x1004",
                          "CheckImportTemplate Unable to find node /SAPolicy/complianceTemplates/template. "
                          "The xml file format is incompatible."),
                     Line("0x111", "ImportTemplate result = 3")}));
}

TEST_F(TemplateImport, OlderLayoutIsConvertedFirst) {
    m_folder.Write("config/cfg_dlp_da_map.txt", "Old card\tCard\n");
    const std::string strXml =
        "<SAPolicy localization_language=\"French\"><industries><industry name=\"i\"><template_id>T</template_id>"
        "</industry></industries><complianceTemplates><template name=\"T\" displayName=\"Shown\" description=\"d\">" +
        Rule(Block("ENTITY", "Old card")) + "</template><template name=\"B\" displayName=\"b\" builtin=\"1\"/>" +
        "<template name=\"U\" displayName=\"Other\">" + Rule(Block("ENTITY", "Old words")) +
        "</template></complianceTemplates></SAPolicy>";
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "0 imported: Shown skipped: Other assets: ");
    EXPECT_EQ(Templates(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATET\" name=\"T\" display_name=\"Shown\" description=\"d\" "
              "scope=\"scope\" element=\"<template name=\\\"T\\\" severity=\\\"medium\\\"><matchRule><buildingBlock "
              "sourceType=\\\"ENTITY\\\" sourceName=\\\"Card\\\"/></matchRule></template>\"\n");
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.begin(), vecLines.begin() + 5),
              (Lines{Line("0x110", "ImportTemplate(strXmlContent length = [" + std::to_string(strXml.size()) + "])"),
                     Line("0x110", "CheckFormat()"), Line("0x111", "CheckFormat() bNeedConvert = 1"),
                     "0x110 DLPTemplateMgr.cpp CDLPXmlNormalizer::InitDigitalAssetsMappingTable()",
                     "0x102 DLPTemplateMgr.h srcName = Old card"}));
}

TEST_F(TemplateImport, ConvertedTextIsShownOfTheOlderLayout) {
    CLogRecorder log;
    Import("<SAPolicy><complianceTemplates><template name=\"T\" displayName=\"D\"/></complianceTemplates></SAPolicy>");
    const Lines vecMessages = log.Messages(0x110);
    EXPECT_EQ(
        std::count(vecMessages.begin(), vecMessages.end(),
                   "CTemplateMgr::CheckImportTemplate(strXmlContent = "
                   R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" )"
                   R"(localization_language=""><complianceTemplates command="overwrite"><template name="T" )"
                   R"(display_name="D" pre-defined="false" severity="medium"/></complianceTemplates></SAPolicy>))"),
        1);
}

TEST_F(TemplateImport, OlderLayoutWithoutADisplayNameIsSkipped) {
    EXPECT_EQ(Import("<SAPolicy><complianceTemplates><template name=\"T\" display_name=\"D\"/></complianceTemplates>"
                     "</SAPolicy>"),
              "0 imported:  skipped: - assets: ");
}

TEST_F(TemplateImport, OlderLayoutWithNothingToTakeFails) {
    EXPECT_EQ(Import("<SAPolicy/>"), "3 imported:  skipped:  assets: ");
    EXPECT_EQ(Import("<SAPolicy><complianceTemplates><template name=\"T\" displayName=\"D\" builtin=\"1\"/>"
                     "</complianceTemplates></SAPolicy>"),
              "3 imported:  skipped:  assets: ");
}

TEST_F(TemplateImport, OlderLayoutThatCannotBeConvertedFails) {
    CDLPDigitalAssetsParser::SetVersion(std::wstring(1, L'\x01'));
    CLogRecorder log;
    EXPECT_EQ(Import("<SAPolicy><complianceTemplates><template name=\"T\" displayName=\"D\"/></complianceTemplates>"
                     "</SAPolicy>"),
              "3 imported:  skipped:  assets: ");
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.end() - 2, vecLines.end()),
              (Lines{"0x1004 DLPTemplateMgr.cpp CDLPXmlNormalizer::NormailzeXml(), Error: ",
                     Line("0x111", "ImportTemplate result = 3")}));
    EXPECT_EQ(Templates(), "");
}

TEST_F(TemplateImport, StandardFormTextIsImportedAlone) {
    Names vecImported = {L"before"};
    Names vecSkipped;
    Names vecAssets;
    CLogRecorder log;
    const std::string strXml = Policy(Template("T") + Template(""),
                                      "<digitalAssets><entity name=\"E\" display_name=\"E shown\"/></digitalAssets>");
    EXPECT_EQ(m_manager.ImportTemplateImpl(OS::WideText(strXml), vecImported, vecSkipped, vecAssets), 0);
    EXPECT_EQ(vecImported, (Names{L"before", L"T shown"}));
    EXPECT_EQ(vecSkipped, Names{L" shown"});
    EXPECT_EQ(vecAssets, Names{L"E shown"});
    EXPECT_EQ(log.Lines().front(), Line("0x110", "ImportTemplateImpl()"));
    EXPECT_EQ(log.Lines().back(), Line("0x111", "ImportTemplateImpl"));
    EXPECT_EQ(m_manager.ImportTemplateImpl(L"", vecImported, vecSkipped, vecAssets), 2);
}

TEST_F(TemplateImport, SecondImportWritesNothing) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    AddAssets();
    const std::string strXml =
        Policy(Template("T", "description=\"d\"", Rule(Block("ENTITY", "Card"))) + Template("U"),
               "<industries><industry name=\"i\"><template_id>T</template_id></industry></industries>");
    Import(strXml);
    const std::string strBefore = TemplateStore::Dump();
    faults.CountOnly();
    CLogRecorder log;
    EXPECT_EQ(Import(strXml), "0 imported: T shown,U shown skipped:  assets: ");
    EXPECT_EQ(std::count(faults.GetOperations().begin(), faults.GetOperations().end(), "Save"), 0);
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
    const Lines vecMessages = log.Messages(0x110);
    EXPECT_EQ(std::count(vecMessages.begin(), vecMessages.end(), "CTemplateMgr::SaveSetting successfully"), 2);
}

TEST_F(TemplateImport, OtherScopeIsAChange) {
    Import(Policy(Template("T")));
    const std::string strBefore = TemplateStore::Dump();
    m_manager = CTemplateMgr(L"other");
    Import(Policy(Template("T")));
    EXPECT_NE(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateImport, StoreOperationsPerTemplateAreFew) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    AddAssets();
    const auto Count = [&](int iTemplates, const std::string& strPrefix) {
        std::string strTemplates;
        for (int i = 0; i < iTemplates; ++i) {
            strTemplates += Template(strPrefix + std::to_string(i), "", Rule(Block("ENTITY", "Card")));
        }
        faults.CountOnly();
        Import(Policy(strTemplates));
        return faults.GetCount();
    };
    EXPECT_EQ(Count(20, "a") - Count(10, "b"), 20U);
    EXPECT_EQ(Count(20, "a") - Count(10, "b"), 10U);
}

TEST_F(TemplateImport, ExportedDocumentIsReadBack) {
    const std::string strXml =
        Policy(Template("A", "description=\"&lt; &#10;\"",
                        Rule(Block("ENTITY", "Card") + Block("KEYWORD", "Words", "OR"), "AND")) +
                   Template("B", "pre-defined=\"true\""),
               "<industries><industry name=\"i\"><template_id>A</template_id><template_id>B</template_id></industry>"
               "</industries>");
    Import(strXml);
    const Names vecNames = {L"A", L"B"};
    const std::wstring strFirst = m_manager.ExportTemplate(vecNames);
    CSettingsStore::Open(TemplateStore::MEMORY);
    EXPECT_EQ(Import(OS::Utf8Lenient(strFirst)), "0 imported: A shown,B shown skipped:  assets: ");
    EXPECT_EQ(m_manager.ExportTemplate(vecNames), strFirst);
}

TEST_F(TemplateImport, ExportOfNothingImportsItsAssetsAndFails) {
    EXPECT_EQ(Import(OS::Utf8Lenient(m_manager.ExportTemplate({}))), "3 imported:  skipped:  assets: ");
}
