#pragma once

#include <string>

#include "platform/store/RecordChecksum.h"

class CSqliteConnection;

/** Makes the table of totals, inside the caller's transaction. @throws OS::CException */
void CreateTotals(CSqliteConnection& connection, const AllStoreTotals& aTotals);

/**
 * Puts a store of this version in the place of an older one, with all that it holds, whole or not at all.
 * @param older open for the caller alone, in a transaction; only to be closed then
 * @param strPath its file
 * @throws OS::CException also when any of it is damaged, as far as that can be told
 */
void RenewSqliteFile(CSqliteConnection& older, const std::string& strPath);
