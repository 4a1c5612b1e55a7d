#include "cli/Suggestion.h"

#include <vector>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "platform/store/CSettingsStore.h"

std::string SuggestStoredName(const SKind& kind, const std::string& strWanted) {
    std::vector<std::string> vecNames;
    CSettingsStore::Current().ReadColumn(kind.eKind, NAME_COLUMN, vecNames);
    const std::string strNearest = FindNearestName(strWanted, vecNames);
    return strNearest.empty() ? std::string("dlpctl list ") + kind.pPlural + " lists the names"
                              : "did you mean " + Text::Quoted(strNearest) + '?';
}
