#pragma once

#include <optional>
#include <vector>

#include "cli/compare/RuleConditions.h"
#include "templates/MatchRule.h"

/** How the rules of a template match compared with those that it had. */
enum class ERelation {
    SAME,       ///< alike
    REORDERED,  ///< alike; only order, grouping or repetition differ
    STRICTER,   ///< less, and nothing else
    LOOSER,     ///< all that they did, and more
    DIFFERENT,  ///< some that they did not, and some of it no longer
    UNKNOWN,    ///< more conditions than are tried out
};

/** @return "same", "reordered" and so on */
const char* GetRelationName(ERelation eRelation);

struct SRuleComparison {
    ERelation eRelation = ERelation::SAME;
    /**
     * An example of content that only the later rules match, and one that only the earlier ones do: what it holds, an
     * expression exactly as often as it says, and nothing else that the rules name.
     */
    std::optional<std::vector<SCondition>> gained;
    std::optional<std::vector<SCondition>> lost;
};

/**
 * Compares by the truth table over all conditions that the rules name. P:x(3) holds only where P:x(2) does, and a count
 * of 0 or below always. Templates without a rule match nothing.
 */
SRuleComparison CompareRules(const std::vector<SMatchRule>& vecBefore, const std::vector<SMatchRule>& vecAfter);
