#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** Ends a message: what is written there, the other user could read. */
inline constexpr const char FOREIGN_FILE[] =
    ": another user's file in a folder where everybody may write is given nothing";

/**
 * Where a command's result goes when -o names it. A regular file, or none yet, is replaced whole or not at all, with
 * the owner, group and mode it had as far as this user may give them; a link stays and its target is replaced; anything
 * else (a device, a pipe, an open descriptor such as /dev/stdout) is written to directly.
 */
class COutputFile {
  public:
    /**
     * @param strPath absolute @param strName how messages call it
     * @throws CToolError (OUTPUT) when it cannot be written, as the operations below, and over another user's file in a
     * folder where everybody may write
     */
    COutputFile(const std::string& strPath, std::string strName);
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    /** Unless committed, a regular file is as it was. */
    ~COutputFile();

    /** Whether such a file is replaced as a whole: a regular one, or none yet. @throws CToolError (OUTPUT) */
    static bool IsReplaced(const std::string& strPath, const std::string& strName);
    /**
     * @return the file that such a name stands for, behind all links
     * @throws CToolError (OUTPUT) over another user's link in a folder where everybody may write
     */
    static std::string FindTarget(const std::string& strPath, const std::string& strName);
    void Write(std::string_view strText);
    /** Makes what was written the file, and waits until the disk holds it. */
    void Commit();

  private:
    explicit COutputFile(std::string strName);
    void OpenTemporary();
    void BeginToKeep(std::int64_t iWritten);
    [[noreturn]] void Fail(int iError) const;

    std::string m_strName;
    std::string m_strTarget;
    std::string m_strTemporary;  ///< empty: writing directly
    int m_iFile = -1;
    std::int64_t m_iWritten = 0;
    std::int64_t m_iBegun = 0;  ///< how much of it the disk was told to take
};

/** @throws CToolError (OUTPUT) for that error of a write; without a word for a closed pipe @param strName printable */
[[noreturn]] void ThrowOutputError(const std::string& strName, int iError);
