#pragma once

#include <cstdint>

struct sqlite3;

/**
 * A checksum at the end of every page of a store's file, made when the page is written and verified when it is read: a
 * page that was altered, exchanged with another or overwritten fails as SQLITE_IOERR_DATA. What the pages say without
 * records, such as that a name is not held, is thus as sure as the records. Files whose header does not announce such
 * checksums are read and written as they are.
 */
namespace SqlitePageSums {

inline constexpr int PAGE_SIZE = 8192;
inline constexpr int SUM_SIZE = 8;  ///< the bytes that each page keeps free for it

/** @return the name under which the engine opens files so; made known to it by the first call */
const char* GetVfsName();
/** Lets a database that is still empty have such pages. */
void Reserve(sqlite3* pDb);
/**
 * @param pDb opened under that name
 * @return how many reads of its files failed since they were opened: what the engine calls damage after one may be none
 */
int CountFailedReads(sqlite3* pDb);
/**
 * @param pPage PAGE_SIZE bytes
 * @param iOffset where the page stands in its file
 * @param pSum receives SUM_SIZE bytes, which belong at the page's end
 */
void MakeSum(const unsigned char* pPage, std::int64_t iOffset, unsigned char* pSum);

}  // namespace SqlitePageSums
