#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/** Text for people. */
namespace Text {

/** @return the text with control characters and others that mislead (DBG::IsControl) as \uXXXX */
std::string Printable(std::string_view strText);
/** @return the printable text in double quotes */
std::string Quoted(std::string_view strText);
/** @return "1 template" or "2 templates" */
std::string Counted(std::size_t iCount, std::string_view strOne, std::string_view strMany);
/** @return "yes" or "no" */
const char* YesNo(bool bFlag);
/** Joins lines and breaks them anew for a terminal, but for those that begin with a blank.
 * @param iWidth 0: as they are */
std::string Reflow(const std::string& strText, std::size_t iWidth);
/** @return the text with &amp; &lt; &gt; &quot; &apos; read back as the characters they stand for */
std::string Unescaped(std::string_view strText);

}  // namespace Text

/** Rows of printable cells in columns that are as wide as their widest cell, in columns of a terminal. */
class CTextTable {
  public:
    /** @param vecHeads the first line; empty: no such line */
    explicit CTextTable(const std::vector<std::string>& vecHeads = {});
    /** @param vecCells made printable; shorter rows leave columns empty */
    void Add(const std::vector<std::string>& vecCells);
    /** Columns of numbers stand to the right. */
    void AlignRight(std::size_t iFirstColumn) { m_iFirstRight = iFirstColumn; }
    /** The last column is broken into lines where a terminal is too narrow for it, since nothing of it may be lost. */
    void WrapLast() { m_bWrapsLast = true; }
    /**
     * @param iWidth of the terminal; when rows are wider, all columns but the first, which holds names, give way, and
     * what does not fit ends in "…". 0: no bound
     */
    std::string ToString(std::size_t iWidth = 0) const;

  private:
    std::vector<std::size_t> FitWidths(std::size_t iWidth) const;
    std::string ToWrapped(std::size_t iWidth) const;

    std::vector<std::vector<std::string>> m_vecRows;
    std::vector<std::size_t> m_vecWidths;
    std::size_t m_iFirstRight = static_cast<std::size_t>(-1);
    bool m_bWrapsLast = false;
};
