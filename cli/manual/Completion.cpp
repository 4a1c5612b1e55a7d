#include "cli/manual/Completion.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <sstream>
#include <utility>

#include <CLI/App.hpp>

#include "api/DLPMetaDataLoaderImpl.h"
#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Kinds.h"
#include "cli/Text.h"
#include "cli/check/DiagnosticCodes.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

namespace {

constexpr char CHOICE = '|';
constexpr const char STORE_OPTION[] = "--store";
constexpr const char ONLY_OPTION[] = "only";
constexpr const char STORE_WORD[] = "store";

using Candidates = std::vector<SCandidate>;

bool BeginsWith(const std::string& strWord, const std::string& strStart) {
    return strWord.compare(0, strStart.size(), strStart) == 0;
}

bool IsFlag(const CLI::Option& option) {
    return option.get_expected_min() == 0;
}

/** The command line as far as it is typed. */
struct STyped {
    std::vector<CLI::App*> vecApps;        ///< from the top to the command
    std::vector<std::string> vecPlaced;    ///< the words that stand by their place
    const CLI::Option* pOption = nullptr;  ///< whose value is being typed
    std::string strPrefix;                 ///< of the word being typed that is no part of the value: "--format="
    std::string strCurrent;                ///< the rest of that word
    std::string strStore;
};

const CLI::Option* FindOption(const STyped& typed, const std::string& strWord) {
    for (CLI::App* pApp : {typed.vecApps.front(), typed.vecApps.back()}) {
        for (const CLI::Option* pOption : pApp->get_options()) {
            if (!pOption->get_positional() && pOption->check_name(strWord)) {
                return pOption;
            }
        }
    }
    return nullptr;
}

CLI::App* FindCommand(CLI::App& parent, const std::string& strWord) {
    const std::vector<CLI::App*> vecApps = parent.get_subcommands([](const CLI::App*) { return true; });
    const auto itApp =
        std::find_if(vecApps.begin(), vecApps.end(), [&](CLI::App* pApp) { return pApp->get_name() == strWord; });
    return itApp == vecApps.end() ? nullptr : *itApp;
}

void TakeWord(STyped& typed, const std::string& strWord) {
    if (typed.pOption != nullptr) {
        typed.strStore = typed.pOption->check_name(STORE_OPTION) ? strWord : typed.strStore;
        typed.pOption = nullptr;
    } else if (BeginsWith(strWord, "-") && strWord.size() > 1) {
        const CLI::Option* pOption = FindOption(typed, strWord);
        typed.pOption = pOption == nullptr || IsFlag(*pOption) ? nullptr : pOption;
    } else if (CLI::App* pCommand = FindCommand(*typed.vecApps.back(), strWord)) {
        typed.vecApps.push_back(pCommand);
    } else {
        typed.vecPlaced.push_back(strWord);
    }
}

STyped ReadWords(CCommandLine& line, const std::vector<std::string>& vecWords) {
    STyped typed;
    typed.vecApps.push_back(&line.GetTop());
    for (std::size_t i = 0; i + 1 < vecWords.size(); ++i) {
        TakeWord(typed, vecWords[i]);
    }
    typed.strCurrent = vecWords.empty() ? "" : vecWords.back();
    const std::size_t iEquals = typed.strCurrent.find('=');
    if (typed.pOption == nullptr && BeginsWith(typed.strCurrent, "--") && iEquals != std::string::npos) {
        typed.pOption = FindOption(typed, typed.strCurrent.substr(0, iEquals));
        typed.strPrefix = typed.strCurrent.substr(0, iEquals + 1);
        typed.strCurrent.erase(0, iEquals + 1);
    }
    return typed;
}

Candidates ListCommands(const CCommandLine& line, CLI::App& parent) {
    Candidates vecCandidates;
    for (const CLI::App* pApp : parent.get_subcommands([](const CLI::App*) { return true; })) {
        const SCommandHelp* pHelp = line.FindHelp(*pApp);
        vecCandidates.push_back({pApp->get_name(), pHelp == nullptr ? pApp->get_description() : pHelp->pSummary});
    }
    return vecCandidates;
}

Candidates ListOptions(const STyped& typed) {
    Candidates vecCandidates;
    for (auto it = typed.vecApps.rbegin(); it != typed.vecApps.rend(); ++it) {
        for (const CLI::Option* pOption : (*it)->get_options()) {
            for (const std::string& strName : pOption->get_lnames()) {
                const bool bKnown = std::any_of(vecCandidates.begin(), vecCandidates.end(), [&](const auto& candidate) {
                    return candidate.strWord == "--" + strName;
                });
                if (!bKnown) {
                    vecCandidates.push_back({"--" + strName, pOption->get_description()});
                }
            }
        }
    }
    return vecCandidates;
}

Candidates ListChoices(const std::string& strChoices) {
    Candidates vecCandidates;
    std::istringstream choices(strChoices);
    for (std::string strChoice; std::getline(choices, strChoice, CHOICE);) {
        vecCandidates.push_back({strChoice, ""});
    }
    return vecCandidates;
}

/** The kind of record that a command line speaks of; templates where it names none. */
ESettingsKind GuessKind(const STyped& typed) {
    std::vector<std::string> vecWords = typed.vecPlaced;
    for (const CLI::App* pApp : typed.vecApps) {
        vecWords.push_back(pApp->get_name());
    }
    if (typed.pOption != nullptr) {
        vecWords = typed.pOption->get_lnames();
    }
    for (const SKind& kind : KINDS) {
        for (const std::string& strWord : vecWords) {
            if (strWord == kind.pSingular || strWord == kind.pPlural) {
                return kind.eKind;
            }
        }
    }
    return ESettingsKind::TEMPLATE;
}

/** Only some options take names of records; --language, say, does not. */
bool TakesRecords(const CLI::Option& option) {
    const std::string strName = option.get_lnames().front();
    return strName == ONLY_OPTION || std::any_of(std::begin(KINDS), std::end(KINDS),
                                                 [&](const SKind& kind) { return strName == kind.pSingular; });
}

/** The options whose values the predefined lists name. */
struct SPredefined {
    const char* pOption;
    bool (DLPMetaDataLoaderImpl::*fnRead)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);
};
constexpr SPredefined PREDEFINED[] = {{"industry", &DLPMetaDataLoaderImpl::GetIndustries},
                                      {"region", &DLPMetaDataLoaderImpl::GetRegions},
                                      {"validator", &DLPMetaDataLoaderImpl::GetValidators}};

/** @return none for other options */
Candidates ListPredefined(const CLI::Option& option) {
    Candidates vecCandidates;
    for (const SPredefined& predefined : PREDEFINED) {
        if (option.get_lnames().front() == predefined.pOption) {
            std::vector<OS::x_wstring> vecNames;
            std::vector<OS::x_wstring> vecDisplayNames;
            (DLPMetaDataLoaderImpl().*predefined.fnRead)(vecNames, vecDisplayNames);
            for (std::size_t i = 0; i < vecNames.size(); ++i) {
                vecCandidates.push_back({Text::Unescaped(OS::Utf8Lenient(vecNames[i])),
                                         Text::Unescaped(OS::Utf8Lenient(vecDisplayNames[i]))});
            }
        }
    }
    return vecCandidates;
}

/** A store that cannot be read has no names to offer. */
Candidates ListNames(const CCommandContext& context, const STyped& typed) {
    Candidates vecCandidates;
    if (typed.pOption != nullptr && !TakesRecords(*typed.pOption)) {
        return ListPredefined(*typed.pOption);
    }
    try {
        const std::string strUrl =
            typed.strStore.empty() ? context.GetStoreUrl() : context.GetAbsoluteUrl(typed.strStore);
        const auto pStore = CSettingsStore::Make(strUrl, EUnitOfWork::READ);
        std::vector<std::string> vecNames;
        std::vector<std::string> vecDisplayNames;
        CSettingsTransaction unit(*pStore, EUnitOfWork::READ);
        pStore->ReadColumn(GuessKind(typed), NAME_COLUMN, vecNames);
        pStore->ReadColumn(GuessKind(typed), DISPLAY_NAME_COLUMN, vecDisplayNames);
        for (std::size_t i = 0; i < vecNames.size(); ++i) {
            vecCandidates.push_back({vecNames[i], vecDisplayNames[i]});
        }
        unit.Commit();
    } catch (const std::exception&) {
        vecCandidates.clear();
    }
    return vecCandidates;
}

Candidates ListCodes(const CCommandContext&, const STyped&) {
    Candidates vecCandidates;
    for (const SCodeRow& row : GetCodeTable()) {
        vecCandidates.push_back({row.pName, row.pCode});
        vecCandidates.push_back({row.pCode, row.pName});
    }
    return vecCandidates;
}

/** A policy is a file more often than it is the store. */
Candidates ListPolicies(const CCommandContext&, const STyped& typed) {
    return typed.strCurrent.empty() ? Candidates() : Candidates{{STORE_WORD, "the store of --store"}};
}

/** What the placeholders in usage lines stand for; all others for files. */
struct SPlaceholder {
    const char* pName;
    Candidates (*fnList)(const CCommandContext& context, const STyped& typed);
};
constexpr SPlaceholder PLACEHOLDERS[] = {{"NAME", ListNames},      {"OLD", ListNames},  {"CODE", ListCodes},
                                         {"POLICY", ListPolicies}, {"A", ListPolicies}, {"B", ListPolicies}};

Candidates ListValues(const CCommandContext& context, const STyped& typed, const std::string& strPlaceholder) {
    if (strPlaceholder.find(CHOICE) != std::string::npos) {
        return ListChoices(strPlaceholder);
    }
    for (const SPlaceholder& placeholder : PLACEHOLDERS) {
        if (strPlaceholder == placeholder.pName) {
            return placeholder.fnList(context, typed);
        }
    }
    return {};
}

/** @return the placeholder of the next word that stands by its place, out of a usage line such as "list KIND [NAME…]"
 */
std::string FindPlaceholder(const SCommandHelp& help, std::size_t iWords, std::size_t iPlace) {
    std::string strSynopsis = help.pSynopsis;
    for (std::size_t iOption = strSynopsis.find("[-"); iOption != std::string::npos; iOption = strSynopsis.find("[-")) {
        strSynopsis.erase(iOption, strSynopsis.find(']', iOption) - iOption + 1);
    }
    std::istringstream words(strSynopsis);
    std::vector<std::string> vecPlaceholders;
    for (std::string strWord; words >> strWord;) {
        std::string strName;
        std::copy_if(strWord.begin(), strWord.end(), std::back_inserter(strName),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '[' && c != ']'; });
        if (iWords > 0) {
            --iWords;
        } else if (!strName.empty() && strName.front() != '-' && strName != "|") {
            vecPlaceholders.push_back(strName);
        }
    }
    return vecPlaceholders.empty() ? "" : vecPlaceholders[std::min(iPlace, vecPlaceholders.size() - 1)];
}

Candidates ListAll(const CCommandContext& context, CCommandLine& line, const STyped& typed) {
    if (typed.pOption != nullptr) {
        return ListValues(context, typed, typed.pOption->get_type_name());
    }
    if (BeginsWith(typed.strCurrent, "-")) {
        return ListOptions(typed);
    }
    CLI::App& command = *typed.vecApps.back();
    const SCommandHelp* pHelp = line.FindHelp(command);
    if (pHelp == nullptr) {
        return typed.vecPlaced.empty() ? ListCommands(line, command) : Candidates();
    }
    return ListValues(context, typed, FindPlaceholder(*pHelp, typed.vecApps.size() - 1, typed.vecPlaced.size()));
}

}  // namespace

std::vector<SCandidate> FindCandidates(const CCommandContext& context, CCommandLine& line,
                                       const std::vector<std::string>& vecWords) {
    const STyped typed = ReadWords(line, vecWords);
    Candidates vecCandidates;
    for (SCandidate& candidate : ListAll(context, line, typed)) {
        const bool bListable = candidate.strWord.find_first_of("\n\r\t") == std::string::npos;
        if (bListable && !candidate.strWord.empty() && BeginsWith(candidate.strWord, typed.strCurrent)) {
            vecCandidates.push_back({typed.strPrefix + candidate.strWord, std::move(candidate.strDescription)});
        }
    }
    return vecCandidates;
}
