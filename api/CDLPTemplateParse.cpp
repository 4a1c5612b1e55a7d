#include "api/CDLPTemplateParse.h"

#include <exception>
#include <utility>

#include "digital_assets/CReportedImport.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "templates/DLPTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/PolicyFile.h"
#include "xml/CPolicyDocument.h"

namespace {

constexpr char LOG_SOURCE[] = ".\\util_ParseDLPTemplate.cpp";

void LogException(const OS::x_wstring& strMessage) {
    DLP_LOG(DBG::LEVEL_INFO, L"Get exception: %s", strMessage);
}

void ImportFile(const OS::x_wstring& strPath) {
    const SPolicyFile file = ReadPolicyFile(OS::WCharToChar(strPath));
    if (file.Text().empty()) {
        return;
    }
    CPolicyDocument document(file.Text());
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecAssets;
    CReportedImport reported(file.strBytes, file.iStart);
    const int iResult = CTemplateMgr(OS::x_wstring())
                            .ImportDocument(document, vecImported, vecSkipped, vecAssets, reported.GetObserver());
    reported.Finish();
    DLP_LOG(DBG::LEVEL_INFO, L"nImportResult value is = %d", iResult);
}

}  // namespace

CDLPTemplateParse::CDLPTemplateParse(OS::x_wstring strContent) : m_strContent(std::move(strContent)) {}

CDLPTemplateParse::CDLPTemplateParse(const CDLPTemplateParse&) = default;

CDLPTemplateParse& CDLPTemplateParse::operator=(const CDLPTemplateParse&) = default;

CDLPTemplateParse::~CDLPTemplateParse() = default;

void CDLPTemplateParse::GetXMLContent(OS::x_wstring& strOut) {
    strOut = m_strContent;
}

bool CDLPTemplateParse::ParseContent(std::vector<OS::x_wstring>& vecRules, std::vector<OS::x_wstring>& vecOperators) {
    CComplianceTemplates(m_strContent).GetRuleTexts(vecRules, vecOperators);
    return true;
}

bool CDLPTemplateParse::SaveToXMLStr(const std::vector<OS::x_wstring>& vecRules,
                                     const std::vector<OS::x_wstring>& vecOperators, OS::x_wstring strName,
                                     OS::x_wstring strDisplayName, OS::x_wstring strDescription) {
    const CComplianceTemplates compliance(std::move(strName), std::move(strDisplayName), std::move(strDescription),
                                          vecRules, vecOperators);
    OS::x_wstring strXml = compliance.ToXmlString();
    if (!strXml.empty()) {
        m_strContent = std::move(strXml);
    }
    return true;
}

int CDLPTemplateParse::DoTemplateImport(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                                        std::vector<OS::x_wstring>& vecImported, std::vector<OS::x_wstring>& vecSkipped,
                                        std::vector<OS::x_wstring>& vecSkippedAssets) {
    return CTemplateMgr(strScope).ImportTemplate(strXml, vecImported, vecSkipped, vecSkippedAssets);
}

void CDLPTemplateParse::DoTemplateExport(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecNames,
                                         OS::x_wstring& strOut) {
    strOut = CTemplateMgr(strScope).ExportTemplate(vecNames);
}

void CDLPTemplateParse::DoTemplateExport(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecNames,
                                         OS::x_wstring& strOut,
                                         boost::shared_ptr<std::set<std::wstring>>& pExpressionSubjects,
                                         boost::shared_ptr<std::set<std::wstring>>& pKeywordSubjects) {
    strOut = CTemplateMgr(strScope).ExportTemplate(vecNames, pExpressionSubjects, pKeywordSubjects);
}

bool CDLPTemplateParse::ImportDLPTemplateFromFile(OS::x_wstring& strPath) {
    try {
        ImportFile(strPath);
        return true;
    } catch (const OS::CException& exception) {
        LogException(exception.GetErrorMessage());
    } catch (const std::exception& exception) {
        LogException(OS::WideLenient(exception.what()));
    }
    return false;
}
