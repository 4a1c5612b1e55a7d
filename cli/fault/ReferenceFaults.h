#pragma once

#include "cli/fault/FaultWords.h"

// Faults of what begins with "&".

/** The engine may have stopped behind it. */
Fault FindReference(const CFaultyPlace& place);
/** The engine knows a reference in a value only as one of the tag. */
Fault FindReferenceInTag(const CFaultyPlace& place);
