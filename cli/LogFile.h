#pragma once

#include <iosfwd>
#include <memory>
#include <string>

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
     * @param strPath the file to append to; empty: err
     * @param strLevels names of levels, with commas between; empty: all but entering and leaving
     * @throws CToolError (USAGE) for an unknown level name or a file that cannot be opened
     */
    CLogFile(const std::string& strPath, const std::string& strLevels, std::ostream& err);
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;
    ~CLogFile();

    /** The names of levels, for the help. */
    static std::string GetLevelNames();

  private:
    std::shared_ptr<spdlog::logger> m_pLogger;
};
