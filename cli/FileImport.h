#pragma once

#include "cli/Verdict.h"

class CCommandContext;
class CImportObserver;
class CPolicyDocument;
struct SImportOptions;
struct SImportReport;

/** One way into the library for documents. */
struct SImportDoor {
    const char* pCommand;  ///< its words
    const char* pFormat;   ///< name of the report's JSON form
    const char* pNext;     ///< what to do after it, for people
    bool bTemplates;       ///< takes templates, of either layout
    /** Imports the document and fills the report's lists. @return the library's result */
    int (*fnImport)(CCommandContext& context, CPolicyDocument& document, SImportReport& report,
                    CImportObserver& observer);
};

/**
 * Imports files one after the other, each in a unit of work of its own: all of it or nothing. A failure of the store,
 * of the output or of memory, or an interruption, ends the run. A dry run undoes all files together at the end, so that
 * each finds what the ones before it would have left.
 */
EVerdict ImportFiles(CCommandContext& context, const SImportDoor& door, const SImportOptions& options);
