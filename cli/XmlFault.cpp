#include "cli/XmlFault.h"

#include "cli/Text.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/NestingFaults.h"
#include "cli/fault/ReferenceFaults.h"
#include "cli/fault/TagFaults.h"
#include "cli/fault/TextFaults.h"

// The engine says little more than where it stopped. What stands there, and which elements are open, tells the rest.

namespace {

constexpr const char NEAR[] = "correct it here or shortly before this place";

/** The surest ones first. */
constexpr Fault (*FINDERS[])(const CFaultyPlace&) = {
    FindConflict,  FindReference,      FindNotClosed, FindInEndTag, FindMismatch, FindGroup, FindUnended,
    FindCharacter, FindReferenceInTag, FindLess,      FindNoTag,    FindSequence, FindTwice, FindBehindValue,
    FindNoQuotes,  FindSlash,          FindNoValue,   FindOutside,  FindTooDeep};

}  // namespace

SXmlFault ExplainXmlFault(std::string_view strText, const SXMLLoadError& error, const CSourcePlaces& places,
                          std::size_t iStart) {
    const CFaultyPlace place(strText, error.iOffset, places, iStart);
    for (const auto fnFind : FINDERS) {
        if (Fault fault = fnFind(place)) {
            return *fault;
        }
    }
    return FaultWords::Make(place, Text::Printable(error.strMessage), NEAR);
}
