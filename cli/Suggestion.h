#pragma once

#include <string>

#include "cli/Kinds.h"

/**
 * @return how to go on after asking for a name that is not stored: the stored name that is nearest, else where the
 * names are listed
 * @throws OS::CException when the store fails
 */
std::string SuggestStoredName(const SKind& kind, const std::string& strWanted);
