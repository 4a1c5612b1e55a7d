#pragma once

#include <string>

#include "cli/Kinds.h"
#include "cli/check/DiagnosticCodes.h"
#include "platform/store/CSettingsRow.h"

/** @return the kind's word and the name, as messages call a record */
std::string Called(const SKind& kind, const std::string& strName);

/** @return one line: what a check says of a record, as messages of its own say it */
std::string ExplainFault(const std::string& strCalled, const SCodeRow& row, const std::string& strWhat,
                         const std::string& strAdvice);

bool IsBuiltIn(const CSettingsRow& row);

/**
 * @return the stored record of that internal name, to be changed
 * @throws CToolError (FINDINGS) when there is none, or it is a built-in one
 */
CSettingsRow ReadOwn(const SKind& kind, const std::string& strName);

/**
 * Gives a record an internal name, and the subject identifier that goes with it.
 * @throws CToolError FINDINGS when a stored record has it; INVALID when no document or no rule can carry it
 */
void NameRecord(const std::string& strName, CSettingsRow& row);
