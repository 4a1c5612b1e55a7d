#pragma once

#include <cstddef>
#include <string_view>

#include "platform/xml/CXMLParser.h"

/** What the gate has found out about a text. */
struct SXMLGateResult {
    bool bWellFormed = false;
    bool bNoElement = false;  ///< all that is wrong is that there is no element
    bool bDeclaredUtf16 = false;
    SXMLLoadError error;
};

/**
 * Reads a text strictly, without building anything: well-formed XML 1.0 in UTF-8, no DOCTYPE, elements nested at most
 * CXMLParser::MAX_DEPTH deep. A leading byte order mark is accepted, a declared encoding ignored.
 * @throws std::bad_alloc
 */
SXMLGateResult CheckXml(std::string_view strText);
