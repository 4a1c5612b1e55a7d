#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/common/TextHash.h"

/**
 * Finds the numbers of texts by their hashes: a table of numbers alone, for where there may be millions of texts.
 * Whoever uses it keeps the texts.
 */
class CTextIndex {
  public:
    using Number = std::uint32_t;
    static constexpr Number NONE = static_cast<Number>(-1);

    /**
     * @param fnIs whether the text of a number is the one that is looked for
     * @return the place of its number; one that is NONE, and may be given a number, when there is none
     */
    template <class F>
    Number& Find(std::string_view strText, const F& fnIs) {
        for (std::size_t i = OS::STextHash()(strText);; ++i) {
            Number& iNumber = m_vecNumbers[i & (m_vecNumbers.size() - 1)];
            if (iNumber == NONE || fnIs(iNumber)) {
                return iNumber;
            }
        }
    }

    /** To be called once a place was given a number. @param fnText the text of a number */
    template <class F>
    void NoteAdded(const F& fnText) {
        if (++m_iAdded <= m_vecNumbers.size() / FREE_SHARE * (FREE_SHARE - 1)) {
            return;
        }
        std::vector<Number> vecNumbers(2 * m_vecNumbers.size(), NONE);
        vecNumbers.swap(m_vecNumbers);
        std::erase(vecNumbers, NONE);
        for (const Number iNumber : vecNumbers) {
            Find(fnText(iNumber), [](Number) { return false; }) = iNumber;
        }
    }

  private:
    static constexpr std::size_t FEWEST = 64;
    static constexpr std::size_t FREE_SHARE = 4;  ///< of so many places one is free

    std::vector<Number> m_vecNumbers = std::vector<Number>(FEWEST, NONE);  ///< a power of two of them
    std::size_t m_iAdded = 0;
};
