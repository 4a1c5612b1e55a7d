#include <nlohmann/json.hpp>

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

Json MakeFile(const SFileReport& file) {
    Json diagnostics = Json::array();
    for (const SDiagnostic& diagnostic : file.vecDiagnostics) {
        diagnostics.push_back(MakeDiagnostic(diagnostic));
    }
    return {{"file", file.strFile},
            {"layout", file.pLayout == nullptr ? Json() : Json(file.pLayout)},
            {"diagnostics", std::move(diagnostics)},
            {"omitted", file.CountOmitted()}};
}

}  // namespace

std::string MakeCheckJson(const SCheckReport& report) {
    const auto aCounts = report.Count();
    Json files = Json::array();
    for (const SFileReport& file : report.vecFiles) {
        files.push_back(MakeFile(file));
    }
    const Json object = {{"format", CHECK_JSON_FORMAT}, {"verdict", GetVerdictName(report.GetVerdict())},
                         {"files", std::move(files)},   {"errors", aCounts[0]},
                         {"warnings", aCounts[1]},      {"notes", aCounts[2]}};
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}
