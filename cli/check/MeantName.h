#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/** Looking for the nearest name takes long, and nobody reads hundreds of them: in one file so many are looked for. */
inline constexpr std::size_t MAX_MEANT_NAMES = 20;

/** @return what is usually meant by that word for an element or attribute in the element strPlace; empty for others */
std::string FindSlip(std::string_view strPlace, std::string_view strWritten);
/** @return the slip's meaning if it is one of the names, else the nearest of them; empty when none is near */
std::string FindMeantName(std::string_view strPlace, std::string_view strWritten,
                          const std::vector<std::string>& vecNames);
/** @return the same for an element, by what a policy has in strPlace */
std::string FindMeantElement(std::string_view strPlace, std::string_view strWritten);
