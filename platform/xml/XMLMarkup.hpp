#pragma once

#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

/** Trees as markup, and the namespace declarations that must come along. */
namespace XmlMarkup {

/** A namespace declaration: the attribute's name and value. */
using CDeclaration = std::pair<std::string, std::string>;

/** @return the declarations that an element's ancestors make for it and that it does not make itself; else none */
std::vector<CDeclaration> DeclarationsInScope(pugi::xml_node node);
/** Adds those of the declarations that are not in scope where the element is now. */
void AddDeclarations(pugi::xml_node element, const std::vector<CDeclaration>& vecDeclarations);

/** Names of attributes to leave out. */
struct SSkip {
    const char* const* apNames = nullptr;
    std::size_t iCount = 0;
};

/** Appends the markup of a node with all its content, with declarations in scope; skip holds for the node itself. */
void Append(std::string& strOut, pugi::xml_node node, const SSkip& skip = {});

}  // namespace XmlMarkup
