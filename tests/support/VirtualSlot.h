#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/** A virtual destructor stands first and takes two slots. */
inline constexpr std::size_t SLOT_AFTER_DESTRUCTOR = 2;

/** The place of a virtual operation in the class's table: a pointer to it is 1 + its offset there. */
template <class Operation>
std::size_t Slot(Operation pOperation) {
    static_assert(sizeof(pOperation) == 2 * sizeof(std::uintptr_t));
    std::uintptr_t aWords[2];
    std::memcpy(aWords, &pOperation, sizeof(aWords));
    return (aWords[0] - 1) / sizeof(void*);
}
