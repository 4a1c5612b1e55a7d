#pragma once

#include <string>

#include "cli/check/DiagnosticCodes.h"

/** @return a code's sentence with an ellipsis where something is filled in */
std::string WithBlanks(const char* pSentence);
/** @return all there is to say of a code, for a terminal */
std::string MakeExplanation(const SCodeRow& row);
/** @return the page of all codes, in Markdown */
std::string MakeDiagnosticsPage();
