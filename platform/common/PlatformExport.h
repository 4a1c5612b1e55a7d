#pragma once

/** Marks what libdlpplatform exports; everything else in it is hidden. */
#define DLP_PLATFORM_API __attribute__((visibility("default")))
