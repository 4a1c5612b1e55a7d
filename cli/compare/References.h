#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "cli/compare/Policy.h"
#include "templates/MatchRule.h"

/** Whether templates refer to an asset, and whether the policy holds it. */
enum class EUse { USED, UNUSED, MISSING };

/** Which templates of a policy refer to which assets. */
struct SReferences {
    /** What a building block names, and by which name. */
    using Asset = std::pair<EElementType, std::string>;

    struct SAsset {
        bool bHeld = false;  ///< the policy has it
        std::set<std::string> users;

        EUse GetUse() const { return !bHeld ? EUse::MISSING : users.empty() ? EUse::UNUSED : EUse::USED; }
    };

    std::map<Asset, SAsset> mapAssets;                    ///< all that the policy holds or refers to
    std::map<std::string, std::set<Asset>> mapTemplates;  ///< with what each refers to
};

SReferences FindReferences(const SPolicy& policy);
