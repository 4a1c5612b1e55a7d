#pragma once

#include <string>

#include "platform/store/CSettingsStore.h"

/**
 * @return a row on one line, such as: templates subject="T1" display_name="One" industries=["a","b"]
 * Columns at their empty value are left out; \ " and LF in texts are escaped.
 */
std::string DumpRow(const CSettingsRow& row);

/** @return every row of every table, one line each, in the order of tables and keys */
std::string DumpStore(CSettingsStore& store);
