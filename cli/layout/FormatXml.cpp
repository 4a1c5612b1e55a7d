#include "cli/layout/FormatXml.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "cli/check/SourceMarkup.h"
#include "cli/layout/MarkupReader.h"

namespace {

constexpr std::size_t STEP = 2;
constexpr std::string_view QUOTE = "&quot;";

/**
 * White space is dropped when a document is read only between elements, so only an element that holds elements and no
 * text may be spread over lines; a lone comment does not make it one.
 * @return for each start tag, in their order, whether its element is such
 */
std::vector<bool> FindSpread(std::string_view strDocument) {
    struct SOpen {
        std::size_t iStart;
        bool bText = false;
        bool bElements = false;
    };
    std::vector<bool> vecSpread;
    std::vector<SOpen> vecOpen;
    CMarkupReader reader(strDocument);
    for (SPiece piece; reader.Next(piece);) {
        if (piece.ePiece == EPiece::END) {
            vecSpread[vecOpen.back().iStart] = vecOpen.back().bElements && !vecOpen.back().bText;
            vecOpen.pop_back();
            continue;
        }
        const bool bStart = piece.ePiece == EPiece::START;
        if (!vecOpen.empty()) {
            SOpen& open = vecOpen.back();
            open.bText = open.bText || (piece.ePiece == EPiece::TEXT && !piece.IsBlank());
            open.bElements = open.bElements || bStart || piece.ePiece == EPiece::EMPTY;
        }
        if (bStart) {
            vecOpen.push_back({vecSpread.size()});
            vecSpread.push_back(false);
        }
    }
    return vecSpread;
}

/** Lines end at LF, CR LF or CR. */
std::size_t CountLineEnds(std::string_view strText) {
    std::size_t iEnds = 0;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        iEnds += strText[i] == '\n' || (strText[i] == '\r' && strText.substr(i + 1, 1) != "\n") ? 1 : 0;
    }
    return iEnds;
}

/** Appends text as it is read: with LF at the ends of its lines. */
void AppendLines(std::string& strOut, std::string_view strText) {
    for (std::size_t iCr = strText.find('\r'); iCr != std::string_view::npos; iCr = strText.find('\r')) {
        strOut.append(strText, 0, iCr) += '\n';
        strText.remove_prefix(iCr + (strText.substr(iCr + 1, 1) == "\n" ? 2 : 1));
    }
    strOut += strText;
}

/** Line ends and tabs in a value are read as blanks. */
void AppendValue(std::string& strOut, std::string_view strValue) {
    for (std::size_t i = 0; i < strValue.size(); ++i) {
        const char c = strValue[i];
        if (c == '"') {
            strOut += QUOTE;
        } else if (c != '\r' || strValue.substr(i + 1, 1) != "\n") {
            strOut += c == '\t' || c == '\n' || c == '\r' ? ' ' : c;
        }
    }
}

/** @param strTag a start tag, whole */
void AppendAttributes(std::string& strOut, std::string_view strTag) {
    CTagScanner tag(strTag, 0);
    while (tag.Next()) {
        strOut.append(" ").append(tag.GetName()).append("=\"");
        AppendValue(strOut, strTag.substr(tag.GetValueOffset(), tag.GetValueLength()));
        strOut += '"';
    }
}

class CFormatter {
  public:
    explicit CFormatter(std::string_view strDocument) : m_vecSpread(FindSpread(strDocument)), m_reader(strDocument) {
        m_strOut.reserve(strDocument.size());
    }

    std::string Run() {
        for (SPiece piece; m_reader.Next(piece);) {
            if (m_iKept == 0 && piece.ePiece == EPiece::TEXT) {
                m_iLineEnds = CountLineEnds(piece.strText);
                continue;
            }
            Take(piece);
            m_eLast = piece.ePiece;
            m_iLineEnds = 0;
        }
        return m_strOut + '\n';
    }

  private:
    void Take(const SPiece& piece) {
        if (m_bOpenTag && piece.ePiece == EPiece::END) {
            m_bOpenTag = false;
            m_strOut += "/>";
            Leave();
            return;
        }
        if (m_bOpenTag) {
            m_bOpenTag = false;
            m_strOut += '>';
        }
        if (piece.ePiece == EPiece::END) {
            Leave(piece);
            return;
        }
        BreakLine(piece.ePiece);
        if (piece.ePiece == EPiece::START || piece.ePiece == EPiece::EMPTY) {
            Enter(piece);
        } else if (piece.IsDeclaration()) {
            // Without its mark at the end it is made like a tag.
            m_strOut += "<?xml";
            AppendAttributes(m_strOut, std::string(piece.strText.substr(0, piece.strText.size() - 2)) + '>');
            m_strOut += "?>";
        } else {
            AppendLines(m_strOut, piece.strText);
        }
    }

    void Enter(const SPiece& piece) {
        m_strOut.append("<").append(piece.GetElement());
        AppendAttributes(m_strOut, piece.strText);
        if (piece.ePiece == EPiece::EMPTY) {
            m_strOut += "/>";
            return;
        }
        m_bOpenTag = true;
        ++m_iDepth;
        m_iKept += m_iKept != 0 || !m_vecSpread[m_iStart] ? 1 : 0;
        ++m_iStart;
    }

    void Leave() {
        --m_iDepth;
        m_iKept -= m_iKept != 0 ? 1 : 0;
    }

    void Leave(const SPiece& piece) {
        const bool bKept = m_iKept != 0;
        Leave();
        if (!bKept) {
            BreakLine(EPiece::END);
        }
        m_strOut.append("</").append(piece.GetElement()) += '>';
    }

    void BreakLine(EPiece eNext) {
        if (m_iKept != 0 || m_strOut.empty()) {
            return;
        }
        if (eNext == EPiece::COMMENT && m_iLineEnds == 0 && m_eLast != EPiece::INSTRUCTION) {
            m_strOut += ' ';
            return;
        }
        const bool bEmptyLine = m_iLineEnds > 1 && m_eLast != EPiece::START && eNext != EPiece::END;
        m_strOut += bEmptyLine ? "\n\n" : "\n";
        m_strOut.append(m_iDepth * STEP, ' ');
    }

    const std::vector<bool> m_vecSpread;
    CMarkupReader m_reader;
    std::string m_strOut;
    std::size_t m_iStart = 0;     ///< start tags so far
    std::size_t m_iDepth = 0;     ///< open elements
    std::size_t m_iKept = 0;      ///< of them, from the outermost one that is not spread over lines
    std::size_t m_iLineEnds = 0;  ///< in the white space that stood last
    EPiece m_eLast = EPiece::INSTRUCTION;
    bool m_bOpenTag = false;  ///< the last start tag has not got its end yet
};

}  // namespace

std::string FormatXml(std::string_view strDocument) {
    return CFormatter(strDocument).Run();
}
