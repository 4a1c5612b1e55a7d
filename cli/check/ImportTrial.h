#pragma once

#include "cli/ImportReport.h"

class CCommandContext;
class CPolicyDocument;

/** What an import would make of a document. */
struct STrial {
    int iResult = 0;  ///< the library's
    ReportItems vecItems;
};

/**
 * Runs the import itself; the caller's unit of work undoes it.
 * @param bAssetsOnly as dlpctl assets import does
 */
STrial TryImport(const CCommandContext& context, CPolicyDocument& document, bool bAssetsOnly);
