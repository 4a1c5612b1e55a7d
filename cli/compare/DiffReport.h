#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/Verdict.h"
#include "cli/compare/PolicyDiff.h"

/** What two policies differ in. Text and JSON are views of it. */
struct SDiffReport {
    const SPolicy& before;
    const SPolicy& after;
    std::vector<SItemChange> vecChanges;

    /** @return FINDINGS when they differ, or something was left out of either */
    EVerdict GetVerdict() const;
};

/**
 * @return lines that begin with "-" for what was and "+" for what is; of items also with "~" for a changed one and "="
 *         for one whose rules are written otherwise but match alike
 * @param bColour as terminals show it
 */
std::string MakeChangeText(const SItemChange& change, bool bColour);
/** @return it as an item of the whole object */
nlohmann::ordered_json MakeChangeJson(const SItemChange& change);
/** @return one line without its end */
std::string MakeDiffSummary(const SDiffReport& report);
nlohmann::ordered_json MakeDiffJson(const SDiffReport& report, const char* pFormat);
