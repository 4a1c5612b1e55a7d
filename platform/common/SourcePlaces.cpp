#include "platform/common/SourcePlaces.h"

#include <algorithm>

namespace {

/** Code points and lines are counted up front for every so many bytes, and the rest when asked. */
constexpr std::size_t BLOCK = 64;

/** Every byte but one that continues a sequence. */
std::size_t CountStarts(std::string_view strText) {
    return static_cast<std::size_t>(std::count_if(
        strText.begin(), strText.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

CSourcePlaces::CSourcePlaces(std::string_view strText) : m_strText(strText) {
    SPassed passed;
    m_vecBlocks.reserve(strText.size() / BLOCK + 1);
    m_vecBlocks.push_back(passed);
    for (std::size_t i = BLOCK; i <= strText.size(); i += BLOCK) {
        Pass(i - BLOCK, i, passed);
        m_vecBlocks.push_back(passed);
    }
}

SPlace CSourcePlaces::Find(std::size_t iOffset) const {
    if (iOffset > m_strText.size()) {
        return {};
    }
    const SPassed passed = GetPassed(iOffset);
    return {passed.iLines + 1, passed.iCodePoints - CountCodePoints(passed.iLineStart) + 1};
}

std::size_t CSourcePlaces::CountCodePoints(std::size_t iOffset) const {
    const std::size_t iBlock = iOffset / BLOCK;
    return m_vecBlocks[iBlock].iCodePoints + CountStarts(m_strText.substr(iBlock * BLOCK, iOffset % BLOCK));
}

/** LF, CR and CR LF each end a line. */
void CSourcePlaces::Pass(std::size_t iFrom, std::size_t iBehind, SPassed& passed) const {
    passed.iCodePoints += CountStarts(m_strText.substr(iFrom, iBehind - iFrom));
    for (std::size_t i = iFrom; i < iBehind; ++i) {
        const char c = m_strText[i];
        if (c == '\n' || (c == '\r' && m_strText.substr(i + 1, 1) != "\n")) {
            ++passed.iLines;
            passed.iLineStart = i + 1;
        }
    }
}

CSourcePlaces::SPassed CSourcePlaces::GetPassed(std::size_t iOffset) const {
    const std::size_t iBlock = iOffset / BLOCK;
    SPassed passed = m_vecBlocks[iBlock];
    Pass(iBlock * BLOCK, iOffset, passed);
    return passed;
}
