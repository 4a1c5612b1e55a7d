#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "cli/check/CheckReport.h"

/** Takes a report piece by piece. */
using ReportTaker = std::function<void(std::string_view strPiece)>;

/** A way to write a report. */
struct SCheckFormat {
    const char* pName;  ///< on the command line
    void (*fnWrite)(const SCheckReport& report, const ReportTaker& fnTake);
};

inline constexpr const char CHECK_JSON[] = "json";
inline constexpr const char CHECK_TEXT[] = "text";
/** Name of the JSON form. */
inline constexpr const char CHECK_JSON_FORMAT[] = "dlpctl-check/1";

/** @param pOption who asks @throws CToolError (USAGE) naming those there are */
const SCheckFormat& FindCheckFormat(const char* pOption, const std::string& strName);

/** For people: at most 100 diagnostics unless all are wanted. */
void WriteCheckText(const SCheckReport& report, const ReportTaker& fnTake);
void WriteCheckJson(const SCheckReport& report, const ReportTaker& fnTake);
/** SARIF 2.1.0. */
void WriteCheckSarif(const SCheckReport& report, const ReportTaker& fnTake);
/** A suite for each file, a case for each diagnostic; those that the check fails on are failures. */
void WriteCheckJunit(const SCheckReport& report, const ReportTaker& fnTake);
/** Workflow commands that annotate changes. */
void WriteCheckGithub(const SCheckReport& report, const ReportTaker& fnTake);
