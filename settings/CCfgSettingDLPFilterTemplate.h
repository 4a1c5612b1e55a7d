#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"
#include "platform/store/CSettingsRow.h"
#include "settings/CSubjectID.h"

/**
 * One compliance template: its XML element, names, industries and regions. A record object is a copy of the stored
 * values; SaveThis writes it whole. Setters take any text; SaveThis refuses what no store keeps.
 */
class DLP_PLATFORM_API CCfgSettingDLPFilterTemplate {
  public:
    /** Orders by instance name; null sorts first and equals null. */
    struct DLP_PLATFORM_API CCfgSettingDLPFilterTemplateComp {
        bool operator()(const boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pLeft,
                        const boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pRight) const;
    };

    /** An empty record bound to an instance name: SUBJECT_TEMPLATE followed by the internal name. */
    explicit CCfgSettingDLPFilterTemplate(const OS::x_wstring& strInstanceName);
    explicit CCfgSettingDLPFilterTemplate(CSettingsRow&& row);
    virtual ~CCfgSettingDLPFilterTemplate();

    /** Display name. */
    void GetNameW(OS::x_wstring& strOut) const;
    void GetDescription(OS::x_wstring& strOut) const;
    void SetDescription(const OS::x_wstring& strDescription);
    /** Names of industries, in the order given. */
    void GetIndustry(std::vector<OS::x_wstring>& vecOut) const;
    void SetIndustry(const std::vector<OS::x_wstring>& vecNames);
    /** Names of regions, in the order given. */
    void GetRegion(std::vector<OS::x_wstring>& vecOut) const;
    void SetRegion(const std::vector<OS::x_wstring>& vecNames);
    bool IsBuiltIn() const;
    void SetIsBuildIn(bool bBuiltIn);
    /** The template's own XML text. */
    void GetElement(OS::x_wstring& strOut) const;
    void SetElement(const OS::x_wstring& strXml);
    /** Sets the display name, unchanged, and keeps the scope beside it. */
    void SetUniqueName(const OS::x_wstring& strScope, const OS::x_wstring& strDisplayName);
    CSubjectID GetSubjectID() const;
    /** Writes this record whole. @throws OS::CException when the store fails or refuses a text */
    void SaveThis();

    /** The category under which new records are registered. */
    static OS::x_wstring GetCategroyName();

    /** SetElement for UTF-8 markup whose template node carries the name attribute given. */
    void SetElementMarkup(std::string strXml, std::string strElementName);
    /**
     * The row as it is to be stored: the element's name is read from the element when SetElement changed it.
     */
    const CSettingsRow& Row() const;
    CSettingsRow& EditRow() { return m_row; }

  private:
    mutable CSettingsRow m_row;
    mutable bool m_bElementNameKnown = true;
};

using CCfgSettingDLPFilterTemplateComp = CCfgSettingDLPFilterTemplate::CCfgSettingDLPFilterTemplateComp;

/** All templates of the process's store. */
class DLP_PLATFORM_API CCfgSettingDLPFilterTemplateMgr {
  public:
    using List = std::set<boost::shared_ptr<CCfgSettingDLPFilterTemplate>, CCfgSettingDLPFilterTemplateComp>;

    static CCfgSettingDLPFilterTemplateMgr* Instance();

    /** Inserts a fresh copy of every stored record. @return false when the store cannot be read */
    bool GetTemplateList(List& lstOut);
    /** Makes the store hold exactly these records; nulls are passed over. @return false, nothing changed, on failure */
    bool SetTemplateList(List& lstTemplates);

    /**
     * For each value the first record, in the list's order, whose column (TemplateColumn, UTF-8) equals it; null where
     * there is none.
     * @throws OS::CException when the store cannot answer
     */
    void FindBy(std::size_t iColumn, const std::vector<std::string>& vecValues,
                std::vector<boost::shared_ptr<CCfgSettingDLPFilterTemplate>>& vecRecords);
    /** @throws OS::CException when the store cannot answer */
    std::size_t Count();
};
