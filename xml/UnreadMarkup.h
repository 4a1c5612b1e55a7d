#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/common/PlatformExport.h"

/** How many unknown elements of one parent were blanked. */
struct SBlanked {
    std::size_t iParent = 0;  ///< offset of the parent's "<"
    std::size_t iElements = 0;
};

/** Of unknown elements that stand in elements of one name no more than so many are kept, but for what is said below. */
inline constexpr std::size_t MAX_UNKNOWN_KEPT = 100000;

/**
 * Of unknown elements nothing is imported, and a node of the tree takes many times what it is written with. So where
 * markup is dense, blanks take the place of what nobody reads: whatever stands outside items and is neither a section,
 * an item nor a category, the content of unknown elements, and those above iKept. One behind a known element
 * is always kept, so that it still shows where that one ends. All else stays, at its place.
 * @param strText a policy in well-formed XML
 * @return ascending by parent
 */
DLP_PLATFORM_API std::vector<SBlanked> BlankUnreadMarkup(std::string& strText, std::size_t iKept = MAX_UNKNOWN_KEPT);
