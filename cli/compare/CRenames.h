#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "cli/compare/Policy.h"
#include "templates/MatchRule.h"

/**
 * The items of a policy that another one holds under another name: what is gone and what is new of a kind, with the
 * same content but for their names. Of several that would do, those with the same display name belong together; where
 * there are several still, none is taken for the other.
 */
class CRenames {
  public:
    CRenames() = default;
    CRenames(const SPolicy& before, const SPolicy& after);

    /** @return the name that an item has later; null when it was not renamed */
    const std::string* FindNewName(ESettingsKind eKind, const std::string& strName) const;
    /** @return whether the item had another name earlier */
    bool IsNewName(ESettingsKind eKind, const std::string& strName) const;
    /** @return whether anything that rules refer to was renamed */
    bool HasAssets() const;
    /** Gives what the earlier rules refer to its new name. @return whether they referred to what has one */
    bool Follow(std::vector<SMatchRule>& vecEarlier) const;

  private:
    struct SCandidate;
    struct SKindNames {
        std::map<std::string, std::string> mapNew;  ///< by the earlier name
        std::set<std::string> setNew;
    };

    SKindNames& Of(ESettingsKind eKind) { return m_aNames[static_cast<std::size_t>(eKind)]; }
    const SKindNames& Of(ESettingsKind eKind) const { return m_aNames[static_cast<std::size_t>(eKind)]; }
    void Find(ESettingsKind eKind, const SPolicy::Items& before, const SPolicy::Items& after);
    /** Adds to the content what must be read out of markup. */
    void Complete(std::vector<SCandidate>& vecCandidates, bool bEarlier) const;
    void Pair(ESettingsKind eKind, const std::vector<SCandidate>& vecGone, const std::vector<SCandidate>& vecNew,
              bool bDisplayName);

    std::array<SKindNames, SETTINGS_KINDS> m_aNames;
};
