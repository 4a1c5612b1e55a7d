#include "tests/model/driver/Sequence.h"

#include <exception>
#include <filesystem>
#include <ostream>
#include <string_view>
#include <vector>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/RecordJson.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"
#include "platform/system/InstallPath.h"
#include "tests/model/driver/JsonText.h"
#include "tests/model/driver/Operations.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"

namespace {

/** Messages that end in an address, up to it. */
constexpr std::wstring_view POINTER_MESSAGES[] = {L"CTemplateMgr::EditTemplate (pTemplate = ",
                                                  L"DLPMetaDataLoaderImpl::MakeDOMNode() return "};

std::string PortableMessage(const std::wstring& strMessage) {
    for (const std::wstring_view strBefore : POINTER_MESSAGES) {
        if (strMessage.starts_with(strBefore)) {
            return OS::Utf8Lenient(strBefore) + "<pointer>";
        }
    }
    return OS::Utf8Lenient(strMessage);
}

Json LogToJson(const CLogRecorder& log) {
    Json lines = Json::array();
    for (const DBG::CLogRecord& record : log.Records()) {
        lines.push_back({record.iLevel, record.strSource, PortableMessage(record.strMessage)});
    }
    return lines;
}

Json StoreToJson() {
    Json dump = Json::object();
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        Json& list = dump[GetSettingsTable(eKind).pName] = Json::array();
        CSettingsStore::Current().ReadAll(eKind, [&](CSettingsRow&& row) { list.push_back(RecordToJson(row)); });
    }
    return dump;
}

/** Files of the installation directory; null stands for a file that is missing. */
void WriteHome(const Json& home, const CTempDir& folder) {
    folder.MakeFolder("config");
    for (const auto& [strName, content] : home.items()) {
        if (!content.is_null()) {
            folder.Write("config/" + strName, BytesOf(content));
        }
    }
}

Json RunOperation(const Json& operation) {
    Json result = Json::object();
    CLogRecorder log;
    result["threw"] = nullptr;
    try {
        Operations::Run(operation, result);
    } catch (const std::exception& error) {
        result["threw"] = error.what();
    }
    result["log"] = LogToJson(log);
    return result;
}

}  // namespace

void RunSequence(const Json& sequence, EStoreMake eStore, std::ostream& out) {
    const CTempDir folder;
    WriteHome(sequence.at("home"), folder);
    std::filesystem::current_path(folder.Path());
    SYS::SetInstallPath(OS::WideText(folder.Path()));
    CSettingsStore::Open(eStore == EStoreMake::MEMORY ? "memory:" : "sqlite:" + folder.Path("settings.db"));
    for (const Json& operation : sequence.at("operations")) {
        Json result = RunOperation(operation);
        result["dump"] = StoreToJson();
        result["version"] = JsonOf(CDLPDigitalAssetsParser::GetVersion());
        out << result.dump() << std::endl;  // at once: the next operation may crash
    }
    CSettingsStore::Close();
}
