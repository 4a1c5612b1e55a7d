#include "cli/FolderFiles.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/CommandContext.h"
#include "cli/InputFile.h"
#include "platform/common/TextTools.h"

namespace {

namespace fs = std::filesystem;

constexpr const char STANDARD_STREAM[] = "-";
constexpr const char EXTENSION[] = ".xml";
constexpr const char CANNOT_READ[] = "a folder's list cannot be read: ";

bool IsPolicy(const fs::directory_entry& entry) {
    std::error_code error;
    return entry.is_regular_file(error) &&
           OS::EqualsNoCase(entry.path().extension().string(), std::string_view(EXTENSION));
}

}  // namespace

std::vector<std::string> ListFiles(const CCommandContext& context, const std::string& strFile) {
    const std::string strPath = context.GetAbsolute(strFile);
    std::error_code error;
    if (strFile == STANDARD_STREAM || !fs::is_directory(strPath, error)) {
        return {strFile};
    }
    std::vector<std::string> vecFiles;
    fs::recursive_directory_iterator it(strPath, error);
    for (; !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (IsPolicy(*it)) {
            vecFiles.push_back((fs::path(strFile) / it->path().lexically_relative(strPath)).string());
        }
    }
    if (error) {
        throw CInputError(strFile, CANNOT_READ + error.message());
    }
    std::sort(vecFiles.begin(), vecFiles.end());
    return vecFiles;
}
