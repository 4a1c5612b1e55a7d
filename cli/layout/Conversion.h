#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/SourcePlaces.h"

class CPolicyDocument;
class CXMLParser;

/** What may happen to something of a document that is converted. */
enum class EChange { RENAMED, SET, DROPPED };
inline constexpr std::size_t CHANGE_COUNT = 3;

/** What it may happen to. */
enum class EChanged { ATTRIBUTE, REFERENCE, ELEMENT, COMMENT, INSTRUCTION, TEXT };

/** One difference between a document of the older layout and what it was converted to. */
struct SLayoutChange {
    EChange eChange = EChange::DROPPED;
    EChanged eChanged = EChanged::ATTRIBUTE;
    std::string strElement;   ///< of an attribute the name of its element, else of what it stands in; "" outside
    std::string strTemplate;  ///< name of the template that it belongs to; "" of none
    std::string strName;      ///< of the attribute or element; else ""
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::size_t iOffset = 0;
    SPlace place;
};

/** All differences, in the order of the document. */
struct SLayoutChanges {
    /** Nobody reads more, and a document of nothing but comments has millions. */
    static constexpr std::size_t MAX_KEPT = 100000;

    std::vector<SLayoutChange> vecKept;
    std::array<std::size_t, CHANGE_COUNT> aCounts{};  ///< by EChange, of those that are not kept as well
    bool bLoss = false;                               ///< an element or text is missing from the result

    std::size_t CountOmitted() const;
};

/**
 * Compares a document with what it was converted to, so that nothing goes unsaid whatever the conversion does.
 * @param strText what the document was made of
 * @param converted what CDLPXmlNormalizer::Normalize has made of it
 * @return the differences but for white space between elements
 */
SLayoutChanges FindLayoutChanges(std::string_view strText, CPolicyDocument& document, const CXMLParser& converted);
