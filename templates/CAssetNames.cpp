#include "templates/CAssetNames.h"

#include <vector>

#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"

namespace {

template <class Manager>
void AskOf(Manager& manager, std::unordered_map<std::string, bool>& names) {
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
    return *names.try_emplace(std::string(strName), false).first;
}

void CAssetNames::Ask() {
    AskOf(*CCfgSettingDLPFilterExpressionMgr::Instance(), m_expressions);
    AskOf(*CCfgSettingDLPFilterKeywordMgr::Instance(), m_keywords);
}

bool CAssetNames::IsStored(EElementType eType, std::string_view strName) const {
    return (eType == EElementType::ENTITY ? m_expressions : m_keywords).at(std::string(strName));
}
