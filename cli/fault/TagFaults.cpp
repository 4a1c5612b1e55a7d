#include "cli/fault/TagFaults.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "cli/Text.h"
#include "cli/check/SourceMarkup.h"
#include "cli/fault/FaultyPlace.h"
#include "cli/fault/FaultyText.h"

using FaultWords::Make;
using FaultWords::OrText;
using FaultWords::RelateValue;
using FaultyText::IsAttribute;
using FaultyText::IsInValue;
using FaultyText::QUOTES;
using FaultyText::SkipSpace;
using FaultyText::SPACE;
using FaultyText::TakeName;
using FaultyText::TrimEnd;

namespace {

constexpr std::string_view NAME_ENDS = " \t\r\n=/>";
constexpr std::string_view DECLARATION = "<!";
constexpr std::string_view END_TAG = "</";
constexpr std::string_view TYPOGRAPHIC_QUOTES[] = {"\xE2\x80\x9C", "\xE2\x80\x9D", "\xE2\x80\x9E", "\xE2\x80\x98",
                                                   "\xE2\x80\x99", "\xE2\x80\x9A", "\xC2\xAB",     "\xC2\xBB"};

bool IsTypographicQuote(std::string_view strText) {
    return std::any_of(std::begin(TYPOGRAPHIC_QUOTES), std::end(TYPOGRAPHIC_QUOTES),
                       [&](std::string_view strQuote) { return CFaultyPlace::IsStart(strText, strQuote); });
}

}  // namespace

Fault FindLess(const CFaultyPlace& place) {
    if (!place.IsInStartTag() || !place.Reads("<") || place.Before().empty()) {
        return {};
    }
    if (!IsInValue(place.Before())) {
        return Make(place, "a tag begins in another one",
                    "end the one before it with \">\"" + OrText(place, place.GetPiece()->iOffset));
    }
    return RelateValue(
        place, Make(place, "\"<\" stands in the value of an attribute",
                    "write &lt; where < itself is meant; if it begins a tag, the value lacks its quotation mark"));
}

Fault FindBehindValue(const CFaultyPlace& place) {
    const std::string_view strBefore = place.Before();
    if (!place.IsInStartTag() || strBefore.empty() || IsInValue(strBefore) ||
        QUOTES.find(strBefore.back()) == std::string_view::npos) {
        return {};
    }
    const std::string_view strNext = SkipSpace(place.Rest().substr(1));
    if ((place.Reads(",") || place.Reads(";")) &&
        (IsAttribute(strNext) || CFaultyPlace::IsStart(strNext, ">") || CFaultyPlace::IsStart(strNext, "/>"))) {
        return Make(place, Text::Quoted(place.Rest().substr(0, 1)) + " stands behind an attribute",
                    "remove it: blanks stand between attributes");
    }
    if (IsAttribute(place.Rest())) {
        return Make(place, "no blank stands before the attribute " + Text::Quoted(TakeName(place.Rest())), "add one");
    }
    const std::string strReference = strBefore.back() == '"' ? "&quot;" : "&apos;";
    return RelateValue(place,
                       Make(place, "the quotation mark before this place ends the value of an attribute",
                            "write " + strReference + " for one inside a value, or add the one that is missing"));
}

Fault FindNoQuotes(const CFaultyPlace& place) {
    const std::string_view strBefore = TrimEnd(place.Before());
    if (!place.IsInStartTag() || IsInValue(place.Before()) || !strBefore.ends_with('=')) {
        return {};
    }
    if (place.Reads("=")) {
        return Make(place, "\"=\" stands twice before the value of an attribute", "remove one of them");
    }
    if (IsTypographicQuote(place.Rest())) {
        return Make(place, "the value of an attribute is between typographic quotation marks",
                    "write \" before it and behind it");
    }
    return Make(place, "the value of an attribute has no quotation marks", "put it between quotation marks");
}

Fault FindNoValue(const CFaultyPlace& place) {
    const std::string_view strBefore = TrimEnd(place.Before());
    const std::size_t iSpace = strBefore.find_last_of(SPACE);
    const std::string_view strName = strBefore.substr(iSpace == std::string_view::npos ? strBefore.size() : iSpace + 1);
    if (!place.IsInStartTag() || IsInValue(strBefore) || strName.empty() || TakeName(strName) != strName) {
        return {};
    }
    if (place.Reads("\"") || place.Reads("'")) {
        return Make(place, "\"=\" is missing before the value of " + Text::Quoted(strName), "add it");
    }
    SXmlFault fault = Make(place, "the attribute " + Text::Quoted(strName) + " has no value",
                           "give it one, or remove it" + OrText(place, place.GetPiece()->iOffset));
    fault.iOffset = place.GetPiece()->iOffset + iSpace + 1;
    return fault;
}

Fault FindSlash(const CFaultyPlace& place) {
    if (!place.IsInStartTag() || IsInValue(place.Before()) || !place.Before().ends_with('/') ||
        !CFaultyPlace::IsStart(SkipSpace(place.Rest()), ">")) {
        return {};
    }
    return Make(place, "a blank stands between \"/\" and \">\"", "write \"/>\"");
}

Fault FindInEndTag(const CFaultyPlace& place) {
    if (!place.IsIn(EPiece::END) || place.Before().size() <= END_TAG.size()) {
        return {};
    }
    if (!place.Reads("<")) {
        return Make(place, "an end tag has nothing but a name", "remove what stands behind the name");
    }
    SXmlFault fault = Make(place, Text::Quoted(TrimEnd(place.Before())) + " has no end", "end it with \">\"");
    fault.iOffset = place.GetPiece()->iOffset;
    return fault;
}

Fault FindNoTag(const CFaultyPlace& place) {
    const bool bEnd = place.Before() == END_TAG;
    const bool bDeclaration = place.Before() == DECLARATION;
    const bool bBlank = SkipSpace(place.Rest()).size() != place.Rest().size();
    if (!(place.IsInStartTag() && (bDeclaration || place.Before() == "<")) && !(bEnd && bBlank)) {
        return {};
    }
    const std::string strTag = Text::Quoted(place.Before());
    const bool bText = place.IsBehindText(place.GetPiece()->iOffset);
    SXmlFault fault = Make(place, strTag + " begins no tag", "write &lt; where < itself is meant");
    if (bBlank && !bText) {
        fault = Make(place, "a blank stands between " + strTag + " and the name", "remove it");
    } else if (!bText && !bDeclaration) {
        fault.strAdvice += "; the name of a tag begins with a letter";
    }
    fault.iOffset = place.GetPiece()->iOffset;
    return fault;
}

Fault FindTwice(const CFaultyPlace& place) {
    if (!place.IsInStartTag() || place.Before().empty() || IsInValue(place.Before())) {
        return {};
    }
    const std::string_view strName = place.Rest().substr(0, place.Rest().find_first_of(NAME_ENDS));
    CTagScanner tag(place.GetText(), place.GetPiece()->iOffset);
    while (tag.Next() && tag.GetNameOffset() < place.GetOffset()) {
        if (tag.GetName() == strName) {
            SXmlFault fault =
                Make(place, "the attribute " + Text::Quoted(strName) + " stands twice in the tag", "keep one of them");
            fault.iRelated = tag.GetNameOffset();
            fault.strRelated = "the first one is here";
            return fault;
        }
    }
    return {};
}
