#include "cli/edit/EditedRecord.h"

#include <utility>

#include "cli/RuleName.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "cli/edit/Referrers.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLWriter.h"
#include "xml/Vocabulary.h"

namespace {

constexpr std::size_t SUBJECT_COLUMN = AssetColumn::SUBJECT;
static_assert(SUBJECT_COLUMN == TemplateColumn::SUBJECT);
constexpr std::size_t PRE_DEFINED_COLUMN = AssetColumn::PRE_DEFINED;
static_assert(PRE_DEFINED_COLUMN == TemplateColumn::PRE_DEFINED);

/** A name that XML cannot carry could never be exported. */
void CheckCharacters(const std::string& strName) {
    try {
        std::string strEscaped;
        AppendEscaped(strEscaped, strName, true);
    } catch (const OS::CException& error) {
        throw CToolError(EVerdict::INVALID,
                         "the name " + Text::Quoted(strName) + " cannot be written: " + Text::Printable(error.what()));
    }
}

void CheckRuleName(const SKind& kind, const std::string& strName) {
    const std::string strWhy =
        kind.eKind == ESettingsKind::TEMPLATE ? std::string() : ExplainRuleName(GetElementType(kind.eKind), strName);
    if (!strWhy.empty()) {
        throw CToolError(EVerdict::INVALID, strWhy);
    }
}

}  // namespace

std::string Called(const SKind& kind, const std::string& strName) {
    return std::string(kind.pWord) + ' ' + Text::Quoted(strName);
}

std::string ExplainFault(const std::string& strCalled, const SCodeRow& row, const std::string& strWhat,
                         const std::string& strAdvice) {
    return strCalled + ": " + row.pCode + ' ' + row.pName + ": " + strWhat + "; " + strAdvice;
}

bool IsBuiltIn(const CSettingsRow& row) {
    return row.GetFlag(PRE_DEFINED_COLUMN);
}

CSettingsRow ReadOwn(const SKind& kind, const std::string& strName) {
    CSettingsRow row = ReadStored(kind, strName);
    if (IsBuiltIn(row)) {
        throw CToolError(EVerdict::FINDINGS, Called(kind, strName) + " is built in; only an import changes it");
    }
    return row;
}

void NameRecord(const std::string& strName, CSettingsRow& row) {
    const SKind& kind = GetKind(row.GetKind());
    CheckCharacters(strName);
    CheckRuleName(kind, strName);
    std::string strSubject = OS::Utf8Lenient(kind.pSubject) + strName;
    CSettingsStore& settings = CSettingsStore::Current();
    if (settings.FindOne(kind.eKind, NAME_COLUMN, strName) != nullptr ||
        settings.FindOne(kind.eKind, SUBJECT_COLUMN, strSubject) != nullptr) {
        throw CToolError(EVerdict::FINDINGS, Called(kind, strName) + " is stored already");
    }
    row.SetText(SUBJECT_COLUMN, std::move(strSubject));
    row.SetText(NAME_COLUMN, strName);
}
