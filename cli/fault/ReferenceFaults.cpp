#include "cli/fault/ReferenceFaults.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "cli/Text.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/FaultyText.h"

using FaultWords::Make;
using FaultyText::IsNameCharacter;

namespace {

constexpr std::string_view DECLARATION = "<!";
constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view REFERENCES[] = {"amp", "lt", "gt", "quot", "apos"};

bool IsKnown(std::string_view strReference) {
    return std::find(std::begin(REFERENCES), std::end(REFERENCES), strReference) != std::end(REFERENCES);
}

SXmlFault MakeUnknown(std::size_t iOffset, std::string_view strName) {
    return {Text::Quoted('&' + std::string(strName) + ';') + " is no reference that XML knows",
            "write the character itself or its number, as &#233; for \xC3\xA9",
            iOffset,
            std::string::npos,
            {}};
}

/** @return of an "&" what stands there for a reference */
SXmlFault ExplainReference(const CFaultyPlace& place, std::size_t iOffset) {
    const std::string_view strRest = place.GetText().substr(iOffset + 1);
    const std::string_view strName = strRest.substr(0, strRest.find_first_not_of(LETTERS));
    SXmlFault fault = Make(place, "\"&\" begins no reference", "write &amp; where & itself is meant");
    if (IsKnown(strName) && strRest.substr(strName.size(), 1) != "=") {
        fault = Make(place, "the \";\" of " + Text::Quoted('&' + std::string(strName)) + " is missing",
                     "write &" + std::string(strName) + ';');
    }
    fault.iOffset = iOffset;
    return fault;
}

}  // namespace

Fault FindReference(const CFaultyPlace& place) {
    std::size_t iOffset = place.GetOffset();
    while (iOffset > 0 && IsNameCharacter(place.GetText()[iOffset - 1])) {
        --iOffset;
    }
    const bool bBehind = iOffset > 0 && place.GetText()[iOffset - 1] == '&';
    iOffset = bBehind ? iOffset - 1 : place.GetOffset();
    const std::string_view strRest = place.GetText().substr(iOffset);
    if (!CFaultyPlace::IsStart(strRest, "&") || !place.HasReferences(iOffset)) {
        return {};
    }
    const std::size_t iEnd = strRest.find_first_of("; \t\r\n<>\"'&", 1);
    if (iEnd == 1 || iEnd == std::string_view::npos || strRest[iEnd] != ';') {
        return ExplainReference(place, iOffset);
    }
    const std::string_view strName = strRest.substr(1, iEnd - 1);
    if (CFaultyPlace::IsStart(strName, "#")) {
        return Make(place, Text::Quoted(strRest.substr(0, iEnd + 1)) + " is no character that XML has",
                    "write another one, or remove it");
    }
    return IsKnown(strName) ? Fault() : MakeUnknown(iOffset, strName);
}

Fault FindReferenceInTag(const CFaultyPlace& place) {
    if (!place.IsInStartTag() || !place.Before().empty() || place.Reads(DECLARATION)) {
        return {};
    }
    const std::string_view strTag = place.GetPiece()->strText;
    for (std::size_t i = strTag.find('&'); i != std::string_view::npos; i = strTag.find('&', i + 1)) {
        const std::string_view strName = strTag.substr(i + 1, strTag.find(';', i) - i - 1);
        if (!IsKnown(strName) && !CFaultyPlace::IsStart(strName, "#")) {
            return MakeUnknown(place.GetOffset() + i, strName);
        }
    }
    return {};
}
