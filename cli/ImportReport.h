#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/SourcePlaces.h"
#include "cli/Verdict.h"
#include "digital_assets/ImportObserver.h"

/** An item of the file, and what there is to say about it. */
struct SReportItem : SImportItem {
    SPlace place;
    std::string strNearest;  ///< the stored name that an unknown reference most likely means; "" when none is near

    bool IsTaken() const { return eDisposition != EDisposition::SKIPPED && eDisposition != EDisposition::FAILED; }
    /** Whether the text says more of it than its number. */
    bool IsShown() const { return !IsTaken() || iForeignChildren != 0; }
};

/** What became of one file. Text and JSON are views of it. */
struct SImportReport {
    const char* pFormat = "";
    std::string strFile;
    EVerdict eVerdict = EVerdict::DONE;
    std::optional<int> iResult;  ///< the library's; none when the file gave no document to import
    std::string strReason;       ///< why nothing was written
    SPlace place;                ///< where in the file that shows
    std::vector<std::string> vecImported;
    std::vector<std::string> vecSkipped;
    std::vector<std::string> vecSkippedAssets;
    std::vector<SReportItem> vecItems;

    /** @return whether an item was not taken */
    bool HasFindings() const;
    /** Nothing was written: only the items that would not have been taken anyway stay listed. */
    void Undo(EVerdict eWhy, const std::string& strWhy);
};

/** @return the members that are known before the import is decided */
nlohmann::ordered_json MakeReportHead(const SImportReport& report);
/** @return the whole object, which begins with the head */
nlohmann::ordered_json MakeReportJson(const SImportReport& report);
/** @return a table of what became of how many items, then what was not taken, where, why and what to do */
std::string MakeReportText(const SImportReport& report);
/** @return an item as it stands in the whole object */
nlohmann::ordered_json MakeItemJson(const SReportItem& item);
/** @return a line for each thing that there is to say of an item: where, why it was not taken and what to do */
std::string MakeFinding(const std::string& strFile, const SReportItem& item);
/** @return one line without its end: why nothing was written */
std::string MakeRefusal(const SImportReport& report);
