#include "templates/PolicyFile.h"

#include <algorithm>
#include <stdexcept>

#include "platform/common/CException.h"
#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"

namespace {

std::string ReadBytes(const std::string& strPath) {
    try {
        return OS::ReadWholeFile(strPath);
    } catch (const OS::CException&) {
        throw std::runtime_error("Open DLP template policy file failed!");
    }
}

}  // namespace

SPolicyFile ReadPolicyFile(const std::string& strPath) {
    SPolicyFile file;
    file.strBytes = ReadBytes(strPath);
    file.iStart = std::min(file.strBytes.find('<'), file.strBytes.size());
    if (OS::FindInvalidUtf8(file.Text()) != std::string_view::npos) {
        OS::WideText(file.Text());  // throws, and says where
    }
    return file;
}
