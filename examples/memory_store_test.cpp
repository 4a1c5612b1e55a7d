// A unit test of code that reads the settings store: each case opens "memory:", which is empty at first, fills it with
// what the case needs and never touches a file.

#include <iostream>
#include <vector>

#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"

namespace {

/** The code under test: internal names of the expressions whose matches no validator checks. */
std::vector<OS::x_wstring> FindUnchecked() {
    CCfgSettingDLPFilterExpressionMgr::List lstExpressions;
    CCfgSettingDLPFilterExpressionMgr::Instance()->GetExpressionList(lstExpressions);
    std::vector<OS::x_wstring> vecNames;
    for (const auto& pExpression : lstExpressions) {
        if (pExpression->GetValidator().empty()) {
            vecNames.emplace_back();
            pExpression->GetInternalName(vecNames.back());
        }
    }
    return vecNames;
}

void Save(const OS::x_wstring& strName, const OS::x_wstring& strValidator) {
    CCfgSettingDLPFilterExpression expression(SUBJECT_EXPRESSION + strName);
    expression.SetInternalName(strName);
    expression.SetValidator(strValidator);
    expression.SaveThis();
}

int s_iFailures = 0;

void Expect(bool bHolds, const char* pCase) {
    std::cout << (bHolds ? "passed: " : "failed: ") << pCase << "\n";
    s_iFailures += bHolds ? 0 : 1;
}

}  // namespace

int main() {
    CSettingsStore::Open("memory:");
    Expect(FindUnchecked().empty(), "an empty store has nothing unchecked");

    CSettingsStore::Open("memory:");
    Save(L"account", L"iban");
    Save(L"order", L"");
    Expect(FindUnchecked() == std::vector<OS::x_wstring>{L"order"}, "only what has no validator is unchecked");

    CSettingsStore::Close();
    return s_iFailures == 0 ? 0 : 1;
}
