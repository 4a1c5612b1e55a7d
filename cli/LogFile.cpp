#include "cli/LogFile.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/ostream_sink.h>

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

/** For the owner alone, since lines may hold whole documents. What is there stays as it is. */
void MakeFile(const std::string& strPath) {
    const int iFile = ::open(strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, FILE_MODE);
    if (iFile >= 0) {
        ::close(iFile);
    }
}

std::shared_ptr<spdlog::logger> MakeLogger(const std::string& strPath, std::ostream& err) {
    spdlog::sink_ptr pSink;
    try {
        if (strPath.empty()) {
            pSink = std::make_shared<spdlog::sinks::ostream_sink_st>(err);
        } else {
            MakeFile(strPath);
            pSink = std::make_shared<spdlog::sinks::basic_file_sink_st>(strPath);
        }
    } catch (const spdlog::spdlog_ex& error) {
        throw CToolError(EVerdict::USAGE, std::string("--log: ") + Text::Printable(error.what()));
    }
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
    m_pLogger = MakeLogger(strPath, err);
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
