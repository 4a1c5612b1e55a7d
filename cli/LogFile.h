#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace spdlog {
class logger;
}

/**
 * Writes the library's log lines while it lives, one each: UTC time in ISO 8601 with milliseconds, level by name and
 * number, source and line, message. Control characters are escaped, so that no document can forge a line.
 */
class CLogFile {
  public:
    /**
     * @param strPath absolute, the file to append to; empty: err
     * @param strLevels names of levels, with commas between; empty: all but entering and leaving
     * @throws CToolError (USAGE) for an unknown level name or a file that cannot be opened; also where everybody may
     * write into its folder and it, or a link to it, is another user's
     */
    CLogFile(const std::string& strPath, const std::string& strLevels, std::ostream& err);
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;
    ~CLogFile();

    /** @return who else may read or change the file, and what to do against that; nothing when nobody may */
    const std::vector<std::string>& GetDangers() const { return m_vecDangers; }
    /** The names of levels, for the help. */
    static std::string GetLevelNames();

  private:
    std::shared_ptr<spdlog::logger> m_pLogger;
    std::vector<std::string> m_vecDangers;
};
