#pragma once

#include <string>

#include "cli/check/CheckReport.h"

/** A way to write a report. */
struct SCheckFormat {
    const char* pName;  ///< on the command line
    std::string (*fnMake)(const SCheckReport& report);
};

inline constexpr const char CHECK_JSON[] = "json";
inline constexpr const char CHECK_TEXT[] = "text";
/** Name of the JSON form. */
inline constexpr const char CHECK_JSON_FORMAT[] = "dlpctl-check/1";

/** @param pOption who asks @throws CToolError (USAGE) naming those there are */
const SCheckFormat& FindCheckFormat(const char* pOption, const std::string& strName);

/** For people: at most 100 diagnostics unless all are wanted. */
std::string MakeCheckText(const SCheckReport& report);
std::string MakeCheckJson(const SCheckReport& report);
/** SARIF 2.1.0. */
std::string MakeCheckSarif(const SCheckReport& report);
/** A suite for each file, a case for each diagnostic; those that the check fails on are failures. */
std::string MakeCheckJunit(const SCheckReport& report);
/** Workflow commands that annotate changes. */
std::string MakeCheckGithub(const SCheckReport& report);
