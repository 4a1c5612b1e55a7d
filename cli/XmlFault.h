#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/common/SourcePlaces.h"
#include "platform/xml/CXMLParser.h"

/** Why a text is no XML, and what to do. Texts are printable; offsets count from the start of the text. */
struct SXmlFault {
    std::string strWhat;
    std::string strAdvice;
    std::size_t iOffset = 0;
    std::size_t iRelated = std::string::npos;  ///< another place that is to blame
    std::string strRelated;                    ///< what to say of that place
};

/**
 * Says in the words of who writes a document what the engine that refused it says in its own.
 * @param places of the file @param iStart where in the file the text begins
 */
SXmlFault ExplainXmlFault(std::string_view strText, const SXMLLoadError& error, const CSourcePlaces& places,
                          std::size_t iStart);
