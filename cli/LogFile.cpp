#include "cli/LogFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <spdlog/details/null_mutex.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/ostream_sink.h>

#include "cli/FileIdentity.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"

namespace {

struct SLevel {
    const char* pName;
    int iLevel;
    bool bDefault;
};

constexpr SLevel LEVELS[] = {
    {"info", DBG::LEVEL_INFO, true},       {"enter", DBG::LEVEL_ENTER, false}, {"leave", DBG::LEVEL_LEAVE, false},
    {"content", DBG::LEVEL_CONTENT, true}, {"error", DBG::LEVEL_ERROR, true},  {"failure", DBG::LEVEL_FAILURE, true},
};
constexpr const char ALL_LEVELS[] = "all";
constexpr const char LOGGER[] = "dlpctl";
constexpr mode_t FILE_MODE = 0600;
constexpr int OPENED = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW;
constexpr const char PATTERN[] = "%Y-%m-%dT%H:%M:%S.%eZ %v";

std::vector<std::string> Split(const std::string& strNames) {
    std::vector<std::string> vecNames;
    for (std::size_t iStart = 0; iStart <= strNames.size();) {
        const std::size_t iEnd = std::min(strNames.find(',', iStart), strNames.size());
        vecNames.push_back(strNames.substr(iStart, iEnd - iStart));
        iStart = iEnd + 1;
    }
    return vecNames;
}

std::vector<int> ReadLevels(const std::string& strNames) {
    std::vector<int> vecLevels;
    const std::vector<std::string> vecNames = strNames.empty() ? std::vector<std::string>() : Split(strNames);
    for (const SLevel& level : LEVELS) {
        const auto fnNamed = [&](const std::string& strName) {
            return strName == level.pName || strName == ALL_LEVELS;
        };
        if (strNames.empty() ? level.bDefault : std::any_of(vecNames.begin(), vecNames.end(), fnNamed)) {
            vecLevels.push_back(level.iLevel);
        }
    }
    for (const std::string& strName : vecNames) {
        const auto fnIs = [&](const SLevel& level) { return strName == level.pName; };
        if (strName != ALL_LEVELS && std::none_of(std::begin(LEVELS), std::end(LEVELS), fnIs)) {
            throw CToolError(EVerdict::USAGE, "--log-level: there is no level " + Text::Quoted(strName) +
                                                  "; the levels are " + CLogFile::GetLevelNames());
        }
    }
    return vecLevels;
}

/** @return what tells, once, that lines are lost */
std::function<void(const std::string&)> MakeErrorHandler(std::ostream& err) {
    return [&err, bTold = false](const std::string& strMessage) mutable {
        if (!bTold) {
            err << "dlpctl: the log cannot be written: " << Text::Printable(strMessage) << '\n' << std::flush;
            bTold = true;
        }
    };
}

/** What is made is its owner's alone, since lines may hold whole documents; what is there stays as it is. */
int Open(const std::string& strTarget) {
    if (const int iDescriptor = GetDescriptor(strTarget); iDescriptor >= 0) {
        return ::fcntl(iDescriptor, F_DUPFD_CLOEXEC, 0);
    }
    const int iFile = ::open(strTarget.c_str(), OPENED | O_CREAT | O_EXCL, FILE_MODE);
    return iFile < 0 && errno == EEXIST ? ::open(strTarget.c_str(), OPENED) : iFile;
}

std::vector<std::string> FindDangers(const struct stat& status, const std::string& strPath) {
    std::vector<std::string> vecDangers;
    if (status.st_uid != ::geteuid() && status.st_uid != 0) {
        vecDangers.push_back("the log belongs to another user, who may read it; name another file than " + strPath);
    }
    if ((status.st_mode & S_IRWXO) != 0) {
        vecDangers.push_back(std::string("everybody may ") + ((status.st_mode & S_IWOTH) != 0 ? "change" : "read") +
                             " the log; take that away: chmod o= " + strPath);
    }
    return vecDangers;
}

/** Appends to a file that is opened once, so that what is looked at is what is written. */
class CFileSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    /** @param strPath absolute @throws CToolError (OUTPUT) */
    explicit CFileSink(const std::string& strPath) : m_strName(Text::Printable(strPath)) {
        const std::string strTarget = COutputFile::FindTarget(strPath, m_strName);
        const int iFile = Open(strTarget);
        if (iFile < 0) {
            ThrowOutputError(m_strName, errno);
        }
        m_pFile.reset(::fdopen(iFile, "a"));
        if (m_pFile == nullptr) {
            ::close(iFile);
            throw std::bad_alloc();
        }
        Look(strTarget, iFile);
    }

    const std::vector<std::string>& GetDangers() const { return m_vecDangers; }

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        Require(std::fwrite(line.data(), 1, line.size(), m_pFile.get()) == line.size());
    }
    void flush_() override { Require(std::fflush(m_pFile.get()) == 0); }

  private:
    struct SClose {
        void operator()(std::FILE* pFile) const { std::fclose(pFile); }
    };

    /** An open descriptor, a device or a pipe is what its caller has made of it. */
    void Look(const std::string& strTarget, int iFile) {
        struct stat status {};
        if (GetDescriptor(strTarget) >= 0 || ::fstat(iFile, &status) != 0) {
            return;
        }
        if (IsForeign(status, std::filesystem::path(strTarget).parent_path())) {
            throw CToolError(EVerdict::OUTPUT, "cannot write " + m_strName + FOREIGN_FILE);
        }
        m_vecDangers = S_ISREG(status.st_mode) ? FindDangers(status, strTarget) : std::vector<std::string>();
    }

    void Require(bool bWritten) const {
        if (!bWritten) {
            throw std::runtime_error(m_strName + ": " + std::generic_category().message(errno));
        }
    }

    std::string m_strName;
    std::unique_ptr<std::FILE, SClose> m_pFile;
    std::vector<std::string> m_vecDangers;
};

std::shared_ptr<CFileSink> MakeFileSink(const std::string& strPath) {
    try {
        return std::make_shared<CFileSink>(strPath);
    } catch (const CToolError& error) {
        throw CToolError(EVerdict::USAGE, std::string("--log: ") + error.what());
    }
}

std::shared_ptr<spdlog::logger> MakeLogger(spdlog::sink_ptr pSink, std::ostream& err) {
    auto pLogger = std::make_shared<spdlog::logger>(LOGGER, std::move(pSink));
    pLogger->set_formatter(std::make_unique<spdlog::pattern_formatter>(PATTERN, spdlog::pattern_time_type::utc));
    pLogger->set_error_handler(MakeErrorHandler(err));
    return pLogger;
}

const char* GetLevelName(int iLevel) {
    const auto* pLevel =
        std::find_if(std::begin(LEVELS), std::end(LEVELS), [&](const SLevel& level) { return level.iLevel == iLevel; });
    return pLevel == std::end(LEVELS) ? "" : pLevel->pName;
}

}  // namespace

CLogFile::CLogFile(const std::string& strPath, const std::string& strLevels, std::ostream& err) {
    const std::vector<int> vecLevels = ReadLevels(strLevels);
    if (strPath.empty()) {
        m_pLogger = MakeLogger(std::make_shared<spdlog::sinks::ostream_sink_st>(err), err);
    } else {
        const std::shared_ptr<CFileSink> pSink = MakeFileSink(strPath);
        m_pLogger = MakeLogger(pSink, err);
        m_vecDangers = pSink->GetDangers();
    }
    DBG::SetLogFilter(
        [vecLevels](int iLevel) { return std::find(vecLevels.begin(), vecLevels.end(), iLevel) != vecLevels.end(); });
    DBG::SetLogSink([this](const DBG::CLogRecord& record) {
        m_pLogger->info("{} 0x{:x} {}:{} {}", GetLevelName(record.iLevel), record.iLevel, record.strSource,
                        record.iLine, OS::Utf8Lenient(DBG::EscapeControls(record.strMessage)));
    });
}

CLogFile::~CLogFile() {
    DBG::SetLogSink({});
    DBG::SetLogFilter({});
    m_pLogger->flush();
}

std::string CLogFile::GetLevelNames() {
    std::string strNames;
    for (const SLevel& level : LEVELS) {
        strNames.append(level.pName).append(", ");
    }
    return strNames + ALL_LEVELS;
}
