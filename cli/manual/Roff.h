#pragma once

#include <string>
#include <string_view>

/** Text in the language of manual pages. */
namespace Roff {

/** @return the text so that every character of it is shown as it stands, hyphens as such */
std::string Escape(std::string_view strText);
/** @return lines in a fixed layout, indented */
std::string MakeBlock(std::string_view strLines);
/** @return an entry of a list: what it is called, in bold, and what there is to say of it @param strText may be roff */
std::string MakeEntry(std::string_view strName, std::string_view strText);
/**
 * Turns Markdown into a page's sections: headings, paragraphs, lists, tables (as lists), blocks of code; code, bold
 * text and links in a line. The heading of the whole is left out.
 */
std::string FromMarkdown(std::string_view strMarkdown);

}  // namespace Roff
