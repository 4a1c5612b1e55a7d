#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** A document as a second, independent reader sees it. */
struct SExpatNode {
    enum EKind { ELEMENT, TEXT, CDATA, COMMENT, INSTRUCTION };

    EKind eKind = ELEMENT;
    std::string strName;   ///< element, target of an instruction
    std::string strValue;  ///< everything else
    std::vector<std::pair<std::string, std::string>> vecAttributes;
    std::vector<SExpatNode> vecChildren;
};

/**
 * Reads a document; what stands beside the root is left out.
 * @return false for text that is not well-formed
 */
bool ReadWithExpat(std::string_view strText, SExpatNode& root);

/** @return where the engine finds an attribute's name for the second time; npos when nothing or something else is wrong
 */
std::size_t FindTwiceWithExpat(std::string_view strText);

/** Takes out blank text between elements: where there are elements and no other text beside it. */
void DropBlanksBetweenElements(SExpatNode& node);

/** @return one line per node, indented; equal for equal trees only */
std::string Dump(const SExpatNode& node, int iDepth = 0);
