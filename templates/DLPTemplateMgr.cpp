#include "templates/DLPTemplateMgr.h"

#include <cstdint>
#include <optional>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/SettingsSchema.h"
#include "templates/TemplateLog.h"

// The store finds records through its indexes. The lines that are logged are those of reading the whole list, walking
// it and writing it back, which is what a lookup or a replacement amounts to.

namespace {

constexpr auto& LOG_SOURCE = TemplateLog::MANAGER_SOURCE;

std::optional<std::size_t> FieldColumn(int iSearchField) {
    switch (iSearchField) {
        case CTemplateMgr::SEARCH_SUBJECT:
            return TemplateColumn::SUBJECT;
        case CTemplateMgr::SEARCH_NAME:
            return TemplateColumn::DISPLAY_NAME;
        case CTemplateMgr::SEARCH_ELEMENT_NAME:
            return TemplateColumn::ELEMENT_NAME;
        default:
            return std::nullopt;
    }
}

/** @throws OS::CException when the store cannot answer */
CTemplateMgr::Record Look(CCfgSettingDLPFilterTemplateMgr& store, int iSearchField, const std::string& strValue) {
    const std::optional<std::size_t> iColumn = FieldColumn(iSearchField);
    if (!iColumn) {
        store.Count();  // reads nothing of use, but must answer as the list would
        return nullptr;
    }
    std::vector<CTemplateMgr::Record> vecFound;
    store.FindBy(*iColumn, {strValue}, vecFound);
    return vecFound.front();
}

void LogSaveEntered(std::size_t iTemplates) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::SaveSetting, vecTemplateList.size() = %d", static_cast<int>(iTemplates));
}

void LogSaveLeft(bool bSaved) {
    if (bSaved) {
        DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::SaveSetting successfully");
    } else {
        DLP_LOG(DBG::LEVEL_ERROR, L"Fail to call SetTemplateList.");
    }
}

bool Save(CCfgSettingDLPFilterTemplate& record) {
    try {
        record.SaveThis();
        return true;
    } catch (const OS::CException&) {
        return false;
    }
}

}  // namespace

CTemplateMgr::CTemplateMgr(const OS::x_wstring& strScope)
    : m_strScope(strScope), m_pStore(CCfgSettingDLPFilterTemplateMgr::Instance()) {}

bool CTemplateMgr::GetTemplateList(List& lstTemplates) {
    const bool bRead = m_pStore->GetTemplateList(lstTemplates);
    if (bRead) {
        TemplateLog::ListRead();
    } else {
        TemplateLog::ListFailed();
    }
    return bRead;
}

bool CTemplateMgr::SaveSetting(List& lstTemplates) {
    LogSaveEntered(lstTemplates.size());
    const bool bSaved = m_pStore->SetTemplateList(lstTemplates);
    LogSaveLeft(bSaved);
    return bSaved;
}

bool CTemplateMgr::FindTemplate(int iSearchField, const OS::x_wstring& strFieldValue, Record& pFound) {
    try {
        Record pRecord = FindStored(iSearchField, OS::Utf8Loose(strFieldValue));
        if (pRecord) {
            pFound = std::move(pRecord);
            return true;
        }
    } catch (const OS::CException&) {
        // FindStored has logged it
    }
    return false;
}

CTemplateMgr::Record CTemplateMgr::FindStored(int iSearchField, const std::string& strFieldValue) {
    TemplateLog::FindEntered(iSearchField, strFieldValue);
    Record pRecord;
    try {
        pRecord = Look(*m_pStore, iSearchField, strFieldValue);
    } catch (const OS::CException&) {
        TemplateLog::ListFailed();
        TemplateLog::ListUnavailable();
        throw;
    }
    TemplateLog::ListRead();
    TemplateLog::FindLeft(pRecord != nullptr);
    return pRecord;
}

bool CTemplateMgr::EditTemplate(const Record& pTemplate) {
    return Edit(pTemplate, false, true);
}

bool CTemplateMgr::ReplaceStored(const Record& pTemplate, bool bWrite) {
    return Edit(pTemplate, true, bWrite);
}

bool CTemplateMgr::Edit(const Record& pTemplate, bool bKnownStored, bool bWrite) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CTemplateMgr::EditTemplate (pTemplate = %d",
            static_cast<int>(reinterpret_cast<std::intptr_t>(pTemplate.get())));
    if (!pTemplate) {
        DLP_LOG(DBG::LEVEL_ERROR, L"pTemplate is NULL.");
        return false;
    }
    const std::string& strSubject = pTemplate->Row().GetSubject();
    bool bStored = bKnownStored;
    std::size_t iTemplates = 0;
    try {
        bStored = bStored || Look(*m_pStore, SEARCH_SUBJECT, strSubject);
        iTemplates = DBG::IsListened(DBG::LEVEL_ENTER) ? m_pStore->Count() : 0;
    } catch (const OS::CException&) {
        TemplateLog::ListFailed();
        TemplateLog::ListUnavailable();
        return false;
    }
    TemplateLog::ListRead();
    if (!bStored) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Unable to find the template (%s).", OS::WideLoose(strSubject));
        return false;
    }
    DLP_LOG(DBG::LEVEL_INFO, L"isBuildin = %d", pTemplate->IsBuiltIn());
    LogSaveEntered(iTemplates);
    const bool bSaved = !bWrite || Save(*pTemplate);
    LogSaveLeft(bSaved);
    DLP_LOG(DBG::LEVEL_LEAVE, L"CTemplateMgr::EditTemplate = %d", bSaved);
    return bSaved;
}
