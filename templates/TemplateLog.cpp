#include "templates/TemplateLog.h"

#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"

namespace TemplateLog {

namespace {
constexpr auto& LOG_SOURCE = MANAGER_SOURCE;
}  // namespace

void FindEntered(int iSearchField, std::string_view strValue) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::FindTemplate, iSearchField = %d, strFieldValue = %s", iSearchField,
            OS::WideLoose(strValue));
}

void FindLeft(bool bFound) {
    DLP_LOG(DBG::LEVEL_LEAVE, bFound ? L"CTemplateMgr::FindTemplate" : L"Unable to find the template");
}

void ListRead() {
    DLP_LOG(DBG::LEVEL_INFO, L"CTemplateMgr::GetTemplateList successfully");
}

void ListFailed() {
    DLP_LOG(DBG::LEVEL_ERROR, L"Fail to call GetTemplateList");
}

void ListUnavailable() {
    DLP_LOG(DBG::LEVEL_ERROR, L"Unable to get tempate list.");
}

}  // namespace TemplateLog
