#pragma once

#include <string>
#include <string_view>

/**
 * Writes a document in the one form that dlpctl gives to documents; what is in that form stays as it is.
 * Elements and comments stand on lines of their own, indented by their depth, wherever white space means nothing: not
 * inside an element that holds text, or no element. A comment stays on the line of what it follows, and one empty line
 * stays where there were some. Attributes keep their order, and text, values, comments and instructions what they say:
 * lines end with LF, values stand in double quotes, what is empty is <a/>.
 * @param strDocument well-formed, from its first "<" on
 */
std::string FormatXml(std::string_view strDocument);
