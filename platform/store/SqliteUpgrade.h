#pragma once

#include "platform/store/RecordChecksum.h"

class CSqliteConnection;

/** Makes the table of totals, inside the caller's transaction. @throws OS::CException */
void CreateTotals(CSqliteConnection& connection, const AllStoreTotals& aTotals);

/** Brings a store of an older version up, in one transaction; leaves the others alone. @throws OS::CException */
void BringUpSchema(CSqliteConnection& connection);
