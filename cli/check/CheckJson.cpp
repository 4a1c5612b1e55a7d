#include <nlohmann/json.hpp>

#include "cli/JsonText.h"
#include "cli/check/CheckFormats.h"

namespace {

using Json = nlohmann::ordered_json;

Json Number(std::size_t iNumber) {
    return iNumber == 0 ? Json() : Json(iNumber);
}

Json MakeDiagnostic(const SDiagnostic& diagnostic) {
    const SCodeRow& row = GetCodeRow(diagnostic.eCode);
    Json object = {{"code", row.pCode},
                   {"name", row.pName},
                   {"severity", GetSeverityName(diagnostic.eSeverity)},
                   {"message", diagnostic.strMessage},
                   {"advice", diagnostic.strAdvice},
                   {"line", Number(diagnostic.place.iLine)},
                   {"column", Number(diagnostic.place.iColumn)},
                   {"related", Json()},
                   {"replacement", diagnostic.fix ? Json(diagnostic.fix->strReplacement) : Json()},
                   {"fixed", diagnostic.bFixed}};
    if (diagnostic.related) {
        object["related"] = {{"message", diagnostic.related->strMessage},
                             {"line", diagnostic.related->place.iLine},
                             {"column", diagnostic.related->place.iColumn}};
    }
    return object;
}

/** On one line, without the brackets at its ends. */
std::string MembersOf(const Json& object) {
    const std::string strText = ToJsonText(object);
    return strText.substr(1, strText.size() - 2);
}

void WriteFile(const SFileReport& file, const ReportTaker& fnTake) {
    const Json head = {{"file", file.strFile}, {"layout", file.pLayout == nullptr ? Json() : Json(file.pLayout)}};
    fnTake('{' + MembersOf(head) + ",\"diagnostics\":[");
    const char* pBefore = "{";
    for (const SDiagnostic& diagnostic : file.findings) {
        fnTake(pBefore + MembersOf(MakeDiagnostic(diagnostic)) + '}');
        pBefore = ",{";
    }
    fnTake("]," + MembersOf({{"omitted", file.CountOmitted()}}) + '}');
}

}  // namespace

void WriteCheckJson(const SCheckReport& report, const ReportTaker& fnTake) {
    const auto aCounts = report.Count();
    const Json head = {{"format", CHECK_JSON_FORMAT}, {"verdict", GetVerdictName(report.GetVerdict())}};
    const Json counts = {{"errors", aCounts[0]}, {"warnings", aCounts[1]}, {"notes", aCounts[2]}};
    fnTake('{' + MembersOf(head) + ",\"files\":[");
    for (const SFileReport& file : report.vecFiles) {
        fnTake(&file == report.vecFiles.data() ? "" : ",");
        WriteFile(file, fnTake);
    }
    fnTake("]," + MembersOf(counts) + "}\n");
}
