#include "cli/edit/RecordChange.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/Kinds.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/compare/DiffReport.h"
#include "cli/edit/EditedRecord.h"
#include "cli/edit/StoreEdit.h"
#include "digital_assets/DigitalAssets.h"
#include "digital_assets/ExportObserver.h"
#include "platform/common/TextConversion.h"
#include "templates/DLPTemplateMgr.h"
#include "xml/CPolicyDocument.h"

namespace {

constexpr const char EXCEPT_WARNING[] = ": EXCEPT can be stored and exported, but no import takes it";

constexpr const char NOTHING[] = ": nothing to change\n";

/** Whoever edits rules writes their text, not the markup that the codes speak of. */
struct STextAdvice {
    ECode eCode;
    const char* pAdvice;
};
constexpr STextAdvice TEXT_ADVICE[] = {
    {ECode::MISSING_OPERATION, "write AND or OR before it"},
    {ECode::HITS_BELOW_ONE, "write (1) or more"},
    {ECode::MIXED_OPERATIONS, "they join from left to right: A OR B AND C asks for C, and for A or B"},
};

constexpr const char REFERS[] = "a rule refers to what cannot be exported: ";

/** Keeps why an export fails. */
class CExportFailure : public CExportObserver {
  public:
    void OnLeftOut(const std::string&, ELeftOut, const std::string& strDetail) override {
        m_strMessage = REFERS + strDetail;
    }
    void OnRecordFailed(const std::string&, const std::string& strMessage) override { m_strMessage = strMessage; }
    const std::string& GetMessage() const { return m_strMessage; }

  private:
    std::string m_strMessage;
};

std::string ExportRecord(const CSettingsRow& row, CExportObserver& observer) {
    const std::vector<OS::x_wstring> vecSubject = {OS::WideText(row.GetSubject())};
    std::string strDocument;
    switch (row.GetKind()) {
        case ESettingsKind::EXPRESSION:
            DigitalAssets::Export(vecSubject, {}, strDocument, &observer);
            break;
        case ESettingsKind::KEYWORD:
            DigitalAssets::Export({}, vecSubject, strDocument, &observer);
            break;
        case ESettingsKind::TEMPLATE:
            strDocument = CTemplateMgr(OS::x_wstring())
                              .ExportDocument({OS::WideText(row.GetText(NAME_COLUMN))}, &observer, nullptr, nullptr);
            break;
    }
    return strDocument;
}

/** The stored record as a document that holds nothing else but what it needs. @throws CToolError (INVALID, STORE) */
std::string MakeDocument(CCommandContext& context, const CSettingsRow& row) {
    CExportFailure failure;
    const std::string strDocument = ExportRecord(row, failure);
    context.GetStore().ThrowIfFailed();
    if (!failure.GetMessage().empty()) {
        throw CToolError(EVerdict::INVALID, Called(GetKind(row.GetKind()), row.GetText(NAME_COLUMN)) +
                                                " could not be exported: " + Text::Printable(failure.GetMessage()));
    }
    return strDocument;
}

/** @return whether the place lies in the assets that a template needs, which are none of its own */
bool IsOfAssets(const CXMLView& root, std::size_t iOffset) {
    const CXMLView assets = root.FirstChild(TagUtf8::DIGITAL_ASSETS);
    return assets && iOffset >= assets.Offset() && (!assets.NextSibling() || iOffset < assets.NextSibling().Offset());
}

std::vector<SDiagnostic> FindFaults(const std::string& strDocument) {
    constexpr void (*CHECKS[])(const SCheckedDocument&) = {CheckValues,   CheckLists, CheckNames,     CheckPatterns,
                                                           CheckKeywords, CheckRules, CheckReferences};
    const SCheckChoice choice;
    CDiagnostics diagnostics(choice);
    CPolicyDocument document(strDocument);
    const CXMLView root = document.Load().RootView();
    const bool bAssetsOnly = !root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES);
    const SCheckedDocument checked{strDocument, root, false, bAssetsOnly, diagnostics};
    for (const auto fnCheck : CHECKS) {
        fnCheck(checked);
    }
    std::vector<SDiagnostic> vecFaults;
    for (const SDiagnostic& fault : diagnostics.Finish(strDocument)) {
        if (bAssetsOnly || !IsOfAssets(root, fault.iOffset)) {
            vecFaults.push_back(fault);
        }
    }
    return vecFaults;
}

std::string Explain(const std::string& strCalled, const SDiagnostic& fault) {
    const auto* pAdvice = std::find_if(std::begin(TEXT_ADVICE), std::end(TEXT_ADVICE),
                                       [&](const STextAdvice& advice) { return advice.eCode == fault.eCode; });
    return ExplainFault(strCalled, GetCodeRow(fault.eCode), fault.strMessage,
                        pAdvice == std::end(TEXT_ADVICE) ? fault.strAdvice : pAdvice->pAdvice);
}

void CheckRecord(CCommandContext& context, CStoreEdit& edit, const CSettingsRow& row) {
    const std::string strCalled = Called(GetKind(row.GetKind()), row.GetText(NAME_COLUMN));
    for (const SDiagnostic& fault : FindFaults(MakeDocument(context, row))) {
        if (fault.eCode == ECode::OPERATION) {
            edit.Warn(strCalled + EXCEPT_WARNING);
        } else if (fault.eSeverity == ESeverity::ERROR) {
            throw CToolError(EVerdict::INVALID, Explain(strCalled, fault));
        } else {
            edit.Warn(Explain(strCalled, fault));
        }
    }
}

void SetScope(const CCommandContext& context, CSettingsRow& row) {
    const std::string strScope = OS::Utf8Lenient(context.GetScope());
    const std::size_t iColumn =
        row.GetKind() == ESettingsKind::TEMPLATE ? std::size_t{TemplateColumn::SCOPE} : std::size_t{AssetColumn::SCOPE};
    if (!strScope.empty()) {
        row.SetText(iColumn, strScope);
    }
}

}  // namespace

EVerdict FinishChange(CCommandContext& context, CStoreEdit& edit, const CSettingsRow* pBefore, CSettingsRow after) {
    SetScope(context, after);
    const bool bChanged = pBefore == nullptr || *pBefore != after;
    if (bChanged) {
        CSettingsStore::Current().Save(after);
    }
    CheckRecord(context, edit, after);
    const SItemChange change = CompareItem(after.GetText(NAME_COLUMN), pBefore, &after);
    if (context.IsJson()) {
        return edit.Finish({{"change", MakeChangeJson(change)}}, {});
    }
    return edit.Finish({}, bChanged ? MakeChangeText(change, context.ColoursData())
                                    : Called(GetKind(after.GetKind()), after.GetText(NAME_COLUMN)) + NOTHING);
}
