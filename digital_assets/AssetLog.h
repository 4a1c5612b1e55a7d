#pragma once

namespace DigitalAssets {

/** The source unit that the lines of this room name. */
inline constexpr char LOG_SOURCE[] = ".\\util_ParseDLPDigitalAssets.cpp";

}  // namespace DigitalAssets
