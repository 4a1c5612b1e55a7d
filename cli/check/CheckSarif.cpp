// SARIF 2.1.0, an OASIS standard.

#include <string_view>

#include <nlohmann/json.hpp>

#include "cli/JsonText.h"
#include "cli/Text.h"
#include "cli/check/CheckFormats.h"
#include "cli/check/DiagnosticsPage.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char SCHEMA[] = "https://json.schemastore.org/sarif-2.1.0.json";
constexpr const char VERSION[] = "2.1.0";
constexpr const char TOOL[] = "dlpctl";
constexpr int INDENT = 2;
/** Of a result: it stands in a list of a run, which stands in a list. */
constexpr int RESULT_INDENT = 4 * INDENT;
/** How a log without results ends, from them on. */
constexpr std::string_view NO_RESULTS = "[]\n    }\n  ]\n}\n";
constexpr std::string_view PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";

/** A path as a URI: absolute ones as file:, relative ones as relative references. */
std::string MakeUri(const std::string& strPath) {
    constexpr const char DIGITS[] = "0123456789ABCDEF";
    std::string strUri = strPath.compare(0, 1, "/") == 0 ? "file://" : "";
    for (const char c : strPath) {
        if (PLAIN.find(c) != std::string_view::npos) {
            strUri += c;
        } else {
            const auto iByte = static_cast<unsigned char>(c);
            strUri += {'%', DIGITS[iByte >> 4U], DIGITS[iByte & 15U]};
        }
    }
    return strUri;
}

Json MakeText(const std::string& strText) {
    return {{"text", strText}};
}

Json MakeRules() {
    Json rules = Json::array();
    for (const SCodeRow& row : GetCodeTable()) {
        rules.push_back({{"id", row.pCode},
                         {"name", row.pName},
                         {"shortDescription", MakeText(WithBlanks(row.pWhat))},
                         {"fullDescription", MakeText(row.pMore)},
                         {"help", MakeText(MakeExplanation(row))},
                         {"defaultConfiguration", {{"level", GetSeverityName(row.eSeverity)}}}});
    }
    return rules;
}

Json MakeArtifact(const std::string& strFile) {
    return {{"uri", MakeUri(strFile)}};
}

Json MakeLocation(const std::string& strFile, SPlace place) {
    Json physical = {{"artifactLocation", MakeArtifact(strFile)}};
    if (place.iLine != 0) {
        physical["region"] = {{"startLine", place.iLine}, {"startColumn", place.iColumn}};
    }
    return {{"physicalLocation", std::move(physical)}};
}

Json MakeFix(const std::string& strFile, const SFix& fix) {
    const Json replacement = {{"deletedRegion",
                               {{"startLine", fix.place.iLine},
                                {"startColumn", fix.place.iColumn},
                                {"endLine", fix.end.iLine},
                                {"endColumn", fix.end.iColumn}}},
                              {"insertedContent", MakeText(fix.strReplacement)}};
    const Json change = {{"artifactLocation", MakeArtifact(strFile)}, {"replacements", Json::array({replacement})}};
    return {{"description", MakeText("write " + Text::Quoted(fix.strReplacement))},
            {"artifactChanges", Json::array({change})}};
}

Json MakeResult(const std::string& strFile, const SDiagnostic& diagnostic) {
    Json result = {{"ruleId", GetCodeRow(diagnostic.eCode).pCode},
                   {"ruleIndex", static_cast<std::size_t>(diagnostic.eCode)},
                   {"level", GetSeverityName(diagnostic.eSeverity)},
                   {"message", MakeText(diagnostic.strMessage + "; " + diagnostic.strAdvice)},
                   {"locations", Json::array({MakeLocation(strFile, diagnostic.place)})}};
    if (diagnostic.related) {
        Json location = MakeLocation(strFile, diagnostic.related->place);
        location["id"] = 1;
        location["message"] = MakeText(diagnostic.related->strMessage);
        result["relatedLocations"] = Json::array({std::move(location)});
    }
    if (diagnostic.fix) {
        result["fixes"] = Json::array({MakeFix(strFile, *diagnostic.fix)});
    }
    return result;
}

/** @return the log without its results, which are the last there is to write */
std::string MakeFrame(const SCheckReport& report) {
    const Json driver = {{"name", TOOL}, {"version", DLP_VERSION}, {"rules", MakeRules()}};
    const EVerdict eVerdict = report.GetVerdict();
    const Json invocation = {{"executionSuccessful", eVerdict <= EVerdict::FINDINGS},
                             {"exitCode", GetExitCode(eVerdict)}};
    const Json run = {{"tool", {{"driver", driver}}},
                      {"columnKind", "unicodeCodePoints"},
                      {"invocations", Json::array({invocation})},
                      {"results", Json::array()}};
    const Json log = {{"$schema", SCHEMA}, {"version", VERSION}, {"runs", Json::array({run})}};
    return ToJsonText(log, INDENT) + '\n';
}

/** @return the text with blanks before each line */
std::string Indented(const std::string& strText, std::size_t iBlanks) {
    const std::string strBlanks(iBlanks, ' ');
    std::string strIndented = strBlanks;
    for (const char c : strText) {
        strIndented += c;
        strIndented += c == '\n' ? strBlanks : "";
    }
    return strIndented;
}

}  // namespace

void WriteCheckSarif(const SCheckReport& report, const ReportTaker& fnTake) {
    const std::string strFrame = MakeFrame(report);
    const std::size_t iResults = strFrame.size() - NO_RESULTS.size() + 1;
    fnTake(std::string_view(strFrame).substr(0, iResults));
    bool bAny = false;
    for (const SFileReport& file : report.vecFiles) {
        for (const SDiagnostic& diagnostic : file.findings) {
            if (!diagnostic.bFixed) {
                fnTake((bAny ? ",\n" : "\n") +
                       Indented(ToJsonText(MakeResult(file.strFile, diagnostic), INDENT), RESULT_INDENT));
                bAny = true;
            }
        }
    }
    fnTake(bAny ? '\n' + std::string(RESULT_INDENT - INDENT, ' ') : std::string());
    fnTake(std::string_view(strFrame).substr(iResults));
}
