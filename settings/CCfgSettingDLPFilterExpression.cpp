#include "settings/CCfgSettingDLPFilterExpression.h"

#include "settings/StoredRecords.h"

bool CCfgSettingDLPFilterExpression::CCfgSettingDLPFilterExpressionComp::operator()(
    const boost::shared_ptr<CCfgSettingDLPFilterExpression>& pLeft,
    const boost::shared_ptr<CCfgSettingDLPFilterExpression>& pRight) const {
    return StoredRecords::ComesBefore(pLeft ? &pLeft->Row() : nullptr, pRight ? &pRight->Row() : nullptr);
}

CCfgSettingDLPFilterExpression::CCfgSettingDLPFilterExpression(const OS::x_wstring& strInstanceName)
    : CCfgSettingDLPDigitalAsset(ESettingsKind::EXPRESSION, strInstanceName) {}

CCfgSettingDLPFilterExpression::CCfgSettingDLPFilterExpression(CSettingsRow&& row)
    : CCfgSettingDLPDigitalAsset(std::move(row)) {}

CCfgSettingDLPFilterExpression::~CCfgSettingDLPFilterExpression() = default;

OS::x_wstring CCfgSettingDLPFilterExpression::GetType() const {
    return GetText(ExpressionColumn::TYPE);
}

void CCfgSettingDLPFilterExpression::SetType(const OS::x_wstring& strType) {
    SetText(ExpressionColumn::TYPE, strType);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetPattern() const {
    return GetText(ExpressionColumn::PATTERN);
}

void CCfgSettingDLPFilterExpression::SetPattern(const OS::x_wstring& strPattern) {
    SetText(ExpressionColumn::PATTERN, strPattern);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetValidator() const {
    return GetText(ExpressionColumn::VALIDATOR);
}

void CCfgSettingDLPFilterExpression::SetValidator(const OS::x_wstring& strValidator) {
    SetText(ExpressionColumn::VALIDATOR, strValidator);
}

bool CCfgSettingDLPFilterExpression::IsCaseSensitive() const {
    return Row().GetFlag(ExpressionColumn::CASE_SENSITIVE);
}

void CCfgSettingDLPFilterExpression::SetIsCaseSensitive(bool bCaseSensitive) {
    Row().SetFlag(ExpressionColumn::CASE_SENSITIVE, bCaseSensitive);
}

int CCfgSettingDLPFilterExpression::GetMinLength() const {
    return Row().GetNumber(ExpressionColumn::MIN_LENGTH);
}

void CCfgSettingDLPFilterExpression::SetMinLength(int iLength) {
    Row().SetNumber(ExpressionColumn::MIN_LENGTH, iLength);
}

int CCfgSettingDLPFilterExpression::GetMaxLength() const {
    return Row().GetNumber(ExpressionColumn::MAX_LENGTH);
}

void CCfgSettingDLPFilterExpression::SetMaxLength(int iLength) {
    Row().SetNumber(ExpressionColumn::MAX_LENGTH, iLength);
}

int CCfgSettingDLPFilterExpression::GetSuffixLength() const {
    return Row().GetNumber(ExpressionColumn::SUFFIX_LENGTH);
}

void CCfgSettingDLPFilterExpression::SetSuffixLength(int iLength) {
    Row().SetNumber(ExpressionColumn::SUFFIX_LENGTH, iLength);
}

int CCfgSettingDLPFilterExpression::GetMinLeftRadius() const {
    return Row().GetNumber(ExpressionColumn::MIN_LEFT_RADIUS);
}

void CCfgSettingDLPFilterExpression::SetMinLeftRadius(int iRadius) {
    Row().SetNumber(ExpressionColumn::MIN_LEFT_RADIUS, iRadius);
}

int CCfgSettingDLPFilterExpression::GetMaxLeftRadius() const {
    return Row().GetNumber(ExpressionColumn::MAX_LEFT_RADIUS);
}

void CCfgSettingDLPFilterExpression::SetMaxLeftRadius(int iRadius) {
    Row().SetNumber(ExpressionColumn::MAX_LEFT_RADIUS, iRadius);
}

int CCfgSettingDLPFilterExpression::GetMaxRightRadius() const {
    return Row().GetNumber(ExpressionColumn::MAX_RIGHT_RADIUS);
}

void CCfgSettingDLPFilterExpression::SetMaxRightRadius(int iRadius) {
    Row().SetNumber(ExpressionColumn::MAX_RIGHT_RADIUS, iRadius);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetAlphabetCharset() const {
    return GetText(ExpressionColumn::ALPHABET_CHARSET);
}

void CCfgSettingDLPFilterExpression::SetAlphabetCharset(const OS::x_wstring& strCharset) {
    SetText(ExpressionColumn::ALPHABET_CHARSET, strCharset);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetDisplayFormat() const {
    return GetText(ExpressionColumn::DISPLAY_FORMAT);
}

void CCfgSettingDLPFilterExpression::SetDisplayFormat(const OS::x_wstring& strFormat) {
    SetText(ExpressionColumn::DISPLAY_FORMAT, strFormat);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetExample() const {
    return GetText(ExpressionColumn::EXAMPLE);
}

void CCfgSettingDLPFilterExpression::SetExample(const OS::x_wstring& strExample) {
    SetText(ExpressionColumn::EXAMPLE, strExample);
}

OS::x_wstring CCfgSettingDLPFilterExpression::GetCategroyName() {
    return L"CFG_DLP_EXPRESSION";
}

CCfgSettingDLPFilterExpressionMgr* CCfgSettingDLPFilterExpressionMgr::Instance() {
    static CCfgSettingDLPFilterExpressionMgr s_manager;
    return &s_manager;
}

bool CCfgSettingDLPFilterExpressionMgr::GetExpressionList(List& lstOut) {
    return StoredRecords::ReadList(ESettingsKind::EXPRESSION, lstOut);
}

void CCfgSettingDLPFilterExpressionMgr::GetAllInternalName(std::vector<OS::x_wstring>& vecOut) {
    StoredRecords::ReadTexts(ESettingsKind::EXPRESSION, AssetColumn::NAME, vecOut);
}

boost::shared_ptr<CCfgSettingDLPFilterExpression> CCfgSettingDLPFilterExpressionMgr::FindByInternalName(
    std::string_view strName) {
    return StoredRecords::FindFirst<CCfgSettingDLPFilterExpression>(ESettingsKind::EXPRESSION, AssetColumn::NAME,
                                                                    strName);
}

void CCfgSettingDLPFilterExpressionMgr::FindHeldNames(const std::vector<std::string>& vecNames,
                                                      std::vector<bool>& vecHeld) {
    CSettingsStore::Current().FindHeld(ESettingsKind::EXPRESSION, AssetColumn::NAME, vecNames, vecHeld);
}
