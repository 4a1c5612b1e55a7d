#include "cli/check/FixedText.h"

#include <algorithm>
#include <iterator>

CFixedText::CFixedText(std::string_view strText, const CFindings& findings) {
    std::size_t iCopied = 0;
    m_strText.reserve(strText.size());
    findings.ForEachFix([&](std::size_t iOffset, std::size_t iLength, std::string_view strReplacement) {
        m_strText += strText.substr(iCopied, iOffset - iCopied);
        const std::size_t iNow = m_strText.size();
        m_strText += strReplacement;
        iCopied = iOffset + iLength;
        m_vecReplaced.push_back({iOffset, iCopied, iNow, m_strText.size()});
    });
    m_strText += strText.substr(iCopied);
}

std::size_t CFixedText::Find(std::size_t iOffset) const {
    const auto itNext = std::upper_bound(m_vecReplaced.begin(), m_vecReplaced.end(), iOffset,
                                         [](std::size_t i, const SReplaced& replaced) { return i < replaced.iBefore; });
    if (itNext == m_vecReplaced.begin()) {
        return iOffset;
    }
    const SReplaced& last = *std::prev(itNext);
    return iOffset < last.iBehindBefore ? std::min(last.iNow + (iOffset - last.iBefore), last.iBehindNow)
                                        : last.iBehindNow + (iOffset - last.iBehindBefore);
}
