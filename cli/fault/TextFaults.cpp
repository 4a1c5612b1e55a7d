#include "cli/fault/TextFaults.h"

#include <string_view>

#include "cli/Text.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/FaultyText.h"

using FaultWords::Make;
using FaultyText::SPACE;

namespace {

constexpr std::string_view BRACKETS = "]]";
constexpr std::string_view DASHES = "--";
constexpr std::string_view CONFLICT = "<<<<<<<";

}  // namespace

Fault FindConflict(const CFaultyPlace& place) {
    const std::size_t iEnd = place.GetText().substr(0, place.GetOffset()).find_last_of("\r\n");
    const std::size_t iLine = iEnd == std::string_view::npos ? 0 : iEnd + 1;
    if (!CFaultyPlace::IsStart(place.GetText().substr(iLine), CONFLICT)) {
        return {};
    }
    SXmlFault fault = Make(place, "a conflict of a merge was left here", "settle it");
    fault.iOffset = iLine;
    return fault;
}

Fault FindGroup(const CFaultyPlace& place) {
    if (!place.Reads("<") || !place.GetText().substr(0, place.GetOffset()).ends_with("(?")) {
        return {};
    }
    return Make(place, "\"<\" stands in text", "write &lt;");
}

Fault FindSequence(const CFaultyPlace& place) {
    if (place.IsIn(EPiece::COMMENT) && place.Before().ends_with(DASHES)) {
        return Make(place, "\"--\" stands inside a comment", "write it in another way there");
    }
    if (place.IsIn(EPiece::TEXT) && !place.IsInCdata() && place.Before().ends_with(BRACKETS) && place.Reads(">")) {
        return Make(place, "\"]]>\" stands in text", "write ]]&gt;");
    }
    return {};
}

Fault FindCharacter(const CFaultyPlace& place) {
    const std::string_view strRest = place.Rest();
    const bool bControl = !strRest.empty() && strRest.front() >= '\0' && strRest.front() < ' ' &&
                          SPACE.find(strRest.front()) == std::string_view::npos;
    const bool bNone = place.Reads("\xEF\xBF\xBE") || place.Reads("\xEF\xBF\xBF");
    if (!bControl && !bNone) {
        return {};
    }
    return Make(place, "XML does not have the character " + Text::Quoted(strRest.substr(0, bControl ? 1 : 3)),
                "remove it");
}
