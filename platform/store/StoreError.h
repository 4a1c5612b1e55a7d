#pragma once

#include <string>

struct SStoreDamage;

/** What a store was doing when it failed. */
namespace StoreDoing {
inline constexpr const char OPENING[] = "opening it";
inline constexpr const char READING[] = "reading records";
inline constexpr const char CHECKING[] = "checking it";
inline constexpr const char BACKING_UP[] = "writing a backup";
inline constexpr const char RESTORING[] = "restoring it";
inline constexpr const char COUNTING[] = "counting records";
inline constexpr const char SAVING[] = "saving a record";
inline constexpr const char REMOVING[] = "removing a record";
inline constexpr const char REPLACING[] = "replacing all records of a kind";
inline constexpr const char BEGINNING[] = "beginning a unit of work";
inline constexpr const char COMMITTING[] = "committing a unit of work";
inline constexpr const char UNDOING[] = "undoing a unit of work";
}  // namespace StoreDoing

/** Numbers of failures of our own; the engine's and the system's are not below 0. */
namespace StoreCode {
inline constexpr int DAMAGED = -1;            ///< what is there is not what was written
inline constexpr int FOREIGN = -2;            ///< what is there is another program's
inline constexpr int MADE_MEANWHILE = -3;     ///< it was not there when it was opened
inline constexpr int WRITTEN_ELSEWHERE = -4;  ///< what was written is kept, in a file that went meanwhile
}  // namespace StoreCode

/** What was written when its file was found to have gone: ends a message that begins with the first of these. */
namespace StoreWritten {
inline constexpr const char MOVED[] = "its file was removed or replaced meanwhile; ";
inline constexpr const char NOTHING[] = "nothing was written";
inline constexpr const char ELSEWHERE[] = "what was written is in the file that stood there before";
}  // namespace StoreWritten

/** What is wrong with a record or a table. */
namespace StoreDamage {
inline constexpr const char ALTERED[] = "is not as it was written";
inline constexpr const char VANISHED[] = "records are missing";
inline constexpr const char MISLED[] = "an index leads to another record";
}  // namespace StoreDamage

/** What to do about a failure; ends a message. */
namespace StoreAdvice {
inline constexpr const char DAMAGED[] =
    "; \"dlpctl store check\" says what else is, \"dlpctl store restore\" brings back a backup";
}

/**
 * @param strUrl names the store
 * @param pDoing one of StoreDoing
 * @param iCode the engine's or the system's number
 * @throws OS::CException "settings store URL, doing: why", always
 */
[[noreturn]] void ThrowStoreError(const std::string& strUrl, const char* pDoing, const std::string& strWhy,
                                  int iCode = 0);

/**
 * @param strPath of the store's file
 * @param iError the system's number, in whose words it fails
 * @throws OS::CException, always
 */
[[noreturn]] void ThrowSystemError(const std::string& strPath, const char* pDoing, int iError);

/**
 * @param strWriter who writes; "" when nobody says so
 * @throws OS::CException that another process is writing, always
 */
[[noreturn]] void ThrowBusy(const std::string& strUrl, const char* pDoing, const std::string& strWriter, int iCode);

/** @return the damage in one line */
std::string ToText(const SStoreDamage& damage);
