#include "cli/layout/ConvertReport.h"

#include <nlohmann/json.hpp>

#include "cli/InputFile.h"
#include "cli/Text.h"
#include "xml/Vocabulary.h"

namespace {

using Json = nlohmann::ordered_json;

/** By EChange and EChanged, as JSON calls them. */
constexpr const char* CHANGES[] = {"renamed", "set", "dropped"};
constexpr const char* CHANGED[] = {"attribute", "reference", "element", "comment", "instruction", "text"};

/** By EChanged, of what has no name: what people call it. */
constexpr const char* WORDS[] = {"", "", "", "a comment", "a processing instruction", "text"};

constexpr const char* LAYOUTS[] = {"standard", "older"};
constexpr const char MORE_CHANGE[] = "more change";
constexpr const char MORE_CHANGES[] = "more changes";
constexpr const char IS_DROPPED[] = " is dropped";
constexpr const char BUILT_IN[] = ": built-in templates are not taken";

const char* Code(EChange eChange) {
    return CHANGES[static_cast<std::size_t>(eChange)];
}
const char* Code(EChanged eChanged) {
    return CHANGED[static_cast<std::size_t>(eChanged)];
}

Json TextOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

Json MakeJson(const SLayoutChange& change) {
    return {{"change", Code(change.eChange)}, {"what", Code(change.eChanged)}, {"element", change.strElement},
            {"template", change.strTemplate}, {"name", change.strName},        {"from", TextOrNull(change.from)},
            {"to", TextOrNull(change.to)},    {"line", change.place.iLine},    {"column", change.place.iColumn}};
}

std::string Assignment(const SLayoutChange& change, const std::optional<std::string>& value) {
    return Text::Printable(change.strName) + '=' + Text::Quoted(*value);
}

std::string Describe(const SLayoutChange& change) {
    if (change.eChange == EChange::SET) {
        return change.from ? Assignment(change, change.from) + " becomes " + Text::Quoted(*change.to)
                           : Assignment(change, change.to) + " is set";
    }
    if (change.eChange == EChange::RENAMED) {
        return change.eChanged == EChanged::REFERENCE
                   ? "the reference " + Text::Quoted(*change.from) + " becomes " + Text::Quoted(*change.to)
                   : Text::Printable(*change.from) + " becomes " + Text::Printable(*change.to);
    }
    if (change.eChanged == EChanged::ATTRIBUTE) {
        return Assignment(change, change.from) + IS_DROPPED;
    }
    if (change.eChanged != EChanged::ELEMENT) {
        return WORDS[static_cast<std::size_t>(change.eChanged)] + std::string(IS_DROPPED);
    }
    const bool bTemplate = change.strName == TagUtf8::TEMPLATE && change.strElement == TagUtf8::COMPLIANCE_TEMPLATES;
    return Text::Printable(change.strName) + (change.from ? ' ' + Text::Quoted(*change.from) : "") + IS_DROPPED +
           (bTemplate ? BUILT_IN : "");
}

/** @return where a change belongs, as people know it */
std::string DescribePlace(const SLayoutChange& change) {
    if (!change.strTemplate.empty()) {
        return std::string(TagUtf8::TEMPLATE) + ' ' + Text::Quoted(change.strTemplate) + ": ";
    }
    return change.strElement.empty() ? std::string() : Text::Printable(change.strElement) + ": ";
}

}  // namespace

EVerdict SConvertReport::GetVerdict() const {
    return changes.bLoss || (bCheck && bOlder) ? EVerdict::FINDINGS : EVerdict::DONE;
}

std::string MakeConvertText(const SConvertReport& report) {
    std::string strText;
    for (const SLayoutChange& change : report.changes.vecKept) {
        strText += FormatPlace(report.strFile, change.place) + ": " + DescribePlace(change) + Describe(change) + '\n';
    }
    if (const std::size_t iOmitted = report.changes.CountOmitted()) {
        strText += Text::Counted(iOmitted, MORE_CHANGE, MORE_CHANGES) + '\n';
    }
    return strText;
}

std::string MakeConvertSummary(const SConvertReport& report) {
    const std::string strFile = Text::Printable(report.strFile);
    if (!report.bOlder) {
        return strFile + " is of the standard layout" + (report.bCheck ? "." : " and was taken as it is.");
    }
    std::string strCounts;
    for (const EChange eChange : {EChange::RENAMED, EChange::SET, EChange::DROPPED}) {
        const std::size_t iCount = report.changes.aCounts[static_cast<std::size_t>(eChange)];
        strCounts += (strCounts.empty() ? "" : ", ") + std::to_string(iCount) + ' ' + Code(eChange);
    }
    return strFile + (report.bCheck ? " is of the older layout: " : " was converted: ") + strCounts + '.';
}

Json MakeConvertHead(const SConvertReport& report) {
    return {{"format", report.pFormat},
            {"file", report.strFile},
            {"output", report.bCheck ? Json() : Json(report.strOutput)},
            {"layout", LAYOUTS[report.bOlder ? 1 : 0]}};
}

Json MakeConvertJson(const SConvertReport& report) {
    Json object = MakeConvertHead(report);
    object["verdict"] = GetVerdictName(report.GetVerdict());
    object["changes"] = Json::array();
    for (const SLayoutChange& change : report.changes.vecKept) {
        object["changes"].push_back(MakeJson(change));
    }
    object["omitted"] = report.changes.CountOmitted();
    return object;
}
