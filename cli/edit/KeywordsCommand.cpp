#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/NearestName.h"
#include "cli/Output.h"
#include "cli/RecordJson.h"
#include "cli/RecordText.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/edit/AssetFields.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/GivenOption.h"
#include "cli/edit/KeywordList.h"
#include "cli/edit/KeywordTable.h"
#include "cli/edit/RecordChange.h"
#include "cli/edit/RecordFields.h"
#include "cli/edit/StoreEdit.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextTools.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char GROUP[] = "keywords";
constexpr const char GROUP_SUMMARY[] = "look at, make and change one keyword list";

constexpr SCommandHelp SHOW = {
    "show",
    "keywords show NAME",
    "show the keywords of a list",
    "NAME is the list's internal name.\n",
    "  dlpctl keywords show card-words\n"
    "  dlpctl --json keywords show card-words\n",
    "dlpctl-keywords-show/1",
};
constexpr SCommandHelp NEW = {
    "new",
    "keywords new NAME [KEYWORD…]",
    "make a keyword list",
    "A list of type All is found where every keyword is, Any where one is, Threshold where --threshold of them are,\n"
    "Distance where its keywords are found within --distance of each other. It is of type All, and its display name\n"
    "is NAME, unless told otherwise. Keywords are added as by keywords add.\n",
    "  dlpctl keywords new account-words account IBAN --type Any\n"
    "  dlpctl keywords new codenames --type Threshold --threshold 2 apollo bluebird zephyr\n"
    "  dlpctl keywords new terms --type any --display-name \"Legal terms\" --dry-run privileged\n",
    "dlpctl-keywords-new/1",
};
constexpr SCommandHelp SET = {
    "set",
    "keywords set NAME --FIELD VALUE…",
    "change fields of a keyword list",
    "What is not given stays, and so do the keywords. The number of a type that the list is no longer of is emptied.\n",
    "  dlpctl keywords set card-words --type Threshold --threshold 2\n"
    "  dlpctl keywords set card-words --display-name \"Words beside cards\" --dry-run\n",
    "dlpctl-keywords-set/1",
};
constexpr SCommandHelp ADD = {
    "add",
    "keywords add NAME KEYWORD…",
    "add keywords to a list, or change them",
    "A new keyword has the score 1, matches in any case and has no description unless told otherwise. One that is "
    "there\n"
    "gets what is given and keeps the rest.\n",
    "  dlpctl keywords add card-words \"valid thru\" cvv\n"
    "  dlpctl keywords add card-words PAN --score 5 --case-sensitive true --dry-run\n",
    "dlpctl-keywords-add/1",
};
constexpr SCommandHelp REMOVE = {
    "remove",
    "keywords remove NAME KEYWORD…",
    "remove keywords from a list",
    "All of them or none: each must be there, spelled exactly.\n",
    "  dlpctl keywords remove card-words two\n"
    "  dlpctl keywords remove card-words one two --dry-run\n",
    "dlpctl-keywords-remove/1",
};
constexpr SCommandHelp IMPORT = {
    "import",
    "keywords import NAME FILE",
    "take keywords from a table in CSV or TSV",
    "The first line names the columns: keyword, and as wanted score, case_sensitive (true or false) and description.\n"
    "Keywords are added or changed as keywords add does; with --replace the list then holds those of the FILE alone.\n"
    "An apostrophe before what starts a formula, such as = + - @, is taken off.\n",
    "  dlpctl keywords export card-words | dlpctl keywords import contract-words -\n"
    "  printf 'keyword,score\\napollo,3\\n' | dlpctl keywords import contract-words - --replace\n",
    "dlpctl-keywords-import/1",
};
constexpr SCommandHelp EXPORT = {
    "export",
    "keywords export NAME [-o FILE]",
    "write the keywords of a list as a table in CSV or TSV",
    "An apostrophe is put before a keyword or description that a spreadsheet would run as a formula.\n",
    "  dlpctl keywords export card-words > words.csv\n"
    "  dlpctl keywords export card-words -o words.tsv\n",
    "dlpctl-keywords-export/1",
};

constexpr SRecordField FIELDS[] = {
    {"--display-name", "TEXT", AssetColumn::DISPLAY_NAME, "how people call it"},
    {"--description", "TEXT", AssetColumn::DESCRIPTION, "what it is there for"},
    {"--type", "All|Any|Threshold|Distance", KeywordColumn::CONDITION, "how many of its keywords are to be found"},
    {"--threshold", "N", KeywordColumn::THRESHOLD, "how many keywords, of type Threshold"},
    {"--distance", "N", KeywordColumn::NUMBER, "how far apart, of type Distance"},
};

constexpr const char NOTHING_GIVEN[] = "nothing is to be changed; dlpctl keywords set --help lists the fields";
constexpr const char BLANK[] = "the keyword is blank";
constexpr const char NEEDS_FILE[] = "--json needs -o FILE here: the table and the answer cannot share standard output";

struct SArguments {
    std::string strName;
    CRecordFields fields{FIELDS};
    std::vector<std::string> vecKeywords;
    SGivenOption description;
    SGivenOption score;
    SGivenOption caseSensitive;
    std::string strFile;
    std::string strFormat;
    bool bReplace = false;
    SEditOptions options;
};

const SKind& Kind() {
    return GetKind(ESettingsKind::KEYWORD);
}

CSettingsRow ReadList(CCommandContext& context, const std::string& strName) {
    const CStoreSession& store = context.GetStoreToRead();
    CSettingsTransaction unit(EUnitOfWork::READ);
    CSettingsRow row = ReadStored(Kind(), strName);
    store.ThrowIfFailed();
    unit.Commit();
    return row;
}

EVerdict Show(CCommandContext& context, const SArguments& arguments) {
    const CSettingsRow row = ReadList(context, arguments.strName);
    if (context.IsJson()) {
        const Json record = RecordToJson(row);
        context.WriteJson({{"format", SHOW.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"name", arguments.strName},
                           {"condition", record["condition"]},
                           {"threshold", record["threshold"]},
                           {"number", record["number"]},
                           {"keywords", record["keywords"]}});
    } else {
        context.Write(MakeKeywordTable(row, context.GetDataWidth()));
    }
    return EVerdict::DONE;
}

/** Changes a list by fnChange. */
template <class F>
EVerdict Change(CCommandContext& context, const SArguments& arguments, const char* pFormat, const F& fnChange) {
    CStoreEdit edit(context, pFormat, arguments.options);
    const CSettingsRow before = ReadOwn(Kind(), arguments.strName);
    CSettingsRow after = before;
    {
        CKeywordList list(before);
        fnChange(list);
        list.Store(after);
    }
    return FinishChange(context, edit, &before, std::move(after));
}

SKeywordEdit MakeEdit(const SArguments& arguments) {
    SKeywordEdit edit;
    if (arguments.description.IsGiven()) {
        edit.strDescription = arguments.description.strText;
    }
    if (arguments.score.IsGiven()) {
        edit.iScore = arguments.score.ToNumber();
    }
    if (arguments.caseSensitive.IsGiven()) {
        edit.bCaseSensitive = arguments.caseSensitive.ToFlag();
    }
    return edit;
}

void PutKeywords(const SArguments& arguments, CKeywordList& list) {
    SKeywordEdit edit = MakeEdit(arguments);
    for (const std::string& strKeyword : arguments.vecKeywords) {
        if (OS::Trim(std::string_view(strKeyword)).empty()) {
            throw CToolError(EVerdict::INVALID, BLANK);
        }
        edit.strKeyword = strKeyword;
        list.Put(edit);
    }
}

/** A list without the number that its type goes by would never be found, or always. */
void CheckNumbers(const SArguments& arguments, const CSettingsRow& row) {
    const std::string& strType = row.GetText(KeywordColumn::CONDITION);
    for (const SRecordField& field : FIELDS) {
        for (const DigitalAssets::SType& type : DigitalAssets::KEYWORD_FORMAT.aTypes) {
            const bool bNeeded = type.pName == strType &&
                                 std::any_of(type.aNumbers.begin(), type.aNumbers.end(),
                                             [&](const auto& number) { return number.iColumn == field.iColumn; });
            if (bNeeded && !arguments.fields.IsGiven(field.iColumn)) {
                throw CToolError(EVerdict::USAGE, std::string(field.pOption) + ": type " + Text::Quoted(strType) +
                                                      " of keyword lists needs it");
            }
        }
    }
}

EVerdict New(CCommandContext& context, const SArguments& arguments) {
    CSettingsRow row(ESettingsKind::KEYWORD);
    row.SetText(KeywordColumn::CONDITION, DigitalAssets::KEYWORD_FORMAT.aTypes.front().pName);
    row.SetText(AssetColumn::DISPLAY_NAME, arguments.strName);
    arguments.fields.Apply(row);
    CompleteAsset(DigitalAssets::KEYWORD_FORMAT, arguments.fields, row);
    CheckNumbers(arguments, row);
    CStoreEdit edit(context, NEW.pFormat, arguments.options, CStoreEdit::EStore::MADE);
    NameRecord(arguments.strName, row);
    CKeywordList list(row);
    PutKeywords(arguments, list);
    list.Store(row);
    return FinishChange(context, edit, nullptr, std::move(row));
}

EVerdict Set(CCommandContext& context, const SArguments& arguments) {
    if (!arguments.fields.IsAnyGiven()) {
        throw CToolError(EVerdict::USAGE, NOTHING_GIVEN);
    }
    CStoreEdit edit(context, SET.pFormat, arguments.options);
    const CSettingsRow before = ReadOwn(Kind(), arguments.strName);
    CSettingsRow after = before;
    arguments.fields.Apply(after);
    CompleteAsset(DigitalAssets::KEYWORD_FORMAT, arguments.fields, after);
    if (after.GetText(KeywordColumn::CONDITION) != before.GetText(KeywordColumn::CONDITION)) {
        CheckNumbers(arguments, after);
    }
    if (after != before) {
        CKeywordList(before).Write(after);
    }
    return FinishChange(context, edit, &before, std::move(after));
}

EVerdict Add(CCommandContext& context, const SArguments& arguments) {
    return Change(context, arguments, ADD.pFormat, [&](CKeywordList& list) { PutKeywords(arguments, list); });
}

[[noreturn]] void RefuseKeyword(const CKeywordList& list, const std::string& strList, const std::string& strKeyword) {
    const std::string strNearest = FindNearestName(strKeyword, list.GetTexts());
    throw CToolError(EVerdict::FINDINGS, Called(Kind(), strList) + " has no keyword " + Text::Quoted(strKeyword) +
                                             (strNearest.empty() ? "; dlpctl keywords show lists them"
                                                                 : "; did you mean " + Text::Quoted(strNearest) + '?'));
}

EVerdict Remove(CCommandContext& context, const SArguments& arguments) {
    return Change(context, arguments, REMOVE.pFormat, [&](CKeywordList& list) {
        for (const std::string& strKeyword : arguments.vecKeywords) {
            if (!list.Remove(strKeyword)) {
                RefuseKeyword(list, arguments.strName, strKeyword);
            }
        }
    });
}

EVerdict Import(CCommandContext& context, const SArguments& arguments) {
    const KeywordTable::SForm& form = KeywordTable::FindForm(arguments.strFormat, arguments.strFile);
    const KeywordTable::CReader table(arguments.strFile, ReadBytes(context, arguments.strFile), form);
    return Change(context, arguments, IMPORT.pFormat, [&](CKeywordList& list) {
        if (arguments.bReplace) {
            list.Clear();
            table.ForEach([&](const SKeywordEdit& edit) { list.Place(edit); });
        } else {
            table.ForEach([&](const SKeywordEdit& edit) { list.Put(edit); });
        }
    });
}

EVerdict Export(CCommandContext& context, const SArguments& arguments) {
    const KeywordTable::SForm& form = KeywordTable::FindForm(arguments.strFormat, arguments.strFile);
    if (context.IsJson() && COutput::IsStandard(context, arguments.strFile)) {
        throw CToolError(EVerdict::USAGE, NEEDS_FILE);
    }
    const std::vector<SKeyword> vecKeywords = ReadKeywords(ReadList(context, arguments.strName));
    COutput output(context, arguments.strFile);
    output.Write(KeywordTable::Write(vecKeywords, form));
    Json answer = {{"format", EXPORT.pFormat}};
    if (context.IsJson()) {
        context.StartJson(answer);
    }
    output.Commit();
    if (context.IsJson()) {
        answer["verdict"] = GetVerdictName(EVerdict::DONE);
        answer["name"] = arguments.strName;
        answer["output"] = arguments.strFile;
        answer["keywords"] = vecKeywords.size();
        context.WriteJson(answer);
    } else {
        context.Note("Exported: " + Text::Counted(vecKeywords.size(), "keyword", "keywords") + '.');
    }
    return EVerdict::DONE;
}

CLI::App& AddOne(CCommandLine& line, CLI::App& group, const SCommandHelp& help,
                 const std::shared_ptr<SArguments>& pArguments,
                 EVerdict (*fnRun)(CCommandContext&, const SArguments&)) {
    CLI::App& command = line.AddCommand(
        group, help, [pArguments, fnRun](CCommandContext& context) { return fnRun(context, *pArguments); });
    CCommandLine::AddText(command, "NAME", "NAME", pArguments->strName, "the list's internal name")->required();
    return command;
}

}  // namespace

void AddKeywordsCommands(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& group = line.AddGroup(GROUP, GROUP_SUMMARY);
    AddOne(line, group, SHOW, pArguments, Show);

    CLI::App& create = AddOne(line, group, NEW, pArguments, New);
    CCommandLine::AddTexts(create, "KEYWORD", "KEYWORD", pArguments->vecKeywords, "keywords");
    pArguments->fields.AddTo(create);
    AddEditOptions(create, pArguments->options);

    const auto pSet = std::make_shared<SArguments>();
    CLI::App& set = AddOne(line, group, SET, pSet, Set);
    pSet->fields.AddTo(set);
    AddEditOptions(set, pSet->options);

    CLI::App& add = AddOne(line, group, ADD, pArguments, Add);
    CCommandLine::AddTexts(add, "KEYWORD", "KEYWORD", pArguments->vecKeywords, "keywords")->required();
    AddGivenOption(add, "--score", "N", pArguments->score, "what the keyword counts");
    AddGivenOption(add, "--description", "TEXT", pArguments->description, "what it is there for");
    AddGivenOption(add, "--case-sensitive", "true|false", pArguments->caseSensitive,
                   "whether it matches in this case alone");
    AddEditOptions(add, pArguments->options);

    CLI::App& remove = AddOne(line, group, REMOVE, pArguments, Remove);
    CCommandLine::AddTexts(remove, "KEYWORD", "KEYWORD", pArguments->vecKeywords, "keywords")->required();
    AddEditOptions(remove, pArguments->options);

    CLI::App& import = AddOne(line, group, IMPORT, pArguments, Import);
    CCommandLine::AddText(import, "FILE", "FILE", pArguments->strFile, "the table")->required();
    CCommandLine::AddFlag(import, "--replace", pArguments->bReplace, "the list holds those of the FILE alone");
    CCommandLine::AddText(import, "--format", "csv|tsv", pArguments->strFormat, "otherwise as FILE is named")
        ->take_last();
    AddEditOptions(import, pArguments->options);

    CLI::App& exports = AddOne(line, group, EXPORT, pArguments, Export);
    CCommandLine::AddText(exports, "-o,--output", "FILE", pArguments->strFile,
                          "write to FILE, which is replaced whole or not at all");
    CCommandLine::AddText(exports, "--format", "csv|tsv", pArguments->strFormat, "otherwise as FILE is named")
        ->take_last();
}
