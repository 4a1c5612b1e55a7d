#include "cli/check/ItemDiagnostics.h"

#include <optional>
#include <string>
#include <vector>

#include "cli/ImportReport.h"
#include "cli/Text.h"
#include "cli/check/MeantName.h"
#include "cli/check/SourceMarkup.h"
#include "templates/TemplateReport.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char REMOVE[] = "take it out of the template";

/** How an item's reason is told; kind and name are filled in first where the sentence has room for them. */
struct STold {
    EReason eReason;
    ECode eCode;
    bool bKind;
    bool bName;
    bool bDetail;
};

constexpr STold TOLD[] = {
    {EReason::NO_NAME, ECode::NO_NAME, true, false, false},
    {EReason::NO_DISPLAY_NAME, ECode::NO_DISPLAY_NAME, true, true, false},
    {EReason::BUILT_IN, ECode::BUILT_IN, true, true, false},
    {EReason::EXISTING, ECode::ALREADY_STORED, true, true, false},
    {EReason::MISSING_CHILD, ECode::MISSING_CHILD, true, true, true},
    {EReason::OLDER_BUILT_IN, ECode::OLDER_BUILT_IN, false, true, false},
    {EReason::OLDER_SECTION, ECode::OLDER_SECTION, false, true, false},
    {EReason::UNKNOWN_TEMPLATE, ECode::UNKNOWN_TEMPLATE, false, true, true},
    {EReason::UNKNOWN_ELEMENT, ECode::LOST_ELEMENT, false, true, true},
};

/** In the order of ETemplateFault. */
constexpr ECode FAULTS[] = {ECode::UNKNOWN_ASSET, ECode::UNKNOWN_ASSET, ECode::SOURCE_TYPE, ECode::OPERATION,
                            ECode::OPERATION};

/** Of one that is counted already. */
void TellForeign(const SForeignChild& foreign, CDiagnostics& diagnostics) {
    const std::string strNearest =
        CMeantNames().FindElement(foreign.bRule ? TagUtf8::TEMPLATE : TagUtf8::MATCH_RULE, foreign.strElement);
    diagnostics.Tell(ECode::FOREIGN_RULE, foreign.iOffset, {Text::Quoted(foreign.strElement), DescribeForeign(foreign)},
                     {strNearest.empty() ? REMOVE : "did you mean " + Text::Quoted(strNearest) + '?'});
}

}  // namespace

bool TellItem(const SReportItem& item, std::string_view strText, CDiagnostics& diagnostics) {
    for (const STold& told : TOLD) {
        if (told.eReason != item.eReason) {
            continue;
        }
        std::vector<std::string> vecWhat;
        if (told.bKind) {
            vecWhat.emplace_back(GetItemWord(item.eKind));
        }
        if (told.bName) {
            vecWhat.push_back(Text::Quoted(item.strName));
        }
        if (told.bDetail) {
            vecWhat.push_back(Text::Quoted(item.Details().strDetail));
        }
        if (item.eReason == EReason::NO_DISPLAY_NAME) {
            vecWhat.emplace_back(item.GetDisplayNameAttribute());
        }
        const bool bText = item.eReason == EReason::UNKNOWN_TEMPLATE;
        SDiagnostic* pDiagnostic =
            diagnostics.Add(told.eCode, bText ? FindTextOffset(strText, item.iOffset, 0) : item.iOffset, vecWhat,
                            {bText ? AdviseTemplate(item.Details().strNearest)
                                   : AdviseElement(item.Details().strDetail, item.strName, item.Details().strNearest)});
        if (pDiagnostic != nullptr && item.FollowsFromVersion()) {
            diagnostics.Spell(*pDiagnostic).strAdvice = AdviseVersion();
        }
    }
    return item.eReason != EReason::UNSUPPORTED_ASSETS;
}

void TellForeign(const CXMLView& element, CDiagnostics& diagnostics) {
    TemplateReport::ForEachForeignChild(element, [&](const CXMLView& child, bool bRule) {
        if (diagnostics.Count(ECode::FOREIGN_RULE, child.Offset())) {
            TellForeign(TemplateReport::ReadForeignChild(child, bRule), diagnostics);
        }
    });
}

void TellForeign(const SReportItem& item, CDiagnostics& diagnostics) {
    for (const SForeignChild& foreign : item.Details().vecForeign) {
        if (diagnostics.Count(ECode::FOREIGN_RULE, foreign.iOffset)) {
            TellForeign(foreign, diagnostics);
        }
    }
    diagnostics.Omit(ECode::FOREIGN_RULE, item.Details().iUntoldForeign);
    for (const SUnknownReference& reference : item.Details().vecUnknown) {
        diagnostics.Add(ECode::UNKNOWN_ASSET, reference.iOffset,
                        {GetItemWord(reference.eKind), Text::Quoted(reference.strName)},
                        {AdviseReference(reference.strNearest)});
    }
}

void TellFault(const SReportItem& item, CDiagnostics& diagnostics) {
    const ECode eCode = FAULTS[static_cast<std::size_t>(*item.Details().fault)];
    if (item.IsUnknownReference()) {
        const EItemKind eKind =
            item.Details().fault == ETemplateFault::UNKNOWN_EXPRESSION ? EItemKind::EXPRESSION : EItemKind::KEYWORD;
        diagnostics.Add(eCode, item.iOffset,
                        {GetItemWord(eKind), QuoteReference(item.Details().strFaulty, item.Details().strWritten)},
                        {AdviseReference(item.Details().strNearest)});
    } else {
        diagnostics.Add(eCode, item.iOffset, {Text::Quoted(item.Details().strFaulty)});
    }
}
