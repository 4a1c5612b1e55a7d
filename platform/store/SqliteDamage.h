#pragma once

#include <string>
#include <vector>

class CSettingsRow;
class CSqliteConnection;

namespace OS {
class CException;
}

/** @return what a store said of its damage; any other failure passes. Called while it is handled. */
std::string ExplainDamage(const OS::CException& error);

/**
 * Looks at the whole file, inside the caller's transaction.
 * @return what of its structure is damaged, each in the engine's own words
 * @throws OS::CException when the file cannot be read
 */
std::vector<std::string> FindStructureDamage(CSqliteConnection& connection);

/** @return what is wrong in the record beside its checksum; "" when nothing is */
std::string FindNonsense(const CSettingsRow& row);
