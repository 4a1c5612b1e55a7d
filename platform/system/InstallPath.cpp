#include "platform/system/InstallPath.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "platform/common/TextConversion.h"

namespace fs = std::filesystem;

namespace SYS {

namespace {

constexpr const char* INSTALL_PATH_VARIABLE = "DLP_INSTALL_PATH";

struct SInstallPath {
    std::mutex lock;
    OS::x_wstring strSet;
};

SInstallPath& InstallPath() {
    static SInstallPath s_installPath;
    return s_installPath;
}

/** @return the file that this code was loaded from; empty when it cannot be told any more */
std::string OwnFile() {
    Dl_info info = {};
    link_map* pObject = nullptr;
    if (::dladdr1(reinterpret_cast<void*>(&GetInstallPath), &info, reinterpret_cast<void**>(&pObject),
                  RTLD_DL_LINKMAP) == 0) {
        return {};
    }
    // The program itself has no name in the map; the one in info is only what it was called as.
    const char* pFile = pObject->l_name[0] != '\0' ? pObject->l_name : "/proc/self/exe";
    std::error_code error;
    return fs::canonical(pFile, error);
}

bool LiesBelow(const fs::path& file, const fs::path& folder) {
    return !folder.empty() &&
           std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first == folder.end();
}

/** A folder of that name may also hold nothing but a user's store. */
bool HoldsConfig(const fs::path& folder) {
    std::error_code error;
    return folder.is_absolute() && fs::is_directory(folder / "config", error);
}

}  // namespace

namespace Detail {

std::string FindInstallPath(const std::string& strOwnFile) {
    const fs::path folder = fs::path(strOwnFile).parent_path();
    std::error_code error;
    if (const fs::path share = (folder / "../share/dlpparser").lexically_normal(); HoldsConfig(share)) {
        return share;
    }
    if (LiesBelow(strOwnFile, fs::weakly_canonical(DLP_BINARY_DIR, error))) {
        return DLP_SOURCE_DIR;
    }
    // From a folder for the processor family in lib/.
    if (const fs::path share = (folder / "../../share/dlpparser").lexically_normal(); HoldsConfig(share)) {
        return share;
    }
    return DLP_INSTALL_DIR;
}

}  // namespace Detail

OS::x_wstring GetInstallPath() {
    SInstallPath& installPath = InstallPath();
    const std::lock_guard lock(installPath.lock);
    if (!installPath.strSet.empty()) {
        return installPath.strSet;
    }
    if (const char* pVariable = std::getenv(INSTALL_PATH_VARIABLE); pVariable != nullptr && *pVariable != '\0') {
        return OS::WideLenient(pVariable);
    }
    static const std::string s_strFound = Detail::FindInstallPath(OwnFile());
    return OS::WideLenient(s_strFound);
}

void SetInstallPath(const OS::x_wstring& strPath) {
    SInstallPath& installPath = InstallPath();
    const std::lock_guard lock(installPath.lock);
    installPath.strSet = strPath;
}

}  // namespace SYS
