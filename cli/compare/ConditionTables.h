#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "cli/compare/RuleConditions.h"
#include "cli/compare/TruthTable.h"

/** Truth tables of rules over the conditions that they name; those that always hold have no bit of their own. */
class CConditionTables {
  public:
    /** @param conditions must outlive this object */
    explicit CConditionTables(const CConditions& conditions);

    /** @return whether there are more conditions than a truth table is made of; nothing else can be asked then */
    bool AreTooMany() const { return m_vecOpen.size() > CTruthTable::MAX_CONDITIONS; }
    CTruthTable WorkOut(const RulesText& rules) const;
    /** @return the ways that can be: who asks for more of an expression asks for less of it as well */
    CTruthTable FindPossible() const;
    /** @return what holds in the simplest way of a table, of each expression the highest count; none if it has none */
    std::optional<std::vector<SCondition>> FindExample(const CTruthTable& table) const;

    /** @return tables over those conditions alone, in their order, that the table depends on as far as it is possible
     */
    CConditionTables Reduce(const CTruthTable& table) const;
    /** @return the condition of each bit */
    std::vector<SCondition> GetOpen() const;

    CTruthTable Of(std::size_t iCondition) const;

  private:
    std::size_t FindStandIn(std::size_t iCondition) const;

    const CConditions* m_pConditions;
    std::vector<std::size_t> m_vecBits;  ///< of each condition, or how it stands without one
    std::vector<std::size_t> m_vecOpen;  ///< the condition of each bit
};
