#include "cli/manual/Completion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

class Completion : public CToolTest {
  protected:
    /** @param strLine the words behind the program's name; the last one is being typed, "_" an empty one */
    Words Complete(const std::string& strLine) const {
        Words vecArguments = {"--json", "completion", "zsh", "--"};
        std::istringstream line(strLine);
        for (std::string strWord; line >> strWord;) {
            vecArguments.push_back(strWord == "_" ? "" : strWord);
        }
        Words vecWords;
        const Json answer = Json::parse(Get(vecArguments));
        for (const Json& candidate : answer["candidates"]) {
            vecWords.push_back(candidate["word"]);
        }
        return vecWords;
    }
};

struct SCompleted {
    const char* pLine;
    Words vecCandidates;
};

const SCompleted COMPLETED[] = {
    {"metad", {"metadata"}},
    {"assets _", {"import", "export"}},
    {"--store sqlite:x store i", {"info"}},
    {"--quiet che", {"check"}},
    {"check --f", {"--fail-on", "--format", "--fix"}},
    {"check --la", {"--language"}},
    {"check --format _", {"text", "json", "sarif", "junit", "github"}},
    {"check --format=j", {"--format=json", "--format=junit"}},
    {"check --fail-on w", {"warning"}},
    {"check --allow DLP00", {"DLP001", "DLP002", "DLP003", "DLP004", "DLP005", "DLP006", "DLP007", "DLP008", "DLP009"}},
    {"check --allow unused-", {"unused-asset"}},
    {"check policy.xml --nosuch --stri", {"--strict"}},
    {"check _", {}},
    {"--log _", {}},
    {"list _", {"templates", "expressions", "keywords"}},
    {"show k", {"keyword"}},
    {"show expression _", {"one", "two"}},
    {"show keyword --json w", {"words"}},
    {"export _", {"cards"}},
    {"assets export --expression t", {"two"}},
    {"assets export --keyword _", {"words"}},
    {"refs --template _", {"cards"}},
    {"--store memory: export _", {}},
    {"--store nonsense export _", {}},
    {"--language _", {}},
    {"import --only c", {"cards"}},
    {"import --report-format s", {"sarif"}},
    {"template new x --industry fin", {"finance"}},
    {"template set x --region=e", {"--region=eu"}},
    {"expression new x --validator lu", {"luhn"}},
    {"keywords show _", {"words"}},
    {"keywords set _", {"words"}},
    {"keywords set words --type T", {"Threshold"}},
    {"expression new x --type Type", {"Type 1", "Type 2", "Type 3"}},
    {"keywords set words --th", {"--threshold"}},
    {"template show _", {"cards"}},
    {"rename expression o", {"one"}},
    {"diff st", {"store"}},
    {"diff a.xml _", {}},
    {"config --or", {"--origin"}},
    {"completion f", {"fish"}},
    {"nosuch _", {}},
};

/** A shell that completes a line, with the program in its path. */
class Shells : public CToolTest {
  protected:
    Shells() {
        Import(Documents::Policy(
            Documents::Entity("card number") + Documents::Entity("it's") + Documents::Dictionary("words"),
            Documents::Template("cards", "card number", "words")));
    }

    static void SkipWithout(const char* pShell) {
        if (CProgram::Shell(std::string("command -v ") + pShell).iCode != 0) {
            GTEST_SKIP() << pShell << " is not there";
        }
    }

    /** Runs a script of the shell in a folder that holds a policy.xml. */
    SToolRun RunShell(const char* pShell, const std::string& strScript) const {
        m_dir.Write("work/policy.xml", "");
        m_dir.Write("script", strScript);
        return CProgram::Shell("cd '" + m_dir.Path("work") + "' && PATH=$(dirname \"$DLPCTL\"):$PATH HOME='" +
                               m_dir.Path() + "' " + pShell + " '" + m_dir.Path("script") + "'");
    }
};

}  // namespace

TEST_F(Completion, WordsAreThoseThatCanStandThere) {
    Import(Documents::Small());
    for (const SCompleted& completed : COMPLETED) {
        Words vecFound = Complete(completed.pLine);
        std::sort(vecFound.begin(), vecFound.end());
        Words vecExpected = completed.vecCandidates;
        std::sort(vecExpected.begin(), vecExpected.end());
        EXPECT_EQ(vecFound, vecExpected) << completed.pLine;
    }
}

TEST_F(Completion, AStoreThatIsNotThereIsNotMade) {
    EXPECT_EQ(Complete("--store " + Url("none.db") + " export _"), Words());
    EXPECT_EQ(m_dir.Read("none.db"), "");
}

TEST_F(Completion, CandidatesSayWhatTheyMean) {
    EXPECT_EQ(Get({"completion", "zsh", "--", "metad"}),
              "metadata:list the predefined validators, types, industries and regions\n");
    EXPECT_EQ(Get({"completion", "fish", "--", "metad"}),
              "metadata\tlist the predefined validators, types, industries and regions\n");
    EXPECT_EQ(Get({"completion", "bash", "--", "metad"}), "metadata\n");
    EXPECT_EQ(Run({"completion", "tcsh"}).strErr, "dlpctl: there is no shell \"tcsh\"; write bash, zsh or fish\n");
}

TEST_F(Shells, BashCompletes) {
    SkipWithout("bash");
    if (IsSkipped()) {
        return;
    }
    const SToolRun run = RunShell("bash",
                                  "source <(dlpctl completion bash)\n"
                                  "complete -p dlpctl\n"
                                  "ask() { COMP_WORDS=(dlpctl \"$@\"); COMP_CWORD=$#; _dlpctl; "
                                  "printf '%s\\n' \"$*:\" \"${COMPREPLY[@]}\"; }\n"
                                  "ask expo\n"
                                  "ask check --format = js\n"
                                  "ask show expression ''\n"
                                  "ask check ''\n");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(run.strOut,
              "complete -o bashdefault -o default -F _dlpctl dlpctl\n"
              "expo:\nexport\n"
              "check --format = js:\njson\n"
              "show expression :\ncard\\ number\nit\\'s\n"
              "check :\n");
}

TEST_F(Shells, ZshCompletes) {
    SkipWithout("zsh");
    if (IsSkipped()) {
        return;
    }
    // The two functions of the completion system that the script calls only print here.
    const SToolRun run = RunShell("zsh -f",
                                  "compdef() { print compdef $@ }\n"
                                  "_describe() { print -l -- \"${(@P)2}\" }\n"
                                  "_files() { print files }\n"
                                  "source <(dlpctl completion zsh)\n"
                                  "ask() { words=(dlpctl \"$@\"); CURRENT=${#words}; print -r -- \"$*:\"; _dlpctl }\n"
                                  "ask metad\n"
                                  "ask check --format=js\n"
                                  "ask show expression ''\n"
                                  "ask show expression 'card\\ n'\n"
                                  "ask check ''\n");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(run.strOut,
              "compdef _dlpctl dlpctl\n"
              "metad:\nmetadata:list the predefined validators, types, industries and regions\n"
              "check --format=js:\n--format=json\n"
              "show expression :\ncard number:Expression card number\nit's:Expression it's\n"
              "show expression card\\ n:\ncard number:Expression card number\n"
              "check :\nfiles\n");
}

TEST_F(Shells, FishCompletes) {
    SkipWithout("fish");
    if (IsSkipped()) {
        return;
    }
    const SToolRun run = RunShell("fish",
                                  "dlpctl completion fish | source\n"
                                  "for line in metad 'check --format=js' 'show expression ' 'check p'\n"
                                  "    echo $line:\n"
                                  "    complete -C \"dlpctl $line\"\n"
                                  "end\n");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(run.strOut,
              "metad:\nmetadata\tlist the predefined validators, types, industries and regions\n"
              "check --format=js:\n--format=json\n"
              "show expression :\ncard number\tExpression card number\nit's\tExpression it's\n"
              "check p:\npolicy.xml\n");
}
