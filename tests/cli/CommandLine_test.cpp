#include "cli/CommandLine.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"

namespace {

using CommandLine = CToolTest;
using Json = nlohmann::json;

struct SRefused {
    std::vector<std::string> vecArguments;
    const char* pMessage;
    const char* pFormat;
};

const SRefused REFUSED[] = {
    {{}, "no command is given; dlpctl --help lists the commands", "dlpctl/1"},
    {{"nope"}, "there is no command \"nope\"; dlpctl --help lists the commands", "dlpctl/1"},
    {{"exprot", "--all"}, "there is no command \"exprot\"; did you mean \"export\"?", "dlpctl/1"},
    {{"assets"}, "no command is given; dlpctl assets --help lists the commands", "dlpctl/1"},
    {{"assets", "improt", "x"}, "there is no command \"improt\"; did you mean \"import\"?", "dlpctl/1"},
    {{"--nope"}, "there is no option \"--nope\"; see dlpctl --help", "dlpctl/1"},
    {{"--stoer", "x", "list", "templates"},
     "there is no option \"--stoer\"; did you mean \"--store\"?",
     "dlpctl-list/1"},
    {{"-x"}, "there is no option \"-x\"; see dlpctl --help", "dlpctl/1"},
    {{"--=x"}, "there is no option \"--\"; see dlpctl --help", "dlpctl/1"},
    {{"list", "templates", "--=x"}, "there is no option \"--\"; see dlpctl list --help", "dlpctl-list/1"},
    {{"--store"}, "--store needs a value; see dlpctl --help", "dlpctl/1"},
    {{"list", "templates", "--store"}, "--store needs a value; see dlpctl list --help", "dlpctl-list/1"},
    {{"--store", "", "list", "templates"}, "--store: the value is empty; see dlpctl list --help", "dlpctl-list/1"},
    {{"--store=", "list", "templates"}, "--store: the value is empty; see dlpctl list --help", "dlpctl-list/1"},
    {{"import", ""}, "FILE: the value is empty; see dlpctl import --help", "dlpctl-import/1"},
    {{"export", "--all", "--ouptut=x"},
     "there is no option \"--ouptut\"; did you mean \"--output\"?",
     "dlpctl-export/1"},
    {{"export", "--all", "-o", ""}, "--output: the value is empty; see dlpctl export --help", "dlpctl-export/1"},
    {{"import"}, "FILE is required; usage: dlpctl import FILE…", "dlpctl-import/1"},
    {{"import", "--nope", "x"}, "there is no option \"--nope\"; see dlpctl import --help", "dlpctl-import/1"},
    {{"assets", "import"}, "FILE is required; usage: dlpctl assets import FILE…", "dlpctl-assets-import/1"},
    {{"export"}, "nothing is asked for; write names or --all", "dlpctl-export/1"},
    {{"export", "x", "--all"}, "write either names or --all, not both", "dlpctl-export/1"},
    {{"assets", "export"}, "nothing is asked for; write names or --all", "dlpctl-assets-export/1"},
    {{"assets", "export", "--all", "--keyword", "x"},
     "write either names or --all, not both",
     "dlpctl-assets-export/1"},
    {{"list"}, "KIND is required; usage: dlpctl list templates|expressions|keywords", "dlpctl-list/1"},
    {{"list", "things"}, "there is no kind \"things\"; write template, expression or keyword", "dlpctl-list/1"},
    {{"show", "template"}, "NAME is required; usage: dlpctl show template|expression|keyword NAME", "dlpctl-show/1"},
    {{"show", "thing", "x"}, "there is no kind \"thing\"; write template, expression or keyword", "dlpctl-show/1"},
    {{"show", "iban"}, "there is no kind \"iban\"; write template, expression or keyword", "dlpctl-show/1"},
    {{"delete", "iban"}, "there is no kind \"iban\"; write template, expression or keyword", "dlpctl-delete/1"},
    {{"keyword", "show", "x"}, "there is no command \"keyword\"; did you mean \"keywords\"?", "dlpctl-show/1"},
    {{"diff", "x"}, "B is required; usage: dlpctl diff A B", "dlpctl-diff/1"},
    {{"diff", "-", "-"}, "standard input can be read once only; name a file", "dlpctl-diff/1"},
    {{"import", "-", "-"}, "standard input can be read once only; name a file", "dlpctl-import/1"},
    {{"check", "-", "x", "-"}, "standard input can be read once only; name a file", "dlpctl-check/1"},
    {{"fmt", "--check", "-", "-"}, "standard input can be read once only; name a file", "dlpctl-fmt/1"},
    {{"check"}, "FILE is required; usage: dlpctl check FILE… | DIR…", "dlpctl-check/1"},
    {{"check", "x", "--format", "xml"},
     "--format: there is no format \"xml\"; write text, json, sarif, junit or github",
     "dlpctl-check/1"},
    {{"check", "x", "--fail-on", "all"},
     "--fail-on: there is no level \"all\"; write error, warning or note",
     "dlpctl-check/1"},
    {{"check", "x", "--allow", "DLP00"},
     "--allow: there is no code \"DLP00\"; did you mean \"DLP001\"?",
     "dlpctl-check/1"},
    {{"check", "x", "--allow", "not-xml"}, "--allow: DLP003 cannot be allowed", "dlpctl-check/1"},
    {{"check", "--fix", "-"}, "--fix needs a file that it can write", "dlpctl-check/1"},
    {{"check", "--dry-run", "x"}, "--dry-run goes with --fix: without it nothing is written anyway", "dlpctl-check/1"},
    {{"explain", "unknown-aset"},
     "there is no code \"unknown-aset\"; did you mean \"unknown-asset\"?",
     "dlpctl-explain/1"},
    {{"explain", "everything"}, "there is no code \"everything\"; dlpctl explain lists the codes", "dlpctl-explain/1"},
    {{"fmt"}, "FILE is required; usage: dlpctl fmt FILE… | DIR…", "dlpctl-fmt/1"},
    {{"fmt", "x", "--check", "--write"}, "write either --check or --write, not both", "dlpctl-fmt/1"},
    {{"fmt", "x", "--check", "-o", "y"}, "-o goes with neither --check nor --write", "dlpctl-fmt/1"},
    {{"fmt", "x", "y", "-o", "z"}, "several documents cannot be told apart; write --check or --write", "dlpctl-fmt/1"},
    {{"convert"}, "FILE is required; usage: dlpctl convert FILE", "dlpctl-convert/1"},
    {{"convert", "x", "--check", "-o", "y"}, "-o does not go with --check, which writes nothing", "dlpctl-convert/1"},
    {{"refs", "x", "y"}, "\"y\" is one argument too many; usage: dlpctl refs [POLICY] [--KIND NAME]…", "dlpctl-refs/1"},
    {{"refs", "expression", "y"}, "\"y\" is one argument too many; did you mean \"--expression y\"?", "dlpctl-refs/1"},
    {{"refs", "--template"}, "--template needs a value; see dlpctl refs --help", "dlpctl-refs/1"},
    {{"keywords", "add", "x"},
     "KEYWORD is required; usage: dlpctl keywords add NAME KEYWORD…",
     "dlpctl-keywords-add/1"},
    {{"keywords", "import", "x"},
     "FILE is required; usage: dlpctl keywords import NAME FILE",
     "dlpctl-keywords-import/1"},
    {{"keywords", "remove"},
     "NAME is required; usage: dlpctl keywords remove NAME KEYWORD…",
     "dlpctl-keywords-remove/1"},
    {{"expression", "set"},
     "NAME is required; usage: dlpctl expression set NAME --FIELD VALUE…",
     "dlpctl-expression-set/1"},
    {{"template", "edit"}, "NAME is required; usage: dlpctl template edit NAME", "dlpctl-template-edit/1"},
    {{"template", "show", "x", "y"},
     "\"y\" is one argument too many; usage: dlpctl template show NAME",
     "dlpctl-template-show/1"},
    {{"rename", "template", "x"},
     "NEW is required; usage: dlpctl rename template|expression|keyword OLD NEW",
     "dlpctl-rename/1"},
    {{"rename", "list", "x", "y"},
     "there is no kind \"list\"; write template, expression or keyword",
     "dlpctl-rename/1"},
    {{"rename", "dictionary", "x", "y"},
     "there is no kind \"dictionary\"; here it is called keyword",
     "dlpctl-rename/1"},
    {{"list", "entity"}, "there is no kind \"entity\"; here it is called expression", "dlpctl-list/1"},
    {{"delete", "template"},
     "NAME is required; usage: dlpctl delete template|expression|keyword NAME",
     "dlpctl-delete/1"},
    {{"delete", "x", "y"}, "there is no kind \"x\"; write template, expression or keyword", "dlpctl-delete/1"},
    {{"store", "load"}, "FILE is required; usage: dlpctl store load FILE", "dlpctl-store-load/1"},
    {{"store", "dump", "x"}, "\"x\" is one argument too many; usage: dlpctl store dump [-o FILE]", "dlpctl-dump/1"},
    {{"metadata", "x"}, "\"x\" is one argument too many; usage: dlpctl metadata", "dlpctl-metadata/1"},
    {{"--home", "/dev/null/home", "list", "templates"},
     "--home: there is no directory \"/dev/null/home\"",
     "dlpctl-list/1"},
    {{"list", "templates", "--log", "/dev/null/log"},
     "--log: the folder of /dev/null/log does not exist; make it first",
     "dlpctl-list/1"},
    {{"list", "templates", "--log-level", "info,loud"},
     "--log-level: there is no level \"loud\"; the levels are info, enter, leave, content, error, failure, all",
     "dlpctl-list/1"},
    {{"completion", "tcsh"}, "there is no shell \"tcsh\"; write bash, zsh or fish", "dlpctl-completion/1"},
    {{"manual", "dlpctl-chekc"},
     "there is no page \"dlpctl-chekc\"; did you mean \"dlpctl-check\"?",
     "dlpctl-manual/1"},
    {{"help", "chekc"}, "there is no command \"chekc\"; did you mean \"check\"?", "dlpctl-help/1"},
    {{"help", "store", "dmup"}, "there is no command \"dmup\"; did you mean \"dump\"?", "dlpctl-help/1"},
    {{"help", "store", "x"}, "there is no command \"x\"; dlpctl store --help lists the commands", "dlpctl-help/1"},
    {{"help", "check", "x"}, "\"x\" is one word too many: \"check\" is a whole command", "dlpctl-help/1"},
    {{"version"}, "there is no command \"version\"; did you mean \"--version\"?", "dlpctl/1"},
    {{"config", "x"}, "\"x\" is one argument too many; usage: dlpctl config [--origin]", "dlpctl-config/1"},
    {{"list", "\xff"}, "argument 2 is not UTF-8", "dlpctl/1"},
};

}  // namespace

TEST_F(CommandLine, WhatIsWrongIsSaidInOneLine) {
    for (const SRefused& refused : REFUSED) {
        const SToolRun run = Run(refused.vecArguments);
        EXPECT_EQ(run.iCode, 3) << refused.pMessage;
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, std::string("dlpctl: ") + refused.pMessage + '\n');
    }
}

TEST_F(CommandLine, WhatIsWrongIsSaidInJsonToo) {
    for (const SRefused& refused : REFUSED) {
        if (std::string(refused.pMessage).rfind("argument", 0) == 0) {
            continue;  // numbered differently
        }
        std::vector<std::string> vecArguments = refused.vecArguments;
        vecArguments.insert(vecArguments.begin(), "--json");
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(Json::parse(run.strOut),
                  Json({{"format", refused.pFormat}, {"verdict", "usage"}, {"message", refused.pMessage}}));
    }
}

TEST_F(CommandLine, ExportInJsonNeedsAFile) {
    for (const std::vector<std::string>& vecArguments : {std::vector<std::string>{"--json", "export", "--all"},
                                                         {"export", "--all", "-o", "-", "--json"},
                                                         {"assets", "export", "--all", "--json"},
                                                         {"fmt", "x", "--json"},
                                                         {"--json", "convert", "x"}}) {
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr,
                  "dlpctl: --json needs -o FILE here: the document and the answer cannot share standard output\n");
        EXPECT_EQ(Json::parse(run.strOut)["verdict"], "usage");
    }
}

TEST_F(CommandLine, GlobalOptionsStandBeforeOrAfterTheCommand) {
    Import(Documents::Small());
    const std::string strExpected = Get({"--json", "list", "keywords"});
    EXPECT_EQ(Get({"list", "--json", "keywords"}), strExpected);
    EXPECT_EQ(Get({"list", "keywords", "--json"}), strExpected);
    EXPECT_EQ(RunOn("memory:", {"--store=" + Url("store.db"), "list", "keywords", "--json"}).strOut, strExpected);
    EXPECT_EQ(Get({"store", "dump", "--store", Url("store.db")}), Dump());
}

TEST_F(CommandLine, ValuesAreTakenAsTheyStand) {
    const std::pair<const char*, const char*> aNames[] = {
        {"[draft]", "[draft]"}, {"[a,b]", "[a,b]"}, {"\x01[x]", "\\u0001[x]"},     {"a,b", "a,b"},
        {"{}", "{}"},           {"%%", "%%"},       {"it's \"it\"", "it's \"it\""}};
    for (const auto& [pName, pShown] : aNames) {
        const SToolRun run = Run({"export", pName, "-q"});
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.strErr, std::string("dlpctl: warning: template \"") + pShown +
                                  "\" is left out: it is not stored; dlpctl list templates lists the names\n");
        EXPECT_EQ(Run({"show", "template", pName}).strErr, std::string("dlpctl: no template is named \"") + pShown +
                                                               "\"; dlpctl list templates lists the names\n");
    }
    EXPECT_EQ(Run({"export", "-q", "--", "--all"}).strErr,
              "dlpctl: warning: template \"--all\" is left out: it is not stored; dlpctl list templates lists the "
              "names\n");
}

TEST_F(CommandLine, HelpIsACommandToo) {
    EXPECT_EQ(Get({"help"}), Get({"--help"}));
    EXPECT_EQ(Get({"help", "check"}), Get({"check", "--help"}));
    EXPECT_EQ(Get({"help", "template", "new"}), Get({"template", "new", "--help"}));
    EXPECT_EQ(Get({"help", "template"}), Get({"template", "--help"}));
}

TEST_F(CommandLine, TopHelpHasOneLinePerCommandAndTheFirstSteps) {
    const SToolRun run = Run({"--help"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, "");
    for (const char* pLine : {"\n  import FILE…  ",
                              "\n  export NAME… | --all  ",
                              "\n  assets import FILE…  ",
                              "\n  assets export [--expression NAME]… [--keyword NAME]… | --all  ",
                              "\n  list templates|expressions|keywords  ",
                              "\n  show template|expression|keyword NAME  ",
                              "\n  diff A B  ",
                              "\n  refs [POLICY] [--KIND NAME]…  ",
                              "\n  check FILE… | DIR…  ",
                              "\n  explain [CODE…]  ",
                              "\n  fmt FILE… | DIR…  ",
                              "\n  convert FILE  ",
                              "\n  metadata  ",
                              "\n  template show NAME  ",
                              "\n  template new NAME RULE…  ",
                              "\n  template set NAME [RULE…]  ",
                              "\n  template edit NAME  ",
                              "\n  keywords show NAME  ",
                              "\n  keywords new NAME [KEYWORD…]  ",
                              "\n  keywords set NAME --FIELD VALUE…  ",
                              "\n  keywords add NAME KEYWORD…  ",
                              "\n  keywords remove NAME KEYWORD…  ",
                              "\n  keywords import NAME FILE  ",
                              "\n  keywords export NAME [-o FILE]  ",
                              "\n  expression show NAME  ",
                              "\n  expression new NAME --pattern REGEX  ",
                              "\n  expression set NAME --FIELD VALUE…  ",
                              "\n  rename template|expression|keyword OLD NEW  ",
                              "\n  delete template|expression|keyword NAME  ",
                              "\n  store dump [-o FILE]  ",
                              "\n  store load FILE  ",
                              "\n  store info  ",
                              "\n  config [--origin]  ",
                              "\n  completion bash|zsh|fish  ",
                              "\n  manual [PAGE]  ",
                              "\n  help [COMMAND…]  ",
                              "\n  -v,--verbose  ",
                              "\n  --store URL  ",
                              "\n  -q,--quiet  ",
                              "\nFirst steps:\n"}) {
        EXPECT_NE(run.strOut.find(pLine), std::string::npos) << pLine;
    }
}

TEST_F(CommandLine, EveryCommandHasHelpWithExamples) {
    const std::vector<std::string> aCommands[] = {{"import"},
                                                  {"export"},
                                                  {"assets", "import"},
                                                  {"assets", "export"},
                                                  {"list"},
                                                  {"show"},
                                                  {"diff"},
                                                  {"refs"},
                                                  {"check"},
                                                  {"explain"},
                                                  {"fmt"},
                                                  {"convert"},
                                                  {"template", "show"},
                                                  {"template", "new"},
                                                  {"template", "set"},
                                                  {"template", "edit"},
                                                  {"keywords", "show"},
                                                  {"keywords", "new"},
                                                  {"keywords", "set"},
                                                  {"keywords", "add"},
                                                  {"keywords", "remove"},
                                                  {"keywords", "import"},
                                                  {"keywords", "export"},
                                                  {"expression", "show"},
                                                  {"expression", "new"},
                                                  {"expression", "set"},
                                                  {"rename"},
                                                  {"delete"},
                                                  {"metadata"},
                                                  {"store", "dump"},
                                                  {"store", "load"},
                                                  {"store", "info"},
                                                  {"config"},
                                                  {"completion"},
                                                  {"manual"},
                                                  {"help"}};
    for (std::vector<std::string> vecCommand : aCommands) {
        const std::string strName = vecCommand.front() + (vecCommand.size() > 1 ? ' ' + vecCommand.back() : "");
        vecCommand.emplace_back("--help");
        const SToolRun run = Run(vecCommand);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.strOut.find("Usage: dlpctl " + strName), 0U) << run.strOut;
        EXPECT_NE(run.strOut.find("\nExamples:\n  dlpctl "), std::string::npos) << run.strOut;
        vecCommand.pop_back();
        vecCommand.insert(vecCommand.begin(), "help");
        EXPECT_EQ(Run(vecCommand).strOut, run.strOut);
    }
    EXPECT_EQ(Run({"help"}).strOut, Run({"--help"}).strOut);
    EXPECT_EQ(Run({"help", "store"}).strOut, Run({"store", "-h"}).strOut);
    EXPECT_EQ(Run({"store", "-h"}).strOut,
              "Commands:\n"
              "  store dump [-o FILE]  write the whole store as JSON\n"
              "  store load FILE       replace the whole store by what a dump holds\n"
              "  store info            show which store, which files and which versions are in use\n"
              "  store check           verify that the store holds what was written, all of it\n"
              "  store backup FILE     save the whole store as a store of its own in FILE\n"
              "  store restore FILE    bring back what a backup holds\n"
              "\n"
              "Options of every command: dlpctl --help\n");
}

TEST_F(CommandLine, HelpOfOneCommandIsWhole) {
    EXPECT_EQ(Run({"list", "--help"}).strOut,
              "Usage: dlpctl list templates|expressions|keywords\n"
              "\n"
              "List what the store holds.\n"
              "One line per record, in the order of the store, which is also that of export --all.\n"
              "\n"
              "Options:\n"
              "  -h,--help  show this help\n"
              "\n"
              "Examples:\n"
              "  dlpctl list templates\n"
              "  dlpctl --json list expressions\n"
              "\n"
              "Options of every command: dlpctl --help\n");
}

TEST_F(CommandLine, HelpAndVersionHaveAJsonForm) {
    EXPECT_EQ(Run({"--version"}).strOut, "dlpctl 0.1.0\n");
    EXPECT_EQ(Json::parse(Run({"--version", "--json"}).strOut),
              Json({{"format", "dlpctl-version/1"}, {"verdict", "done"}, {"version", "0.1.0"}}));
    const Json help = Json::parse(Run({"--json", "list", "--help"}).strOut);
    EXPECT_EQ(help["format"], "dlpctl-help/1");
    EXPECT_EQ(help["help"], Run({"list", "--help"}).strOut);
}
