#include "platform/common/TextConversion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "platform/common/CException.h"

namespace OS {

static_assert(sizeof(wchar_t) == 4, "one wchar_t holds one code point");

namespace {

constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr std::size_t BLOCK = 8;    // ASCII goes in blocks of this many characters
constexpr std::size_t MAXIMUM = 7;  // bytes of the longest loose sequence

bool IsAsciiBlock(const char* pText) {
    std::uint64_t iBytes = 0;
    std::memcpy(&iBytes, pText, BLOCK);
    return (iBytes & 0x8080808080808080U) == 0;
}

bool IsAsciiBlock(const wchar_t* pText) {
    std::uint32_t iBits = 0;
    for (std::size_t i = 0; i < BLOCK; ++i) {
        iBits |= static_cast<std::uint32_t>(pText[i]);
    }
    return iBits < 0x80;
}

template <class From, class To>
void CopyBlock(const From* pFrom, To* pTo) {
    for (std::size_t i = 0; i < BLOCK; ++i) {
        pTo[i] = static_cast<To>(pFrom[i]);
    }
}

constexpr bool IsScalar(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

constexpr bool IsContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

unsigned char ByteAt(std::string_view strText, std::size_t i) {
    return static_cast<unsigned char>(strText[i]);
}

/** Well-formed sequences by their lead byte; the second byte tells overlong forms, surrogates and what is too large. */
struct SLead {
    unsigned char iFirst, iLast;      // lead bytes
    unsigned char iLowest, iHighest;  // second bytes
    std::size_t iLength;
};
constexpr SLead LEADS[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

/** @return the length of the strict sequence at the offset, 0 when there is none */
std::size_t StrictLength(std::string_view strText, std::size_t iOffset) {
    const unsigned char iLead = ByteAt(strText, iOffset);
    if (iLead < 0x80) {
        return 1;
    }
    for (const SLead& lead : LEADS) {
        if (iLead < lead.iFirst || iLead > lead.iLast) {
            continue;
        }
        if (strText.size() - iOffset < lead.iLength || ByteAt(strText, iOffset + 1) < lead.iLowest ||
            ByteAt(strText, iOffset + 1) > lead.iHighest) {
            return 0;
        }
        for (std::size_t i = 2; i < lead.iLength; ++i) {
            if (!IsContinuation(ByteAt(strText, iOffset + i))) {
                return 0;
            }
        }
        return lead.iLength;
    }
    return 0;
}

/** @return the length of the sequence of up to seven bytes at the offset, 0 when there is none */
std::size_t LooseLength(std::string_view strText, std::size_t iOffset) {
    const unsigned char iLead = ByteAt(strText, iOffset);
    if (iLead < 0x80) {
        return 1;
    }
    std::size_t iLength = 0;
    while (iLength <= MAXIMUM && (iLead & (0x80U >> iLength)) != 0) {
        ++iLength;
    }
    if (iLength < 2 || iLength > MAXIMUM || strText.size() - iOffset < iLength) {
        return 0;
    }
    const auto itFirst = strText.begin() + static_cast<std::ptrdiff_t>(iOffset) + 1;
    const auto itLast = itFirst + static_cast<std::ptrdiff_t>(iLength) - 1;
    const bool bWhole =
        std::all_of(itFirst, itLast, [](char c) { return IsContinuation(static_cast<unsigned char>(c)); });
    return bWhole ? iLength : 0;
}

/** The value of a sequence of known length. */
char32_t Decode(std::string_view strText, std::size_t iOffset, std::size_t iLength) {
    const unsigned char iLead = ByteAt(strText, iOffset);
    if (iLength == 1) {
        return iLead;
    }
    char32_t iValue = iLead & (0x7FU >> iLength);
    for (std::size_t i = 1; i < iLength; ++i) {
        iValue = (iValue << 6) | (ByteAt(strText, iOffset + i) & 0x3FU);
    }
    return iValue;
}

/** A text on its way out, appended in pieces: so its memory is written once, when it is its turn. */
template <class C>
class CPieces {
  public:
    CPieces(std::basic_string<C>& strOut, std::size_t iExpected) : m_strOut(strOut) { m_strOut.reserve(iExpected); }

    /** @return room for a block or a sequence, whichever is longer; say with Advance how much of it was used */
    C* Room() {
        if (m_iUsed + BLOCK > m_aPiece.size()) {
            Flush();
        }
        return m_aPiece.data() + m_iUsed;
    }
    void Advance(std::size_t iUsed) { m_iUsed += iUsed; }
    void Flush() {
        m_strOut.append(m_aPiece.data(), m_iUsed);
        m_iUsed = 0;
    }

  private:
    static_assert(MAXIMUM <= BLOCK);

    std::basic_string<C>& m_strOut;
    std::size_t m_iUsed = 0;
    std::array<C, 512> m_aPiece;
};

/** Sequences as long as fnLength says; fnBad gives the character for the byte at an offset that starts none. */
template <class Length, class Bad>
x_wstring DecodeText(std::string_view strText, Length fnLength, Bad fnBad) {
    x_wstring strWide;
    CPieces<wchar_t> pieces(strWide, strText.size());
    for (std::size_t i = 0; i < strText.size();) {
        wchar_t* const pRoom = pieces.Room();
        if (strText.size() - i >= BLOCK && IsAsciiBlock(strText.data() + i)) {
            CopyBlock(strText.data() + i, pRoom);
            pieces.Advance(BLOCK);
            i += BLOCK;
            continue;
        }
        const std::size_t iLength = fnLength(strText, i);
        *pRoom = static_cast<wchar_t>(iLength == 0 ? fnBad(i) : Decode(strText, i, iLength));
        pieces.Advance(1);
        i += std::max<std::size_t>(iLength, 1);
    }
    pieces.Flush();
    return strWide;
}

/** @return how many bytes were written */
std::size_t Encode(char32_t c, char* pBytes) {
    if (c < 0x80) {
        *pBytes = static_cast<char>(c);
        return 1;
    }
    constexpr char32_t aLimits[] = {0x800, 0x10000, 0x200000, 0x4000000, 0x80000000};
    const auto iTail =
        static_cast<std::size_t>(std::upper_bound(std::begin(aLimits), std::end(aLimits), c) - aLimits) + 1;
    for (std::size_t i = iTail; i > 0; --i) {
        pBytes[i] = static_cast<char>(0x80U | (c & 0x3FU));
        c >>= 6;
    }
    pBytes[0] = static_cast<char>((0xFF00U >> (iTail + 1)) | c);
    return iTail + 1;
}

/** Each character as fnMap(value, position) gives it. */
template <class Map>
std::string EncodeText(std::wstring_view strText, Map fnMap) {
    std::string strUtf8;
    CPieces<char> pieces(strUtf8, strText.size());
    for (std::size_t i = 0; i < strText.size();) {
        char* const pRoom = pieces.Room();
        if (strText.size() - i >= BLOCK && IsAsciiBlock(strText.data() + i)) {
            CopyBlock(strText.data() + i, pRoom);
            pieces.Advance(BLOCK);
            i += BLOCK;
            continue;
        }
        pieces.Advance(Encode(fnMap(static_cast<char32_t>(strText[i]), i), pRoom));
        ++i;
    }
    pieces.Flush();
    return strUtf8;
}

std::wstring Hexadecimal(char32_t c) {
    std::wstring strDigits;
    for (; c != 0 || strDigits.size() < 4; c >>= 4) {
        strDigits.insert(strDigits.begin(), L"0123456789ABCDEF"[c & 0xF]);
    }
    return strDigits;
}

constexpr char32_t Replace(std::size_t) {
    return REPLACEMENT;
}

}  // namespace

x_astring WCharToChar(const x_wstring& strText, int) {
    return EncodeText(strText, [](char32_t c, std::size_t iPosition) {
        if (!IsScalar(c)) {
            throw CException(0,
                             L"cannot write the text as UTF-8: U+" + Hexadecimal(c) + L" at position " +
                                 std::to_wstring(iPosition) + L" is no Unicode character",
                             0);
        }
        return c;
    });
}

x_wstring UTF8CharToWChar(const char* pText, std::size_t iLength, int) {
    return DecodeText({pText, iLength}, StrictLength, [](std::size_t iOffset) -> char32_t {
        throw CException(0, L"the text is not UTF-8 at byte offset " + std::to_wstring(iOffset), 0);
    });
}

std::size_t FindInvalidUtf8(std::string_view strUtf8) noexcept {
    for (std::size_t i = 0; i < strUtf8.size();) {
        if (strUtf8.size() - i >= BLOCK && IsAsciiBlock(strUtf8.data() + i)) {
            i += BLOCK;
            continue;
        }
        const std::size_t iLength = StrictLength(strUtf8, i);
        if (iLength == 0) {
            return i;
        }
        i += iLength;
    }
    return std::string_view::npos;
}

std::size_t CountCodePoints(std::string_view strUtf8) noexcept {
    return static_cast<std::size_t>(std::count_if(
        strUtf8.begin(), strUtf8.end(), [](char c) { return !IsContinuation(static_cast<unsigned char>(c)); }));
}

std::string Utf8Lenient(std::wstring_view strText) {
    return EncodeText(strText, [](char32_t c, std::size_t) { return IsScalar(c) ? c : REPLACEMENT; });
}

x_wstring WideLenient(std::string_view strUtf8) {
    return DecodeText(strUtf8, StrictLength, Replace);
}

std::string Utf8Loose(std::wstring_view strText) {
    return EncodeText(strText, [](char32_t c, std::size_t) { return c; });
}

x_wstring WideLoose(std::string_view strLoose) {
    return DecodeText(strLoose, LooseLength, Replace);
}

}  // namespace OS
