#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "digital_assets/ExportObserver.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/StoreDump.h"

/** An empty store in memory, and short ways to fill it, to look at it and to compare log lines. */
class CAssetFixture : public testing::Test {
  protected:
    CAssetFixture() { CSettingsStore::Open("memory:"); }
    ~CAssetFixture() override { CSettingsStore::Close(); }

    static std::string Dump() { return DumpStore(CSettingsStore::Current()); }
    static CCfgSettingDLPFilterExpression Expression(const std::wstring& strName) {
        CCfgSettingDLPFilterExpression record(SUBJECT_EXPRESSION + strName);
        record.SetInternalName(strName);
        record.SetUniqueName(L"", strName);
        record.SetType(L"Generic");
        return record;
    }
    static CCfgSettingDLPFilterKeyword Keyword(const std::wstring& strName) {
        CCfgSettingDLPFilterKeyword record(SUBJECT_KEYWORD + strName);
        record.SetInternalName(strName);
        record.SetUniqueName(L"", strName);
        record.SetCondition(L"All");
        record.SetSubkeywordList(L"<dictionary/>");
        return record;
    }
    static std::vector<OS::x_wstring> Subjects(const wchar_t* pPrefix, const std::vector<std::wstring>& vecNames) {
        std::vector<OS::x_wstring> vecSubjects;
        for (const std::wstring& strName : vecNames) {
            vecSubjects.push_back(pPrefix + strName);
        }
        return vecSubjects;
    }
    /** @return what a line of this room looks like to CLogRecorder::Lines */
    static std::string Line(const std::string& strLevel, const std::string& strMessage) {
        return strLevel + " util_ParseDLPDigitalAssets.cpp " + strMessage;
    }
};

/** Keeps what an import tells, one "kind name|display name disposition reason detail @offset" per item. */
class CImportListener : public CImportObserver {
  public:
    void OnItem(const SImportItem& item) override {
        static const char* const KINDS[] = {"expression", "keyword"};
        static const char* const DISPOSITIONS[] = {"created", "updated", "unchanged", "skipped", "failed"};
        static const char* const REASONS[] = {"",          " no name",  " no display name",
                                              " built in", " existing", " missing child"};
        std::string strText = std::string(KINDS[static_cast<int>(item.eKind)]) + ' ' + item.strName + '|' +
                              item.strDisplayName + ' ' + DISPOSITIONS[static_cast<int>(item.eDisposition)];
        strText += item.eReason == EReason::STORE ? " store" : REASONS[static_cast<int>(item.eReason)];
        if (!item.strDetail.empty()) {
            strText += " (" + item.strDetail + ')';
        }
        m_vecItems.push_back(strText);
        m_vecOffsets.push_back(item.iOffset);
    }

    std::vector<std::string> m_vecItems;
    std::vector<std::size_t> m_vecOffsets;
};

/** Keeps what an export tells, one "subject: message" per record. */
class CExportListener : public CExportObserver {
  public:
    void OnLeftOut(const std::string&, ELeftOut, const std::string&) override {}
    void OnRecordFailed(const std::string& strSubject, const std::string& strMessage) override {
        m_vecFailed.push_back(strSubject + ": " + strMessage);
    }

    std::vector<std::string> m_vecFailed;
};
