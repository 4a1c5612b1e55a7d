#pragma once

#include <string>
#include <string_view>

/**
 * @param strDocument well-formed
 * @return the document with each element on a line of its own, and its children indented below it, wherever white space
 *         means nothing: not inside an element that holds text
 */
std::string IndentXml(std::string_view strDocument);
