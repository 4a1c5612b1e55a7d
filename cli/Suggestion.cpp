#include "cli/Suggestion.h"

#include <memory>
#include <utility>
#include <vector>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/store/CSettingsStore.h"

std::string SuggestStoredName(const SKind& kind, const std::string& strWanted) {
    std::vector<std::string> vecNames;
    CSettingsStore::Current().ReadColumn(kind.eKind, NAME_COLUMN, vecNames);
    const std::string strNearest = FindNearestName(strWanted, vecNames);
    return strNearest.empty() ? std::string("dlpctl list ") + kind.pPlural + " lists the names"
                              : "did you mean " + Text::Quoted(strNearest) + '?';
}

CSettingsRow ReadStored(const SKind& kind, const std::string& strName) {
    const std::unique_ptr<CSettingsRow> pRow = CSettingsStore::Current().FindOne(kind.eKind, NAME_COLUMN, strName);
    if (pRow == nullptr) {
        throw CToolError(EVerdict::FINDINGS, std::string("no ") + kind.pWord + " is named " + Text::Quoted(strName) +
                                                 "; " + SuggestStoredName(kind, strName));
    }
    return std::move(*pRow);
}
