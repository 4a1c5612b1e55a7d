#pragma once

#include <string>

#include "platform/store/RecordChecksum.h"

class CSettingsStore;
class CSqliteConnection;

/** Makes the table of totals, inside the caller's transaction. @throws OS::CException */
void CreateTotals(CSqliteConnection& connection, const AllStoreTotals& aTotals);

/** Copies the records into the tables, which are empty, inside the caller's transaction. @return what they hold then */
AllStoreTotals FillSqliteTables(CSqliteConnection& connection, CSettingsStore& records);

/**
 * Reads all that an older store holds, inside the caller's transaction.
 * @param records receives it
 * @throws OS::CException also when any of it is damaged, as far as that can be told
 */
void ReadOlderSqliteFile(CSqliteConnection& older, CSettingsStore& records);

/**
 * Puts a store of this version in the place of an older one, with all that it holds, whole or not at all.
 * @param older open for the caller alone, in a transaction; only to be closed then
 * @param strPath its file
 * @throws OS::CException as ReadOlderSqliteFile does
 */
void RenewSqliteFile(CSqliteConnection& older, const std::string& strPath);
