#include <algorithm>

#include "cli/InputFile.h"
#include "cli/Text.h"
#include "cli/check/CheckFormats.h"
#include "cli/layout/FormatXml.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLWriter.h"

namespace {

constexpr const char TOOL[] = "dlpctl ";

// Names of the format's attributes that stand more than once.
constexpr const char NAME[] = "name";
constexpr const char CLASS_NAME[] = "classname";
constexpr const char TESTS[] = "tests";
constexpr const char FAILURES[] = "failures";
constexpr const char ERRORS[] = "errors";

struct SCounts {
    std::size_t iTests = 0;
    std::size_t iFailures = 0;
    std::size_t iErrors = 0;
};

/** Without the few characters that XML does not have. */
std::string Clean(const std::string& strText) {
    std::string strClean = Text::Printable(strText);
    for (const std::string_view strNone : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        for (std::size_t i = strClean.find(strNone); i != std::string::npos; i = strClean.find(strNone, i)) {
            strClean.replace(i, strNone.size(), "\xEF\xBF\xBD");
        }
    }
    return strClean;
}

SCounts CountCases(const SCheckReport& report, const SFileReport& file) {
    SCounts counts;
    file.findings.ForEachHead([&](const SFindingHead& finding) {
        const bool bInvalid = IsAboutNoDocument(finding.eCode);
        counts.iTests += finding.bFixed ? 0 : 1;
        counts.iErrors += bInvalid ? 1 : 0;
        counts.iFailures += !bInvalid && Fails(report, finding) ? 1 : 0;
    });
    counts.iTests = std::max<std::size_t>(counts.iTests, 1);
    return counts;
}

void WriteCounts(CXMLWriter& writer, const SCounts& counts) {
    writer.Attribute(TESTS, std::to_string(counts.iTests));
    writer.Attribute(FAILURES, std::to_string(counts.iFailures));
    writer.Attribute(ERRORS, std::to_string(counts.iErrors));
}

void StartCase(CXMLWriter& writer, const std::string& strFile, const std::string& strName) {
    writer.StartElement("testcase");
    writer.Attribute(NAME, strName);
    writer.Attribute(CLASS_NAME, Clean(strFile));
    writer.Attribute("time", "0");
}

void WriteCase(CXMLWriter& writer, const SCheckReport& report, const std::string& strFile,
               const SDiagnostic& diagnostic) {
    const SCodeRow& row = GetCodeRow(diagnostic.eCode);
    const std::string strPlace = Clean(FormatPlace(strFile, diagnostic.place));
    const std::string strText = strPlace + ": " + GetSeverityName(diagnostic.eSeverity) + ": " +
                                Clean(diagnostic.strMessage) + "; " + Clean(diagnostic.strAdvice);
    StartCase(writer, strFile, std::string(row.pCode) + ' ' + row.pName + ' ' + strPlace);
    if (Fails(report, diagnostic.GetHead()) || IsAboutNoDocument(diagnostic.eCode)) {
        writer.StartElement(IsAboutNoDocument(diagnostic.eCode) ? "error" : "failure");
        writer.Attribute("message", Clean(diagnostic.strMessage));
        writer.Attribute("type", row.pCode);
    } else {
        writer.StartElement("system-out");
    }
    writer.Text(strText);
    writer.EndElement();
    writer.EndElement();
}

void WriteSuite(CXMLWriter& writer, const SCheckReport& report, const SFileReport& file) {
    writer.StartElement("testsuite");
    writer.Attribute(NAME, Clean(file.strFile));
    WriteCounts(writer, CountCases(report, file));
    writer.Attribute("time", "0");
    bool bAny = false;
    for (const SDiagnostic& diagnostic : file.findings) {
        if (!diagnostic.bFixed) {
            WriteCase(writer, report, file.strFile, diagnostic);
            bAny = true;
        }
    }
    if (!bAny) {
        StartCase(writer, file.strFile, report.pCommand);
        writer.EndElement();
    }
    writer.EndElement();
}

}  // namespace

void WriteCheckJunit(const SCheckReport& report, const ReportTaker& fnTake) {
    SCounts total;
    for (const SFileReport& file : report.vecFiles) {
        const SCounts counts = CountCases(report, file);
        total.iTests += counts.iTests;
        total.iFailures += counts.iFailures;
        total.iErrors += counts.iErrors;
    }
    std::string strXml;
    CXMLWriter writer(strXml);
    writer.Declaration();
    writer.StartElement("testsuites");
    writer.Attribute(NAME, std::string(TOOL) + report.pCommand);
    WriteCounts(writer, total);
    for (const SFileReport& file : report.vecFiles) {
        WriteSuite(writer, report, file);
    }
    writer.EndElement();
    fnTake(FormatXml(strXml));
}
