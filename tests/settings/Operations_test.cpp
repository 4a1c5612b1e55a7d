#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>
#include <utility>

#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "settings/CMgmtClass.h"
#include "settings/CSubjectID.h"
#include "tests/support/VirtualSlot.h"

// Programs are compiled against these operations: each line fails to compile when one of them changes.
namespace {

using boost::shared_ptr;
using OS::x_astring;
using OS::x_wstring;
using Asset = CCfgSettingDLPDigitalAsset;
using Expression = CCfgSettingDLPFilterExpression;
using Keyword = CCfgSettingDLPFilterKeyword;
using Template = CCfgSettingDLPFilterTemplate;
using Names = std::vector<x_wstring>;

#define HAS(Signature, Operation) static_assert(std::is_same_v<Signature, decltype(Operation)>)

HAS(void (Asset::*)(x_astring&) const, &Asset::GetNameA);
HAS(void (Asset::*)(x_wstring&) const, &Asset::GetNameW);
HAS(void (Asset::*)(x_wstring&) const, &Asset::GetInternalName);
HAS(void (Asset::*)(x_wstring&) const, &Asset::GetDescription);
HAS(bool (Asset::*)() const, &Asset::IsBuiltIn);
HAS(bool (Asset::*)() const, &Asset::IsModified);
HAS(void (Asset::*)(const x_wstring&), &Asset::SetName);
HAS(void (Asset::*)(const x_wstring&, const x_wstring&), &Asset::SetUniqueName);
HAS(void (Asset::*)(const x_wstring&), &Asset::SetInternalName);
HAS(void (Asset::*)(const x_wstring&), &Asset::SetDescription);
HAS(void (Asset::*)(bool), &Asset::SetIsModified);
HAS(void (Asset::*)(bool), &Asset::SetIsBuildIn);
HAS(void (Asset::*)(CFieldInfoCallback&) const, &Asset::EnumerateFieldInfo);
HAS(void (Asset::*)(Asset*), &Asset::Delete);
HAS(void (Asset::*)(), &Asset::GetThis);
HAS(void (Asset::*)(), &Asset::SaveThis);
static_assert(std::has_virtual_destructor_v<Asset>);

HAS(x_wstring (Expression::*)() const, &Expression::GetType);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetType);
HAS(x_wstring (Expression::*)() const, &Expression::GetPattern);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetPattern);
HAS(x_wstring (Expression::*)() const, &Expression::GetValidator);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetValidator);
HAS(bool (Expression::*)() const, &Expression::IsCaseSensitive);
HAS(void (Expression::*)(bool), &Expression::SetIsCaseSensitive);
HAS(int (Expression::*)() const, &Expression::GetMinLength);
HAS(void (Expression::*)(int), &Expression::SetMinLength);
HAS(int (Expression::*)() const, &Expression::GetMaxLength);
HAS(void (Expression::*)(int), &Expression::SetMaxLength);
HAS(int (Expression::*)() const, &Expression::GetSuffixLength);
HAS(void (Expression::*)(int), &Expression::SetSuffixLength);
HAS(int (Expression::*)() const, &Expression::GetMinLeftRadius);
HAS(void (Expression::*)(int), &Expression::SetMinLeftRadius);
HAS(int (Expression::*)() const, &Expression::GetMaxLeftRadius);
HAS(void (Expression::*)(int), &Expression::SetMaxLeftRadius);
HAS(int (Expression::*)() const, &Expression::GetMaxRightRadius);
HAS(void (Expression::*)(int), &Expression::SetMaxRightRadius);
HAS(x_wstring (Expression::*)() const, &Expression::GetAlphabetCharset);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetAlphabetCharset);
HAS(x_wstring (Expression::*)() const, &Expression::GetDisplayFormat);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetDisplayFormat);
HAS(x_wstring (Expression::*)() const, &Expression::GetExample);
HAS(void (Expression::*)(const x_wstring&), &Expression::SetExample);
HAS(x_wstring (*)(), &Expression::GetCategroyName);
static_assert(std::is_constructible_v<Expression, const x_wstring&>);
static_assert(std::is_base_of_v<Asset, Expression>);

HAS(x_wstring (Keyword::*)() const, &Keyword::GetCondition);
HAS(void (Keyword::*)(const x_wstring&), &Keyword::SetCondition);
HAS(int (Keyword::*)() const, &Keyword::GetThreshold);
HAS(void (Keyword::*)(int), &Keyword::SetThreshold);
HAS(int (Keyword::*)() const, &Keyword::GetNumber);
HAS(void (Keyword::*)(int), &Keyword::SetNumber);
HAS(bool (Keyword::*)(x_wstring&) const, &Keyword::GetSubkeywordList);
HAS(void (Keyword::*)(const x_wstring&), &Keyword::SetSubkeywordList);
HAS(x_wstring (*)(), &Keyword::GetCategroyName);
static_assert(std::is_constructible_v<Keyword, const x_wstring&>);
static_assert(std::is_base_of_v<Asset, Keyword>);

using ExpressionMgr = CCfgSettingDLPFilterExpressionMgr;
using ExpressionList = std::set<shared_ptr<Expression>, CCfgSettingDLPFilterExpressionComp>;
HAS(ExpressionMgr* (*)(), &ExpressionMgr::Instance);
HAS(bool (ExpressionMgr::*)(ExpressionList&), &ExpressionMgr::GetExpressionList);
HAS(void (ExpressionMgr::*)(Names&), &ExpressionMgr::GetAllInternalName);
using KeywordMgr = CCfgSettingDLPFilterKeywordMgr;
using KeywordList = std::set<shared_ptr<Keyword>, CCfgSettingDLPFilterKeywordComp>;
HAS(KeywordMgr* (*)(), &KeywordMgr::Instance);
HAS(bool (KeywordMgr::*)(KeywordList&), &KeywordMgr::GetKeywordList);
HAS(void (KeywordMgr::*)(Names&), &KeywordMgr::GetAllInternalName);

HAS(void (Template::*)(x_wstring&) const, &Template::GetNameW);
HAS(void (Template::*)(x_wstring&) const, &Template::GetDescription);
HAS(void (Template::*)(const x_wstring&), &Template::SetDescription);
HAS(void (Template::*)(Names&) const, &Template::GetIndustry);
HAS(void (Template::*)(const Names&), &Template::SetIndustry);
HAS(void (Template::*)(Names&) const, &Template::GetRegion);
HAS(void (Template::*)(const Names&), &Template::SetRegion);
HAS(bool (Template::*)() const, &Template::IsBuiltIn);
HAS(void (Template::*)(bool), &Template::SetIsBuildIn);
HAS(void (Template::*)(x_wstring&) const, &Template::GetElement);
HAS(void (Template::*)(const x_wstring&), &Template::SetElement);
HAS(void (Template::*)(const x_wstring&, const x_wstring&), &Template::SetUniqueName);
static_assert(std::is_same_v<CSubjectID, decltype(std::declval<Template&>().GetSubjectID())>);
HAS(void (Template::*)(), &Template::SaveThis);
HAS(x_wstring (*)(), &Template::GetCategroyName);
static_assert(std::is_constructible_v<Template, const x_wstring&>);
static_assert(std::has_virtual_destructor_v<Template>);

using TemplateMgr = CCfgSettingDLPFilterTemplateMgr;
using TemplateList = std::set<shared_ptr<Template>, Template::CCfgSettingDLPFilterTemplateComp>;
HAS(TemplateMgr* (*)(), &TemplateMgr::Instance);
HAS(bool (TemplateMgr::*)(TemplateList&), &TemplateMgr::GetTemplateList);
HAS(bool (TemplateMgr::*)(TemplateList&), &TemplateMgr::SetTemplateList);

// The comparators go by both names.
static_assert(std::is_same_v<Expression::CCfgSettingDLPFilterExpressionComp, CCfgSettingDLPFilterExpressionComp>);
static_assert(std::is_same_v<Keyword::CCfgSettingDLPFilterKeywordComp, CCfgSettingDLPFilterKeywordComp>);
static_assert(std::is_same_v<Template::CCfgSettingDLPFilterTemplateComp, CCfgSettingDLPFilterTemplateComp>);
HAS(bool (CCfgSettingDLPFilterTemplateComp::*)(const shared_ptr<Template>&, const shared_ptr<Template>&) const,
    &CCfgSettingDLPFilterTemplateComp::operator());

HAS(void (CSubjectID::*)(x_wstring&) const, &CSubjectID::GetSubjectName);
static_assert(std::has_virtual_destructor_v<CSubjectID> && std::is_copy_constructible_v<CSubjectID>);
HAS(CMgmtObjectBase* (CMgmtClass::*)(const wchar_t*), &CMgmtClass::CreateInstance);
static_assert(std::is_constructible_v<CMgmtClass, const wchar_t*, bool>);
static_assert(std::has_virtual_destructor_v<CMgmtClass> && std::has_virtual_destructor_v<CMgmtObjectBase>);

TEST(SettingsOperations, VirtualsStandInTheirSlots) {
    const std::size_t SLOTS[] = {
        Slot(&Asset::GetNameA),
        Slot(&Asset::GetNameW),
        Slot(&Asset::GetInternalName),
        Slot(&Asset::GetDescription),
        Slot(&Asset::IsBuiltIn),
        Slot(&Asset::IsModified),
        Slot(&Asset::SetName),
        Slot(&Asset::SetUniqueName),
        Slot(&Asset::SetInternalName),
        Slot(&Asset::SetDescription),
        Slot(&Asset::SetIsModified),
        Slot(&Asset::SetIsBuildIn),
        Slot(&Asset::EnumerateFieldInfo),
        Slot(&Asset::Delete),
    };
    for (std::size_t i = 0; i < std::size(SLOTS); ++i) {
        EXPECT_EQ(SLOT_AFTER_DESTRUCTOR + i, SLOTS[i]);
    }
}

}  // namespace
