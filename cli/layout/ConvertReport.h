#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "cli/Verdict.h"
#include "cli/layout/Conversion.h"

/** What a conversion has made of a document. Text and JSON are views of it. */
struct SConvertReport {
    const char* pFormat = "";
    std::string strFile;
    std::string strOutput;
    bool bOlder = false;  ///< the document was of the older layout
    bool bCheck = false;  ///< nothing was to be written
    SLayoutChanges changes;

    /** @return FINDINGS when something is lost, or a check has found the older layout */
    EVerdict GetVerdict() const;
};

/** @return one line for each change, and one that says how many more there are */
std::string MakeConvertText(const SConvertReport& report);
/** @return one line without its end */
std::string MakeConvertSummary(const SConvertReport& report);
nlohmann::ordered_json MakeConvertHead(const SConvertReport& report);
/** @return the whole object, which begins with the head */
nlohmann::ordered_json MakeConvertJson(const SConvertReport& report);
