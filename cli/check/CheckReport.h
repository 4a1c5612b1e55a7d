#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/Verdict.h"
#include "cli/check/Diagnostics.h"

/** What was found in one file. */
struct SFileReport {
    std::string strFile;
    const char* pLayout = nullptr;  ///< null when the file is no policy
    CFindings findings;
    SeverityCounts aOmitted{};  ///< found, but not kept

    /** @return whether the file is no document at all */
    bool IsInvalid() const;
    std::size_t CountOmitted() const;
};

/** What was found in all of them. Every format is a view of it. */
struct SCheckReport {
    std::vector<SFileReport> vecFiles;
    ESeverity eFailOn = ESeverity::ERROR;
    bool bAll = false;
    bool bFix = false;                ///< what can be replaced was, or would be
    bool bColour = false;             ///< text is, as terminals show it
    bool bQuiet = false;              ///< text says nothing when there is nothing to say
    const char* pCommand = "check";   ///< whose report it is
    std::optional<EVerdict> verdict;  ///< the command's, unless what was found says it

    /** @return how many of each severity, kept or not, without those that were fixed */
    SeverityCounts Count() const;
    /** @return how many values were fixed */
    std::size_t CountFixed() const;
    /** @return how many values a fix leaves as they are, since they may be mistakes */
    std::size_t CountLeft() const;
    EVerdict GetVerdict() const;
};

/** @return whether a finding is one that the check fails on */
bool Fails(const SCheckReport& report, const SFindingHead& finding);
