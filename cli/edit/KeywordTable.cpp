#include "cli/edit/KeywordTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <iterator>

#include "cli/InputFile.h"
#include "cli/Text.h"
#include "cli/edit/DelimitedText.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace KeywordTable {

namespace {

using DelimitedText::SCell;
using DelimitedText::SRow;

constexpr SForm FORMS[] = {{"csv", ','}, {"tsv", '\t'}};
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

constexpr const char NOT_UTF8[] = "not UTF-8: save the file in that encoding";
constexpr const char EMPTY[] = "the file is empty; its first line must name the columns, such as keyword";
constexpr const char NO_KEYWORD[] = "no column is named keyword; the first line names the columns";
constexpr const char BLANK[] = "the keyword is blank";
constexpr const char NO_NUMBER[] = "a whole number of 32 bits is needed here";
constexpr const char NO_FLAG[] = "true or false is needed here";

/** An empty cell leaves what it is about as it is. Each returns what is wrong, or null. */
const char* TakeKeyword(std::string_view strCell, SKeywordEdit& edit) {
    edit.strKeyword = DelimitedText::Rearm(strCell);
    return OS::Trim(strCell).empty() ? BLANK : nullptr;
}

const char* TakeScore(std::string_view strCell, SKeywordEdit& edit) {
    if (strCell.empty()) {
        return nullptr;
    }
    int iScore = 0;
    const auto [pEnd, eError] = std::from_chars(strCell.data(), strCell.data() + strCell.size(), iScore);
    edit.iScore = iScore;
    return eError == std::errc() && pEnd == strCell.data() + strCell.size() ? nullptr : NO_NUMBER;
}

const char* TakeCase(std::string_view strCell, SKeywordEdit& edit) {
    if (strCell.empty()) {
        return nullptr;
    }
    edit.bCaseSensitive = OS::EqualsNoCase(strCell, std::string_view(Value::TRUE_TEXT));
    return *edit.bCaseSensitive || OS::EqualsNoCase(strCell, std::string_view(Value::FALSE_TEXT)) ? nullptr : NO_FLAG;
}

const char* TakeDescription(std::string_view strCell, SKeywordEdit& edit) {
    edit.strDescription = DelimitedText::Rearm(strCell);
    return nullptr;
}

struct SColumnForm {
    const char* pName;
    const char* (*fnTake)(std::string_view strCell, SKeywordEdit& edit);
    std::string (*fnGive)(const SKeyword& keyword);
};
constexpr SColumnForm COLUMNS[] = {
    {"keyword", TakeKeyword, [](const SKeyword& keyword) { return DelimitedText::Disarm(keyword.strKeyword); }},
    {"score", TakeScore, [](const SKeyword& keyword) { return std::to_string(keyword.iScore); }},
    {"case_sensitive", TakeCase,
     [](const SKeyword& keyword) { return std::string(XmlHelpers::FlagText(keyword.bCaseSensitive)); }},
    {"description", TakeDescription,
     [](const SKeyword& keyword) { return DelimitedText::Disarm(keyword.strDescription); }},
};

using Column = const SColumnForm*;

/** A row that holds more is wrong, whatever is in it. */
constexpr std::size_t MOST_CELLS = std::size(COLUMNS) + 1;

/** Reads the rows of a text, places counted from its start, behind a byte order mark that it may begin with. */
void ForEachRow(std::string_view strBytes, const SForm& form, const std::function<void(const SRow&)>& fnRow) {
    const std::size_t iStart =
        strBytes.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK ? BYTE_ORDER_MARK.size() : 0;
    DelimitedText::Read(strBytes, iStart, form.cSeparator, MOST_CELLS, fnRow);
}

Column FindColumn(std::string_view strName) {
    return std::find_if(std::begin(COLUMNS), std::end(COLUMNS), [&](const SColumnForm& column) {
        return OS::EqualsNoCase(strName, std::string_view(column.pName));
    });
}

/** Reads a table row by row: the first one names the columns. */
class CRowReader {
  public:
    CRowReader(const std::string& strFile, const std::string& strBytes) : m_strFile(strFile), m_strBytes(strBytes) {}

    [[noreturn]] void Refuse(const std::string& strWhy, std::size_t iOffset) const {
        throw CInputError(m_strFile, strWhy, CSourcePlaces(m_strBytes).Find(iOffset));
    }

    /** @return whether the row was a keyword's, which edit then holds */
    bool Take(const SRow& row, SKeywordEdit& edit) {
        const bool bHead = m_vecColumns.empty();
        if (bHead) {
            ReadHead(row);
        } else {
            ReadKeyword(row, edit);
        }
        return !bHead;
    }

    bool HasHead() const { return !m_vecColumns.empty(); }

  private:
    void ReadHead(const SRow& head) {
        for (const SCell& cell : head.vecCells) {
            const Column pColumn = FindColumn(cell.strText);
            if (pColumn == std::end(COLUMNS)) {
                Refuse("there is no column " + Text::Quoted(cell.strText) +
                           "; write keyword, score, case_sensitive or description",
                       cell.iOffset);
            }
            if (std::find(m_vecColumns.begin(), m_vecColumns.end(), pColumn) != m_vecColumns.end()) {
                Refuse("the column " + Text::Quoted(cell.strText) + " stands twice", cell.iOffset);
            }
            m_vecColumns.push_back(pColumn);
        }
        if (std::find(m_vecColumns.begin(), m_vecColumns.end(), std::begin(COLUMNS)) == m_vecColumns.end()) {
            Refuse(NO_KEYWORD, head.vecCells.front().iOffset);
        }
    }

    void ReadKeyword(const SRow& row, SKeywordEdit& edit) const {
        if (row.iCells != m_vecColumns.size()) {
            Refuse(Text::Counted(m_vecColumns.size(), "cell is", "cells are") + " needed in this line, not " +
                       std::to_string(row.iCells),
                   row.vecCells.front().iOffset);
        }
        edit = {};
        for (std::size_t i = 0; i < row.iCells; ++i) {
            if (const char* pFault = m_vecColumns[i]->fnTake(row.vecCells[i].strText, edit)) {
                Refuse(pFault, row.vecCells[i].iOffset);
            }
        }
    }

    const std::string& m_strFile;
    const std::string& m_strBytes;
    std::vector<Column> m_vecColumns;
};

}  // namespace

const SForm& FindForm(const std::string& strName, const std::string& strFile) {
    const std::string strExtension = std::filesystem::path(strFile).extension().string();
    const std::string strWanted = !strName.empty()       ? strName
                                  : strExtension.empty() ? std::string()
                                                         : strExtension.substr(1);
    for (const SForm& form : FORMS) {
        if (OS::EqualsNoCase(strWanted, std::string_view(form.pName))) {
            return form;
        }
    }
    if (!strName.empty()) {
        throw CToolError(EVerdict::USAGE,
                         "--format: there is no format " + Text::Quoted(strName) + "; write csv or tsv");
    }
    return FORMS[0];
}

CReader::CReader(const std::string& strFile, std::string strBytes, const SForm& form)
    : m_strBytes(std::move(strBytes)), m_form(form) {
    CRowReader rows(strFile, m_strBytes);
    const std::size_t iInvalid = OS::FindInvalidUtf8(m_strBytes);
    if (iInvalid != std::string::npos) {
        rows.Refuse(NOT_UTF8, iInvalid);
    }
    try {
        ForEachRow(m_strBytes, m_form, [](const SRow&) {});  // a text that is no table is called that
    } catch (const DelimitedText::CFault& fault) {
        rows.Refuse(fault.what(), fault.GetOffset());
    }
    SKeywordEdit edit;
    ForEachRow(m_strBytes, m_form, [&](const SRow& row) { rows.Take(row, edit); });
    if (!rows.HasHead()) {
        throw CInputError(strFile, EMPTY);
    }
}

void CReader::ForEach(const std::function<void(const SKeywordEdit&)>& fnKeyword) const {
    const std::string strFile;  // nothing is refused any more
    CRowReader rows(strFile, m_strBytes);
    SKeywordEdit edit;
    ForEachRow(m_strBytes, m_form, [&](const SRow& row) {
        if (rows.Take(row, edit)) {
            fnKeyword(edit);
        }
    });
}

std::string Write(const std::vector<SKeyword>& vecKeywords, const SForm& form) {
    std::vector<std::string> vecCells;
    for (const SColumnForm& column : COLUMNS) {
        vecCells.emplace_back(column.pName);
    }
    std::string strText = DelimitedText::Write(vecCells, form.cSeparator);
    for (const SKeyword& keyword : vecKeywords) {
        std::transform(std::begin(COLUMNS), std::end(COLUMNS), vecCells.begin(),
                       [&](const SColumnForm& column) { return column.fnGive(keyword); });
        strText += DelimitedText::Write(vecCells, form.cSeparator);
    }
    return strText;
}

}  // namespace KeywordTable
