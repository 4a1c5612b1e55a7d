#include "cli/AssetSuggestions.h"

#include "cli/Kinds.h"
#include "cli/NearestName.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "templates/DLPXmlNormalizer.h"

namespace {

constexpr std::size_t MAX_SUGGESTIONS = 20;

}  // namespace

std::string CAssetSuggestions::Find(ESettingsKind eKind, const std::string& strName) {
    const auto itFound = m_mapFound.find({eKind, strName});
    if (itFound != m_mapFound.end()) {
        return itFound->second;
    }
    if (m_mapFound.size() == MAX_SUGGESTIONS) {
        return {};
    }
    return m_mapFound[{eKind, strName}] = FindNearestName(strName, GetNames(eKind, strName));
}

/** An older name of what is missing would be no other name. */
std::vector<std::string> CAssetSuggestions::GetNames(ESettingsKind eKind, const std::string& strMissing) {
    std::vector<std::string> vecNames = GetNames(eKind);
    for (const auto& [strOlder, strToday] : CDLPXmlNormalizer::GetOlderNames()) {
        if (m_bOlder && OS::Utf8Lenient(strToday) != strMissing) {
            vecNames.push_back(OS::Utf8Lenient(strOlder));
        }
    }
    return vecNames;
}

const std::vector<std::string>& CAssetSuggestions::GetNames(ESettingsKind eKind) {
    const auto [itNames, bNew] = m_mapNames.try_emplace(eKind);
    if (bNew) {
        CSettingsStore::Current().ReadColumn(eKind, NAME_COLUMN, itNames->second);
    }
    return itNames->second;
}
