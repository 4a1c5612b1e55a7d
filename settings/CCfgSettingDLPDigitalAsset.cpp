#include "settings/CCfgSettingDLPDigitalAsset.h"

#include <utility>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "xml/XmlHelpers.h"

namespace {
constexpr wchar_t NOT_FOUND[] = L"record not found: ";
}  // namespace

CFieldInfoCallback::~CFieldInfoCallback() = default;

CCfgSettingDLPDigitalAsset::CCfgSettingDLPDigitalAsset(ESettingsKind eKind, const OS::x_wstring& strInstanceName)
    : m_row(eKind) {
    SetText(AssetColumn::SUBJECT, strInstanceName);
}

CCfgSettingDLPDigitalAsset::CCfgSettingDLPDigitalAsset(CSettingsRow&& row) : m_row(std::move(row)) {}

CCfgSettingDLPDigitalAsset::~CCfgSettingDLPDigitalAsset() = default;

OS::x_wstring CCfgSettingDLPDigitalAsset::GetText(std::size_t iColumn) const {
    return OS::WideLoose(m_row.GetText(iColumn));
}

void CCfgSettingDLPDigitalAsset::SetText(std::size_t iColumn, const OS::x_wstring& strText) {
    m_row.SetText(iColumn, OS::Utf8Loose(strText));
}

void CCfgSettingDLPDigitalAsset::GetNameA(OS::x_astring& strOut) const {
    strOut = m_row.GetText(AssetColumn::DISPLAY_NAME);
}

void CCfgSettingDLPDigitalAsset::GetNameW(OS::x_wstring& strOut) const {
    strOut = GetText(AssetColumn::DISPLAY_NAME);
}

void CCfgSettingDLPDigitalAsset::GetInternalName(OS::x_wstring& strOut) const {
    strOut = GetText(AssetColumn::NAME);
}

void CCfgSettingDLPDigitalAsset::GetDescription(OS::x_wstring& strOut) const {
    strOut = GetText(AssetColumn::DESCRIPTION);
}

bool CCfgSettingDLPDigitalAsset::IsBuiltIn() const {
    return m_row.GetFlag(AssetColumn::PRE_DEFINED);
}

bool CCfgSettingDLPDigitalAsset::IsModified() const {
    return m_row.GetFlag(AssetColumn::MODIFIED);
}

void CCfgSettingDLPDigitalAsset::SetName(const OS::x_wstring& strDisplayName) {
    SetText(AssetColumn::DISPLAY_NAME, strDisplayName);
}

void CCfgSettingDLPDigitalAsset::SetUniqueName(const OS::x_wstring& strScope, const OS::x_wstring& strDisplayName) {
    SetText(AssetColumn::SCOPE, strScope);
    SetText(AssetColumn::DISPLAY_NAME, strDisplayName);
}

void CCfgSettingDLPDigitalAsset::SetInternalName(const OS::x_wstring& strName) {
    SetText(AssetColumn::NAME, strName);
}

void CCfgSettingDLPDigitalAsset::SetDescription(const OS::x_wstring& strDescription) {
    SetText(AssetColumn::DESCRIPTION, strDescription);
}

void CCfgSettingDLPDigitalAsset::SetIsModified(bool bModified) {
    m_row.SetFlag(AssetColumn::MODIFIED, bModified);
}

void CCfgSettingDLPDigitalAsset::SetIsBuildIn(bool bBuiltIn) {
    m_row.SetFlag(AssetColumn::PRE_DEFINED, bBuiltIn);
}

void CCfgSettingDLPDigitalAsset::EnumerateFieldInfo(CFieldInfoCallback& callback) const {
    const STable& table = GetSettingsTable(m_row.GetKind());
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        const SColumn& column = table.pColumns[i];
        std::string strValue;
        if (column.eType == EColumnType::TEXT) {
            strValue = m_row.GetText(i);
        } else if (column.eType == EColumnType::FLAG) {
            strValue = XmlHelpers::FlagText(m_row.GetFlag(i));
        } else {
            strValue = std::to_string(m_row.GetNumber(i));
        }
        callback.OnField(OS::WideLoose(column.pName), OS::WideLoose(strValue));
    }
}

void CCfgSettingDLPDigitalAsset::Delete(CCfgSettingDLPDigitalAsset* pRecord) {
    delete pRecord;
}

void CCfgSettingDLPDigitalAsset::GetThis() {
    auto pRow = CSettingsStore::Current().FindOne(m_row.GetKind(), AssetColumn::SUBJECT, m_row.GetSubject());
    if (pRow == nullptr) {
        throw OS::CException(0, NOT_FOUND + GetText(AssetColumn::SUBJECT), 0);
    }
    m_row = std::move(*pRow);
}

void CCfgSettingDLPDigitalAsset::SaveThis() {
    CSettingsStore::Current().Save(m_row);
}

CSubjectID CCfgSettingDLPDigitalAsset::GetSubjectID() const {
    return CSubjectID(GetText(AssetColumn::SUBJECT));
}
