#pragma once

#include "cli/fault/FaultWords.h"

// Faults of how elements stand in each other and what goes on to the end.

Fault FindNotClosed(const CFaultyPlace& place);
Fault FindMismatch(const CFaultyPlace& place);
/** What begins at the place goes on to the end. */
Fault FindUnended(const CFaultyPlace& place);
/** What only the beginning of a document may hold, and what must not stand behind its end. */
Fault FindOutside(const CFaultyPlace& place);
/** Only where nothing else is wrong. */
Fault FindTooDeep(const CFaultyPlace& place);
