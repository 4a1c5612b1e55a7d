#include "cli/CommandContext.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/Colours.h"
#include "cli/FileIdentity.h"
#include "cli/InputFile.h"
#include "cli/JsonText.h"
#include "cli/LogFile.h"
#include "cli/OutputFile.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/SqliteFile.h"
#include "platform/system/InstallPath.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char PROGRAM[] = "dlpctl: ";
constexpr const char DETAIL[] = "dlpctl: detail: ";
constexpr const char VERBOSE_LEVELS[] = "info";
constexpr const char WARNING[] = "warning: ";
constexpr const char STANDARD_OUTPUT[] = "standard output";
constexpr const char OUTPUT_TOO_LATE[] = "standard output after the store was changed";
constexpr const char INTERRUPTED[] = "interrupted";
constexpr const char UNKNOWN_FAILURE[] = "an unknown failure";
constexpr const char OUT_OF_MEMORY[] = "memory ran out";
constexpr const char OUT_OF_MEMORY_TOO_LATE[] = "memory ran out after the store was changed";
constexpr const char STANDARD_STREAM[] = "-";
constexpr const char MEMORY_STORE[] = "memory:";
constexpr const char STORE_VARIABLE[] = "DLP_STORE";
constexpr std::string_view SQLITE = "sqlite:";

bool IsTerminal(const std::ostream& err) {
    return &err == &std::cerr && ::isatty(STDERR_FILENO) == 1;
}

/** @return an empty path when it is gone */
fs::path GetWorkingFolder() {
    std::error_code error;
    return fs::current_path(error);
}

bool GoesToTerminal(const std::ostream& out) {
    return &out == &std::cout && ::isatty(STDOUT_FILENO) == 1;
}

bool IsColourWanted() {
    const char* pNoColour = std::getenv("NO_COLOR");
    return pNoColour == nullptr || *pNoColour == '\0';
}

}  // namespace

CCommandContext::CCommandContext(std::istream& in, std::ostream& out, std::ostream& err)
    : m_in(in), m_out(out), m_err(err), m_bTerminal(IsTerminal(err)), m_start(GetWorkingFolder()) {
    CStoreSession::SetChanged(false);
}

CCommandContext::~CCommandContext() {
    std::error_code error;
    fs::current_path(m_start, error);
    SYS::SetInstallPath(OS::x_wstring());
}

void CCommandContext::Prepare() {
    SetHome();
    if (IsStoreNamed()) {
        GetStoreUrl();
    }
    if (!m_options.strLanguage.empty()) {
        CDLPDigitalAssetsParser::SetLanguage(OS::WideText(m_options.strLanguage));
    }
    if (!m_options.strLog.empty() || !m_options.strLogLevels.empty() || m_options.bVerbose) {
        OpenLog();
    }
}

void CCommandContext::SetHome() {
    const bool bGiven = !m_options.strHome.empty();
    const std::string strHome = GetAbsolute(bGiven ? m_options.strHome : OS::Utf8Lenient(SYS::GetInstallPath()));
    std::error_code error;
    if (const auto eType = fs::status(strHome, error).type();
        bGiven && eType != fs::file_type::directory && eType != fs::file_type::none) {
        throw CToolError(EVerdict::USAGE, "--home: there is no directory " + Text::Quoted(m_options.strHome));
    }
    SYS::SetInstallPath(OS::WideText(strHome));
    fs::current_path(strHome, error);
    // Found by itself, a missing one is no error here: whatever looks for a file in it says so.
    if (error && error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory) {
        throw CToolError(EVerdict::USAGE,
                         "the installation directory " + Text::Quoted(strHome) + ": " + error.message());
    }
}

void CCommandContext::OpenLog() {
    std::string strPath;
    if (!m_options.strLog.empty() && m_options.strLog != STANDARD_STREAM) {
        strPath = GetAbsolute(m_options.strLog);
        if (IsDatabase(strPath) || IsBesideDatabase(strPath) || IsOfStore(strPath, GetStorePath())) {
            throw CToolError(EVerdict::USAGE, "--log: " + Text::Printable(m_options.strLog) + " is a store");
        }
        std::error_code error;
        if (!fs::is_directory(fs::path(strPath).parent_path(), error)) {
            throw CToolError(EVerdict::USAGE, "--log: the folder of " + Text::Printable(m_options.strLog) +
                                                  " does not exist; make it first");
        }
    }
    const bool bByVerbosity = m_options.strLog.empty() && m_options.strLogLevels.empty();
    m_pLog = std::make_unique<CLogFile>(strPath, bByVerbosity ? VERBOSE_LEVELS : m_options.strLogLevels, m_err);
    for (const std::string& strDanger : m_pLog->GetDangers()) {
        Warn(Text::Printable(strDanger));
    }
}

void CCommandContext::CheckIsNoLog(const std::string& strFile) const {
    if (m_pLog != nullptr && !m_options.strLog.empty() && m_options.strLog != STANDARD_STREAM &&
        IsSameFile(GetAbsolute(strFile), GetAbsolute(m_options.strLog))) {
        throw CToolError(EVerdict::USAGE, "--log: " + Text::Printable(m_options.strLog) +
                                              " has another use in this command; name another file");
    }
}

std::string CCommandContext::GetAbsolute(const std::string& strPath) const {
    if (m_start.empty() && fs::path(strPath).is_relative()) {
        // It would be taken for a path below the installation directory.
        throw CToolError(EVerdict::USAGE,
                         "the working directory is gone; name an absolute path instead of " + Text::Quoted(strPath));
    }
    return (m_start / strPath).string();
}

OS::x_wstring CCommandContext::GetScope() const {
    return OS::WideText(m_options.strScope);
}

std::string CCommandContext::ReadStandardInput() {
    if (&m_in == &std::cin) {
        return ReadDescriptor(STDIN_FILENO);
    }
    return {std::istreambuf_iterator<char>(m_in), std::istreambuf_iterator<char>()};
}

void CCommandContext::TakeEmptyStore() {
    m_options.strStore = MEMORY_STORE;
}

void CCommandContext::MakeNoStore() {
    if (IsStoreMissing()) {
        TakeEmptyStore();
    }
}

CStoreSession& CCommandContext::GetStore(CUnmadeStore::EMade eMade) {
    if (m_pStore == nullptr) {
        OpenStore(GetStoreUrl(), EUnitOfWork::WRITE, eMade);
    }
    return *m_pStore;
}

bool CCommandContext::CloseIfMadeMeanwhile() {
    const bool bMade = m_pStore != nullptr && m_pStore->IsMadeMeanwhile();
    if (bMade) {
        m_pStore.reset();
    }
    return bMade;
}

CStoreSession& CCommandContext::GetStoreToRead() {
    if (m_pStore == nullptr) {
        OpenStore(IsStoreUnmade() ? MEMORY_STORE : GetStoreUrl(), EUnitOfWork::READ);
    }
    return *m_pStore;
}

CStoreSession& CCommandContext::GetStoreToChange() {
    return m_pStore == nullptr && IsStoreMissing() ? GetStoreToRead() : GetStore();
}

void CCommandContext::OpenStore(const std::string& strUrl, EUnitOfWork eUse, CUnmadeStore::EMade eMade) {
    Detail("store " + Text::Printable(strUrl) + (eUse == EUnitOfWork::READ ? ", to read" : ""));
    m_pStore = eUse == EUnitOfWork::WRITE && IsStoreMissing() ? std::make_unique<CStoreSession>(strUrl, eMade)
                                                              : std::make_unique<CStoreSession>(strUrl, eUse);
    WarnOfStore();
}

void CCommandContext::WarnOfStore() {
    for (const std::string& strDanger : FindSqliteFileDangers(GetStorePath())) {
        Warn(Text::Printable(strDanger));
    }
}

bool CCommandContext::IsStoreMissing() const {
    std::error_code error;
    const std::string strPath = GetStorePath();
    return !strPath.empty() && fs::symlink_status(strPath, error).type() == fs::file_type::not_found;
}

/** An empty file is what is left where making a store was cut short. */
bool CCommandContext::IsStoreUnmade() const {
    std::error_code error;
    const fs::path path = GetStorePath();
    const bool bMissing = !IsStoreNamed() && IsStoreMissing();
    const bool bEmpty = fs::is_regular_file(path, error) && fs::file_size(path, error) == 0;
    return bMissing || (bEmpty && !IsSqliteFileCut(path.string()));
}

bool CCommandContext::IsStoreNamed() const {
    const char* pVariable = std::getenv(STORE_VARIABLE);
    return !m_options.strStore.empty() || (pVariable != nullptr && *pVariable != '\0');
}

std::string CCommandContext::GetStoreUrl() const {
    std::string strUrl = m_options.strStore;
    if (strUrl.empty()) {
        try {
            strUrl = CSettingsStore::GetDefaultUrl();
        } catch (const OS::CException& error) {
            throw CToolError(EVerdict::USAGE, Text::Printable(error.what()));
        }
    }
    // What follows a foreign scheme may hold a password.
    if (!CSettingsStore::IsUrl(strUrl)) {
        throw CToolError(EVerdict::USAGE, "--store: there is no kind of store " +
                                              Text::Quoted(strUrl.substr(0, strUrl.find("://"))) +
                                              "; write sqlite:PATH or memory:");
    }
    return GetAbsoluteUrl(strUrl);
}

std::string CCommandContext::GetAbsoluteUrl(const std::string& strUrl) const {
    const bool bFile = strUrl.compare(0, SQLITE.size(), SQLITE) == 0 && strUrl.size() > SQLITE.size();
    return bFile ? std::string(SQLITE) + GetAbsolute(strUrl.substr(SQLITE.size())) : strUrl;
}

std::string CCommandContext::GetStorePath() const {
    const std::string strUrl = GetStoreUrl();
    return strUrl.compare(0, SQLITE.size(), SQLITE) == 0 ? strUrl.substr(SQLITE.size()) : std::string();
}

CToolError CCommandContext::ExplainException() const {
    if (Signals::IsCaught()) {
        return {EVerdict::INTERRUPTED, INTERRUPTED};
    }
    try {
        if (m_pStore != nullptr) {
            m_pStore->ThrowIfFailed();
        }
        throw;
    } catch (const CToolError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return {EVerdict::MEMORY, CStoreSession::IsChanged() ? OUT_OF_MEMORY_TOO_LATE : OUT_OF_MEMORY};
    } catch (const std::exception& error) {
        return {EVerdict::INVALID, Text::Printable(error.what())};
    } catch (...) {
        return {EVerdict::INVALID, UNKNOWN_FAILURE};
    }
}

void CCommandContext::Write(std::string_view strText) {
    m_bData = true;
    Put(strText);
}

void CCommandContext::Put(std::string_view strText) {
    errno = 0;
    m_out.write(strText.data(), static_cast<std::streamsize>(strText.size()));
    CheckOutput();
}

void CCommandContext::Flush() {
    errno = 0;
    m_out.flush();
    CheckOutput();
}

void CCommandContext::CheckOutput() const {
    if (!m_out) {
        ThrowOutputError(CStoreSession::IsChanged() ? OUTPUT_TOO_LATE : STANDARD_OUTPUT, errno == 0 ? EIO : errno);
    }
}

void CCommandContext::WriteJson(const Json& object) {
    const std::string strLine = ToJsonText(object) + '\n';
    const std::size_t iWritten = m_pHead == nullptr ? 0 : ToJsonText(*m_pHead).size() - 1;
    m_pHead = nullptr;
    Put(std::string_view(strLine).substr(iWritten));
    Flush();
}

void CCommandContext::StartJson(const Json& head) {
    const std::string strLine = ToJsonText(head);
    Put(std::string_view(strLine).substr(0, strLine.size() - 1));
    Flush();
    m_pHead = std::make_unique<Json>(head);
}

void CCommandContext::StartAnswer(std::string_view strHead, std::string strRest) {
    m_strRest = std::move(strRest);
    Put(strHead);
    Flush();
    MakeRoom(m_strRest.size());
}

void CCommandContext::StartAnswer(const Json& head, const Json& whole) {
    const std::string strLine = ToJsonText(whole) + '\n';
    m_pHead = std::make_unique<Json>(head);
    const std::size_t iHead = ToJsonText(head).size() - 1;
    StartAnswer(std::string_view(strLine).substr(0, iHead), strLine.substr(iHead));
}

void CCommandContext::FinishAnswer() {
    m_pHead = nullptr;
    Put(m_strRest);
    Flush();
}

/** Only a file has room to make, and not every file system can. */
void CCommandContext::MakeRoom(std::size_t iBytes) const {
    const off_t iEnd = &m_out == &std::cout ? ::lseek(STDOUT_FILENO, 0, SEEK_CUR) : -1;
    if (iEnd >= 0 && iBytes != 0 &&
        ::fallocate(STDOUT_FILENO, FALLOC_FL_KEEP_SIZE, iEnd, static_cast<off_t>(iBytes)) != 0 &&
        (errno == ENOSPC || errno == EDQUOT || errno == EIO)) {
        ThrowOutputError(STANDARD_OUTPUT, errno);
    }
}

void CCommandContext::Fail(const char* pFormat, const CToolError& error) {
    const std::string strMessage = error.what();
    if (!strMessage.empty()) {
        Error(strMessage);
    }
    if (!IsJson() || m_bData || !m_out) {
        return;
    }
    Json object = m_pHead == nullptr ? Json{{"format", pFormat}} : *m_pHead;
    object["verdict"] = GetVerdictName(error.GetVerdict());
    object["message"] = strMessage;
    WriteJson(object);
}

void CCommandContext::Error(const std::string& strMessage) {
    m_err << PROGRAM << Paint(Colours::RED, strMessage) << '\n' << std::flush;
}

void CCommandContext::Warn(const std::string& strMessage) {
    m_err << PROGRAM << Paint(Colours::YELLOW, WARNING + strMessage) << '\n' << std::flush;
}

void CCommandContext::Note(const std::string& strMessage) {
    if (!m_options.bQuiet) {
        m_err << strMessage << '\n' << std::flush;
    }
}

void CCommandContext::Detail(const std::string& strMessage) {
    if (m_options.bVerbose) {
        m_err << DETAIL << strMessage << '\n' << std::flush;
    }
}

bool CCommandContext::ColoursData() const {
    return GoesToTerminal(m_out) && IsColourWanted();
}

std::size_t CCommandContext::GetDataWidth() const {
    if (!GoesToTerminal(m_out)) {
        return 0;
    }
    const char* pColumns = std::getenv("COLUMNS");
    const int iColumns = pColumns == nullptr ? 0 : std::atoi(pColumns);
    struct winsize window {};
    if (iColumns <= 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0) {
        return 0;
    }
    return iColumns > 0 ? static_cast<std::size_t>(iColumns) : window.ws_col;
}

std::string CCommandContext::Paint(const char* pColour, const std::string& strText) const {
    return m_bTerminal && IsColourWanted() ? pColour + strText + Colours::PLAIN : strText;
}
