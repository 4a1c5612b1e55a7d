#include "tests/support/StoreDump.h"

namespace {

std::string Quote(const std::string& strText) {
    std::string strQuoted = "\"";
    for (const char c : strText) {
        if (c == '\\' || c == '"' || c == '\n') {
            strQuoted += '\\';
        }
        strQuoted += c == '\n' ? 'n' : c;
    }
    return strQuoted + '"';
}

std::string ValueText(const CSettingsRow& row, std::size_t iColumn, EColumnType eType) {
    switch (eType) {
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            return Quote(row.GetText(iColumn));
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            return std::to_string(row.GetNumber(iColumn));
        case EColumnType::TEXT_LIST:
            break;
    }
    std::string strList;
    for (const std::string& strItem : row.GetList(iColumn)) {
        strList += (strList.empty() ? "" : ",") + Quote(strItem);
    }
    return '[' + strList + ']';
}

bool IsEmpty(const CSettingsRow& row, std::size_t iColumn, EColumnType eType) {
    const CSettingsRow emptyRow(row.GetKind());
    return row.IsNull(iColumn) == emptyRow.IsNull(iColumn) &&
           ValueText(row, iColumn, eType) == ValueText(emptyRow, iColumn, eType);
}

}  // namespace

std::string DumpRow(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    std::string strLine = table.pName;
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        const SColumn& column = table.pColumns[i];
        if (!IsEmpty(row, i, column.eType)) {
            strLine += std::string(" ") + column.pName + '=' + ValueText(row, i, column.eType);
        }
    }
    return strLine;
}

std::string DumpStore(CSettingsStore& store) {
    std::string strDump;
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        store.ReadAll(eKind, [&](CSettingsRow&& row) { strDump += DumpRow(row) + '\n'; });
    }
    return strDump;
}
