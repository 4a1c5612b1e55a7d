#include "cli/fault/FaultWords.h"

#include <utility>

#include "cli/Text.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/FaultyText.h"

namespace FaultWords {

SXmlFault Make(const CFaultyPlace& place, std::string strWhat, std::string strAdvice) {
    return {std::move(strWhat), std::move(strAdvice), place.GetOffset(), std::string::npos, {}};
}

std::string MakeTag(std::string_view strName, bool bEnd) {
    return Text::Quoted((bEnd ? "</" : "<") + std::string(strName) + '>');
}

std::string OrText(const CFaultyPlace& place, std::size_t iTag) {
    return place.IsBehindText(iTag) ? ", or write &lt; if its < is text" : "";
}

void TellOpen(const CFaultyPlace& place, SXmlFault& fault) {
    const SPiece& open = *place.GetOpen();
    fault.iRelated = open.iOffset;
    fault.strRelated = MakeTag(open.GetElement()) + " begins here";
    fault.strWhat +=
        MakeTag(open.GetElement()) + " of line " + std::to_string(place.GetLine(open.iOffset)) + " is still open";
}

SXmlFault RelateValue(const CFaultyPlace& place, SXmlFault fault) {
    fault.iRelated = place.GetPiece()->iOffset + FaultyText::FindLastValue(place.Before()).iQuote;
    fault.strRelated = "the value begins here";
    return fault;
}

}  // namespace FaultWords
