#include "cli/XmlFault.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "cli/Text.h"
#include "cli/check/SourceMarkup.h"
#include "cli/layout/MarkupReader.h"

// The engine says little more than where it stopped. What stands there, and which elements are open, tells the rest.

namespace {

constexpr const char NEAR[] = "correct it here or shortly before this place";

constexpr std::string_view SPACE = " \t\r\n";
constexpr std::string_view NAME_ENDS = " \t\r\n=/>";
constexpr std::string_view DECLARATION = "<!";
constexpr std::string_view DOCTYPE = "<!DOCTYPE";
constexpr std::string_view XML_DECLARATION = "<?xml";
constexpr std::string_view CDATA = "<![CDATA[";
constexpr std::string_view CDATA_END = "]]>";
constexpr std::string_view BRACKETS = "]]";
constexpr std::string_view DASHES = "--";
constexpr std::string_view END_TAG = "</";
constexpr std::string_view QUOTES = "\"'";
constexpr std::string_view CONFLICT = "<<<<<<<";
constexpr std::string_view TYPOGRAPHIC_QUOTES[] = {"\xE2\x80\x9C", "\xE2\x80\x9D", "\xE2\x80\x9E", "\xE2\x80\x98",
                                                   "\xE2\x80\x99", "\xE2\x80\x9A", "\xC2\xAB",     "\xC2\xBB"};
constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view REFERENCES[] = {"amp", "lt", "gt", "quot", "apos"};

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (c & '\x80') != 0 ||
           std::string_view("_:-.#").find(c) != std::string_view::npos;
}

std::string MakeTag(std::string_view strName, bool bEnd = false) {
    return Text::Quoted((bEnd ? "</" : "<") + std::string(strName) + '>');
}

struct SLastValue {
    std::size_t iQuote = 0;  ///< where it begins, in the tag
    bool bOpen = false;
};

/** @return the last value in what a tag begins with */
SLastValue FindLastValue(std::string_view strTag) {
    SLastValue value;
    char cQuote = '\0';
    for (std::size_t i = 0; i < strTag.size(); ++i) {
        const char c = strTag[i];
        if (cQuote == '\0' && QUOTES.find(c) != std::string_view::npos) {
            cQuote = c;
            value.iQuote = i;
        } else if (c == cQuote) {
            cQuote = '\0';
        }
    }
    value.bOpen = cQuote != '\0';
    return value;
}

bool IsInValue(std::string_view strTag) {
    return FindLastValue(strTag).bOpen;
}

std::string_view SkipSpace(std::string_view strText) {
    return strText.substr(std::min(strText.find_first_not_of(SPACE), strText.size()));
}

std::string_view TrimEnd(std::string_view strText) {
    return strText.substr(0, strText.find_last_not_of(SPACE) + 1);
}

/** @return the name that the text begins with */
std::string_view TakeName(std::string_view strText) {
    const auto itEnd = std::find_if_not(strText.begin(), strText.end(), IsNameCharacter);
    return strText.substr(0, static_cast<std::size_t>(itEnd - strText.begin()));
}

/** @return whether the text begins with a name, "=" and a quotation mark */
bool IsAttribute(std::string_view strText) {
    const std::string_view strName = TakeName(strText);
    const std::string_view strBehind = SkipSpace(strText.substr(strName.size()));
    const std::string_view strValue = SkipSpace(strBehind.substr(strBehind.empty() ? 0 : 1));
    return !strName.empty() && strBehind.substr(0, 1) == "=" && !strValue.empty() &&
           QUOTES.find(strValue.front()) != std::string_view::npos;
}

/** The place where the engine stopped, in its piece of markup, and what is open there. */
class CFaultyPlace {
  public:
    CFaultyPlace(std::string_view strText, std::size_t iOffset, const CSourcePlaces& places, std::size_t iStart)
        : m_strText(strText), m_iOffset(iOffset), m_places(places), m_iStart(iStart) {
        CMarkupReader reader(strText);
        for (SPiece piece; reader.Next(piece);) {
            m_previous = m_piece;
            m_piece = piece;
            if (piece.iOffset + piece.strText.size() > iOffset) {
                m_bInside = true;
                return;
            }
            m_bAnyElement = m_bAnyElement || piece.ePiece == EPiece::START || piece.ePiece == EPiece::EMPTY;
            if (piece.ePiece == EPiece::START) {
                m_vecOpen.push_back(piece);
            } else if (piece.ePiece == EPiece::END && !m_vecOpen.empty()) {
                m_vecOpen.pop_back();
            }
        }
    }

    std::size_t GetOffset() const { return m_iOffset; }
    std::size_t GetLine(std::size_t iOffset) const { return m_places.Find(m_iStart + iOffset).iLine; }
    /** @return null at the end of the text */
    const SPiece* GetPiece() const { return m_bInside ? &m_piece : nullptr; }
    /** @return the element that is open; null when there is none */
    const SPiece* GetOpen() const { return m_vecOpen.empty() ? nullptr : &m_vecOpen.back(); }
    bool IsOpen(std::string_view strName) const {
        return std::any_of(m_vecOpen.begin(), m_vecOpen.end(),
                           [&](const SPiece& piece) { return piece.GetElement() == strName; });
    }
    bool IsBehindRoot() const { return m_bAnyElement && m_vecOpen.empty(); }
    bool IsIn(EPiece ePiece) const { return m_bInside && m_piece.ePiece == ePiece; }
    bool IsInStartTag() const { return IsIn(EPiece::START) || IsIn(EPiece::EMPTY); }
    bool IsInCdata() const { return IsStart(m_piece.strText, CDATA); }
    /**
     * @param iOffset in the piece of the place or in the one before
     * @return whether text or a value is read there, in which references stand for characters
     */
    bool HasReferences(std::size_t iOffset) const {
        const SPiece& piece = iOffset < m_piece.iOffset ? m_previous : m_piece;
        if (piece.ePiece == EPiece::START || piece.ePiece == EPiece::EMPTY) {
            return IsInValue(piece.strText.substr(0, iOffset - piece.iOffset));
        }
        return piece.ePiece == EPiece::TEXT && !IsStart(piece.strText, CDATA);
    }
    /** @return whether words stand before that place, so that what begins there may be a part of them */
    bool IsBehindText(std::size_t iOffset) const {
        const std::string_view strBefore = TrimEnd(m_strText.substr(0, iOffset));
        return !strBefore.empty() && strBefore.back() != '>';
    }
    std::string_view GetText() const { return m_strText; }
    /** @return the text from the place on */
    std::string_view Rest() const { return m_strText.substr(m_iOffset); }
    /** @return what the piece holds before the place */
    std::string_view Before() const {
        return m_strText.substr(m_piece.iOffset, m_iOffset - std::min(m_piece.iOffset, m_iOffset));
    }
    bool Reads(std::string_view strStart) const { return IsStart(Rest(), strStart); }

    static bool IsStart(std::string_view strText, std::string_view strStart) {
        return strText.substr(0, strStart.size()) == strStart;
    }

  private:
    std::string_view m_strText;
    std::size_t m_iOffset;
    const CSourcePlaces& m_places;
    std::size_t m_iStart;
    SPiece m_piece;
    SPiece m_previous;
    bool m_bInside = false;
    bool m_bAnyElement = false;
    std::vector<SPiece> m_vecOpen;
};

using Fault = std::optional<SXmlFault>;

SXmlFault Make(const CFaultyPlace& place, std::string strWhat, std::string strAdvice) {
    return {std::move(strWhat), std::move(strAdvice), place.GetOffset(), std::string::npos, {}};
}

/** @return what to add to an advice about a tag of which the "<" may be text */
std::string OrText(const CFaultyPlace& place, std::size_t iTag) {
    return place.IsBehindText(iTag) ? ", or write &lt; if its < is text" : "";
}

/** Goes on with what is wrong: an element is open. */
void TellOpen(const CFaultyPlace& place, SXmlFault& fault) {
    const SPiece& open = *place.GetOpen();
    fault.iRelated = open.iOffset;
    fault.strRelated = MakeTag(open.GetElement()) + " begins here";
    fault.strWhat +=
        MakeTag(open.GetElement()) + " of line " + std::to_string(place.GetLine(open.iOffset)) + " is still open";
}

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

/** What begins at the place goes on to the end. */
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

/** The engine may have stopped behind it. */
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

/** The engine knows a reference in a value only as one of the tag. */
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

/** Names the beginning of the last value before the place. */
SXmlFault RelateValue(const CFaultyPlace& place, SXmlFault fault) {
    fault.iRelated = place.GetPiece()->iOffset + FindLastValue(place.Before()).iQuote;
    fault.strRelated = "the value begins here";
    return fault;
}

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

/** Behind the value of an attribute. */
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

bool IsTypographicQuote(std::string_view strText) {
    return std::any_of(std::begin(TYPOGRAPHIC_QUOTES), std::end(TYPOGRAPHIC_QUOTES),
                       [&](std::string_view strQuote) { return CFaultyPlace::IsStart(strText, strQuote); });
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

/** Seems a comment without an end, and is the beginning of a group of a pattern. */
Fault FindGroup(const CFaultyPlace& place) {
    if (!place.Reads("<") || !place.GetText().substr(0, place.GetOffset()).ends_with("(?")) {
        return {};
    }
    return Make(place, "\"<\" stands in text", "write &lt;");
}

/** What only the beginning of a document may hold, and what must not stand behind its end. */
Fault FindOutside(const CFaultyPlace& place) {
    if (place.Reads(DOCTYPE)) {
        return Make(place, "a DOCTYPE is not allowed", "remove it");
    }
    if (place.IsIn(EPiece::INSTRUCTION) && place.Reads(XML_DECLARATION)) {
        return Make(place, "the XML declaration does not stand at the beginning",
                    "remove it, or what stands before it");
    }
    if (place.GetPiece() != nullptr && place.IsBehindRoot()) {
        return Make(place, "the root element has ended before", "remove what follows, or put it into the root element");
    }
    return {};
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

/** The surest ones first. */
constexpr Fault (*FINDERS[])(const CFaultyPlace&) = {
    FindConflict, FindReference,   FindNotClosed,      FindInEndTag, FindMismatch, FindGroup,
    FindUnended,  FindCharacter,   FindReferenceInTag, FindLess,     FindNoTag,    FindSequence,
    FindTwice,    FindBehindValue, FindNoQuotes,       FindSlash,    FindNoValue,  FindOutside};

}  // namespace

SXmlFault ExplainXmlFault(std::string_view strText, const SXMLLoadError& error, const CSourcePlaces& places,
                          std::size_t iStart) {
    const CFaultyPlace place(strText, error.iOffset, places, iStart);
    for (const auto fnFind : FINDERS) {
        if (Fault fault = fnFind(place)) {
            return *fault;
        }
    }
    return Make(place, Text::Printable(error.strMessage), NEAR);
}
