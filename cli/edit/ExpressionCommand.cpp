#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/RecordJson.h"
#include "cli/RecordText.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/edit/AssetFields.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/RecordChange.h"
#include "cli/edit/RecordFields.h"
#include "cli/edit/StoreEdit.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextConversion.h"

namespace {

constexpr const char GROUP[] = "expression";
constexpr const char GROUP_SUMMARY[] = "look at, make and change one expression";

constexpr SCommandHelp SHOW = {
    "show",
    "expression show NAME",
    "show an expression with all its fields",
    "NAME is its internal name.\n",
    "  dlpctl expression show card\n"
    "  dlpctl --json expression show card\n",
    "dlpctl-expression-show/1",
};
constexpr SCommandHelp NEW = {
    "new",
    "expression new NAME --pattern REGEX",
    "make an expression",
    "It is of type Generic, and its display name is NAME, unless told otherwise. The lengths belong to the types\n"
    "\"Type 1\" and \"Type 2\", the suffix length to \"Type 2\", the radii to \"Type 3\".\n",
    "  dlpctl expression new account --pattern '[A-Z]{2}[0-9]{2}[A-Z0-9]{11,30}'\n"
    "  dlpctl expression new ticket --type \"Type 1\" --min-length 3 --max-length 9 --pattern 'T[0-9]+'\n"
    "  printf 'T[0-9]+' | dlpctl expression new ticket --pattern-from - --dry-run\n",
    "dlpctl-expression-new/1",
};
constexpr SCommandHelp SET = {
    "set",
    "expression set NAME --FIELD VALUE…",
    "change fields of an expression",
    "What is not given stays. What another type does not use is emptied with the type.\n",
    "  dlpctl expression set card --description \"payment cards\" --case-sensitive false\n"
    "  dlpctl expression set card --pattern '[0-9]{13,19}' --dry-run\n",
    "dlpctl-expression-set/1",
};

constexpr SRecordField FIELDS[] = {
    {"--pattern", "REGEX", ExpressionColumn::PATTERN, "the regular expression"},
    {"--display-name", "TEXT", AssetColumn::DISPLAY_NAME, "how people call it"},
    {"--description", "TEXT", AssetColumn::DESCRIPTION, "what it is there for"},
    {"--type", "Generic|Type 1|Type 2|Type 3", ExpressionColumn::TYPE, "which of the lengths and radii it uses"},
    {"--validator", "NAME", ExpressionColumn::VALIDATOR, "what matches are tried with; dlpctl metadata lists them"},
    {"--case-sensitive", "true|false", ExpressionColumn::CASE_SENSITIVE, "whether the case of letters matters"},
    {"--min-length", "N", ExpressionColumn::MIN_LENGTH, "least length of a match"},
    {"--max-length", "N", ExpressionColumn::MAX_LENGTH, "greatest length of a match"},
    {"--suffix-length", "N", ExpressionColumn::SUFFIX_LENGTH, "length of the suffix"},
    {"--min-left-radius", "N", ExpressionColumn::MIN_LEFT_RADIUS, "least radius to the left"},
    {"--max-left-radius", "N", ExpressionColumn::MAX_LEFT_RADIUS, "greatest radius to the left"},
    {"--max-right-radius", "N", ExpressionColumn::MAX_RIGHT_RADIUS, "greatest radius to the right"},
    {"--alphabet-charset", "TEXT", ExpressionColumn::ALPHABET_CHARSET, "characters; not of type Generic"},
    {"--display-format", "TEXT", ExpressionColumn::DISPLAY_FORMAT, "the pattern as people are shown it"},
    {"--example", "TEXT", ExpressionColumn::EXAMPLE, "what it finds"},
};

constexpr const char NO_PATTERN[] = "there is no pattern; write --pattern or --pattern-from";
constexpr const char TWO_PATTERNS[] = "write either --pattern or --pattern-from, not both";
constexpr const char NOTHING_GIVEN[] = "nothing is to be changed; dlpctl expression set --help lists the fields";
constexpr const char NOT_UTF8[] = "not UTF-8: save the file in that encoding";
constexpr const char ZERO[] = "a pattern cannot hold U+0000";

struct SArguments {
    std::string strName;
    CRecordFields fields{FIELDS};
    std::string strPatternFile;
    SEditOptions options;
};

const SKind& Kind() {
    return GetKind(ESettingsKind::EXPRESSION);
}

EVerdict Show(CCommandContext& context, const SArguments& arguments) {
    const CStoreSession& store = context.GetStoreToRead();
    CSettingsTransaction unit(EUnitOfWork::READ);
    const CSettingsRow row = ReadStored(Kind(), arguments.strName);
    store.ThrowIfFailed();
    unit.Commit();
    if (context.IsJson()) {
        context.WriteJson(
            {{"format", SHOW.pFormat}, {"verdict", GetVerdictName(EVerdict::DONE)}, {"expression", RecordToJson(row)}});
    } else {
        context.Write(MakeFieldTable(row, context.GetDataWidth()));
    }
    return EVerdict::DONE;
}

/** A file ends its last line, which is no part of the pattern. */
std::string ReadPattern(CCommandContext& context, const std::string& strFile) {
    std::string strPattern = ReadBytes(context, strFile);
    const std::size_t iInvalid = OS::FindInvalidUtf8(strPattern);
    if (iInvalid != std::string::npos) {
        throw CInputError(strFile, NOT_UTF8, CSourcePlaces(strPattern).Find(iInvalid));
    }
    if (const std::size_t iZero = strPattern.find('\0'); iZero != std::string::npos) {
        throw CInputError(strFile, ZERO, CSourcePlaces(strPattern).Find(iZero));
    }
    for (const char cEnd : {'\n', '\r'}) {
        if (!strPattern.empty() && strPattern.back() == cEnd) {
            strPattern.pop_back();
        }
    }
    return strPattern;
}

/** @return whether a pattern is given */
bool Apply(CCommandContext& context, const SArguments& arguments, CSettingsRow& row) {
    const bool bFile = !arguments.strPatternFile.empty();
    const bool bOption = arguments.fields.IsGiven(ExpressionColumn::PATTERN);
    if (bFile && bOption) {
        throw CToolError(EVerdict::USAGE, TWO_PATTERNS);
    }
    arguments.fields.Apply(row);
    if (bFile) {
        row.SetText(ExpressionColumn::PATTERN, ReadPattern(context, arguments.strPatternFile));
    }
    return bFile || bOption;
}

EVerdict New(CCommandContext& context, const SArguments& arguments) {
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(ExpressionColumn::TYPE, DigitalAssets::EXPRESSION_FORMAT.aTypes.front().pName);
    row.SetText(AssetColumn::DISPLAY_NAME, arguments.strName);
    if (!Apply(context, arguments, row)) {
        throw CToolError(EVerdict::USAGE, NO_PATTERN);
    }
    CompleteAsset(DigitalAssets::EXPRESSION_FORMAT, arguments.fields, row);
    CStoreEdit edit(context, NEW.pFormat, arguments.options, CStoreEdit::EStore::MADE);
    NameRecord(arguments.strName, row);
    return FinishChange(context, edit, nullptr, std::move(row));
}

EVerdict Set(CCommandContext& context, const SArguments& arguments) {
    if (!arguments.fields.IsAnyGiven() && arguments.strPatternFile.empty()) {
        throw CToolError(EVerdict::USAGE, NOTHING_GIVEN);
    }
    CStoreEdit edit(context, SET.pFormat, arguments.options);
    const CSettingsRow before = ReadOwn(Kind(), arguments.strName);
    CSettingsRow after = before;
    Apply(context, arguments, after);
    CompleteAsset(DigitalAssets::EXPRESSION_FORMAT, arguments.fields, after);
    return FinishChange(context, edit, &before, std::move(after));
}

CLI::App& AddOne(CCommandLine& line, CLI::App& group, const SCommandHelp& help,
                 const std::shared_ptr<SArguments>& pArguments,
                 EVerdict (*fnRun)(CCommandContext&, const SArguments&)) {
    CLI::App& command = line.AddCommand(
        group, help, [pArguments, fnRun](CCommandContext& context) { return fnRun(context, *pArguments); });
    CCommandLine::AddText(command, "NAME", "NAME", pArguments->strName, "its internal name")->required();
    return command;
}

void AddWithFields(CCommandLine& line, CLI::App& group, const SCommandHelp& help,
                   EVerdict (*fnRun)(CCommandContext&, const SArguments&)) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = AddOne(line, group, help, pArguments, fnRun);
    pArguments->fields.AddTo(command);
    CCommandLine::AddText(command, "--pattern-from", "FILE", pArguments->strPatternFile,
                          "take the pattern from a file; - is standard input")
        ->take_last();
    AddEditOptions(command, pArguments->options);
}

}  // namespace

void AddExpressionCommands(CCommandLine& line) {
    CLI::App& group = line.AddGroup(GROUP, GROUP_SUMMARY);
    AddOne(line, group, SHOW, std::make_shared<SArguments>(), Show);
    AddWithFields(line, group, NEW, New);
    AddWithFields(line, group, SET, Set);
}
