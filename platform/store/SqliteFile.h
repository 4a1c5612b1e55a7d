#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/** What stands beside a store's file is called as that, and one of these. */
namespace SqliteSuffix {
inline constexpr char JOURNAL[] = "-wal";
inline constexpr char ROLLBACK_JOURNAL[] = "-journal";
inline constexpr char INDEX[] = "-shm";
inline constexpr char WRITER_NOTE[] = "-writer";
inline constexpr char MAKER_NOTE[] = "-maker";
inline constexpr const char* ALL[] = {JOURNAL, INDEX, ROLLBACK_JOURNAL, WRITER_NOTE, MAKER_NOTE};
}  // namespace SqliteSuffix

/**
 * Follows links at the path's end, and those among its folders: the journal is beside the file itself.
 * @return the path of what they lead to
 * @throws OS::CException when one is another user's or leads to nothing
 */
std::string FollowSqliteLinks(const std::string& strPath, const std::string& strUrl);

/**
 * Makes sure that a regular file stands at the path. A missing one is made, empty, for its owner alone (mode 0600), and
 * so are missing folders (0700), whatever the umask.
 * @param strUrl names the store in messages
 * @return whether it is empty
 * @throws OS::CException when there is something else, it was cut to nothing or it cannot be made
 */
bool MakeSqliteFile(const std::string& strPath, const std::string& strUrl);

/**
 * Makes sure, as far as can be seen, that a file that is not there could be made at the path; makes nothing.
 * @throws OS::CException
 */
void CheckSqlitePlace(const std::string& strPath, const std::string& strUrl);

/**
 * Makes sure that a regular file that can be read stands at the path; makes nothing.
 * @return whether it can be written too
 * @throws OS::CException
 */
bool FindSqliteFile(const std::string& strPath, const std::string& strUrl);

/**
 * @return whether the caller may not write into the file's folder, and no journal stands beside it: the engine can then
 * make none of the files by which it knows of writers
 */
bool IsSqliteFileFixed(const std::string& strPath);

/** @return whether the caller may write the file and into its folder, where another is to take its place */
bool IsSqliteFileReplaceable(const std::string& strPath);

/** @return whether the sticky bit of the folder lets others alone replace the file */
bool IsSqliteFileAnothersToReplace(const std::string& strPath);

/**
 * The engine believes what stands beside the file. In a folder where everybody may write, what another user has put
 * there would be shown, or written into the store.
 * @param strPath with all links followed
 * @throws OS::CException when a journal or its index is neither the caller's, the store's owner's nor root's, and not
 * that of somebody who may write the store
 */
void RequireOwnSideFiles(const std::string& strPath, const std::string& strUrl);

/** @return whether the file has no bytes: the store is still to be made */
bool IsSqliteFileEmpty(const std::string& strPath);

/**
 * @return whether the file is empty though its journal is not: a store stood there. The journal is begun only when the
 * file holds the store's tables.
 */
bool IsSqliteFileCut(const std::string& strPath);

/**
 * @param strPath with all links followed
 * @return whether a journal that holds something stands beside the file: whoever wrote the file may not have finished
 */
bool HasSqliteJournal(const std::string& strPath);

/**
 * @param strPath with all links followed
 * @return whether the engine's journal says that the file was empty before: somebody is making the store, or has not
 * finished
 */
bool WasSqliteFileEmpty(const std::string& strPath);

/** What changes whenever a file is written: its length, and when it was changed, in seconds and nanoseconds. */
using FileState = std::array<std::int64_t, 3>;

/** @return the state of the file at the path; zeros when nothing is there */
FileState GetSqliteFileState(const std::string& strPath);

/** @return what endangers the file from outside, each in one line with what to do */
std::vector<std::string> FindSqliteFileDangers(const std::string& strPath);

/** What nobody knows of a path's file system when the system does not tell. */
inline constexpr long UNKNOWN_FILE_SYSTEM = -1;

/**
 * Asks for the kind of a path's file system, the number of statfs; UNKNOWN_FILE_SYSTEM with errno when the system fails
 * to tell, 0 where it cannot be asked. Tests put their own in its place.
 */
using FileSystemProbe = std::function<long(const std::string& strPath)>;
void SetFileSystemProbe(FileSystemProbe fnProbe);
