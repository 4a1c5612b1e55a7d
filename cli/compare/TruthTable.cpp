#include "cli/compare/TruthTable.h"

#include <bit>
#include <iterator>

namespace {

constexpr std::size_t WORD_BITS = 64;
/** For the conditions that repeat within a word: the ways in which each holds. */
constexpr std::uint64_t COLUMNS[] = {0xAAAAAAAAAAAAAAAA, 0xCCCCCCCCCCCCCCCC, 0xF0F0F0F0F0F0F0F0,
                                     0xFF00FF00FF00FF00, 0xFFFF0000FFFF0000, 0xFFFFFFFF00000000};
constexpr std::size_t COLUMN_COUNT = std::size(COLUMNS);
constexpr std::uint64_t ALL = ~std::uint64_t{0};

std::uint64_t JoinWords(std::uint64_t iLeft, EOperator eOperator, std::uint64_t iRight) {
    switch (eOperator) {
        case EOperator::OR:
            return iLeft | iRight;
        case EOperator::EXCEPT:
            return iLeft & ~iRight;
        case EOperator::AND:
        case EOperator::UNKNOWN:
            break;
    }
    return iLeft & iRight;
}

}  // namespace

CTruthTable::CTruthTable(std::size_t iConditions, bool bTrue)
    : m_iWays(std::size_t{1} << iConditions), m_vecWords((m_iWays + WORD_BITS - 1) / WORD_BITS, bTrue ? ALL : 0) {}

CTruthTable CTruthTable::Of(std::size_t iConditions, std::size_t iCondition) {
    CTruthTable table(iConditions, false);
    for (std::size_t i = 0; i < table.m_vecWords.size(); ++i) {
        const bool bHolds = iCondition >= COLUMN_COUNT && (i >> (iCondition - COLUMN_COUNT) & 1U) != 0;
        table.m_vecWords[i] = iCondition < COLUMN_COUNT ? COLUMNS[iCondition] : bHolds ? ALL : 0;
    }
    return table;
}

void CTruthTable::Join(EOperator eOperator, const CTruthTable& other) {
    for (std::size_t i = 0; i < m_vecWords.size(); ++i) {
        m_vecWords[i] = JoinWords(m_vecWords[i], eOperator, other.m_vecWords[i]);
    }
}

bool CTruthTable::DependsOn(std::size_t iCondition, const CTruthTable& possible) const {
    const std::size_t iStep = iCondition < COLUMN_COUNT ? 0 : std::size_t{1} << (iCondition - COLUMN_COUNT);
    for (std::size_t i = 0; i < m_vecWords.size(); ++i) {
        if (iStep != 0 && (i & iStep) != 0) {
            continue;
        }
        const std::size_t iWith = i | iStep;
        const unsigned int iShift = iStep != 0 ? 0U : 1U << iCondition;
        const std::uint64_t iChanges = m_vecWords[i] ^ (m_vecWords[iWith] >> iShift);
        const std::uint64_t iPossible = possible.m_vecWords[i] & (possible.m_vecWords[iWith] >> iShift);
        if ((iChanges & iPossible & (iStep != 0 ? ALL : ~COLUMNS[iCondition])) != 0) {
            return true;
        }
    }
    return false;
}

std::optional<std::uint32_t> CTruthTable::FindFewest() const {
    std::optional<std::uint32_t> fewest;
    int iFewest = MAX_CONDITIONS + 1;
    for (std::size_t i = 0; i < m_vecWords.size(); ++i) {
        const int iOfWord = std::popcount(i);
        for (std::uint64_t iWord = m_vecWords[i]; iWord != 0 && iOfWord < iFewest; iWord &= iWord - 1) {
            const auto iBit = static_cast<unsigned int>(std::countr_zero(iWord));
            const std::size_t iWay = i * WORD_BITS + iBit;
            const int iHolding = iOfWord + std::popcount(iBit);
            // The last word of a small table repeats its ways.
            if (iWay < m_iWays && iHolding < iFewest) {
                fewest = static_cast<std::uint32_t>(iWay);
                iFewest = iHolding;
            }
        }
    }
    return fewest;
}
