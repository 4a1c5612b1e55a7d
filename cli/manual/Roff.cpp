#include "cli/manual/Roff.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <vector>

namespace {

constexpr const char FENCE[] = "```";
constexpr const char BOLD[] = "\\fB";
constexpr const char PLAIN[] = "\\fR";

bool BeginsWith(std::string_view strText, std::string_view strStart) {
    return strText.substr(0, strStart.size()) == strStart;
}

std::string_view Trim(std::string_view strText) {
    const std::size_t iStart = std::min(strText.find_first_not_of(' '), strText.size());
    strText.remove_prefix(iStart);
    return strText.substr(0, strText.find_last_not_of(' ') + 1);
}

std::string ToUpper(std::string_view strText) {
    std::string strUpper(strText);
    std::transform(strUpper.begin(), strUpper.end(), strUpper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return strUpper;
}

/** A line that begins with one of these would be taken for a request. */
std::string Guard(const std::string& strLine) {
    return !strLine.empty() && (strLine.front() == '.' || strLine.front() == '\'') ? "\\&" + strLine : strLine;
}

/** Code, bold text and links within a line. */
std::string MakeInline(std::string_view strText) {
    std::string strRoff;
    while (!strText.empty()) {
        const bool bCode = strText.front() == '`';
        const bool bBold = BeginsWith(strText, "**");
        const std::string_view strMark = bCode ? "`" : "**";
        const std::size_t iEnd = bCode || bBold ? strText.find(strMark, strMark.size()) : std::string_view::npos;
        const std::size_t iText = strText.front() == '[' ? strText.find("](") : std::string_view::npos;
        const std::size_t iLink = iText == std::string_view::npos ? iText : strText.find(')', iText);
        if (iEnd != std::string_view::npos) {
            const std::string_view strInner = strText.substr(strMark.size(), iEnd - strMark.size());
            strRoff += BOLD + (bCode ? Roff::Escape(strInner) : MakeInline(strInner)) + PLAIN;
            strText.remove_prefix(iEnd + strMark.size());
        } else if (iLink != std::string_view::npos) {
            strRoff += MakeInline(strText.substr(1, iText - 1));
            strText.remove_prefix(iLink + 1);
        } else {
            strRoff += Roff::Escape(strText.substr(0, 1));
            strText.remove_prefix(1);
        }
    }
    return strRoff;
}

std::vector<std::string> SplitRow(std::string_view strRow) {
    std::vector<std::string> vecCells;
    bool bCode = false;
    std::string strCell;
    for (const char c : strRow.substr(1)) {
        bCode = bCode != (c == '`');
        if (c == '|' && !bCode) {
            vecCells.emplace_back(Trim(strCell));
            strCell.clear();
        } else {
            strCell += c;
        }
    }
    return vecCells;
}

/** Reads the blocks of a text one after the other. */
class CMarkdownReader {
  public:
    explicit CMarkdownReader(std::string_view strMarkdown) : m_text(std::string(strMarkdown)) {}

    std::string Read() {
        for (std::string strLine; std::getline(m_text, strLine);) {
            TakeLine(strLine);
        }
        EndBlock();
        return m_strRoff;
    }

  private:
    void TakeLine(const std::string& strLine) {
        const std::size_t iDigits = std::min(strLine.find_first_not_of("0123456789"), strLine.size());
        if (BeginsWith(strLine, FENCE)) {
            EndBlock();
            TakeCode();
        } else if (strLine.empty() || strLine.front() == '#') {
            EndBlock();
            TakeHeading(strLine);
        } else if (strLine.front() == '|') {
            TakeRow(strLine);
        } else if (BeginsWith(strLine, "- ")) {
            EndBlock();
            Begin(".IP \\(bu 2\n", strLine.substr(2));
        } else if (iDigits > 0 && strLine.compare(iDigits, 2, ". ") == 0) {
            EndBlock();
            Begin(".IP " + strLine.substr(0, iDigits + 1) + " 3\n", strLine.substr(iDigits + 2));
        } else if (m_strBlock.empty()) {
            Begin(".PP\n", strLine);
        } else {
            m_strBlock += ' ' + std::string(Trim(strLine));
        }
    }

    void TakeCode() {
        std::string strLines;
        for (std::string strLine; std::getline(m_text, strLine) && !BeginsWith(strLine, FENCE);) {
            strLines += strLine + '\n';
        }
        m_strRoff += Roff::MakeBlock(strLines);
    }

    void TakeHeading(const std::string& strLine) {
        if (BeginsWith(strLine, "## ")) {
            m_strRoff += ".SH " + Roff::Escape(ToUpper(strLine.substr(3))) + '\n';
        } else if (BeginsWith(strLine, "### ")) {
            m_strRoff += ".SS " + Roff::Escape(strLine.substr(4)) + '\n';
        }
    }

    void TakeRow(const std::string& strLine) {
        const std::vector<std::string> vecCells = SplitRow(strLine);
        if (m_vecHeads.empty()) {
            EndBlock();
            m_vecHeads = vecCells;
            return;
        }
        if (vecCells.empty() || BeginsWith(vecCells.front(), "--")) {
            return;
        }
        std::string strText;
        for (std::size_t i = 1; i < vecCells.size(); ++i) {
            const bool bHead = vecCells.size() > 2 && i < m_vecHeads.size() && !vecCells[i].empty();
            strText += (strText.empty() ? "" : "\n.br\n") + (bHead ? MakeInline(m_vecHeads[i] + ": ") : "") +
                       Guard(MakeInline(vecCells[i]));
        }
        m_strRoff += ".TP\n" + Guard(MakeInline(vecCells.front())) + '\n' + (strText.empty() ? "\\&" : strText) + '\n';
    }

    void Begin(const std::string& strRequest, std::string_view strText) {
        m_strRequest = strRequest;
        m_strBlock = Trim(strText);
    }

    void EndBlock() {
        m_vecHeads.clear();
        if (!m_strBlock.empty()) {
            m_strRoff += m_strRequest + Guard(MakeInline(m_strBlock)) + '\n';
            m_strBlock.clear();
        }
    }

    std::istringstream m_text;
    std::string m_strRoff;
    std::string m_strRequest;
    std::string m_strBlock;
    std::vector<std::string> m_vecHeads;  ///< of the table that is open
};

}  // namespace

namespace Roff {

std::string Escape(std::string_view strText) {
    std::string strRoff;
    for (const char c : strText) {
        strRoff += c == '\\' ? "\\e" : c == '-' ? "\\-" : c == '\'' ? "\\(aq" : c == '`' ? "\\(ga" : std::string(1, c);
    }
    return strRoff;
}

std::string MakeBlock(std::string_view strLines) {
    std::string strRoff = ".PP\n.RS 2\n.nf\n";
    std::istringstream lines{std::string(strLines)};
    for (std::string strLine; std::getline(lines, strLine);) {
        strRoff += (strLine.empty() ? "\\&" : Guard(Escape(strLine))) + '\n';
    }
    return strRoff + ".fi\n.RE\n";
}

std::string MakeEntry(std::string_view strName, std::string_view strText) {
    return ".TP\n" + std::string(BOLD) + Escape(strName) + PLAIN + '\n' + Guard(std::string(strText)) + '\n';
}

std::string FromMarkdown(std::string_view strMarkdown) {
    return CMarkdownReader(strMarkdown).Read();
}

}  // namespace Roff
