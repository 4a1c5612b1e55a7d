#pragma once

/** Marks what libdlpparser exports; everything else in it is hidden. */
#define DLP_PARSER_API __attribute__((visibility("default")))
