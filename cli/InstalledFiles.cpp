#include "cli/InstalledFiles.h"

#include <filesystem>
#include <system_error>

#include "cli/CommandContext.h"
#include "cli/Text.h"
#include "platform/common/TextConversion.h"
#include "platform/system/InstallPath.h"

namespace {

namespace fs = std::filesystem;

constexpr const char POLICY_FILE[] = "config/PredefinedDLPPolicy.xml";
constexpr const char MAP_FILE[] = "config/cfg_dlp_da_map.txt";

SInstalledFile Find(const fs::path& path) {
    std::error_code error;
    const fs::file_type eType = fs::status(path, error).type();
    // One that cannot be looked at is not missing; whoever reads it says what is wrong.
    return {path.string(), eType == fs::file_type::regular || eType == fs::file_type::none};
}

}  // namespace

SInstalledFile FindPolicyFile() {
    return Find(fs::path(OS::Utf8Lenient(SYS::GetInstallPath())) / POLICY_FILE);
}

SInstalledFile FindMapFile() {
    std::error_code error;
    return Find(fs::absolute(MAP_FILE, error));
}

void WarnOfMissing(CCommandContext& context, const SInstalledFile& file, const char* pEffect) {
    if (!file.bFound) {
        context.Warn(Text::Printable(file.strPath) + " is missing: " + pEffect +
                     "; --home DIR or $DLP_INSTALL_PATH sets the installation directory");
    }
}
