#pragma once

#include "api/ParserExport.h"
#include "platform/common/x_wstring.h"

/** One keyword of a keyword list, as an editing screen shows it; all four values are text. */
class DLP_PARSER_API CDLPSubKeyword {
  public:
    /** An empty keyword with score "0" and caseSensitive "false". */
    CDLPSubKeyword();
    CDLPSubKeyword(const OS::x_wstring& strKeyword, const OS::x_wstring& strDescription, const OS::x_wstring& strScore,
                   const OS::x_wstring& strCaseSensitive);
    CDLPSubKeyword(const CDLPSubKeyword&);
    CDLPSubKeyword& operator=(const CDLPSubKeyword&);
    ~CDLPSubKeyword();

    /**
     * Compares the keyword texts only, in ordinal order.
     * @return true when this keyword is less than or equal to the other: equal ones compare "less" both ways, so this is
     *         no strict order and must not be handed to std::sort as it is
     */
    bool operator<(const CDLPSubKeyword& other) const;

    OS::x_wstring m_strKeyword;
    OS::x_wstring m_strDescription;
    OS::x_wstring m_strScore;          ///< weight, decimal text
    OS::x_wstring m_strCaseSensitive;  ///< "true" or "false"
};
