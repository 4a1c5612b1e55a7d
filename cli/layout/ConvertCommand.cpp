#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/ImportRefusal.h"
#include "cli/InputFile.h"
#include "cli/OlderLook.h"
#include "cli/Output.h"
#include "cli/Signals.h"
#include "cli/layout/ConvertReport.h"
#include "cli/layout/FormatXml.h"
#include "cli/layout/OlderLayout.h"
#include "digital_assets/DigitalAssets.h"
#include "templates/DLPTemplateMgr.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

constexpr SCommandHelp HELP = {
    "convert",
    "convert FILE",
    "write a policy of the older layout in the standard one",
    "Makes of it what an import makes of it, with the map of older asset names and the language of --language, and\n"
    "tells what was renamed, set and dropped. The document goes to standard output or to -o FILE. One of the standard\n"
    "layout is taken as it is. Exit code 1: elements or text were dropped; with --check: it is of the older layout.\n",
    "  dlpctl convert older.xml -o policy.xml\n"
    "  dlpctl convert --check older.xml\n"
    "  dlpctl --language English convert older.xml > policy.xml\n",
    "dlpctl-convert/1",
};

struct SArguments {
    std::string strFile;
    std::string strOutput;
    bool bCheck = false;
};

class CConvertCommand {
  public:
    CConvertCommand(CCommandContext& context, const SArguments& arguments)
        : m_context(context), m_arguments(arguments) {
        m_report.pFormat = HELP.pFormat;
        m_report.strFile = arguments.strFile;
        m_report.strOutput = arguments.strOutput;
        m_report.bCheck = arguments.bCheck;
    }

    EVerdict Run() {
        CheckArguments();
        m_file = ReadPolicy(m_context, m_arguments.strFile);
        std::string strResult = Convert();
        // The trees of both layouts, many times as large as the text, are gone by now.
        if (m_report.bOlder) {
            strResult = FormatXml(strResult);
        }
        Signals::ThrowIfCaught();
        if (m_arguments.bCheck) {
            TellList();
        } else {
            Write(strResult);
        }
        TellSummary();
        return m_report.GetVerdict();
    }

  private:
    void CheckArguments() const {
        if (m_arguments.bCheck && !m_arguments.strOutput.empty()) {
            throw CToolError(EVerdict::USAGE, "-o does not go with --check, which writes nothing");
        }
        if (!m_arguments.bCheck) {
            COutput::CheckLeavesAnswer(m_context, m_arguments.strOutput);
        }
    }

    /** @return the document in the standard layout, not yet in its form when it was of the older one */
    std::string Convert() {
        CPolicyDocument document(m_file.Text());
        const CXMLView root = ParsePolicy(m_arguments.strFile, m_file, document);
        if (root.Name() != TagUtf8::SA_POLICY) {
            throw CInputError(m_arguments.strFile, ExplainRefusal(root, CTemplateMgr::RESULT_NO_POLICY));
        }
        m_report.bOlder = IsOlderLayout(root);
        if (!m_report.bOlder) {
            return m_file.strBytes;
        }
        // As this program writes it, whatever was read before.
        CDLPDigitalAssetsParser::SetVersion(DigitalAssets::STANDARD_VERSION);
        const EOlderLook eLook = LookAtOlder(root);
        const CXMLParser converted = ConvertOlder(m_context, m_arguments.strFile, document, nullptr);
        WarnOfOlder(m_context, m_arguments.strFile, eLook);
        m_report.changes = FindLayoutChanges(m_file.Text(), document, converted);
        const CSourcePlaces places(m_file.strBytes);
        for (SLayoutChange& change : m_report.changes.vecKept) {
            change.place = places.Find(m_file.iStart + change.iOffset);
        }
        document.Take();  // of both trees one is still needed
        std::string strMarkup;
        converted.SaveUtf8(strMarkup);
        return strMarkup;
    }

    void Write(const std::string& strResult) {
        COutput output(m_context, m_arguments.strOutput);
        output.Write(strResult);
        // The answer comes before the file is replaced: when nobody can be told, nothing is done.
        if (!COutput::IsStandard(m_context, m_arguments.strOutput)) {
            TellList();
            output.Commit();
            return;
        }
        output.Commit();
        const std::string strList = MakeConvertText(m_report);
        if (!strList.empty()) {
            m_context.Note(strList.substr(0, strList.size() - 1));
        }
    }

    void TellList() {
        if (m_context.IsJson()) {
            m_context.StartJson(MakeConvertHead(m_report));
        } else {
            m_context.Write(MakeConvertText(m_report));
            m_context.Flush();
        }
    }

    void TellSummary() {
        if (m_context.IsJson()) {
            m_context.WriteJson(MakeConvertJson(m_report));
        } else {
            m_context.Note(MakeConvertSummary(m_report));
        }
    }

    CCommandContext& m_context;
    const SArguments& m_arguments;
    SPolicyFile m_file;
    SConvertReport m_report;
};

}  // namespace

void AddConvertCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [pArguments](CCommandContext& context) {
        return CConvertCommand(context, *pArguments).Run();
    });
    CCommandLine::AddText(command, "FILE", "FILE", pArguments->strFile, "the policy")->required();
    CCommandLine::AddFlag(command, "--check", pArguments->bCheck,
                          "only tell whether it is of the older layout, and what would change");
    CCommandLine::AddText(command, "-o,--output", "FILE", pArguments->strOutput,
                          "write to FILE, which is replaced whole or not at all");
}
