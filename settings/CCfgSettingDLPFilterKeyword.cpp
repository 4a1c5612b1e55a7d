#include "settings/CCfgSettingDLPFilterKeyword.h"

#include "settings/StoredRecords.h"

bool CCfgSettingDLPFilterKeyword::CCfgSettingDLPFilterKeywordComp::operator()(
    const boost::shared_ptr<CCfgSettingDLPFilterKeyword>& pLeft,
    const boost::shared_ptr<CCfgSettingDLPFilterKeyword>& pRight) const {
    return StoredRecords::ComesBefore(pLeft ? &pLeft->Row() : nullptr, pRight ? &pRight->Row() : nullptr);
}

CCfgSettingDLPFilterKeyword::CCfgSettingDLPFilterKeyword(const OS::x_wstring& strInstanceName)
    : CCfgSettingDLPDigitalAsset(ESettingsKind::KEYWORD, strInstanceName) {}

CCfgSettingDLPFilterKeyword::CCfgSettingDLPFilterKeyword(CSettingsRow&& row)
    : CCfgSettingDLPDigitalAsset(std::move(row)) {}

CCfgSettingDLPFilterKeyword::~CCfgSettingDLPFilterKeyword() = default;

OS::x_wstring CCfgSettingDLPFilterKeyword::GetCondition() const {
    return GetText(KeywordColumn::CONDITION);
}

void CCfgSettingDLPFilterKeyword::SetCondition(const OS::x_wstring& strCondition) {
    SetText(KeywordColumn::CONDITION, strCondition);
}

int CCfgSettingDLPFilterKeyword::GetThreshold() const {
    return Row().GetNumber(KeywordColumn::THRESHOLD);
}

void CCfgSettingDLPFilterKeyword::SetThreshold(int iThreshold) {
    Row().SetNumber(KeywordColumn::THRESHOLD, iThreshold);
}

int CCfgSettingDLPFilterKeyword::GetNumber() const {
    return Row().GetNumber(KeywordColumn::NUMBER);
}

void CCfgSettingDLPFilterKeyword::SetNumber(int iNumber) {
    Row().SetNumber(KeywordColumn::NUMBER, iNumber);
}

bool CCfgSettingDLPFilterKeyword::GetSubkeywordList(OS::x_wstring& strOut) const {
    strOut = GetText(KeywordColumn::TEXT);
    return !strOut.empty();
}

void CCfgSettingDLPFilterKeyword::SetSubkeywordList(const OS::x_wstring& strXml) {
    SetText(KeywordColumn::TEXT, strXml);
}

OS::x_wstring CCfgSettingDLPFilterKeyword::GetCategroyName() {
    return L"CFG_DLP_KEYWORD";
}

CCfgSettingDLPFilterKeywordMgr* CCfgSettingDLPFilterKeywordMgr::Instance() {
    static CCfgSettingDLPFilterKeywordMgr s_manager;
    return &s_manager;
}

bool CCfgSettingDLPFilterKeywordMgr::GetKeywordList(List& lstOut) {
    return StoredRecords::ReadList(ESettingsKind::KEYWORD, lstOut);
}

void CCfgSettingDLPFilterKeywordMgr::GetAllInternalName(std::vector<OS::x_wstring>& vecOut) {
    StoredRecords::ReadTexts(ESettingsKind::KEYWORD, AssetColumn::NAME, vecOut);
}

boost::shared_ptr<CCfgSettingDLPFilterKeyword> CCfgSettingDLPFilterKeywordMgr::FindByInternalName(
    std::string_view strName) {
    return StoredRecords::FindFirst<CCfgSettingDLPFilterKeyword>(ESettingsKind::KEYWORD, AssetColumn::NAME, strName);
}

void CCfgSettingDLPFilterKeywordMgr::FindHeldNames(const std::vector<std::string>& vecNames,
                                                   std::vector<bool>& vecHeld) {
    CSettingsStore::Current().FindHeld(ESettingsKind::KEYWORD, AssetColumn::NAME, vecNames, vecHeld);
}
