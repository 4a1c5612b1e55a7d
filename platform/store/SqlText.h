#pragma once

#include <cstddef>
#include <string>

#include "platform/store/SettingsSchema.h"

/** The SQL of the settings tables, made from their descriptions. Values are parameters, never part of a text. */
namespace SqlText {

/** Begins a transaction that writes, at once, so that two writers meet here and not at their first write. */
inline constexpr char BEGIN_WRITE[] = "BEGIN IMMEDIATE";
inline constexpr char COMMIT[] = "COMMIT";

/** The statements that make the table and its indexes. */
std::string CreateTable(const STable& table);
/** Adds a row or replaces the one of its key; one parameter per column. */
std::string Save(const STable& table);
/** All columns of every row, in the order of keys. */
std::string SelectAll(const STable& table);
/** All columns of the first row, in the order of keys, whose column equals the parameter. */
std::string SelectFirst(const STable& table, std::size_t iColumn);
/** A row when the column of any row equals the parameter. */
std::string SelectHeld(const STable& table, std::size_t iColumn);
/** One column of every row, in the order of keys. */
std::string SelectColumn(const STable& table, std::size_t iColumn);
std::string Count(const STable& table);
/** Removes the row whose key is the parameter. */
std::string Remove(const STable& table);
std::string RemoveAll(const STable& table);

}  // namespace SqlText
