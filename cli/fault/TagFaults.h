#pragma once

#include "cli/fault/FaultWords.h"

// Faults in a tag.

Fault FindLess(const CFaultyPlace& place);
/** Behind the value of an attribute. */
Fault FindBehindValue(const CFaultyPlace& place);
Fault FindNoQuotes(const CFaultyPlace& place);
Fault FindNoValue(const CFaultyPlace& place);
Fault FindSlash(const CFaultyPlace& place);
Fault FindInEndTag(const CFaultyPlace& place);
Fault FindNoTag(const CFaultyPlace& place);
Fault FindTwice(const CFaultyPlace& place);
