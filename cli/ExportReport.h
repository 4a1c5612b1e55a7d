#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/CommandLine.h"
#include "cli/Kinds.h"
#include "cli/Output.h"
#include "cli/Verdict.h"

class CCommandContext;

/** Something that was asked for and is not in the document. */
struct SLeftOut {
    const SKind* pKind;
    std::string strName;
    const char* pReason;  ///< its code in JSON
    std::string strWhy;   ///< in words, with what to do
};

/** Records of one kind. */
struct SExportCount {
    std::size_t iCarried = 0;  ///< in the document; what is named twice stands there twice
    std::size_t iOthers = 0;   ///< in the store alone
};

/** What an export made. */
struct SExportReport {
    const char* pFormat = "";
    std::string strOutput;
    std::vector<SLeftOut> vecLeftOut;
    std::vector<std::string> vecWarnings;          ///< printable
    std::map<ESettingsKind, SExportCount> counts;  ///< of the kinds that the export is about
    std::string strDocument;                       ///< but for what is in the output already
    std::unique_ptr<COutput> pOutput;              ///< where it goes, as soon as that is open
};

/** How an export is to be written. */
struct SExportOptions {
    std::string strOutput;
    bool bIndent = false;
    bool bAll = false;
};

/** Adds the options of every export to a command. */
void AddExportOptions(CLI::App& command, SExportOptions& options);

/**
 * Opens a file that is replaced whole or not at all, so that one which cannot be written is told before anything is
 * read. Whatever else the document goes to may wait for a reader, and is opened when the document is there.
 * @throws CToolError (USAGE) for a wish that cannot be met, (OUTPUT) @param bNames whether anything is named
 */
void StartExport(CCommandContext& context, const SExportOptions& options, SExportReport& report, bool bNames);

/** Takes what is made of the document into the file, if that is open. @throws CToolError (OUTPUT), for signals too */
void TakeText(const SExportOptions& options, SExportReport& report, std::string& strText);

/** Writes the document, then tells what is not in it. @return FINDINGS when something that was asked for is missing */
EVerdict FinishExport(CCommandContext& context, const SExportOptions& options, SExportReport& report);
