#include "cli/ImportReport.h"

#include <algorithm>
#include <array>
#include <functional>

#include <nlohmann/json.hpp>

#include "cli/InputFile.h"
#include "cli/JsonText.h"
#include "cli/Text.h"
#include "cli/check/MeantName.h"
#include "platform/store/StoreError.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char NOTHING_WRITTEN[] = "; nothing was written";

using Json = nlohmann::ordered_json;

struct SItemKind {
    const char* pCode;
    const char* pWord;
    const char* pWords;
};

constexpr SItemKind ITEM_KINDS[] = {
    {"expression", "expression", "expressions"}, {"keyword", "keyword list", "keyword lists"},
    {"template", "template", "templates"},       {"category", "category entry", "category entries"},
    {"section", "section", "sections"},          {"element", "element", "unknown elements"},
};
constexpr std::size_t KIND_COUNT = std::size(ITEM_KINDS);

constexpr const char* DISPOSITIONS[] = {"created", "updated", "unchanged", "skipped", "failed"};
constexpr std::size_t DISPOSITION_COUNT = std::size(DISPOSITIONS);

struct SReason {
    const char* pCode;
    const char* pWhy;  ///< the detail follows; of a category entry what it names
    const char* pAdvice;
};

constexpr SReason REASONS[] = {
    {"", "", ""},
    {"no-name", "it has no name", "give it one"},
    {"no-display-name", "it has no ", "give it one"},
    {"built-in", "the stored one is built in and this one is not",
     "give it another name, or set pre-defined=\"true\" to replace the built-in one"},
    {"existing", "an item of this name is stored already", "import without --skip-existing to replace it"},
    {"missing-child", "a child element is missing: ", "add it"},
    {"unsupported-assets", "a rule cannot be imported: ", "correct it"},
    {"older-built-in", "built-in templates of the older layout are not taken",
     "set builtin=\"0\" to import it as one of your own"},
    {"older-section", "this section of the older layout is not taken",
     "move it into a document of the present layout, whose root has a template_version"},
    {"unknown-template", "no template of the document has this name: ", ""},
    {"store", "the store could not write it", "nothing of the file was kept"},
    {"unknown-element", "no policy has it in ", ""},
    {"undone", "nothing of the file was kept", "import it again once the rest is right"},
};

struct SFault {
    const char* pCode;
    EItemKind eKind;      ///< of an unknown asset
    const char* pAdvice;  ///< of any other
};

/** In the order of ETemplateFault. */
constexpr SFault FAULTS[] = {
    {"unknown-expression", EItemKind::EXPRESSION, ""},
    {"unknown-keyword", EItemKind::KEYWORD, ""},
    {"source-type", EItemKind::TEMPLATE, "write sourceType=\"ENTITY\" or sourceType=\"KEYWORD\""},
    {"block-operation", EItemKind::TEMPLATE, "write AND or OR"},
    {"rule-operation", EItemKind::TEMPLATE, "write AND or OR"},
};

constexpr const char RULE[] = "rule";
constexpr const char BLOCK[] = "building block";

constexpr const char DRY_RUN[] = "nothing was kept: this was a dry run\n";

const SItemKind& Row(EItemKind eKind) {
    return ITEM_KINDS[static_cast<std::size_t>(eKind)];
}
const SFault& Row(ETemplateFault eFault) {
    return FAULTS[static_cast<std::size_t>(eFault)];
}
const SReason& Row(EReason eReason) {
    return REASONS[static_cast<std::size_t>(eReason)];
}
const char* Code(EDisposition eDisposition) {
    return DISPOSITIONS[static_cast<std::size_t>(eDisposition)];
}

Json LineOrNull(SPlace place) {
    return place.iLine == 0 ? Json() : Json(place.iLine);
}
Json ColumnOrNull(SPlace place) {
    return place.iLine == 0 ? Json() : Json(place.iColumn);
}

std::string MakeTable(const SImportReport& report, std::size_t iWidth) {
    std::array<std::array<std::size_t, DISPOSITION_COUNT>, KIND_COUNT> aCounts{};
    for (const SReportItem& item : report.vecItems) {
        ++aCounts[static_cast<std::size_t>(item.eKind)][static_cast<std::size_t>(item.eDisposition)];
    }
    aCounts[static_cast<std::size_t>(EItemKind::ELEMENT)][static_cast<std::size_t>(EDisposition::SKIPPED)] +=
        report.iUntold;
    CTextTable table({"", "CREATED", "UPDATED", "UNCHANGED", "SKIPPED", "FAILED"});
    table.AlignRight(1);
    for (std::size_t i = 0; i < KIND_COUNT; ++i) {
        const bool bAny = std::any_of(aCounts[i].begin(), aCounts[i].end(), [](std::size_t n) { return n != 0; });
        if (bAny) {
            std::vector<std::string> vecCells{ITEM_KINDS[i].pWords};
            std::transform(aCounts[i].begin(), aCounts[i].end(), std::back_inserter(vecCells),
                           [](std::size_t n) { return std::to_string(n); });
            table.Add(vecCells);
        }
    }
    return table.ToString(iWidth);
}

std::string NameOf(const SReportItem& item) {
    return std::string(Row(item.eKind).pWord) + ' ' + Text::Quoted(item.strName);
}

std::string MakeMissing(const SImportReport& report) {
    std::string strLines;
    for (const SMissingName& missing : report.vecMissing) {
        strLines += Text::Printable(report.strFile) + ": no item has the name " + Text::Quoted(missing.strName) +
                    (missing.strNearest.empty() ? "\n" : "; did you mean " + Text::Quoted(missing.strNearest) + "?\n");
    }
    return strLines;
}

std::string MakePassedOver(const SImportReport& report) {
    std::string strLines;
    if (report.iNotChosen != 0) {
        strLines += Text::Counted(report.iNotChosen, "item", "items") + " not chosen\n";
    }
    if (report.iTemplatesLeft != 0) {
        strLines +=
            Text::Counted(report.iTemplatesLeft, "template", "templates") + " passed over; dlpctl import takes them\n";
    }
    return strLines;
}

Json TextOrNull(const std::string& strText) {
    return strText.empty() ? Json() : Json(strText);
}

Json MakeForeignJson(const SReportItem& item) {
    Json children = Json::array();
    for (std::size_t i = 0; i < item.Details().vecForeign.size(); ++i) {
        const SForeignChild& foreign = item.Details().vecForeign[i];
        const SPlace place = i < item.Details().vecForeignPlaces.size() ? item.Details().vecForeignPlaces[i] : SPlace();
        children.push_back({{"element", foreign.strElement},
                            {"read_as", foreign.bRule ? RULE : BLOCK},
                            {"text", foreign.strReadAs},
                            {"line", LineOrNull(place)},
                            {"column", ColumnOrNull(place)}});
    }
    return children;
}

std::string AdviseItem(const SReportItem& item) {
    if (item.FollowsFromVersion()) {
        return AdviseVersion();
    }
    return item.Details().fault ? Row(*item.Details().fault).pAdvice : Row(item.eReason).pAdvice;
}

/** Beside whose fate it is: what of a rule is to blame, and what else there is to say of a template. */
Json MakeWholeItemJson(const SReportItem& item) {
    Json object = MakeItemJson(item);
    object["cause"] = item.Details().fault ? Json(Row(*item.Details().fault).pCode) : Json();
    object["reference"] = Json();
    if (item.IsUnknownReference()) {
        object["reference"] = {{"kind", Row(Row(*item.Details().fault).eKind).pCode},
                               {"name", item.Details().strFaulty},
                               {"nearest", TextOrNull(item.Details().strNearest)},
                               {"older_name", TextOrNull(item.Details().strWritten)}};
    }
    object["foreign_children"] = MakeForeignJson(item);
    if (item.Details().iUntoldForeign > 0) {
        object["untold_foreign_children"] = item.Details().iUntoldForeign;
    }
    Json& unknown = object["unknown_references"] = Json::array();
    for (const SUnknownReference& reference : item.Details().vecUnknown) {
        unknown.push_back({{"kind", Row(reference.eKind).pCode},
                           {"name", reference.strName},
                           {"nearest", TextOrNull(reference.strNearest)},
                           {"line", LineOrNull(reference.place)},
                           {"column", ColumnOrNull(reference.place)}});
    }
    return object;
}

}  // namespace

SReportItem::SReportItem(const SImportItem& item)
    : eKind(item.eKind),
      eDisposition(item.eDisposition),
      eReason(item.eReason),
      strName(item.strName),
      strDisplayName(item.strDisplayName),
      iOffset(item.iOffset) {
    if (!item.strDetail.empty() || item.fault || !item.vecForeign.empty()) {
        m_pDetails.reset(new SItemDetails{
            item.strDetail, item.fault, item.strFaulty, {}, {}, item.vecForeign, item.iUntoldForeign, {}, {}});
    }
}

const SItemDetails& SReportItem::Details() const {
    static const SItemDetails s_nothing;
    return m_pDetails == nullptr ? s_nothing : *m_pDetails;
}

SItemDetails& SReportItem::EditDetails() {
    if (m_pDetails == nullptr) {
        m_pDetails = std::make_unique<SItemDetails>();
    }
    return *m_pDetails;
}

bool SReportItem::IsUnknownReference() const {
    return Details().fault == ETemplateFault::UNKNOWN_EXPRESSION || Details().fault == ETemplateFault::UNKNOWN_KEYWORD;
}

const char* SReportItem::GetDisplayNameAttribute() const {
    return older ? CDLPXmlNormalizer::OLDER_DISPLAY_NAME : TagUtf8::DISPLAY_NAME;
}

bool SImportReport::HasFindings() const {
    return !vecMissing.empty() || std::any_of(vecItems.begin(), vecItems.end(), std::mem_fn(&SReportItem::IsFinding));
}

std::size_t SImportReport::CountRefused() const {
    return vecMissing.size() + iUntold +
           static_cast<std::size_t>(
               std::count_if(vecItems.begin(), vecItems.end(), std::mem_fn(&SReportItem::IsRefused)));
}

void SortByPlace(ReportItems& vecItems) {
    const auto fnBefore = [](const SReportItem& left, const SReportItem& right) {
        return left.iOffset < right.iOffset;  // what has no place comes last
    };
    if (!std::is_sorted(vecItems.begin(), vecItems.end(), fnBefore)) {
        std::stable_sort(vecItems.begin(), vecItems.end(), fnBefore);
    }
}

void SImportReport::Undo(EVerdict eWhy, const std::string& strWhy) {
    eVerdict = eWhy;
    strReason = strWhy;
    vecImported.clear();
    for (SReportItem& item : vecItems) {
        if (item.IsTaken()) {
            item.eDisposition = EDisposition::SKIPPED;
            item.eReason = EReason::UNDONE;
        }
    }
}

Json MakeItemJson(const SReportItem& item) {
    return {{"kind", Row(item.eKind).pCode},       {"name", item.strName},
            {"display_name", item.strDisplayName}, {"disposition", Code(item.eDisposition)},
            {"reason", Row(item.eReason).pCode},   {"line", LineOrNull(item.place)},
            {"column", ColumnOrNull(item.place)},  {"detail", item.Details().strDetail}};
}

Json MakeReportHead(const SImportReport& report) {
    return {{"format", report.pFormat}, {"file", report.strFile}};
}

namespace {

/** What stands before the items. */
Json MakeReportFront(const SImportReport& report) {
    Json object = MakeReportHead(report);
    object["verdict"] = GetVerdictName(report.eVerdict);
    object["result"] = report.iResult ? Json(*report.iResult) : Json();
    object["imported"] = report.vecImported;
    object["skipped"] = report.vecSkipped;
    object["skipped_assets"] = report.vecSkippedAssets;
    return object;
}

/** What stands behind them. */
Json MakeReportBack(const SImportReport& report) {
    Json object = {{"dry_run", report.bDryRun}, {"passed_over", report.iNotChosen + report.iTemplatesLeft}};
    Json& missing = object["not_found"] = Json::array();
    for (const SMissingName& name : report.vecMissing) {
        missing.push_back({{"name", name.strName}, {"nearest", TextOrNull(name.strNearest)}});
    }
    if (report.iUntold > 0) {
        object["untold"] = report.iUntold;
    }
    if (!report.strReason.empty()) {
        object["message"] = report.strReason;
        object["line"] = LineOrNull(report.place);
        object["column"] = ColumnOrNull(report.place);
        object["related"] = Json();
        if (report.related) {
            object["related"] = {{"message", report.related->strMessage},
                                 {"line", LineOrNull(report.related->place)},
                                 {"column", ColumnOrNull(report.related->place)}};
        }
    }
    return object;
}

}  // namespace

Json MakeReportJson(const SImportReport& report) {
    Json object = MakeReportFront(report);
    Json& items = object["items"] = Json::array();
    for (const SReportItem& item : report.vecItems) {
        items.push_back(MakeWholeItemJson(item));
    }
    object.update(MakeReportBack(report));
    return object;
}

void WriteReportJson(const SImportReport& report, const std::function<void(std::string_view strPiece)>& fnTake) {
    std::string strFront = ToJsonText(MakeReportFront(report));
    strFront.pop_back();
    fnTake(strFront + ",\"items\":[");
    bool bFirst = true;
    for (const SReportItem& item : report.vecItems) {
        fnTake((bFirst ? "" : ",") + ToJsonText(MakeWholeItemJson(item)));
        bFirst = false;
    }
    fnTake("]," + ToJsonText(MakeReportBack(report)).substr(1) + '\n');
}

std::string ExplainItem(const SReportItem& item) {
    const SReason& reason = Row(item.eReason);
    if (item.eReason == EReason::UNKNOWN_ELEMENT) {
        return reason.pWhy + Text::Printable(item.Details().strDetail) + "; " +
               AdviseElement(item.Details().strDetail, item.strName, item.Details().strNearest);
    }
    if (item.eReason == EReason::UNKNOWN_TEMPLATE) {  // blanks may be what is wrong with its name
        return reason.pWhy + Text::Quoted(item.Details().strDetail) + "; " + AdviseTemplate(item.Details().strNearest);
    }
    if (item.eReason == EReason::NO_DISPLAY_NAME) {
        return std::string(reason.pWhy) + item.GetDisplayNameAttribute() + "; " + AdviseItem(item);
    }
    if (!item.IsUnknownReference()) {
        return reason.pWhy + Text::Printable(item.Details().strDetail) + "; " + AdviseItem(item);
    }
    return std::string("it refers to the ") + Row(Row(*item.Details().fault).eKind).pWord + ' ' +
           QuoteReference(item.Details().strFaulty, item.Details().strWritten) + ", which is not stored; " +
           AdviseReference(item.Details().strNearest);
}

std::string MakeFinding(const std::string& strFile, const SReportItem& item) {
    std::string strLines;
    if (!item.IsTaken() && item.eReason != EReason::UNDONE) {
        strLines += FormatPlace(strFile, item.place) + ": " + NameOf(item) + ' ' + Code(item.eDisposition) + ": " +
                    ExplainItem(item) + '\n';
    }
    for (std::size_t i = 0; i < item.Details().vecForeign.size(); ++i) {
        strLines += FormatPlace(strFile, item.Details().vecForeignPlaces[i]) + ": " + NameOf(item) +
                    ": the child element " + Text::Quoted(item.Details().vecForeign[i].strElement) + " is read as " +
                    DescribeForeign(item.Details().vecForeign[i]) + '\n';
    }
    if (item.Details().iUntoldForeign > 0) {
        strLines += FormatPlace(strFile, item.place) + ": " + NameOf(item) + ": " +
                    Text::Counted(item.Details().iUntoldForeign, "more child element is", "more child elements are") +
                    " read as rules or building blocks\n";
    }
    for (const SUnknownReference& reference : item.Details().vecUnknown) {
        strLines += FormatPlace(strFile, reference.place) + ": " + NameOf(item) + ": it refers to the " +
                    Row(reference.eKind).pWord + ' ' + Text::Quoted(reference.strName) +
                    ", which is not stored, so that it cannot be exported; " + AdviseReference(reference.strNearest) +
                    '\n';
    }
    return strLines;
}

std::string MakeReportText(const SImportReport& report, std::size_t iWidth) {
    const std::string strTable =
        report.vecItems.empty() ? std::string("nothing to import\n") : MakeTable(report, iWidth);
    return strTable + MakeFindings(report) + MakePassedOver(report) + (report.bDryRun ? DRY_RUN : "");
}

std::string MakeFindings(const SImportReport& report) {
    std::string strText;
    for (const SReportItem& item : report.vecItems) {
        strText += MakeFinding(report.strFile, item);
    }
    if (report.iUntold > 0) {
        strText += FormatPlace(report.strFile, {}) + ": " +
                   Text::Counted(report.iUntold, "more unknown element was", "more unknown elements were") +
                   " skipped\n";
    }
    return strText + MakeMissing(report);
}

const char* GetItemWord(EItemKind eKind) {
    return Row(eKind).pWord;
}

std::string QuoteReference(const std::string& strName, std::string_view strWritten) {
    const bool bOlder = !strWritten.empty() && strWritten != strName;
    return Text::Quoted(strName) + (bOlder ? " (here by its older name, " + Text::Quoted(strWritten) + ')' : "");
}

std::string AdviseReference(const std::string& strNearest) {
    return strNearest.empty() ? "import that first, or correct the name"
                              : "did you mean " + Text::Quoted(strNearest) + '?';
}

std::string AdviseTemplate(const std::string& strNearest) {
    return strNearest.empty() ? "correct the name or remove the entry"
                              : "did you mean " + Text::Quoted(strNearest) + '?';
}

std::string DescribeForeign(const SForeignChild& foreign) {
    return std::string("a ") + (foreign.bRule ? RULE : BLOCK) +
           (foreign.strReadAs.empty() ? " that refers to nothing" : ": " + Text::Printable(foreign.strReadAs));
}

bool SaysWhatWasWritten(const std::string& strReason) {
    return strReason.ends_with(StoreWritten::NOTHING) || strReason.ends_with(StoreWritten::ELSEWHERE);
}

std::string MakeRefusal(const SImportReport& report) {
    return FormatPlace(report.strFile, report.place) + ": " + report.strReason +
           (SaysWhatWasWritten(report.strReason) ? "" : NOTHING_WRITTEN);
}
