#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/XmlFault.h"

class CFaultyPlace;

/** What is wrong at a place; nothing when it is something else. */
using Fault = std::optional<SXmlFault>;

namespace FaultWords {

/** @return a fault at the place */
SXmlFault Make(const CFaultyPlace& place, std::string strWhat, std::string strAdvice);
/** @return a start or end tag, quoted */
std::string MakeTag(std::string_view strName, bool bEnd = false);
/** @return what to add to an advice about a tag of which the "<" may be text */
std::string OrText(const CFaultyPlace& place, std::size_t iTag);
/** Goes on with what is wrong: an element is open. */
void TellOpen(const CFaultyPlace& place, SXmlFault& fault);
/** Names the beginning of the last value before the place. */
SXmlFault RelateValue(const CFaultyPlace& place, SXmlFault fault);

}  // namespace FaultWords
