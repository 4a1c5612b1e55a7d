#include "platform/common/Paths.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"

namespace NS_StringUtils {

OS::x_wstring concatPath(const OS::x_wstring& strFolder, const OS::x_wstring& strRelative) {
    if (strFolder.empty() || strRelative.empty()) {
        return strFolder + strRelative;
    }
    constexpr wchar_t SEPARATORS[] = L"/\\";
    const std::size_t iFolderEnd = strFolder.find_last_not_of(SEPARATORS) + 1;
    const std::size_t iRelativeBegin = std::min(strRelative.find_first_not_of(SEPARATORS), strRelative.size());
    return strFolder.substr(0, iFolderEnd) + L"/" + strRelative.substr(iRelativeBegin);
}

}  // namespace NS_StringUtils

namespace OS {

namespace {

constexpr std::size_t READ_SIZE = 65536;

class CFile {
  public:
    explicit CFile(const std::string& strPath) : m_iFile(::open(strPath.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~CFile() {
        if (m_iFile >= 0) {
            ::close(m_iFile);
        }
    }
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    int Get() const { return m_iFile; }

  private:
    int m_iFile;
};

bool Exists(const std::string& strPath) {
    return ::access(strPath.c_str(), F_OK) == 0;
}

[[noreturn]] void ThrowUnreadable(const std::string& strPath, int iError) {
    throw CException(iError, WideLenient("cannot read " + strPath + ": " + std::generic_category().message(iError)), 0);
}

}  // namespace

std::string ResolvePath(const std::string& strPath) {
    if (Exists(strPath)) {
        return strPath;
    }
    std::string strSlashes = strPath;
    std::replace(strSlashes.begin(), strSlashes.end(), '\\', '/');
    // One that cannot be looked at is there as far as anyone knows; opening it tells why.
    return Exists(strSlashes) || (errno != ENOENT && errno != ENOTDIR) ? strSlashes : strPath;
}

std::string ReadWholeFile(const std::string& strPath) {
    // The system would take the part before the zero byte for the whole path.
    if (strPath.find('\0') != std::string::npos) {
        ThrowUnreadable(strPath, ENOENT);
    }
    const std::string strResolved = ResolvePath(strPath);
    const CFile file(strResolved);
    struct stat status = {};
    if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0) {
        ThrowUnreadable(strResolved, errno);
    }
    const auto iExpected = S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
    std::string strContent(iExpected + 1, '\0');  // the byte more is where the end is noticed
    std::size_t iSize = 0;
    for (;;) {
        if (iSize == strContent.size()) {
            strContent.resize(iSize + READ_SIZE);
        }
        const ssize_t iRead = ::read(file.Get(), strContent.data() + iSize, strContent.size() - iSize);
        if (iRead < 0 && errno != EINTR) {
            ThrowUnreadable(strResolved, errno);
        }
        if (iRead == 0) {
            break;
        }
        iSize += static_cast<std::size_t>(std::max<ssize_t>(iRead, 0));
    }
    if (iSize < iExpected) {
        throw CException(EIO,
                         WideLenient("cannot read " + strResolved + ": it ended after " + std::to_string(iSize) +
                                     " of " + std::to_string(iExpected) + " bytes"),
                         0);
    }
    strContent.resize(iSize);
    return strContent;
}

}  // namespace OS
