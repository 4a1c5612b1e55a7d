#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/common/PlatformExport.h"

/** Hashes of texts that come from outside: whoever writes a document cannot choose texts that all have one. */
namespace OS {

/**
 * @return a number that nobody can foretell, another one each time; where the system has no random numbers yet, one
 *         made of what differs between processes and moments
 */
DLP_PLATFORM_API std::uint64_t DrawSecret() noexcept;

/** @return the secret of this process, drawn once */
DLP_PLATFORM_API std::uint64_t ProcessSecret() noexcept;

DLP_PLATFORM_API std::uint64_t HashText(std::string_view strText, std::uint64_t iSecret) noexcept;

/** Hashes with the secret of this process; so the order of a table of texts is another one each time. */
struct STextHash {
    using is_transparent = void;  // views are looked up without a copy
    /** Not noexcept: the standard library's tables keep the hash of such a function beside each text. */
    std::size_t operator()(std::string_view strText) const {
        return static_cast<std::size_t>(HashText(strText, ProcessSecret()));
    }
};

/** @tparam Text std::string, or std::string_view of what stays in place */
template <class Text, class T>
using TextMap = std::unordered_map<Text, T, STextHash, std::equal_to<>>;
template <class Text>
using TextSet = std::unordered_set<Text, STextHash, std::equal_to<>>;

}  // namespace OS
