#pragma once

/**
 * Whether the sanitizers are on: memory cannot be bounded then, and everything takes several times as long. A case that
 * tries all there is, or shows by its size how time grows, tries a part under them; without them it tries the whole.
 */
#ifdef DLP_SANITIZED
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif
