#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "settings/CCfgSettingDLPDigitalAsset.h"

/** One expression: a regular expression with its type, bounds, validator and character set. */
class DLP_PLATFORM_API CCfgSettingDLPFilterExpression : public CCfgSettingDLPDigitalAsset {
  public:
    /** Orders by instance name; null sorts first and equals null. */
    struct DLP_PLATFORM_API CCfgSettingDLPFilterExpressionComp {
        bool operator()(const boost::shared_ptr<CCfgSettingDLPFilterExpression>& pLeft,
                        const boost::shared_ptr<CCfgSettingDLPFilterExpression>& pRight) const;
    };

    /** An empty record bound to an instance name: SUBJECT_EXPRESSION followed by the internal name. */
    explicit CCfgSettingDLPFilterExpression(const OS::x_wstring& strInstanceName);
    explicit CCfgSettingDLPFilterExpression(CSettingsRow&& row);
    ~CCfgSettingDLPFilterExpression() override;

    /** "Generic", "Type 1", "Type 2" or "Type 3" */
    OS::x_wstring GetType() const;
    void SetType(const OS::x_wstring& strType);
    OS::x_wstring GetPattern() const;
    void SetPattern(const OS::x_wstring& strPattern);
    OS::x_wstring GetValidator() const;
    void SetValidator(const OS::x_wstring& strValidator);
    bool IsCaseSensitive() const;
    void SetIsCaseSensitive(bool bCaseSensitive);
    int GetMinLength() const;
    void SetMinLength(int iLength);
    int GetMaxLength() const;
    void SetMaxLength(int iLength);
    int GetSuffixLength() const;
    void SetSuffixLength(int iLength);
    int GetMinLeftRadius() const;
    void SetMinLeftRadius(int iRadius);
    int GetMaxLeftRadius() const;
    void SetMaxLeftRadius(int iRadius);
    int GetMaxRightRadius() const;
    void SetMaxRightRadius(int iRadius);
    OS::x_wstring GetAlphabetCharset() const;
    void SetAlphabetCharset(const OS::x_wstring& strCharset);
    OS::x_wstring GetDisplayFormat() const;
    void SetDisplayFormat(const OS::x_wstring& strFormat);
    OS::x_wstring GetExample() const;
    void SetExample(const OS::x_wstring& strExample);

    /** The category under which new records are registered. */
    static OS::x_wstring GetCategroyName();
};

using CCfgSettingDLPFilterExpressionComp = CCfgSettingDLPFilterExpression::CCfgSettingDLPFilterExpressionComp;

/** All expressions of the process's store. */
class DLP_PLATFORM_API CCfgSettingDLPFilterExpressionMgr {
  public:
    using List = std::set<boost::shared_ptr<CCfgSettingDLPFilterExpression>, CCfgSettingDLPFilterExpressionComp>;

    static CCfgSettingDLPFilterExpressionMgr* Instance();

    /** Inserts a fresh copy of every stored record. @return false when the store cannot be read */
    bool GetExpressionList(List& lstOut);
    /** Clears the vector and fills it in the list's order. @throws OS::CException when the store cannot be read */
    void GetAllInternalName(std::vector<OS::x_wstring>& vecOut);

    /**
     * The first record, in the list's order, of that internal name (UTF-8), through an index.
     * @return null when there is none
     * @throws OS::CException when the store cannot answer
     */
    boost::shared_ptr<CCfgSettingDLPFilterExpression> FindByInternalName(std::string_view strName);
    /** Which of the internal names (UTF-8) are stored. @throws OS::CException when the store cannot answer */
    void FindHeldNames(const std::vector<std::string>& vecNames, std::vector<bool>& vecHeld);
};
