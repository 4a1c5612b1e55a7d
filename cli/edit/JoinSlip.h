#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/** Where a person most likely meant to join two parts of a rule, and why that does not join them. */
struct SJoinSlip {
    std::size_t iAt;
    std::string strWhy;  ///< printable
};

/** @return whether a text begins as P:NAME or K:NAME do */
bool StartsRulePart(std::wstring_view strText);
/** Looks for operators that are not in capitals, or are missing. @param strPart what is read as one part of a rule */
std::vector<SJoinSlip> FindJoinSlips(std::wstring_view strPart);
