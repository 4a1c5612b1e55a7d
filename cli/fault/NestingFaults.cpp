#include "cli/fault/NestingFaults.h"

#include <string>
#include <string_view>
#include <utility>

#include "cli/Text.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/FaultyText.h"
#include "platform/xml/CXMLParser.h"

using FaultWords::Make;
using FaultWords::MakeTag;
using FaultWords::OrText;
using FaultWords::TellOpen;
using FaultyText::IsInValue;

namespace {

constexpr std::string_view CDATA_END = "]]>";
constexpr std::string_view DOCTYPE = "<!DOCTYPE";
constexpr std::string_view XML_DECLARATION = "<?xml";

}  // namespace

Fault FindNotClosed(const CFaultyPlace& place) {
    const SPiece* pOpen = place.GetOpen();
    if (place.GetPiece() != nullptr || pOpen == nullptr) {
        return {};
    }
    if (place.IsInCdata() && !place.Before().ends_with(CDATA_END)) {
        SXmlFault fault = Make(place, "a CDATA section has no end", "end it with \"]]>\"");
        fault.iOffset -= place.Before().size();
        return fault;
    }
    SXmlFault fault = Make(place, "it ends, and ",
                           "close it with " + MakeTag(pOpen->GetElement(), true) + OrText(place, pOpen->iOffset));
    TellOpen(place, fault);
    return fault;
}

Fault FindMismatch(const CFaultyPlace& place) {
    const SPiece* pOpen = place.GetOpen();
    if (!place.IsIn(EPiece::END)) {
        return {};
    }
    const std::string_view strName = place.GetPiece()->GetElement();
    const std::string strTag = MakeTag(strName, true);
    if (pOpen == nullptr) {
        SXmlFault fault = Make(place, strTag + " closes no element", "remove it");
        fault.iOffset = place.GetPiece()->iOffset;
        return fault;
    }
    if (strName.empty() || strName == pOpen->GetElement()) {
        return {};
    }
    const std::string strClose = "close that with " + MakeTag(pOpen->GetElement(), true);
    SXmlFault fault = Make(place, strTag + " does not fit: ",
                           (place.IsOpen(strName) ? strClose + " before it" : strClose + ", or remove " + strTag) +
                               OrText(place, pOpen->iOffset));
    TellOpen(place, fault);
    return fault;
}

Fault FindUnended(const CFaultyPlace& place) {
    static constexpr std::pair<EPiece, const char*> ENDS[] = {{EPiece::COMMENT, "-->"},
                                                              {EPiece::INSTRUCTION, "?>"},
                                                              {EPiece::START, ">"},
                                                              {EPiece::EMPTY, ">"},
                                                              {EPiece::END, ">"}};
    const SPiece* pPiece = place.GetPiece();
    if (pPiece == nullptr || pPiece->iOffset != place.GetOffset() || pPiece->strText.size() != place.Rest().size()) {
        return {};
    }
    for (const auto& [ePiece, pEnd] : ENDS) {
        const bool bValue = place.IsInStartTag() && IsInValue(pPiece->strText);
        if (pPiece->ePiece == ePiece && (bValue || !pPiece->strText.ends_with(pEnd))) {
            return Make(
                place, "what begins here has no end",
                "end it with " + Text::Quoted(pEnd) + (bValue ? ", and the value in it with its quotation mark" : ""));
        }
    }
    return {};
}

Fault FindOutside(const CFaultyPlace& place) {
    if (place.Reads(DOCTYPE)) {
        return Make(place, "a DOCTYPE is not allowed", "remove it");
    }
    if (place.IsIn(EPiece::INSTRUCTION) && place.Reads(XML_DECLARATION) && place.GetOffset() > 0) {
        return Make(place, "the XML declaration does not stand at the beginning",
                    "remove it, or what stands before it");
    }
    if (place.GetPiece() != nullptr && place.IsBehindRoot()) {
        return Make(place, "the root element has ended before", "remove what follows, or put it into the root element");
    }
    return {};
}

Fault FindTooDeep(const CFaultyPlace& place) {
    if (!place.IsInStartTag() || !place.Before().empty() || place.GetDepth() < CXMLParser::MAX_DEPTH) {
        return {};
    }
    SXmlFault fault = Make(place,
                           MakeTag(place.GetPiece()->GetElement()) + " is nested deeper than " +
                               std::to_string(CXMLParser::MAX_DEPTH) + " elements: ",
                           "end some of them before it");
    TellOpen(place, fault);
    return fault;
}
