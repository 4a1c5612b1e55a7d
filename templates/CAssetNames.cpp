#include "templates/CAssetNames.h"

#include <vector>

#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"

namespace {

template <class Manager, class Names>
void AskOf(Manager& manager, Names& names) {
    std::vector<std::string> vecNames;
    vecNames.reserve(names.size());
    for (const auto& entry : names) {
        vecNames.push_back(entry.first);
    }
    std::vector<bool> vecHeld;
    manager.FindHeldNames(vecNames, vecHeld);
    auto itHeld = vecHeld.begin();
    for (auto& entry : names) {
        entry.second = *itHeld++;
    }
}

}  // namespace

const CAssetNames::Entry& CAssetNames::Add(EElementType eType, std::string_view strName) {
    Names& names = eType == EElementType::ENTITY ? m_expressions : m_keywords;
    const auto itName = names.find(strName);
    return itName == names.end() ? *names.emplace(strName, false).first : *itName;
}

void CAssetNames::Ask() {
    AskOf(*CCfgSettingDLPFilterExpressionMgr::Instance(), m_expressions);
    AskOf(*CCfgSettingDLPFilterKeywordMgr::Instance(), m_keywords);
}

bool CAssetNames::IsStored(EElementType eType, std::string_view strName) const {
    const Names& names = Of(eType);
    const auto itName = names.find(strName);
    return itName != names.end() && itName->second;
}
