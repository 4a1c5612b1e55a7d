#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/ItemChoice.h"
#include "cli/OlderLook.h"
#include "cli/Verdict.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/check/Diagnostics.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/SourcePlaces.h"

/** A reference to what is not stored, in what a foreign child of a template is read as. */
struct SUnknownReference : SForeignChild::SReference {
    SPlace place;
    std::string strNearest;
};

/** What there is to say of an item beside its name and fate; most have nothing of it. */
struct SItemDetails {
    std::string strDetail;
    std::optional<ETemplateFault> fault;
    std::string strFaulty;
    std::string strNearest;  ///< what an unknown reference or element most likely means; "" when none is near
    std::string strWritten;  ///< an unknown reference as it stands in the document, if that is its older name
    std::vector<SForeignChild> vecForeign;
    std::size_t iUntoldForeign = 0;
    std::vector<SPlace> vecForeignPlaces;       ///< of its foreign children, once they are known
    std::vector<SUnknownReference> vecUnknown;  ///< of one that was taken
};

/** An item of the file, as an import tells it, and what there is to say about it. */
struct SReportItem {
    explicit SReportItem(const SImportItem& item);

    EItemKind eKind;
    EDisposition eDisposition;
    EReason eReason;
    std::optional<EOlderLook> older;  ///< of a document that is read as one of the older layout, if that matters
    std::string strName;
    std::string strDisplayName;
    std::size_t iOffset;
    SPlace place;

    const SItemDetails& Details() const;
    SItemDetails& EditDetails();

    bool IsTaken() const { return eDisposition != EDisposition::SKIPPED && eDisposition != EDisposition::FAILED; }
    /** Whether it was not taken as it stands, and not only because the rest of the document was not. */
    bool IsFinding() const { return (!IsTaken() && eReason != EReason::UNDONE) || !Details().vecUnknown.empty(); }
    /** Whether the document is to blame for that. */
    bool IsRefused() const { return IsFinding() && eReason != EReason::EXISTING; }
    /** Whether it is only for the forgotten version that it was not taken. */
    bool FollowsFromVersion() const {
        return older == EOlderLook::FORGOTTEN &&
               (eReason == EReason::OLDER_SECTION || eReason == EReason::NO_DISPLAY_NAME);
    }
    bool IsUnknownReference() const;
    /** @return where people find its name */
    const char* GetDisplayNameAttribute() const;
    /** Whether the text says more of it than its number. */
    bool IsShown() const { return IsFinding() || !Details().vecForeign.empty(); }

  private:
    std::unique_ptr<SItemDetails> m_pDetails;  ///< null: nothing of it
};

/** There may be as many as a document holds: they stay where they are when more come. */
using ReportItems = std::deque<SReportItem>;

/** Puts items into the order of their file. */
void SortByPlace(ReportItems& vecItems);

/** What became of one file. Text and JSON are views of it. */
struct SImportReport {
    const char* pFormat = "";
    std::string strFile;
    EVerdict eVerdict = EVerdict::DONE;
    std::optional<int> iResult;             ///< the library's; none when the file gave no document to import
    std::string strReason;                  ///< why nothing was written
    SPlace place;                           ///< where in the file that shows
    ECode eRefusal = ECode::IMPORT_FAILED;  ///< what it is called
    std::optional<SRelated> related;        ///< another place that the reason speaks of
    std::vector<std::string> vecImported;
    std::vector<std::string> vecSkipped;
    std::vector<std::string> vecSkippedAssets;
    ReportItems vecItems;
    std::size_t iUntold = 0;               ///< unknown elements beyond those that are items
    bool bDryRun = false;                  ///< whatever was written is undone
    std::size_t iNotChosen = 0;            ///< items that were not asked for by name
    std::size_t iTemplatesLeft = 0;        ///< templates of a document of which only the assets are asked for
    std::vector<SMissingName> vecMissing;  ///< names that were asked for and are not in the document

    /** @return whether an item was not taken as it stands, or is not there */
    bool HasFindings() const;
    /** @return how many items the document is to blame for not being taken, those not there and not told included */
    std::size_t CountRefused() const;
    /** Nothing was written: what would have been taken is told to be undone. */
    void Undo(EVerdict eWhy, const std::string& strWhy);
};

/** @return the members that are known before the import is decided */
nlohmann::ordered_json MakeReportHead(const SImportReport& report);
/** @return the whole object, which begins with the head */
nlohmann::ordered_json MakeReportJson(const SImportReport& report);
/** Writes it on a line, an item at a time. */
void WriteReportJson(const SImportReport& report, const std::function<void(std::string_view strPiece)>& fnTake);
/** @return a table of what became of how many items, then the findings */
std::string MakeReportText(const SImportReport& report, std::size_t iWidth = 0);
/** @return lines of what was not taken, where, why and what to do */
std::string MakeFindings(const SImportReport& report);
/** @return whose fate it is, why and where, as it stands in the whole object among more */
nlohmann::ordered_json MakeItemJson(const SReportItem& item);
/** @return a line for each thing that there is to say of an item: where, why it was not taken and what to do */
std::string MakeFinding(const std::string& strFile, const SReportItem& item);
/** @return why an item was not taken, and what to do */
std::string ExplainItem(const SReportItem& item);
/** @return whether the reason itself says what became of what was written */
bool SaysWhatWasWritten(const std::string& strReason);
/** @return one line without its end: why nothing was written */
std::string MakeRefusal(const SImportReport& report);
/** @return what people call an item of this kind */
const char* GetItemWord(EItemKind eKind);
/** @return an asset's name, with the older one by which a document calls it */
std::string QuoteReference(const std::string& strName, std::string_view strWritten);
/** @return "import that first …", or the nearest name */
std::string AdviseReference(const std::string& strNearest);
/** @return "correct the name …", or the template that is most likely meant by an entry of a category */
std::string AdviseTemplate(const std::string& strNearest);
/** @return "a rule: P:card(2)": what a template's foreign child is read as, printable */
std::string DescribeForeign(const SForeignChild& foreign);
