#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Text.h"
#include "cli/manual/Completion.h"
#include "cli/manual/CompletionScripts.h"
#include "cli/manual/ManualCommands.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "completion",
    "completion bash|zsh|fish",
    "write what makes a shell complete command lines",
    "Installed, the shells find it by themselves; otherwise source it where the shell starts. The script asks\n"
    "dlpctl completion SHELL -- WORD… what the last of the WORDs behind \"dlpctl\" can become, so that commands,\n"
    "options, their values and the names in the store are those of this moment.\n",
    "  dlpctl completion bash > dlpctl.bash\n"
    "  dlpctl completion zsh -- check --form\n",
    "dlpctl-completion/1",
};

struct SArguments {
    std::string strShell;
    std::vector<std::string> vecWords;
};

/** What a shell takes for something else stands behind a backslash. */
std::string Escape(const std::string& strText, const char* pSpecial) {
    std::string strEscaped;
    for (const char c : strText) {
        strEscaped += std::string_view(pSpecial).find(c) == std::string_view::npos ? "" : "\\";
        strEscaped += c;
    }
    return strEscaped;
}

/** The shell itself cuts words at "=" and would put the part before it there once more. */
std::string MakeBashLine(const SCandidate& candidate) {
    const std::size_t iEquals = candidate.strWord.rfind("--", 0) == 0 ? candidate.strWord.find('=') : std::string::npos;
    const std::string strWord =
        iEquals == std::string::npos ? candidate.strWord : candidate.strWord.substr(iEquals + 1);
    return Escape(strWord, " \\'\"`$&|;<>()*?[]{}!#~");
}

std::string MakeZshLine(const SCandidate& candidate) {
    const std::string strWord = Escape(candidate.strWord, ":\\");
    return candidate.strDescription.empty() ? strWord : strWord + ':' + Text::Printable(candidate.strDescription);
}

std::string MakeFishLine(const SCandidate& candidate) {
    return candidate.strDescription.empty() ? candidate.strWord
                                            : candidate.strWord + '\t' + Text::Printable(candidate.strDescription);
}

struct SShell {
    const char* pName;
    const char* pScript;
    std::string (*fnMakeLine)(const SCandidate& candidate);
};
constexpr SShell SHELLS[] = {{"bash", CompletionScript::BASH, MakeBashLine},
                             {"zsh", CompletionScript::ZSH, MakeZshLine},
                             {"fish", CompletionScript::FISH, MakeFishLine}};

const SShell& FindShell(const std::string& strName) {
    const auto* pShell =
        std::find_if(std::begin(SHELLS), std::end(SHELLS), [&](const SShell& shell) { return strName == shell.pName; });
    if (pShell == std::end(SHELLS)) {
        throw CToolError(EVerdict::USAGE, "there is no shell " + Text::Quoted(strName) + "; write bash, zsh or fish");
    }
    return *pShell;
}

/** A shell may hand over "--format", "=" and "js" for what was typed as one word. */
std::vector<std::string> JoinAtEquals(const std::vector<std::string>& vecWords) {
    std::vector<std::string> vecJoined;
    bool bOpen = false;
    for (const std::string& strWord : vecWords) {
        const bool bEquals = strWord == "=" && !vecJoined.empty() && vecJoined.back().rfind("--", 0) == 0;
        if (bEquals || bOpen) {
            vecJoined.back() += strWord;
        } else {
            vecJoined.push_back(strWord);
        }
        bOpen = bEquals;
    }
    return vecJoined;
}

EVerdict Complete(CCommandContext& context, CCommandLine& line, const SArguments& arguments) {
    const SShell& shell = FindShell(arguments.strShell);
    Json answer = {{"format", HELP.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}, {"shell", shell.pName}};
    std::string strText = shell.pScript;
    if (arguments.vecWords.empty()) {
        answer["script"] = shell.pScript;
    } else {
        strText.clear();
        answer["candidates"] = Json::array();
        for (const SCandidate& candidate : FindCandidates(context, line, JoinAtEquals(arguments.vecWords))) {
            answer["candidates"].push_back({{"word", candidate.strWord}, {"description", candidate.strDescription}});
            strText += shell.fnMakeLine(candidate) + '\n';
        }
    }
    if (context.IsJson()) {
        context.WriteJson(answer);
    } else {
        context.Write(strText);
    }
    return EVerdict::DONE;
}

}  // namespace

void AddCompletionCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [&line, pArguments](CCommandContext& context) {
        return Complete(context, line, *pArguments);
    });
    CCommandLine::AddText(command, "SHELL", "SHELL", pArguments->strShell, "which shell")->required();
    CCommandLine::AllowEmpty(
        CCommandLine::AddTexts(command, "WORD", "WORD", pArguments->vecWords, "a command line as far as it is typed"));
}
