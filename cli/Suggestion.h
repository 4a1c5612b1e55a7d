#pragma once

#include <string>

#include "cli/Kinds.h"
#include "platform/store/CSettingsRow.h"

/**
 * @return how to go on after asking for a name that is not stored: the stored name that is nearest, else where the
 * names are listed
 * @throws OS::CException when the store fails
 */
std::string SuggestStoredName(const SKind& kind, const std::string& strWanted);

/**
 * @return the stored record of that internal name
 * @throws CToolError (FINDINGS) with the suggestion when there is none; OS::CException when the store fails
 */
CSettingsRow ReadStored(const SKind& kind, const std::string& strName);
