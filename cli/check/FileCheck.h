#pragma once

#include <string>

#include "cli/check/CheckReport.h"

class CCommandContext;

/** What a file is checked for. */
struct SFileCheck {
    SCheckChoice choice;
    bool bAssetsOnly = false;
    bool bFix = false;     ///< replace what can be replaced without a change of meaning
    bool bDryRun = false;  ///< only say so
};

/**
 * Checks one file; the store is as it was afterwards.
 * @throws CToolError when the store, the output or memory fails, or on interruption
 */
SFileReport CheckFile(CCommandContext& context, const SFileCheck& check, const std::string& strFile);
