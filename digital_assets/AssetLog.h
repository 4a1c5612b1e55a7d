#pragma once

namespace DigitalAssets {

/** The source unit that the lines of this room name. */
inline constexpr char LOG_SOURCE[] = ".\\util_ParseDLPDigitalAssets.cpp";

/** Lines that more than one operation writes, the template room's included. */
inline constexpr wchar_t NODE_NOT_FOUND[] = L"Fail to find node %s";
inline constexpr wchar_t NOT_FOUND[] = L"Fail to find %s.";
inline constexpr wchar_t BUILT_IN_KEPT[] = L"existed one is pre-defined but imported one is not, skip";

}  // namespace DigitalAssets
