#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/RecordJson.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/Editor.h"
#include "cli/edit/RecordChange.h"
#include "cli/edit/RecordFields.h"
#include "cli/edit/RuleLines.h"
#include "cli/edit/StoreEdit.h"
#include "cli/edit/TemplateRules.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char GROUP[] = "template";
constexpr const char GROUP_SUMMARY[] = "look at, make and change one template";

constexpr SCommandHelp SHOW = {
    "show",
    "template show NAME",
    "show a template's rules as text, a line each",
    "NAME is its internal name. The lines are those that template set and template new take; where a part has no\n"
    "operator they say AND, as which it counts. Exit code 1: they would be read as something else.\n",
    "  dlpctl template show payments\n"
    "  dlpctl --json template show payments\n",
    "dlpctl-template-show/1",
};
constexpr SCommandHelp NEW = {
    "new",
    "template new NAME RULE…",
    "make a template",
    "A RULE is P:EXPRESSION(COUNT) and K:KEYWORD LIST, joined by AND, OR and EXCEPT; from the second one on it begins\n"
    "with the operator that joins it to those before. --rules-from reads one from each line, --edit opens an editor\n"
    "($VISUAL, else $EDITOR). The display name is NAME unless told otherwise.\n",
    "  dlpctl template new leaks 'P:card(2) AND K:card-words' 'OR K:contract-words'\n"
    "  dlpctl template show payments | dlpctl template new leaks --rules-from - --display-name Leaks\n"
    "  EDITOR=\"sed -i '$ a P:card(1)'\" dlpctl template new leaks --edit\n",
    "dlpctl-template-new/1",
};
constexpr SCommandHelp SET = {
    "set",
    "template set NAME [RULE…]",
    "change rules and fields of a template",
    "Rules that are given replace all that are there; they are written as for template new. What is not given stays.\n",
    "  dlpctl template set payments 'P:card(3) AND K:card-words' --dry-run\n"
    "  dlpctl template set payments --description \"payment cards\" --industry banking --industry insurance\n"
    "  printf 'P:card(3)\\nOR K:card-words\\n' | dlpctl template set payments --rules-from -\n",
    "dlpctl-template-set/1",
};
constexpr SCommandHelp EDIT = {
    "edit",
    "template edit NAME",
    "change a template's rules in an editor",
    "Opens $VISUAL, else $EDITOR, with the rules a line each. A text that is not taken is kept, and it is said "
    "where.\n",
    "  dlpctl template edit payments\n"
    "  EDITOR=\"sed -i 's/card(2)/card(3)/'\" dlpctl template edit payments --dry-run\n",
    "dlpctl-template-edit/1",
};

constexpr SRecordField FIELDS[] = {
    {"--display-name", "TEXT", TemplateColumn::DISPLAY_NAME, "how people call it"},
    {"--description", "TEXT", TemplateColumn::DESCRIPTION, "what it is there for"},
};

constexpr const char ARGUMENTS[] = "rules";
constexpr const char NO_RULES[] = "there are no rules; write them, or --rules-from or --edit";
constexpr const char TWO_SOURCES[] = "write rules, --rules-from or --edit, only one of them";
constexpr const char NOTHING_GIVEN[] = "nothing is to be changed; dlpctl template set --help shows what can be";
constexpr const char NO_DISPLAY_NAME[] = "--display-name: no import takes an item whose display name is empty";
constexpr const char KEPT[] = "the text is kept in ";
constexpr const char EMPTY_TEXT[] = "there are no rules in it";
constexpr const char CHANGED_MEANWHILE[] = " was changed meanwhile";
constexpr const char NO_TEXT[] = "the rules cannot be written as text that is read as the same again; see dlpctl show";
constexpr const char COMPLETED[] = "a part of a rule has no operator; it counts as AND and is shown so";
constexpr const char EDIT_HELP[] =
    "# One rule a line: P:EXPRESSION(COUNT) and K:KEYWORD LIST, joined by AND, OR and EXCEPT.\n"
    "# From the second rule on a line begins with the operator that joins it to those before.\n"
    "# Lines that begin with # say nothing. Without any rule nothing is changed.\n";

struct SArguments {
    std::string strName;
    std::vector<std::string> vecRules;
    std::string strRulesFile;
    bool bEdit = false;
    CRecordFields fields{FIELDS};
    std::vector<std::string> vecIndustries;
    std::vector<std::string> vecRegions;
    SEditOptions options;

    bool AreRulesGiven() const { return !vecRules.empty() || !strRulesFile.empty(); }
};

const SKind& Kind() {
    return GetKind(ESettingsKind::TEMPLATE);
}

/** @param fnRead ReadStored or ReadOwn */
CSettingsRow ReadTemplate(CCommandContext& context, const std::string& strName,
                          CSettingsRow (*fnRead)(const SKind&, const std::string&)) {
    const CStoreSession& store = context.GetStoreToChange();
    CSettingsTransaction unit(EUnitOfWork::READ);
    CSettingsRow row = fnRead(Kind(), strName);
    store.ThrowIfFailed();
    unit.Commit();
    return row;
}

/** Text says more than the template where operators are missing. */
void WarnOfCompleted(CCommandContext& context, const std::string& strName, const std::vector<SMatchRule>& vecRules) {
    if (!RuleLines::IsComplete(vecRules)) {
        context.Warn(Called(Kind(), strName) + ": " + COMPLETED);
    }
}

EVerdict Show(CCommandContext& context, const SArguments& arguments) {
    context.GetStoreToRead();
    const CSettingsRow row = ReadTemplate(context, arguments.strName, ReadStored);
    const std::vector<SMatchRule> vecRules = ReadRules(row);
    const EVerdict eVerdict = RuleLines::Survive(vecRules) ? EVerdict::DONE : EVerdict::FINDINGS;
    if (context.IsJson()) {
        const Json record = RecordToJson(row);
        Json answer = {{"format", SHOW.pFormat}, {"verdict", GetVerdictName(eVerdict)}};
        for (const char* pMember :
             {"name", "display_name", "description", "pre_defined", "industries", "regions", "match_rules"}) {
            answer[pMember] = record[pMember];
        }
        answer["text"] = RuleLines::Write(vecRules);
        context.WriteJson(answer);
    } else {
        context.Write(RuleLines::Write(vecRules));
        context.Flush();
    }
    if (eVerdict != EVerdict::DONE) {
        context.Warn(Called(Kind(), arguments.strName) + ": " + NO_TEXT);
    } else {
        WarnOfCompleted(context, arguments.strName, vecRules);
    }
    return eVerdict;
}

/** Every fault with its line and a caret. */
EVerdict TellFaults(CCommandContext& context, const char* pFormat, const RuleLines::CFaults& faults) {
    Json list = Json::array();
    for (const RuleLines::SFault& fault : faults.Get()) {
        context.Error(FormatPlace(faults.GetFile(), fault.place) + ": " + fault.strWhy);
        context.GetError() << MakeExcerptLines(fault.excerpt, fault.place.iLine) << std::flush;
        list.push_back({{"line", fault.place.iLine}, {"column", fault.place.iColumn}, {"message", fault.strWhy}});
    }
    if (context.IsJson()) {
        context.WriteJson({{"format", pFormat},
                           {"verdict", GetVerdictName(faults.GetVerdict())},
                           {"message", faults.what()},
                           {"faults", std::move(list)}});
    }
    return faults.GetVerdict();
}

std::string JoinLines(const std::vector<std::string>& vecRules) {
    std::string strText;
    for (const std::string& strRule : vecRules) {
        strText += strRule + '\n';
    }
    return strText;
}

/** Rules as they are given: what messages call them, and their text. */
struct SRuleText {
    std::string strFile;
    std::string strText;
};

SRuleText ReadRuleText(CCommandContext& context, const SArguments& arguments) {
    if (!arguments.strRulesFile.empty() && !arguments.vecRules.empty()) {
        throw CToolError(EVerdict::USAGE, TWO_SOURCES);
    }
    return arguments.strRulesFile.empty()
               ? SRuleText{ARGUMENTS, JoinLines(arguments.vecRules)}
               : SRuleText{arguments.strRulesFile, ReadBytes(context, arguments.strRulesFile)};
}

/** @return a list that is given; a single empty name stands for no name */
std::vector<std::string> TakeNames(const std::vector<std::string>& vecNames) {
    return vecNames == std::vector<std::string>{""} ? std::vector<std::string>() : vecNames;
}

void ApplyFields(const SArguments& arguments, CSettingsRow& row) {
    arguments.fields.Apply(row);
    if (row.GetText(TemplateColumn::DISPLAY_NAME).empty()) {
        throw CToolError(EVerdict::INVALID, NO_DISPLAY_NAME);
    }
    if (!arguments.vecIndustries.empty()) {
        row.SetList(TemplateColumn::INDUSTRIES, TakeNames(arguments.vecIndustries));
    }
    if (!arguments.vecRegions.empty()) {
        row.SetList(TemplateColumn::REGIONS, TakeNames(arguments.vecRegions));
    }
}

std::vector<SMatchRule> ReadRuleLines(const SRuleText& text) {
    std::vector<SMatchRule> vecRules = RuleLines::Read(text.strFile, text.strText);
    if (vecRules.empty()) {
        throw CToolError(EVerdict::INVALID, Text::Printable(text.strFile) + ": " + EMPTY_TEXT);
    }
    return vecRules;
}

EVerdict Create(CCommandContext& context, const SArguments& arguments, const SRuleText& text) {
    CStoreEdit edit(context, NEW.pFormat, arguments.options, CStoreEdit::EStore::MADE);
    CSettingsRow row(ESettingsKind::TEMPLATE);
    NameRecord(arguments.strName, row);
    row.SetText(TemplateColumn::DISPLAY_NAME, arguments.strName);
    ApplyFields(arguments, row);
    SetTemplateRules(ReadRuleLines(text), row);
    return FinishChange(context, edit, nullptr, std::move(row));
}

EVerdict Set(CCommandContext& context, const SArguments& arguments) {
    const bool bRules = arguments.AreRulesGiven();
    if (!bRules && !arguments.fields.IsAnyGiven() && arguments.vecIndustries.empty() && arguments.vecRegions.empty()) {
        throw CToolError(EVerdict::USAGE, NOTHING_GIVEN);
    }
    const SRuleText text = ReadRuleText(context, arguments);
    CStoreEdit edit(context, SET.pFormat, arguments.options);
    const CSettingsRow before = ReadOwn(Kind(), arguments.strName);
    CSettingsRow after = before;
    ApplyFields(arguments, after);
    if (bRules) {
        SetTemplateRules(ReadRuleLines(text), after);
    }
    return FinishChange(context, edit, &before, std::move(after));
}

/** Has a person change a text, and does with it what fnTake does. The text is removed only once it was taken. */
template <class F>
EVerdict EditText(CCommandContext& context, const SArguments& arguments, const std::string& strText, const F& fnTake) {
    CEditedText file(context, strText);
    const SRuleText edited{file.GetPath(), file.Edit()};
    try {
        const EVerdict eVerdict = fnTake(edited);
        if (!arguments.options.bDryRun) {
            file.Remove();
        } else {
            context.Note(KEPT + Text::Printable(file.GetPath()));
        }
        return eVerdict;
    } catch (...) {
        context.Warn(KEPT + Text::Printable(file.GetPath()));
        throw;
    }
}

EVerdict New(CCommandContext& context, const SArguments& arguments) {
    const bool bRules = arguments.AreRulesGiven();
    if (bRules == arguments.bEdit) {
        throw CToolError(EVerdict::USAGE, bRules ? TWO_SOURCES : NO_RULES);
    }
    if (bRules) {
        return Create(context, arguments, ReadRuleText(context, arguments));
    }
    return EditText(context, arguments, EDIT_HELP,
                    [&](const SRuleText& text) { return Create(context, arguments, text); });
}

EVerdict Edit(CCommandContext& context, const SArguments& arguments) {
    const CSettingsRow before = ReadTemplate(context, arguments.strName, ReadOwn);
    const std::vector<SMatchRule> vecRules = ReadRules(before);
    if (!RuleLines::Survive(vecRules)) {
        throw CToolError(EVerdict::FINDINGS, Called(Kind(), arguments.strName) + ": " + NO_TEXT);
    }
    WarnOfCompleted(context, arguments.strName, vecRules);
    const std::string strText = EDIT_HELP + RuleLines::Write(vecRules);
    return EditText(context, arguments, strText, [&](const SRuleText& text) {
        CStoreEdit edit(context, EDIT.pFormat, arguments.options);
        CSettingsRow after = ReadOwn(Kind(), arguments.strName);
        if (after != before) {
            throw CToolError(EVerdict::FINDINGS, Called(Kind(), arguments.strName) + CHANGED_MEANWHILE);
        }
        if (text.strText != strText) {
            SetTemplateRules(ReadRuleLines(text), after);
        }
        return FinishChange(context, edit, &before, std::move(after));
    });
}

CLI::App& AddOne(CCommandLine& line, CLI::App& group, const SCommandHelp& help,
                 const std::shared_ptr<SArguments>& pArguments,
                 EVerdict (*fnRun)(CCommandContext&, const SArguments&)) {
    CLI::App& command = line.AddCommand(group, help, [pArguments, fnRun, &help](CCommandContext& context) {
        try {
            return fnRun(context, *pArguments);
        } catch (const RuleLines::CFaults& faults) {
            return TellFaults(context, help.pFormat, faults);
        }
    });
    CCommandLine::AddText(command, "NAME", "NAME", pArguments->strName, "its internal name")->required();
    return command;
}

void AddRulesAndFields(CLI::App& command, SArguments& arguments) {
    CCommandLine::AddTexts(command, "RULE", "RULE", arguments.vecRules, "rules");
    CCommandLine::AddText(command, "--rules-from", "FILE", arguments.strRulesFile,
                          "take a rule from each line of a file; - is standard input")
        ->take_last();
    arguments.fields.AddTo(command);
    CCommandLine::AllowEmpty(CCommandLine::AddTexts(command, "--industry", "NAME", arguments.vecIndustries,
                                                    "whom it is for; may be repeated; \"\" for none"));
    CCommandLine::AllowEmpty(CCommandLine::AddTexts(command, "--region", "NAME", arguments.vecRegions,
                                                    "where it is for; may be repeated; \"\" for none"));
}

}  // namespace

void AddTemplateCommands(CCommandLine& line) {
    CLI::App& group = line.AddGroup(GROUP, GROUP_SUMMARY);
    AddOne(line, group, SHOW, std::make_shared<SArguments>(), Show);

    const auto pNew = std::make_shared<SArguments>();
    CLI::App& create = AddOne(line, group, NEW, pNew, New);
    AddRulesAndFields(create, *pNew);
    CCommandLine::AddFlag(create, "--edit", pNew->bEdit, "write the rules in an editor");
    AddEditOptions(create, pNew->options);

    const auto pSet = std::make_shared<SArguments>();
    CLI::App& set = AddOne(line, group, SET, pSet, Set);
    AddRulesAndFields(set, *pSet);
    AddEditOptions(set, pSet->options);

    const auto pEdit = std::make_shared<SArguments>();
    AddEditOptions(AddOne(line, group, EDIT, pEdit, Edit), pEdit->options);
}
