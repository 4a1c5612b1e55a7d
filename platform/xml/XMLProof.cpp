#include "platform/xml/XMLProof.hpp"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/XMLText.hpp"

// Small enough to be seen to be right: whatever is not plainly allowed ends the proof. Tests hold every answer against
// the strict engine's.

namespace {

constexpr std::string_view DECLARATIONS[] = {
    R"(<?xml version="1.0" encoding="UTF-8"?>)",
    R"(<?xml version="1.0" encoding="utf-8"?>)",
    R"(<?xml version="1.0"?>)",
    R"(<?xml version='1.0' encoding='UTF-8'?>)",
    R"(<?xml version='1.0' encoding='utf-8'?>)",
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)",
};
constexpr std::string_view NAMESPACE_DECLARATION = "xmlns";
constexpr std::string_view TEXT_END = "]]>";
/** The names of so many are compared with each other, those of more by their hashes. */
constexpr std::size_t MAX_COMPARED = 32;

/** A reference, and whether a writer puts it there. */
struct SReference {
    std::string_view strText;
    bool bWrittenInText;
    bool bWrittenInValue;
};
constexpr SReference REFERENCES[] = {
    {"&amp;", true, true},    {"&quot;", true, true}, {"&lt;", true, true},   {"&gt;", true, true},
    {"&apos;", false, false}, {"&#13;", true, true},  {"&#10;", false, true}, {"&#9;", false, true},
};

/** What a byte is, in text and in values. */
enum EByte : unsigned char {
    PLAIN,      ///< stands for itself and is written so
    UNWRITTEN,  ///< stands for itself, but is not written so
    END,        ///< ends the text or value
    REFERENCE,
    SUSPECT,  ///< begins what XML cannot carry, and much that it can
    BAD,
};
constexpr char SUSPECT_START = '\xEF';

using CByteTable = std::array<EByte, 256>;

constexpr CByteTable MakeTable(char cEnd, std::string_view strUnwritten) {
    CByteTable aTable{};
    for (std::size_t i = 0; i < 0x20; ++i) {
        aTable[i] = XmlText::IsChar(static_cast<char32_t>(i)) ? PLAIN : BAD;
    }
    const auto fnSet = [&aTable](char c, EByte eByte) { aTable[static_cast<unsigned char>(c)] = eByte; };
    for (const char c : strUnwritten) {
        fnSet(c, UNWRITTEN);
    }
    fnSet('<', BAD);
    fnSet('&', REFERENCE);
    fnSet(SUSPECT_START, SUSPECT);
    fnSet(cEnd, END);
    return aTable;
}
constexpr CByteTable TEXT_BYTES = MakeTable('<', ">\"\r");
constexpr CByteTable VALUE_BYTES = MakeTable('"', ">\r\n\t");

/** Where a byte may stand in a name of ASCII. */
enum EName : unsigned char { NOWHERE, NAME_BYTE, NAME_START };

constexpr std::array<EName, 256> NAME_BYTES = [] {
    std::array<EName, 256> aTable{};
    for (unsigned char c = 0; c < 0x80; ++c) {
        aTable[c] = XmlText::IsNameStart(c) ? NAME_START : XmlText::IsNameByte(c) ? NAME_BYTE : NOWHERE;
    }
    return aTable;
}();

class CProver {
  public:
    explicit CProver(std::string_view strText)
        : m_pStart(strText.data()), m_pNext(strText.data()), m_pEnd(strText.data() + strText.size()) {}

    SXMLProof Prove() {
        m_proof.bAsWritten = !PassDeclaration();
        PassBlanks();
        const bool bRoot = PassRoot();
        PassBlanks();
        m_proof.bWellFormed = bRoot && m_pNext == m_pEnd;
        m_proof.bAsWritten = m_proof.bAsWritten && m_proof.bWellFormed;
        return m_proof;
    }

  private:
    std::string_view Rest() const { return {m_pNext, static_cast<std::size_t>(m_pEnd - m_pNext)}; }
    bool IsAt(char c) const { return m_pNext != m_pEnd && *m_pNext == c; }
    bool Pass(char c) {
        const bool bThere = IsAt(c);
        m_pNext += bThere ? 1 : 0;
        return bThere;
    }
    bool Pass(std::string_view strText) {
        const bool bThere = Rest().substr(0, strText.size()) == strText;
        m_pNext += bThere ? strText.size() : 0;
        return bThere;
    }
    /** What was passed is well-formed, but a writer would put it otherwise. */
    bool Unwritten() {
        m_proof.bAsWritten = false;
        return true;
    }

    bool PassDeclaration() {
        return std::any_of(std::begin(DECLARATIONS), std::end(DECLARATIONS),
                           [this](std::string_view strDeclaration) { return Pass(strDeclaration); });
    }
    static bool IsBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }
    /** @return whether there were any */
    bool PassBlanks() {
        const char* const pStart = m_pNext;
        m_pNext = std::find_if_not(m_pNext, m_pEnd, IsBlank);
        return m_pNext != pStart && Unwritten();
    }

    /** @return the name; empty when there is none */
    std::string_view PassName() {
        const char* const pStart = m_pNext;
        const auto fnIs = [](char c, EName eName) { return NAME_BYTES[static_cast<unsigned char>(c)] >= eName; };
        if (m_pNext != m_pEnd && fnIs(*m_pNext, NAME_START)) {
            m_pNext = std::find_if(m_pNext, m_pEnd, [&](char c) { return !fnIs(c, NAME_BYTE); });
        }
        return {pStart, static_cast<std::size_t>(m_pNext - pStart)};
    }

    bool PassReference(bool SReference::*pWritten) {
        for (const SReference& reference : REFERENCES) {
            if (Pass(reference.strText)) {
                return reference.*pWritten || Unwritten();
            }
        }
        return false;
    }

    /** @return whether an end was found before what is not allowed; it is not passed */
    bool PassRun(const CByteTable& aTable, bool SReference::*pWritten) {
        const auto fnByte = [&aTable](char c) { return aTable[static_cast<unsigned char>(c)]; };
        for (;;) {
            m_pNext = std::find_if(m_pNext, m_pEnd, [&](char c) { return fnByte(c) != PLAIN; });
            switch (m_pNext == m_pEnd ? BAD : fnByte(*m_pNext)) {
                case UNWRITTEN:
                    Unwritten();
                    ++m_pNext;
                    break;
                case REFERENCE:
                    if (!PassReference(pWritten)) {
                        return false;
                    }
                    break;
                case SUSPECT:
                    if (XmlText::IsNonCharacter(Rest())) {
                        return false;
                    }
                    ++m_pNext;
                    break;
                case END:
                    return true;
                default:
                    return false;
            }
        }
    }

    /** The text before the next tag. Blanks at its start may be dropped when it is read. */
    bool PassText() {
        const char* const pStart = m_pNext;
        if (!PassRun(TEXT_BYTES, &SReference::bWrittenInText)) {
            return false;
        }
        const std::string_view strText(pStart, static_cast<std::size_t>(m_pNext - pStart));
        if (strText.empty()) {
            return true;
        }
        if (IsBlank(strText.front()) || strText.substr(0, 2) == "&#") {
            Unwritten();
        }
        m_bTextInRoot = m_bTextInRoot || m_iOpen == 1;
        return strText.find(TEXT_END) == std::string_view::npos;
    }

    /** @return false when the name is that of an attribute before, unless there are many: then AreDistinct tells */
    bool NoteAttribute(std::string_view strName, std::size_t iAttribute) {
        if (iAttribute < MAX_COMPARED) {
            const auto pEnd = m_aAttributes.begin() + static_cast<std::ptrdiff_t>(iAttribute);
            m_aAttributes[iAttribute] = strName;
            return std::find(m_aAttributes.begin(), pEnd, strName) == pEnd;
        }
        const auto fnHash = [](std::string_view str) { return XXH3_64bits(str.data(), str.size()); };
        if (iAttribute == MAX_COMPARED) {
            m_vecHashes.resize(MAX_COMPARED);
            std::transform(m_aAttributes.begin(), m_aAttributes.end(), m_vecHashes.begin(), fnHash);
        }
        m_vecHashes.push_back(fnHash(strName));
        return true;
    }

    /** Names with different hashes differ; of others nothing is proven. */
    bool AreDistinct(std::size_t iAttributes) {
        if (iAttributes <= MAX_COMPARED) {
            return true;
        }
        std::sort(m_vecHashes.begin(), m_vecHashes.end());
        return std::adjacent_find(m_vecHashes.begin(), m_vecHashes.end()) == m_vecHashes.end();
    }

    bool PassAttribute(std::size_t iAttribute) {
        const std::string_view strName = PassName();
        if (strName.empty() || !NoteAttribute(strName, iAttribute)) {
            return false;
        }
        if (strName.substr(0, NAMESPACE_DECLARATION.size()) == NAMESPACE_DECLARATION) {
            Unwritten();
        }
        return Pass("=\"") && PassRun(VALUE_BYTES, &SReference::bWrittenInValue) && Pass('"');
    }

    /** Looks again at the attributes of a tag, of which two have names of one hash, for the first that is there twice.
     */
    void FindTwice(const char* pAttributes, std::size_t iAttributes) {
        using Name = std::pair<XXH64_hash_t, std::string_view>;
        std::vector<Name> vecNames(iAttributes);
        m_pNext = pAttributes;
        for (auto& [iHash, strName] : vecNames) {
            PassBlanks();
            strName = PassName();
            iHash = XXH3_64bits(strName.data(), strName.size());
            Pass("=\"");
            PassRun(VALUE_BYTES, &SReference::bWrittenInValue);
            Pass('"');
        }
        std::sort(vecNames.begin(), vecNames.end(), [](const Name& left, const Name& right) {
            return left.first != right.first ? left.first < right.first : left.second.data() < right.second.data();
        });
        const char* pTwice = m_pEnd;
        for (std::size_t i = 1; i < vecNames.size(); ++i) {
            if (vecNames[i].first != vecNames[i - 1].first) {
                continue;
            }
            if (vecNames[i].second != vecNames[i - 1].second) {
                return;  // names of one hash, of which others may stand there twice
            }
            pTwice = std::min(pTwice, vecNames[i].second.data());
        }
        m_proof.iTwice = static_cast<std::size_t>(pTwice - m_pStart);
    }

    /** What follows the name in a start tag, up to its end, which is not passed. */
    bool PassAttributes() {
        const char* const pStart = m_pNext;
        for (std::size_t i = 0;; ++i) {
            const bool bSpace = Pass(' ');
            const bool bBlanks = PassBlanks();
            if (IsAt('>') || IsAt('/')) {
                const bool bDistinct = AreDistinct(i);
                if (!bDistinct && (IsAt('>') || Rest().substr(0, 2) == "/>")) {
                    FindTwice(pStart, i);
                }
                return bDistinct && (!bSpace || Unwritten());
            }
            if ((!bSpace && !bBlanks) || !PassAttribute(i)) {
                return false;
            }
        }
    }

    bool PassStartTag() {
        const std::string_view strName = PassName();
        if (strName.empty() || m_iOpen == m_aOpen.size() || !PassAttributes()) {
            return false;
        }
        NoteElement(strName);
        m_aOpen[m_iOpen++] = strName;
        m_proof.iDepth = std::max(m_proof.iDepth, m_iOpen);
        if (Pass('/')) {
            --m_iOpen;
            return Pass('>');
        }
        return Pass('>') && (!IsAt('<') || Rest().substr(0, 2) != "</" || Unwritten());
    }

    bool PassEndTag() {
        const std::string_view strName = m_aOpen[--m_iOpen];
        const bool bName = Pass(strName);
        PassBlanks();
        return bName && Pass('>');
    }

    void NoteElement(std::string_view strName) {
        if (m_iOpen == 0) {
            m_proof.strRoot = strName;
        } else if (m_iOpen == 1) {
            m_bManyNames = m_bManyNames || (!m_proof.strChildName.empty() && m_proof.strChildName != strName);
            m_proof.strChildName = strName;
        }
    }

    bool PassRoot() {
        if (!Pass('<') || !PassStartTag()) {
            return false;
        }
        const char* const pContent = m_pNext;
        const char* pContentEnd = m_pNext;
        while (m_iOpen > 0) {
            if (!PassText()) {
                return false;
            }
            pContentEnd = m_pNext++;
            if (!(Pass('/') ? PassEndTag() : PassStartTag())) {
                return false;
            }
        }
        m_proof.strContent = {pContent, static_cast<std::size_t>(pContentEnd - pContent)};
        if (m_bManyNames || m_bTextInRoot) {
            m_proof.strChildName = {};
        }
        return true;
    }

    const char* m_pStart;
    const char* m_pNext;
    const char* m_pEnd;
    SXMLProof m_proof;
    std::array<std::string_view, CXMLParser::MAX_DEPTH> m_aOpen;
    std::size_t m_iOpen = 0;
    std::array<std::string_view, MAX_COMPARED> m_aAttributes;
    std::vector<XXH64_hash_t> m_vecHashes;
    bool m_bManyNames = false;
    bool m_bTextInRoot = false;
};

}  // namespace

SXMLProof ProveXml(std::string_view strText) {
    return OS::FindInvalidUtf8(strText) == std::string_view::npos ? CProver(strText).Prove() : SXMLProof();
}
