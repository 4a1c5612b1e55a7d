#pragma once

#include <vector>

#include "api/CDLPSubKeyword.h"
#include "api/ParserExport.h"
#include "platform/common/x_wstring.h"

/** Turns the keywords of a list into the XML text that a keyword record stores, and back. Safe on any thread. */
class DLP_PARSER_API CDLPSubKeywordFormater {
  public:
    CDLPSubKeywordFormater& operator=(const CDLPSubKeywordFormater&);

    /** @return a dictionary element with one keyword child per entry, in list order; empty on failure, which is logged */
    static OS::x_wstring ToXmlFormat(std::vector<CDLPSubKeyword>& vecKeywords);

    /**
     * Appends the text's keywords to vecKeywords and sorts all of it by keyword. Text that is no dictionary document
     * leaves vecKeywords as it was; the failure is logged. An absent attribute gives an empty text.
     */
    static void ToUIFormat(const OS::x_wstring& strXml, std::vector<CDLPSubKeyword>& vecKeywords);
};
