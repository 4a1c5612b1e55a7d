#include "api/CDLPSubKeyword.h"

CDLPSubKeyword::CDLPSubKeyword() : m_strScore(L"0"), m_strCaseSensitive(L"false") {}

CDLPSubKeyword::CDLPSubKeyword(const OS::x_wstring& strKeyword, const OS::x_wstring& strDescription,
                               const OS::x_wstring& strScore, const OS::x_wstring& strCaseSensitive)
    : m_strKeyword(strKeyword),
      m_strDescription(strDescription),
      m_strScore(strScore),
      m_strCaseSensitive(strCaseSensitive) {}

CDLPSubKeyword::CDLPSubKeyword(const CDLPSubKeyword&) = default;
CDLPSubKeyword& CDLPSubKeyword::operator=(const CDLPSubKeyword&) = default;
CDLPSubKeyword::~CDLPSubKeyword() = default;

bool CDLPSubKeyword::operator<(const CDLPSubKeyword& other) const {
    return m_strKeyword <= other.m_strKeyword;
}
