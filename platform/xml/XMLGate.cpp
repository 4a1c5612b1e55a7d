#include "platform/xml/XMLGate.hpp"

#include <expat.h>

#include <algorithm>
#include <memory>
#include <new>

#include "platform/common/TextConversion.h"
#include "platform/common/TextHash.h"
#include "platform/common/TextTools.h"
#include "platform/xml/XMLProof.hpp"

// The tree's parser is lenient, so nothing reaches it that has not passed here. What a quick look can prove is not
// looked at again; of all else the strict engine says whether, where and why it is not well-formed.

namespace {

constexpr char NOT_UTF8[] = "not UTF-8";
constexpr char DOCTYPE_REFUSED[] = "a DOCTYPE is not allowed";
constexpr char TOO_DEEP[] = "elements are nested more than 256 deep";
constexpr char NOT_VERSION_1[] = "the XML version is neither 1.0 nor another 1.x";
constexpr char NOT_CLOSED[] = "an element is not closed";
static_assert(CXMLParser::MAX_DEPTH == 256, "TOO_DEEP names the number");

/** Of every version that a document of this one may declare: digits follow. */
constexpr std::string_view VERSION_START = "1.";
constexpr std::string_view DIGITS = "0123456789";
constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";
constexpr char DOCTYPE_START[] = "<!DOCTYPE";

/** The engine counts in int, copies what it is fed and scans a token that spans pieces from its start again. */
constexpr std::size_t PIECE = 1U << 24U;

struct SGate {
    XML_Parser parser = nullptr;
    int iDepth = 0;
    bool bAnyElement = false;
    bool bDeclaredUtf16 = false;
    const char* pRefusal = nullptr;
    XML_Index iRefusedAt = 0;
};

void Refuse(SGate& gate, const char* pReason) {
    gate.pRefusal = pReason;
    gate.iRefusedAt = XML_GetCurrentByteIndex(gate.parser);
    XML_StopParser(gate.parser, XML_FALSE);
}

void XMLCALL OnStart(void* pGate, const XML_Char*, const XML_Char**) {
    SGate& gate = *static_cast<SGate*>(pGate);
    gate.bAnyElement = true;
    if (++gate.iDepth > CXMLParser::MAX_DEPTH) {
        Refuse(gate, TOO_DEEP);
    }
}

void XMLCALL OnEnd(void* pGate, const XML_Char*) {
    --static_cast<SGate*>(pGate)->iDepth;
}

/** The engine takes any version for its own. */
bool IsVersion(std::string_view strVersion) {
    return strVersion.size() > VERSION_START.size() && strVersion.substr(0, VERSION_START.size()) == VERSION_START &&
           strVersion.find_first_not_of(DIGITS, VERSION_START.size()) == std::string_view::npos;
}

void XMLCALL OnDeclaration(void* pGate, const XML_Char* pVersion, const XML_Char* pEncoding, int) {
    SGate& gate = *static_cast<SGate*>(pGate);
    const std::string_view strEncoding = pEncoding == nullptr ? "" : pEncoding;
    gate.bDeclaredUtf16 = OS::EqualsNoCase(strEncoding.substr(0, 6), "UTF-16");
    if (!IsVersion(pVersion == nullptr ? "" : pVersion)) {
        Refuse(gate, NOT_VERSION_1);
    }
}

void XMLCALL OnDoctype(void* pGate, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    Refuse(*static_cast<SGate*>(pGate), DOCTYPE_REFUSED);
}

/** Left to itself the engine would read text that begins like UTF-16 as such, whatever encoding it was told. */
bool LooksLikeUtf16(std::string_view strText) {
    const std::string_view strStart = strText.substr(0, 2);
    return strStart == "\xFE\xFF" || strStart == "\xFF\xFE" || strStart.find('\0') != std::string_view::npos;
}

struct SFree {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};
using CParserPtr = std::unique_ptr<XML_ParserStruct, SFree>;

CParserPtr MakeEngine() {
    CParserPtr parser(XML_ParserCreate("UTF-8"));
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    // Left to itself the engine asks the system for a secret with every text.
    XML_SetHashSalt(parser.get(), OS::ProcessSecret());
    return parser;
}

bool Feed(XML_Parser parser, std::string_view strText) {
    for (;;) {
        const std::string_view strPiece = strText.substr(0, PIECE);
        strText.remove_prefix(strPiece.size());
        const bool bLast = strText.empty();
        if (XML_Parse(parser, strPiece.data(), static_cast<int>(strPiece.size()), bLast) != XML_STATUS_OK) {
            return false;
        }
        if (bLast) {
            return true;
        }
    }
}

std::string Describe(const SGate& gate, XML_Error eError, std::string_view strRest) {
    if (gate.pRefusal != nullptr) {
        return gate.pRefusal;
    }
    if (eError == XML_ERROR_NO_ELEMENTS && gate.iDepth > 0) {
        return NOT_CLOSED;
    }
    if (eError == XML_ERROR_INVALID_TOKEN && OS::FindInvalidUtf8(strRest.substr(0, 4)) == 0) {
        return NOT_UTF8;
    }
    return XML_ErrorString(eError);
}

std::size_t FindPlace(const SGate& gate, std::string_view strText) {
    const XML_Index iIndex = gate.pRefusal != nullptr ? gate.iRefusedAt : XML_GetCurrentByteIndex(gate.parser);
    const std::size_t iOffset = iIndex < 0 ? strText.size() : static_cast<std::size_t>(iIndex);
    // A DOCTYPE is reported where its name ends; its beginning is what the reader looks for.
    return gate.pRefusal == DOCTYPE_REFUSED ? std::min(strText.rfind(DOCTYPE_START, iOffset), iOffset) : iOffset;
}

/** Lines end at LF, CR LF or CR; a byte order mark takes no column. */
SXMLLoadError MakeError(std::string strMessage, std::string_view strText, std::size_t iOffset) {
    SXMLLoadError error{std::move(strMessage), iOffset, 1, 0};
    std::size_t iLineStart = strText.substr(0, 3) == BYTE_ORDER_MARK && iOffset >= 3 ? 3 : 0;
    for (std::size_t i = iLineStart; i < iOffset; ++i) {
        const bool bCarriageReturn = strText[i] == '\r' && (i + 1 == strText.size() || strText[i + 1] != '\n');
        if (strText[i] == '\n' || bCarriageReturn) {
            ++error.iLine;
            iLineStart = i + 1;
        }
    }
    error.iColumn = OS::CountCodePoints(strText.substr(iLineStart, iOffset - iLineStart)) + 1;
    return error;
}

}  // namespace

SXMLGateResult CheckXml(std::string_view strText) {
    const SXMLProof proof = ProveXml(strText);
    if (proof.bWellFormed) {
        return {true, false, false, {}};
    }
    if (proof.iTwice != std::string_view::npos) {
        // The engine would tell the same, but for millions of attributes takes its time.
        return {false, false, false, MakeError(XML_ErrorString(XML_ERROR_DUPLICATE_ATTRIBUTE), strText, proof.iTwice)};
    }
    if (LooksLikeUtf16(strText)) {
        return {false, false, false, MakeError(NOT_UTF8, strText, 0)};
    }
    SGate gate;
    const CParserPtr engine = MakeEngine();
    gate.parser = engine.get();
    XML_SetUserData(gate.parser, &gate);
    XML_SetElementHandler(gate.parser, OnStart, OnEnd);
    XML_SetXmlDeclHandler(gate.parser, OnDeclaration);
    XML_SetStartDoctypeDeclHandler(gate.parser, OnDoctype);
    if (Feed(gate.parser, strText)) {
        return {true, false, gate.bDeclaredUtf16, {}};
    }
    const XML_Error eError = XML_GetErrorCode(gate.parser);
    if (eError == XML_ERROR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    const std::size_t iOffset = FindPlace(gate, strText);
    return {false, eError == XML_ERROR_NO_ELEMENTS && !gate.bAnyElement, gate.bDeclaredUtf16,
            MakeError(Describe(gate, eError, strText.substr(iOffset)), strText, iOffset)};
}
