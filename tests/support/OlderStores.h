#pragma once

#include <string>

#include "platform/store/SqlitePageSums.h"

/** Runs SQL on a database file. @param pVfs null: as any other program would; else with checksums of pages */
void RunSql(const std::string& strPath, const std::string& strSql, const char* pVfs = SqlitePageSums::GetVfsName());

/** Makes a store of the first version, with one record of each of two tables. */
void MakeFirstVersion(const std::string& strPath);

/** What it holds, as DumpStore tells it. */
inline constexpr char FIRST_VERSION_DUMP[] =
    "expressions subject=\"E\" name=\"e\" pre_defined=1 min_length=1 max_length=2 suffix_length=3 min_left_radius=4 "
    "max_left_radius=5 max_right_radius=6 pattern=\"p\"\n"
    "templates subject=\"T\" industries=[\"a\"]\n";

/** Makes a store of the second version, which had checksums of records, of the store at the path. */
void MakeSecondVersion(const std::string& strPath);
