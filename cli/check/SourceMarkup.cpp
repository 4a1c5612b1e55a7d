#include "cli/check/SourceMarkup.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

constexpr std::string_view SPACE = " \t\r\n";
constexpr std::string_view COMMENT = "<!--";
constexpr std::string_view COMMENT_END = "-->";
constexpr std::string_view CDATA = "<![CDATA[";
constexpr std::string_view CDATA_END = "]]>";
constexpr std::string_view INSTRUCTION = "<?";
constexpr std::string_view INSTRUCTION_END = "?>";
constexpr std::string_view END_TAG = "</";

std::size_t CountUtf8Bytes(std::uint32_t iPoint) {
    return iPoint < 0x80 ? 1 : iPoint < 0x800 ? 2 : iPoint < 0x10000 ? 3 : 4;
}

/** @param strName between "&" and ";" */
std::size_t CountReferenceBytes(std::string_view strName) {
    if (strName.empty() || strName.front() != '#') {
        return 1;  // of the five that are known, each is one character of ASCII
    }
    const bool bHex = strName.size() > 1 && strName[1] == 'x';
    const std::string strDigits(strName.substr(bHex ? 2 : 1));
    return CountUtf8Bytes(static_cast<std::uint32_t>(std::stoul(strDigits, nullptr, bHex ? 16 : 10)));
}

/** Walks the content of one element, one byte of its text after the other. */
class CTextWalk {
  public:
    CTextWalk(std::string_view strText, std::size_t iStart) : m_strText(strText), m_iPosition(iStart) {}

    /** @return the offset of that byte, npos when the text ends before it */
    std::size_t Find(std::size_t iByte) {
        for (;;) {
            if (!SkipMarkup()) {
                return iByte == m_iBytes ? m_iPosition : std::string_view::npos;
            }
            const std::size_t iStart = m_iPosition;
            m_iBytes += Take();
            if (m_iBytes > iByte) {
                return iStart;
            }
        }
    }

  private:
    bool StartsWith(std::string_view strStart) const {
        return m_strText.compare(m_iPosition, strStart.size(), strStart) == 0;
    }
    void SkipBehind(std::string_view strEnd) {
        const std::size_t iEnd = m_strText.find(strEnd, m_iPosition);
        m_iPosition = iEnd == std::string_view::npos ? m_strText.size() : iEnd + strEnd.size();
    }

    /** @return whether text follows, before the element ends */
    bool SkipMarkup() {
        for (;;) {
            if (m_bCdata && !StartsWith(CDATA_END)) {
                return true;
            }
            if (m_bCdata) {
                m_bCdata = false;
                m_iPosition += CDATA_END.size();
            } else if (m_iPosition >= m_strText.size() || (StartsWith(END_TAG) && m_iDepth == 0)) {
                return false;
            } else if (m_strText[m_iPosition] != '<') {
                return true;
            } else {
                SkipTag();
            }
        }
    }

    void SkipTag() {
        if (StartsWith(CDATA)) {
            m_bCdata = true;
            m_iPosition += CDATA.size();
        } else if (StartsWith(COMMENT)) {
            SkipBehind(COMMENT_END);
        } else if (StartsWith(INSTRUCTION)) {
            SkipBehind(INSTRUCTION_END);
        } else if (StartsWith(END_TAG)) {
            --m_iDepth;
            SkipBehind(">");
        } else {
            CTagScanner tag(m_strText, m_iPosition);
            while (tag.Next()) {
            }
            m_iPosition = tag.GetEnd();
            m_iDepth += tag.IsEmptyElement() ? 0 : 1;
        }
    }

    /** @return how many bytes of text the next piece stands for */
    std::size_t Take() {
        const char cNext = m_strText[m_iPosition];
        if (cNext == '&' && !m_bCdata) {
            const std::size_t iEnd = std::min(m_strText.find(';', m_iPosition), m_strText.size());
            const std::string_view strName = m_strText.substr(m_iPosition + 1, iEnd - m_iPosition - 1);
            m_iPosition = iEnd + 1;
            return CountReferenceBytes(strName);
        }
        // CR LF is read as one LF.
        m_iPosition += StartsWith("\r\n") ? 2 : 1;
        return 1;
    }

    std::string_view m_strText;
    std::size_t m_iPosition;
    std::size_t m_iBytes = 0;
    std::size_t m_iDepth = 0;
    bool m_bCdata = false;
};

}  // namespace

CTagScanner::CTagScanner(std::string_view strText, std::size_t iTag) : m_strText(strText), m_iPosition(iTag) {
    SkipTo(" \t\r\n/>");
}

bool CTagScanner::Next() {
    SkipSpace();
    if (m_iPosition >= m_strText.size() || m_strText[m_iPosition] == '>' || m_strText[m_iPosition] == '/') {
        m_bEmptyElement = m_strText.compare(m_iPosition, 1, "/") == 0;
        m_iPosition = std::min(m_iPosition + (m_bEmptyElement ? 2 : 1), m_strText.size());
        return false;
    }
    m_iName = m_iPosition;
    SkipTo(" \t\r\n=");
    m_iNameEnd = m_iPosition;
    SkipTo("\"'");
    m_iValue = std::min(m_iPosition + 1, m_strText.size());
    const bool bQuote = m_iPosition < m_strText.size();
    m_iValueEnd = std::min(bQuote ? m_strText.find(m_strText[m_iPosition], m_iValue) : m_iValue, m_strText.size());
    m_iPosition = std::min(m_iValueEnd + 1, m_strText.size());
    return true;
}

void CTagScanner::SkipTo(std::string_view strEnds) {
    m_iPosition = std::min(m_strText.find_first_of(strEnds, m_iPosition), m_strText.size());
}

void CTagScanner::SkipSpace() {
    m_iPosition = std::min(m_strText.find_first_not_of(SPACE, m_iPosition), m_strText.size());
}

SAttributePlace FindAttribute(std::string_view strText, std::size_t iTag, std::string_view strName) {
    CTagScanner tag(strText, iTag);
    while (tag.Next()) {
        if (tag.GetName() == strName) {
            return {tag.GetNameOffset(), tag.GetValueOffset(), tag.GetValueLength(), true};
        }
    }
    return {iTag, iTag, 0, false};
}

std::size_t FindTextOffset(std::string_view strText, std::size_t iTag, std::size_t iByte) {
    CTagScanner tag(strText, iTag);
    while (tag.Next()) {
    }
    if (tag.IsEmptyElement()) {
        return iTag;
    }
    const std::size_t iOffset = CTextWalk(strText, tag.GetEnd()).Find(iByte);
    return iOffset == std::string_view::npos ? iTag : iOffset;
}
