#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/store/CSettingsRow.h"

/** Finds the asset that somebody who referred to none most likely meant. */
class CAssetSuggestions {
  public:
    /** @param bOlder whether the references are those of the older layout: the names of its map are known too */
    explicit CAssetSuggestions(bool bOlder) : m_bOlder(bOlder) {}

    /**
     * Looks at stored names for the first few that are asked for: it takes long, and nobody reads hundreds of hints.
     * @return "" when none is near @throws OS::CException when the store fails
     */
    std::string Find(ESettingsKind eKind, const std::string& strName);

  private:
    std::vector<std::string> GetNames(ESettingsKind eKind, const std::string& strMissing);
    const std::vector<std::string>& GetNames(ESettingsKind eKind);

    bool m_bOlder;
    std::map<ESettingsKind, std::vector<std::string>> m_mapNames;
    std::map<std::pair<ESettingsKind, std::string>, std::string> m_mapFound;
};
