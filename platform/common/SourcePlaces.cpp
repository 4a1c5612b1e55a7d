#include "platform/common/SourcePlaces.h"

#include <algorithm>

namespace {

/** Code points are counted up front for every so many bytes, and the rest when asked. */
constexpr std::size_t BLOCK = 256;

/** Every byte but one that continues a sequence. */
std::size_t CountStarts(std::string_view strText) {
    return static_cast<std::size_t>(std::count_if(
        strText.begin(), strText.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

CSourcePlaces::CSourcePlaces(std::string_view strText) : m_strText(strText), m_vecLines{0}, m_vecBlocks{0} {
    // LF, CR and CR LF each end a line; what of them does not occur is looked for once.
    std::size_t iLf = strText.find('\n');
    std::size_t iCr = strText.find('\r');
    while (std::min(iLf, iCr) != std::string_view::npos) {
        const std::size_t iEnd = iCr < iLf && iCr + 1 != iLf ? iCr : iLf;
        m_vecLines.push_back(iEnd + 1);
        iLf = iLf <= iEnd ? strText.find('\n', iEnd + 1) : iLf;
        iCr = iCr <= iEnd ? strText.find('\r', iEnd + 1) : iCr;
    }
    for (std::size_t i = 0; i + BLOCK <= strText.size(); i += BLOCK) {
        m_vecBlocks.push_back(m_vecBlocks.back() + CountStarts(strText.substr(i, BLOCK)));
    }
}

SPlace CSourcePlaces::Find(std::size_t iOffset) const {
    if (iOffset > m_strText.size()) {
        return {};
    }
    const auto itNext = std::upper_bound(m_vecLines.begin(), m_vecLines.end(), iOffset);
    const std::size_t iLine = static_cast<std::size_t>(itNext - m_vecLines.begin());
    return {iLine, CountCodePoints(iOffset) - CountCodePoints(m_vecLines[iLine - 1]) + 1};
}

std::size_t CSourcePlaces::CountCodePoints(std::size_t iOffset) const {
    const std::size_t iBlock = iOffset / BLOCK;
    return m_vecBlocks[iBlock] + CountStarts(m_strText.substr(iBlock * BLOCK, iOffset % BLOCK));
}
