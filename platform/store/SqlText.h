#pragma once

#include <cstddef>
#include <string>

#include "platform/store/SettingsSchema.h"

/** The SQL of the settings tables, made from their descriptions. Values are parameters, never part of a text. */
namespace SqlText {

inline constexpr char BEGIN_READ[] = "BEGIN";
/** Begins a transaction that writes, at once, so that two writers meet here and not at their first write. */
inline constexpr char BEGIN_WRITE[] = "BEGIN IMMEDIATE";
inline constexpr char COMMIT[] = "COMMIT";

/** What counts the rows of each table and sums their checksums, modulo 2^64. */
inline constexpr char CREATE_TOTALS[] =
    "CREATE TABLE totals (kind INTEGER PRIMARY KEY, records INTEGER NOT NULL, checksum INTEGER NOT NULL)";
/** Parameters: kind, records, checksum. */
inline constexpr char INSERT_TOTALS[] = "INSERT INTO totals (kind, records, checksum) VALUES (?1, ?2, ?3)";
/** Changes nothing, but takes the lock of those who do. */
inline constexpr char LOCK[] = "UPDATE totals SET records = 0 WHERE 0";
inline constexpr char UPDATE_TOTALS[] = "UPDATE totals SET records = ?2, checksum = ?3 WHERE kind = ?1";
inline constexpr char SELECT_TOTALS[] = "SELECT kind, records, checksum FROM totals ORDER BY kind";

/** The statements that make the table and its indexes. */
std::string CreateTable(const STable& table);
/** Adds a row unless its key is there; one parameter per column, then the checksum. */
std::string Insert(const STable& table);
/** Replaces the row of a key; the same parameters. */
std::string Update(const STable& table);
/** Replaces the row of a place, but for its key and its indexed columns; the same parameters, then the place. */
std::string UpdateFound(const STable& table);
/** All columns of every row, then the checksum, in the order of keys. */
std::string SelectAll(const STable& table);
/** The same of a table of the first schema, which has no checksums. */
std::string SelectUnsummed(const STable& table);
/** All columns, then the checksum and the place, of the first row, in the order of keys, whose column equals the
 * parameter. */
std::string SelectFirst(const STable& table, std::size_t iColumn);
/** The checksum of the row that the index of keys names for the parameter, and the key that this row itself holds. */
std::string SelectChecksum(const STable& table);
/** A row when the column of any row equals the parameter. */
std::string SelectHeld(const STable& table, std::size_t iColumn);
/** One column of every row, in the order of keys. */
std::string SelectColumn(const STable& table, std::size_t iColumn);
/** Removes the row whose key is the parameter. */
std::string Remove(const STable& table);
std::string RemoveAll(const STable& table);

}  // namespace SqlText
