#include "tests/cli/ToolRun.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <sys/wait.h>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/Tool.h"
#include "platform/store/CSettingsStore.h"
#include "tests/support/JsonSchema.h"

namespace {

constexpr const char POLICY_LISTS[] =
    R"(<SAPolicy><validators><v name="luhn" display_name="Luhn"/><v name="a&amp;b" display_name="A &lt; B"/></validators>)"
    R"(<entity_types><t name="Generic" display_name="Generic"/></entity_types>)"
    R"(<dictionary_types><t name="All" display_name="All"/></dictionary_types>)"
    R"(<industries><i name="finance" display_name="Finance"/></industries>)"
    R"(<regions><r name="eu" display_name="Europe"/></regions></SAPolicy>)";

}  // namespace

CToolTest::CToolTest() {
    for (const int iSignal : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(iSignal, SIG_DFL);  // whoever runs the tests may ignore it
    }
    m_dir.Write("home/config/PredefinedDLPPolicy.xml", POLICY_LISTS);
    m_dir.Write("home/config/cfg_dlp_da_map.txt", "Old One\tone\n");
    ::setenv("DLP_INSTALL_PATH", m_dir.Path("home").c_str(), 1);
    ::setenv("DLP_STORE", Url("store.db").c_str(), 1);
    CSettingsStore::Open(Url("store.db"));
    CSettingsStore::Close();
    ::setenv("XDG_CONFIG_HOME", m_dir.Path("config").c_str(), 1);
}

CToolTest::~CToolTest() = default;

SToolRun CToolTest::Run(const std::vector<std::string>& vecArguments, const std::string& strInput) const {
    CDLPDigitalAssetsParser::SetVersion(L"3.0.1000");
    CDLPDigitalAssetsParser::SetLanguage(L"");
    std::istringstream in(strInput);
    std::ostringstream out;
    std::ostringstream err;
    const int iCode = RunTool(vecArguments, in, out, err);
    EXPECT_EQ(CheckAnswers(out.str()), "") << ::testing::PrintToString(vecArguments);
    return {iCode, out.str(), err.str()};
}

SToolRun CToolTest::RunOn(const std::string& strUrl, std::vector<std::string> vecArguments,
                          const std::string& strInput) const {
    vecArguments.insert(vecArguments.begin(), {"--store", strUrl});
    return Run(vecArguments, strInput);
}

std::string CToolTest::Get(const std::vector<std::string>& vecArguments) const {
    const SToolRun run = Run(vecArguments);
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    return run.strOut;
}

void CToolTest::RemoveStore() const {
    ASSERT_EQ(std::remove(m_dir.Path("store.db").c_str()), 0);
}

std::string CToolTest::Dump() const {
    return Get({"store", "dump"});
}

void CToolTest::Import(const std::string& strDocument) const {
    const SToolRun run = Run({"import", "-"}, strDocument);
    ASSERT_EQ(run.iCode, 0) << run.strOut << run.strErr;
}

SToolRun CProgram::Shell(const std::string& strShell) {
    const CTempDir dir;
    ::setenv("DLPCTL", DLP_BINARY_DIR "/bin/dlpctl", 1);
    const std::string strCommand = "{ " + strShell + "\n} >'" + dir.Path("out") + "' 2>'" + dir.Path("err") + "'";
    const int iStatus = std::system(strCommand.c_str());
    const int iCode = WIFSIGNALED(iStatus) ? 1000 + WTERMSIG(iStatus) : WEXITSTATUS(iStatus);
    return {iCode, dir.Read("out"), dir.Read("err")};
}

namespace Documents {

std::string Policy(const std::string& strAssets, const std::string& strTemplates, const std::string& strRest) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000">)"
           "<digitalAssets>" +
           strAssets + "</digitalAssets><complianceTemplates>" + strTemplates + "</complianceTemplates>" + strRest +
           "</SAPolicy>";
}

std::string Entity(const std::string& strName, const std::string& strMore) {
    return "<entity name=\"" + strName + "\" type=\"Generic\" display_name=\"Expression " + strName + "\" " + strMore +
           "><regularExpression>\\d+</regularExpression></entity>";
}

std::string Dictionary(const std::string& strName, const std::string& strMore) {
    return "<dictionary name=\"" + strName + "\" type=\"Any\" display_name=\"List " + strName + "\" " + strMore +
           "><keyword description=\"\" score=\"1\" caseSensitive=\"false\">one</keyword>"
           "<keyword description=\"second\" score=\"5\" caseSensitive=\"true\">two</keyword></dictionary>";
}

std::string Template(const std::string& strName, const std::string& strExpression, const std::string& strKeyword) {
    return "<template name=\"" + strName + "\" display_name=\"Template " + strName +
           "\" description=\"What it is for\" pre-defined=\"false\"><matchRule><buildingBlock sourceType=\"ENTITY\" "
           "entityHits=\"2\" sourceName=\"" +
           strExpression + "\"/><buildingBlock sourceType=\"KEYWORD\" sourceName=\"" + strKeyword +
           "\" operation=\"AND\"/></matchRule></template>";
}

std::string Small() {
    return Policy(Entity("one") + Entity("two") + Dictionary("words"), Template("cards", "one", "words"),
                  R"(<industries><industry name="finance"><template_id>cards</template_id></industry></industries>)"
                  R"(<regions><region name="eu"><template_id>cards</template_id></region>)"
                  R"(<region name="us"><template_id>cards</template_id></region></regions>)");
}

}  // namespace Documents
