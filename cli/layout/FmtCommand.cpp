#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/FolderFiles.h"
#include "cli/InputFile.h"
#include "cli/Output.h"
#include "cli/OutputFile.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/layout/FormatXml.h"
#include "platform/xml/XMLGate.hpp"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "fmt",
    "fmt FILE… | DIR…",
    "write documents in one form, whatever they were written with",
    "Changes indentation, line ends, quotes and the white space in tags; no text, value, comment or instruction,\n"
    "and not what an import makes of it. Without --check and --write the document goes to standard output or to\n"
    "-o FILE. Below a DIR every .xml file is taken. Exit code 1: --check has found a file of another form.\n",
    "  dlpctl fmt policy.xml\n"
    "  dlpctl fmt --check policies/\n"
    "  dlpctl fmt --write policy.xml\n",
    "dlpctl-fmt/1",
};

constexpr const char STANDARD_STREAM[] = "-";

struct SArguments {
    std::vector<std::string> vecFiles;
    std::string strOutput;
    bool bCheck = false;
    bool bWrite = false;
};

/** What there is to tell of one file. */
struct SFileForm {
    std::string strFile;
    EVerdict eVerdict = EVerdict::DONE;
    bool bChanged = false;   ///< the file is of another form
    SPlace place;            ///< where that shows, or why it cannot be told
    std::string strMessage;  ///< why it cannot be told
};

void CheckArguments(const CCommandContext& context, const SArguments& arguments) {
    const bool bPrints = !arguments.bCheck && !arguments.bWrite;
    if (arguments.bCheck && arguments.bWrite) {
        throw CToolError(EVerdict::USAGE, "write either --check or --write, not both");
    }
    if (!bPrints && !arguments.strOutput.empty()) {
        throw CToolError(EVerdict::USAGE, "-o goes with neither --check nor --write");
    }
    if (bPrints) {
        COutput::CheckLeavesAnswer(context, arguments.strOutput);
    }
}

/** @throws CInputError when there is none */
std::vector<std::string> ListAll(const CCommandContext& context, const SArguments& arguments) {
    RequireOneInput(arguments.vecFiles);
    std::vector<std::string> vecAll;
    for (const std::string& strFile : arguments.vecFiles) {
        const std::vector<std::string> vecFiles = ListFiles(context, strFile);
        if (vecFiles.empty()) {
            throw CInputError(strFile, NO_FILES);
        }
        vecAll.insert(vecAll.end(), vecFiles.begin(), vecFiles.end());
    }
    if (vecAll.size() > 1 && !arguments.bCheck && !arguments.bWrite) {
        throw CToolError(EVerdict::USAGE, "several documents cannot be told apart; write --check or --write");
    }
    return vecAll;
}

void ReplaceFile(CCommandContext& context, const std::string& strFile, const std::string& strDocument) {
    const std::string strPath = context.GetAbsolute(strFile);
    COutputFile file(strPath, Text::Printable(strFile));
    file.Write(strDocument);
    Signals::ThrowIfCaught();
    file.Commit();
}

/** Checks the file as a whole before anything is made of it. */
std::string MakeForm(const std::string& strFile, const SPolicyFile& file) {
    const SXMLLoadError error = CheckXml(file.Text()).error;
    if (!error.strMessage.empty()) {
        throw CInputError(strFile, file, MakeXmlFault(file, error));
    }
    Signals::ThrowIfCaught();
    return FormatXml(file.Text());
}

SPlace FindDifference(const std::string& strBytes, const std::string& strForm) {
    const auto itEnd = strBytes.begin() + static_cast<std::ptrdiff_t>(std::min(strBytes.size(), strForm.size()));
    const auto itDifference = std::mismatch(strBytes.begin(), itEnd, strForm.begin()).first;
    return CSourcePlaces(strBytes).Find(static_cast<std::size_t>(itDifference - strBytes.begin()));
}

void CheckWritable(const CCommandContext& context, const std::string& strFile) {
    const std::string strPath = context.GetAbsolute(strFile);
    std::error_code error;
    if (strFile == STANDARD_STREAM ||
        (std::filesystem::exists(strPath, error) && !std::filesystem::is_regular_file(strPath, error))) {
        throw CToolError(EVerdict::USAGE, "--write needs a file that it can write");
    }
}

void Format(CCommandContext& context, const SArguments& arguments, SFileForm& form) {
    if (arguments.bWrite) {
        CheckWritable(context, form.strFile);
    }
    const SPolicyFile file = ReadPolicy(context, form.strFile);
    const std::string strForm = MakeForm(form.strFile, file);
    form.bChanged = strForm != file.strBytes;
    if (form.bChanged) {
        form.place = FindDifference(file.strBytes, strForm);
    }
    if (arguments.bCheck) {
        form.eVerdict = form.bChanged ? EVerdict::FINDINGS : EVerdict::DONE;
    } else if (!arguments.bWrite) {
        COutput output(context, arguments.strOutput);
        output.Write(strForm);
        output.Commit();
    } else if (form.bChanged) {
        ReplaceFile(context, form.strFile, strForm);
    }
}

Json MakeJson(const SFileForm& form) {
    Json object = {{"format", HELP.pFormat}, {"file", form.strFile}, {"verdict", GetVerdictName(form.eVerdict)}};
    const bool bKnown = form.strMessage.empty();
    object["changed"] = bKnown ? Json(form.bChanged) : Json();
    object["line"] = form.place.iLine == 0 ? Json() : Json(form.place.iLine);
    object["column"] = form.place.iLine == 0 ? Json() : Json(form.place.iColumn);
    if (!bKnown) {
        object["message"] = form.strMessage;
    }
    return object;
}

void Tell(CCommandContext& context, const SArguments& arguments, const SFileForm& form) {
    if (context.IsJson()) {
        context.WriteJson(MakeJson(form));
    } else if (form.bChanged && arguments.bCheck) {
        context.Write(FormatPlace(form.strFile, form.place) + ": of another form; dlpctl fmt --write changes it\n");
    } else if (form.bChanged && arguments.bWrite) {
        context.Write(Text::Printable(form.strFile) + ": written anew\n");
    } else if (!arguments.bCheck && !arguments.bWrite && form.strMessage.empty() &&
               !COutput::IsStandard(context, arguments.strOutput)) {
        context.Note(Text::Printable(form.strFile) + ": written to " + Text::Printable(arguments.strOutput));
    }
}

/** What is no document does not keep the next file from being taken. */
EVerdict FormatFile(CCommandContext& context, const SArguments& arguments, const std::string& strFile) {
    SFileForm form;
    form.strFile = strFile;
    try {
        Signals::ThrowIfCaught();
        Format(context, arguments, form);
    } catch (const CInputError& error) {
        form.eVerdict = error.GetVerdict();
        form.strMessage = error.GetReason();
        form.place = error.GetPlace();
        context.Error(error.what());
    }
    Tell(context, arguments, form);
    return form.eVerdict;
}

EVerdict FormatFiles(CCommandContext& context, const SArguments& arguments) {
    CheckArguments(context, arguments);
    EVerdict eVerdict = EVerdict::DONE;
    for (const std::string& strFile : ListAll(context, arguments)) {
        eVerdict = GetWorse(eVerdict, FormatFile(context, arguments, strFile));
    }
    return eVerdict;
}

}  // namespace

void AddFmtCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(
        line.GetTop(), HELP, [pArguments](CCommandContext& context) { return FormatFiles(context, *pArguments); });
    CCommandLine::AddTexts(command, "FILE", "FILE", pArguments->vecFiles, "documents, or folders of them")->required();
    CCommandLine::AddFlag(command, "--check", pArguments->bCheck, "only tell which files are of another form");
    CCommandLine::AddFlag(command, "--write", pArguments->bWrite,
                          "write the files themselves, each of them whole or not at all");
    CCommandLine::AddText(command, "-o,--output", "FILE", pArguments->strOutput,
                          "write to FILE, which is replaced whole or not at all");
}
