#include "cli/Text.h"

#include <algorithm>
#include <utility>

#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"

namespace Text {

std::string Printable(std::string_view strText) {
    // A backslash stays one: patterns are full of them, and nobody reads these texts back.
    std::string strPrintable;
    for (std::size_t iStart = 0;;) {
        const std::size_t iEnd = std::min(strText.find('\\', iStart), strText.size());
        const OS::x_wstring strPart = OS::WideLenient(strText.substr(iStart, iEnd - iStart));
        strPrintable += OS::Utf8Lenient(DBG::EscapeControls(strPart));
        if (iEnd == strText.size()) {
            return strPrintable;
        }
        strPrintable += '\\';
        iStart = iEnd + 1;
    }
}

std::string Quoted(std::string_view strText) {
    return '"' + Printable(strText) + '"';
}

std::string Counted(std::size_t iCount, std::string_view strOne, std::string_view strMany) {
    return std::to_string(iCount).append(" ").append(iCount == 1 ? strOne : strMany);
}

const char* YesNo(bool bFlag) {
    return bFlag ? "yes" : "no";
}

std::string Unescaped(std::string_view strText) {
    static constexpr std::pair<std::string_view, char> ENTITIES[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string strPlain;
    while (!strText.empty()) {
        const auto* pEntity = std::find_if(std::begin(ENTITIES), std::end(ENTITIES), [&](const auto& entity) {
            return strText.substr(0, entity.first.size()) == entity.first;
        });
        const bool bFound = pEntity != std::end(ENTITIES);
        strPlain += bFound ? pEntity->second : strText.front();
        strText.remove_prefix(bFound ? pEntity->first.size() : 1);
    }
    return strPlain;
}

}  // namespace Text

CTextTable::CTextTable(const std::vector<std::string>& vecHeads) {
    if (!vecHeads.empty()) {
        Add(vecHeads);
    }
}

void CTextTable::Add(const std::vector<std::string>& vecCells) {
    std::vector<std::string> vecRow;
    m_vecWidths.resize(std::max(m_vecWidths.size(), vecCells.size()));
    for (const std::string& strCell : vecCells) {
        vecRow.push_back(Text::Printable(strCell));
        std::size_t& iWidth = m_vecWidths[vecRow.size() - 1];
        iWidth = std::max(iWidth, OS::CountCodePoints(vecRow.back()));
    }
    m_vecRows.push_back(std::move(vecRow));
}

std::string CTextTable::ToString() const {
    std::string strTable;
    for (const std::vector<std::string>& vecRow : m_vecRows) {
        for (std::size_t i = 0; i < vecRow.size(); ++i) {
            const std::string strPadding(m_vecWidths[i] - OS::CountCodePoints(vecRow[i]), ' ');
            strTable += i == 0 ? "" : "  ";
            strTable += i >= m_iFirstRight ? strPadding + vecRow[i] : vecRow[i] + strPadding;
        }
        strTable.erase(strTable.find_last_not_of(' ') + 1);
        strTable += '\n';
    }
    return strTable;
}
