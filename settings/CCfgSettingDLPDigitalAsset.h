#pragma once

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"
#include "platform/store/CSettingsRow.h"
#include "settings/CSubjectID.h"

/** Told of each field of a record. */
class DLP_PLATFORM_API CFieldInfoCallback {
  public:
    virtual ~CFieldInfoCallback();
    /** @param strName the field's column name @param strValue its value as text */
    virtual void OnField(const OS::x_wstring& strName, const OS::x_wstring& strValue) = 0;
};

/**
 * What expression and keyword-list records have in common. A record object is a copy of the stored values: getters and
 * setters touch the copy, GetThis reads and SaveThis writes. Setters take any text; SaveThis refuses what no store
 * keeps.
 */
class DLP_PLATFORM_API CCfgSettingDLPDigitalAsset {
  public:
    virtual ~CCfgSettingDLPDigitalAsset();

    /** Display name, UTF-8. */
    virtual void GetNameA(OS::x_astring& strOut) const;
    /** Display name. */
    virtual void GetNameW(OS::x_wstring& strOut) const;
    /** The record's identity among its kind. */
    virtual void GetInternalName(OS::x_wstring& strOut) const;
    virtual void GetDescription(OS::x_wstring& strOut) const;
    virtual bool IsBuiltIn() const;
    virtual bool IsModified() const;
    /** Sets the display name and leaves the scope. */
    virtual void SetName(const OS::x_wstring& strDisplayName);
    /** Sets the display name, unchanged, and keeps the scope beside it. */
    virtual void SetUniqueName(const OS::x_wstring& strScope, const OS::x_wstring& strDisplayName);
    virtual void SetInternalName(const OS::x_wstring& strName);
    virtual void SetDescription(const OS::x_wstring& strDescription);
    virtual void SetIsModified(bool bModified);
    virtual void SetIsBuildIn(bool bBuiltIn);
    virtual void EnumerateFieldInfo(CFieldInfoCallback& callback) const;
    /** Releases a record that was made with new. */
    virtual void Delete(CCfgSettingDLPDigitalAsset* pRecord);

    /**
     * Loads the stored record of this object's instance name.
     * @throws OS::CException "record not found: <instance name>" when there is none, or when the store fails
     */
    void GetThis();
    /** Writes this record whole. @throws OS::CException when the store fails or refuses a text */
    void SaveThis();

    CSubjectID GetSubjectID() const;
    const CSettingsRow& Row() const { return m_row; }
    CSettingsRow& Row() { return m_row; }

  protected:
    CCfgSettingDLPDigitalAsset(ESettingsKind eKind, const OS::x_wstring& strInstanceName);
    explicit CCfgSettingDLPDigitalAsset(CSettingsRow&& row);
    CCfgSettingDLPDigitalAsset(const CCfgSettingDLPDigitalAsset&) = default;
    CCfgSettingDLPDigitalAsset& operator=(const CCfgSettingDLPDigitalAsset&) = default;

    OS::x_wstring GetText(std::size_t iColumn) const;
    void SetText(std::size_t iColumn, const OS::x_wstring& strText);

  private:
    CSettingsRow m_row;
};
