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

constexpr SForm FORMS[] = {{"csv", ','}, {"tsv", '\t'}};
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

constexpr const char NOT_UTF8[] = "not UTF-8: save the file in that encoding";
constexpr const char EMPTY[] = "the file is empty; its first line must name the columns, such as keyword";
constexpr const char NO_KEYWORD[] = "no column is named keyword; the first line names the columns";
constexpr const char BLANK[] = "the keyword is blank";
constexpr const char NO_NUMBER[] = "a whole number of 32 bits is needed here";
constexpr const char NO_FLAG[] = "true or false is needed here";

/** An empty cell leaves what it is about as it is. Each returns what is wrong, or null. */
const char* TakeKeyword(const std::string& strCell, SKeywordEdit& edit) {
    edit.strKeyword = DelimitedText::Rearm(strCell);
    return OS::Trim(std::string_view(strCell)).empty() ? BLANK : nullptr;
}

const char* TakeScore(const std::string& strCell, SKeywordEdit& edit) {
    if (strCell.empty()) {
        return nullptr;
    }
    int iScore = 0;
    const auto [pEnd, eError] = std::from_chars(strCell.data(), strCell.data() + strCell.size(), iScore);
    edit.iScore = iScore;
    return eError == std::errc() && pEnd == strCell.data() + strCell.size() ? nullptr : NO_NUMBER;
}

const char* TakeCase(const std::string& strCell, SKeywordEdit& edit) {
    if (strCell.empty()) {
        return nullptr;
    }
    edit.bCaseSensitive = OS::EqualsNoCase(strCell, std::string_view(Value::TRUE_TEXT));
    return *edit.bCaseSensitive || OS::EqualsNoCase(strCell, std::string_view(Value::FALSE_TEXT)) ? nullptr : NO_FLAG;
}

const char* TakeDescription(const std::string& strCell, SKeywordEdit& edit) {
    edit.strDescription = DelimitedText::Rearm(strCell);
    return nullptr;
}

struct SColumnForm {
    const char* pName;
    const char* (*fnTake)(const std::string& strCell, SKeywordEdit& edit);
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

class CTableReader {
  public:
    CTableReader(const std::string& strFile, const std::string& strBytes, const SForm& form)
        : m_strFile(strFile), m_strBytes(strBytes), m_form(form) {
        if (m_strBytes.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) {
            m_iStart = BYTE_ORDER_MARK.size();
        }
    }

    std::vector<SKeywordEdit> Read() {
        const std::size_t iInvalid = OS::FindInvalidUtf8(m_strBytes);
        if (iInvalid != std::string::npos) {
            Refuse(NOT_UTF8, iInvalid);
        }
        std::vector<std::vector<SCell>> vecRows = ReadRows();
        if (vecRows.empty()) {
            throw CInputError(m_strFile, EMPTY);
        }
        ReadHead(vecRows.front());
        std::vector<SKeywordEdit> vecEdits;
        std::transform(std::next(vecRows.begin()), vecRows.end(), std::back_inserter(vecEdits),
                       [this](const std::vector<SCell>& vecRow) { return ReadKeyword(vecRow); });
        return vecEdits;
    }

  private:
    [[noreturn]] void Refuse(const std::string& strWhy, std::size_t iOffset) const {
        throw CInputError(m_strFile, strWhy, CSourcePlaces(m_strBytes).Find(iOffset));
    }

    std::vector<std::vector<SCell>> ReadRows() const {
        try {
            return DelimitedText::Read(std::string_view(m_strBytes).substr(m_iStart), m_form.cSeparator);
        } catch (const DelimitedText::CFault& fault) {
            Refuse(fault.what(), m_iStart + fault.GetOffset());
        }
    }

    void ReadHead(const std::vector<SCell>& vecHead) {
        for (const SCell& cell : vecHead) {
            const auto itColumn = std::find_if(std::begin(COLUMNS), std::end(COLUMNS), [&](const SColumnForm& column) {
                return OS::EqualsNoCase(cell.strText, std::string_view(column.pName));
            });
            if (itColumn == std::end(COLUMNS)) {
                Refuse("there is no column " + Text::Quoted(cell.strText) +
                           "; write keyword, score, case_sensitive or description",
                       m_iStart + cell.iOffset);
            }
            if (std::find(m_vecColumns.begin(), m_vecColumns.end(), itColumn) != m_vecColumns.end()) {
                Refuse("the column " + Text::Quoted(cell.strText) + " stands twice", m_iStart + cell.iOffset);
            }
            m_vecColumns.push_back(itColumn);
        }
        if (std::find(m_vecColumns.begin(), m_vecColumns.end(), std::begin(COLUMNS)) == m_vecColumns.end()) {
            Refuse(NO_KEYWORD, m_iStart + vecHead.front().iOffset);
        }
    }

    SKeywordEdit ReadKeyword(const std::vector<SCell>& vecRow) const {
        if (vecRow.size() != m_vecColumns.size()) {
            Refuse(Text::Counted(m_vecColumns.size(), "cell is", "cells are") + " needed in this line, not " +
                       std::to_string(vecRow.size()),
                   m_iStart + vecRow.front().iOffset);
        }
        SKeywordEdit edit;
        for (std::size_t i = 0; i < vecRow.size(); ++i) {
            if (const char* pFault = m_vecColumns[i]->fnTake(vecRow[i].strText, edit)) {
                Refuse(pFault, m_iStart + vecRow[i].iOffset);
            }
        }
        return edit;
    }

    const std::string& m_strFile;
    const std::string& m_strBytes;
    const SForm& m_form;
    std::size_t m_iStart = 0;
    std::vector<const SColumnForm*> m_vecColumns;
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

std::vector<SKeywordEdit> Read(const std::string& strFile, const std::string& strBytes, const SForm& form) {
    return CTableReader(strFile, strBytes, form).Read();
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
