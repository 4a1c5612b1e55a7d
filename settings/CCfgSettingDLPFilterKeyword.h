#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "settings/CCfgSettingDLPDigitalAsset.h"

/** One keyword list: its keywords as one XML text, and the condition under which it matches. */
class DLP_PLATFORM_API CCfgSettingDLPFilterKeyword : public CCfgSettingDLPDigitalAsset {
  public:
    /** Orders by instance name; null sorts first and equals null. */
    struct DLP_PLATFORM_API CCfgSettingDLPFilterKeywordComp {
        bool operator()(const boost::shared_ptr<CCfgSettingDLPFilterKeyword>& pLeft,
                        const boost::shared_ptr<CCfgSettingDLPFilterKeyword>& pRight) const;
    };

    /** An empty record bound to an instance name: SUBJECT_KEYWORD followed by the internal name. */
    explicit CCfgSettingDLPFilterKeyword(const OS::x_wstring& strInstanceName);
    explicit CCfgSettingDLPFilterKeyword(CSettingsRow&& row);
    ~CCfgSettingDLPFilterKeyword() override;

    /** "All", "Any", "Threshold" or "Distance" */
    OS::x_wstring GetCondition() const;
    void SetCondition(const OS::x_wstring& strCondition);
    int GetThreshold() const;
    void SetThreshold(int iThreshold);
    int GetNumber() const;
    void SetNumber(int iNumber);
    /** Assigns the keywords' XML text to strOut. @return false when it is empty */
    bool GetSubkeywordList(OS::x_wstring& strOut) const;
    void SetSubkeywordList(const OS::x_wstring& strXml);

    /** The category under which new records are registered. */
    static OS::x_wstring GetCategroyName();
};

using CCfgSettingDLPFilterKeywordComp = CCfgSettingDLPFilterKeyword::CCfgSettingDLPFilterKeywordComp;

/** All keyword lists of the process's store. */
class DLP_PLATFORM_API CCfgSettingDLPFilterKeywordMgr {
  public:
    using List = std::set<boost::shared_ptr<CCfgSettingDLPFilterKeyword>, CCfgSettingDLPFilterKeywordComp>;

    static CCfgSettingDLPFilterKeywordMgr* Instance();

    /** Inserts a fresh copy of every stored record. @return false when the store cannot be read */
    bool GetKeywordList(List& lstOut);
    /** Clears the vector and fills it in the list's order. @throws OS::CException when the store cannot be read */
    void GetAllInternalName(std::vector<OS::x_wstring>& vecOut);

    /** As CCfgSettingDLPFilterExpressionMgr. */
    boost::shared_ptr<CCfgSettingDLPFilterKeyword> FindByInternalName(std::string_view strName);
    void FindHeldNames(const std::vector<std::string>& vecNames, std::vector<bool>& vecHeld);
};
