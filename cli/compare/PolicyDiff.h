#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/RecordJson.h"
#include "cli/compare/CRenames.h"
#include "cli/compare/Policy.h"
#include "cli/compare/RuleComparison.h"

/** Keywords that are not the same on both sides, sorted; of those that stand there several times, each is compared. */
struct SKeywordsChange {
    std::vector<SKeyword> vecBefore;
    std::vector<SKeyword> vecAfter;

    bool IsAny() const { return !vecBefore.empty() || !vecAfter.empty(); }
    /** Pairs them by their texts. @param fnPair is given what stands on either side; not null both */
    void ForEach(const std::function<void(const SKeyword* pBefore, const SKeyword* pAfter)>& fnPair) const;
};

/** Rules that are written otherwise, one text per rule with its operator before it, and what that means. */
struct SRulesChange {
    std::vector<std::string> vecBefore;
    std::vector<std::string> vecAfter;
    SRuleComparison comparison;
};

/** An item that is not written alike in two policies. */
struct SItemChange {
    ESettingsKind eKind = ESettingsKind::EXPRESSION;
    std::string strName;                    ///< of what was renamed the earlier one
    const CSettingsRow* pBefore = nullptr;  ///< null: it was added
    const CSettingsRow* pAfter = nullptr;   ///< null: it was removed
    std::vector<std::size_t> vecColumns{};  ///< those that differ
    SKeywordsChange keywords{};
    std::optional<SRulesChange> rules{};
    std::string strNewName{};  ///< "" unless it was renamed

    /** @return whether more differs than how rules that match alike are written */
    bool IsDifference() const;
};

/**
 * @return what differs, by kind and name; it points into the policies. What was renamed counts as one item, and rules
 * that refer to it are compared under its new name. What says nothing of the policy is not compared:
 * identifiers, scope and marks of the store, order, and markup that no item is read from.
 */
std::vector<SItemChange> ComparePolicies(const SPolicy& before, const SPolicy& after);

/**
 * The same for one item, also when nothing differs.
 * @param pBefore, pAfter not null both @param renames of what its rules refer to
 */
SItemChange CompareItem(const std::string& strName, const CSettingsRow* pBefore, const CSettingsRow* pAfter,
                        const CRenames& renames = {});
