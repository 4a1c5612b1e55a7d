#include <boost/make_shared.hpp>

#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "templates/CTemplateExport.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/TemplateLog.h"

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

}  // namespace

std::wstring CTemplateMgr::ExportTemplate(const std::vector<OS::x_wstring>& lstTemplateName) {
    return OS::WideText(ExportDocument(lstTemplateName, nullptr, nullptr, nullptr));
}

std::wstring CTemplateMgr::ExportTemplate(const std::vector<OS::x_wstring>& lstTemplateName,
                                          boost::shared_ptr<std::set<std::wstring>>& pExpressionSubjects,
                                          boost::shared_ptr<std::set<std::wstring>>& pKeywordSubjects) {
    for (boost::shared_ptr<std::set<std::wstring>>* pSubjects : {&pExpressionSubjects, &pKeywordSubjects}) {
        if (!*pSubjects) {
            *pSubjects = boost::make_shared<std::set<std::wstring>>();
        }
    }
    return OS::WideText(ExportDocument(lstTemplateName, nullptr, pExpressionSubjects.get(), pKeywordSubjects.get()));
}

std::string CTemplateMgr::ExportDocument(const std::vector<OS::x_wstring>& lstTemplateName, CExportObserver* pObserver,
                                         std::set<std::wstring>* pExpressionSubjects,
                                         std::set<std::wstring>* pKeywordSubjects) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::ExportTemplate(lstTemplateName.size() = %d",
            static_cast<int>(lstTemplateName.size()));
    try {
        return CTemplateExport(lstTemplateName, {pExpressionSubjects, pKeywordSubjects}, pObserver).Run();
    } catch (const CXMLException& exception) {
        DLP_LOG(DBG::LEVEL_ERROR, L"CTemplateMgr::ExportTemplate(), Error: %s", exception.GetErrorMessage());
        return std::string();
    }
}
