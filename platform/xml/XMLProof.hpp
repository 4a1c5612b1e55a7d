#pragma once

#include <cstddef>
#include <string_view>

/** What one quick look has proven about a text. */
struct SXMLProof {
    bool bWellFormed = false;
    /**
     * Where an attribute's name stands for the second time in a tag of many; npos: not told. All before the tag's end
     * is well-formed but for that.
     */
    std::size_t iTwice = std::string_view::npos;
    /** It is one element as XmlMarkup::Append would write it again, byte for byte, and declares no namespace. */
    bool bAsWritten = false;
    std::size_t iDepth = 0;         ///< how deep its elements nest
    std::string_view strRoot;       ///< the root element's name
    std::string_view strContent;    ///< what stands between the root's tags
    std::string_view strChildName;  ///< of the root's children, when they are elements of one name and nothing else
};

/**
 * Looks for what is well-formed within simple bounds: elements and attributes of ASCII names, values in double quotes,
 * text, the common references, in UTF-8, as every writer of policies puts it. Nothing is proven about any other text;
 * whether that is well-formed is for CheckXml to say.
 */
SXMLProof ProveXml(std::string_view strText);
