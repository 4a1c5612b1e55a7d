#pragma once

#include "cli/fault/FaultWords.h"

// Faults of characters, wherever they stand.

Fault FindConflict(const CFaultyPlace& place);
/** Seems a comment without an end, and is the beginning of a group of a pattern. */
Fault FindGroup(const CFaultyPlace& place);
Fault FindSequence(const CFaultyPlace& place);
Fault FindCharacter(const CFaultyPlace& place);
