#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Text.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/Referrers.h"
#include "cli/edit/StoreEdit.h"
#include "platform/common/TextTools.h"
#include "xml/Vocabulary.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "rename",
    "rename template|expression|keyword OLD NEW",
    "give a record another internal name",
    "Templates that refer to it follow. The display name stays. A name that cannot stand in the text of a rule is\n"
    "refused, such as one that holds AND, OR or EXCEPT.\n",
    "  dlpctl rename expression card payment-card\n"
    "  dlpctl rename template card-data card-records --dry-run\n",
    "dlpctl-rename/1",
};

struct SArguments {
    std::string strKind;
    std::string strOld;
    std::string strNew;
    SEditOptions options;
};

/** The markup that a record keeps carries its name too. */
void RenameMarkup(CSettingsRow& row) {
    const std::string strName = row.GetText(NAME_COLUMN);
    if (row.GetKind() == ESettingsKind::KEYWORD) {
        row.SetText(KeywordColumn::TEXT, RenameElement(row.GetText(KeywordColumn::TEXT), TagUtf8::DICTIONARY, strName));
    } else if (row.GetKind() == ESettingsKind::TEMPLATE) {
        row.SetText(TemplateColumn::ELEMENT,
                    RenameElement(row.GetText(TemplateColumn::ELEMENT), TagUtf8::TEMPLATE, strName));
    }
}

void WarnOfBlanks(const SKind& kind, const std::string& strName, CStoreEdit& edit) {
    if (OS::Trim(std::string_view(strName)).size() != strName.size()) {
        const SCodeRow& row = GetCodeRow(ECode::BLANK_IN_NAME);
        edit.Warn(ExplainFault(Called(kind, strName), row,
                               FillSentence(row.pWhat, {TagUtf8::NAME, Text::Quoted(strName)}), row.pAdvice));
    }
}

void Replace(const CSettingsRow& before, const CSettingsRow& after) {
    CSettingsStore& settings = CSettingsStore::Current();
    settings.Remove(before.GetKind(), before.GetSubject());
    settings.Save(after);
}

EVerdict Rename(CCommandContext& context, const SArguments& arguments) {
    const SKind& kind = FindKind(arguments.strKind);
    CStoreEdit edit(context, HELP.pFormat, arguments.options);
    const CSettingsRow before = ReadOwn(kind, arguments.strOld);
    CSettingsRow after = before;
    NameRecord(arguments.strNew, after);
    WarnOfBlanks(kind, arguments.strNew, edit);
    RenameMarkup(after);
    Replace(before, after);
    std::string strText = "~ " + Called(kind, arguments.strOld) + " is now " + Text::Quoted(arguments.strNew) + '\n';
    Json followed = Json::array();
    for (CSettingsRow& row : FindReferrers(kind.eKind, arguments.strOld)) {
        RenameReferences(kind.eKind, arguments.strOld, arguments.strNew, row);
        CSettingsStore::Current().Save(row);
        followed.push_back(row.GetText(NAME_COLUMN));
        strText += "~   " + Called(GetKind(ESettingsKind::TEMPLATE), row.GetText(NAME_COLUMN)) + " follows\n";
    }
    return edit.Finish({{"kind", kind.pSingular},
                        {"name", arguments.strOld},
                        {"new_name", arguments.strNew},
                        {"followed", std::move(followed)}},
                       strText);
}

}  // namespace

void AddRenameCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pArguments](CCommandContext& context) { return Rename(context, *pArguments); });
    CCommandLine::AddText(command, "KIND", "KIND", pArguments->strKind, "what to rename")->required();
    CCommandLine::AddText(command, "OLD", "OLD", pArguments->strOld, "its internal name")->required();
    CCommandLine::AddText(command, "NEW", "NEW", pArguments->strNew, "the name it gets")->required();
    AddEditOptions(command, pArguments->options);
}
