#include "platform/store/SqlText.h"

namespace SqlText {

namespace {

constexpr char CHECKSUM[] = "checksum";
constexpr char PLACE[] = "rowid";

const char* TypeText(EColumnType eType) {
    switch (eType) {
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            return " INTEGER NOT NULL";
        case EColumnType::NULLABLE_TEXT:
            return " TEXT";
        case EColumnType::TEXT:
        case EColumnType::TEXT_LIST:
            break;
    }
    return " TEXT NOT NULL";
}

const char* Key(const STable& table) {
    return table.pColumns[0].pName;
}

/** What fnItem gives for each column from iFirst on, separated by commas. */
template <class Item>
std::string List(const STable& table, std::size_t iFirst, Item&& fnItem) {
    std::string strList;
    for (std::size_t i = iFirst; i < table.iColumns; ++i) {
        strList += i == iFirst ? "" : ", ";
        strList += fnItem(table.pColumns[i]);
    }
    return strList;
}

std::string NamesUnsummed(const STable& table) {
    return List(table, 0, [](const SColumn& column) { return std::string(column.pName); });
}

std::string Names(const STable& table) {
    return NamesUnsummed(table) + ", " + CHECKSUM;
}

std::string From(const STable& table) {
    return std::string(" FROM ") + table.pName;
}

std::string InOrder(const STable& table) {
    return std::string(" ORDER BY ") + Key(table);
}

std::string Where(const STable& table, std::size_t iColumn) {
    return std::string(" WHERE ") + table.pColumns[iColumn].pName + " = ?1";
}

/** What sets all columns but the key, each to the parameter of its position. */
std::string SetColumns(const STable& table, bool bIndexedToo) {
    std::string strSql = std::string("UPDATE ") + table.pName + " SET ";
    for (std::size_t i = 1; i < table.iColumns; ++i) {
        if (bIndexedToo || !table.pColumns[i].bIndexed) {
            strSql += std::string(table.pColumns[i].pName) + " = ?" + std::to_string(i + 1) + ", ";
        }
    }
    return strSql + CHECKSUM + " = ?" + std::to_string(table.iColumns + 1);
}

/** The key stands in the index too: the first of many rows of one value is found without looking at them all. */
std::string CreateIndex(const std::string& strTable, const std::string& strColumn, const char* pKey) {
    return "CREATE INDEX " + strTable + "_by_" + strColumn + " ON " + strTable + " (" + strColumn + ", " + pKey + ");";
}

}  // namespace

std::string CreateTable(const STable& table) {
    const std::string strName = table.pName;
    const std::string strColumns =
        List(table, 0, [](const SColumn& column) { return std::string(column.pName) + TypeText(column.eType); });
    std::string strSql = "CREATE TABLE " + strName + " (" + strColumns + ", " + CHECKSUM +
                         " INTEGER NOT NULL, UNIQUE (" + Key(table) + "));";
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (table.pColumns[i].bIndexed) {
            strSql += CreateIndex(strName, table.pColumns[i].pName, Key(table));
        }
    }
    return strSql;
}

std::string Insert(const STable& table) {
    const std::string strParameters = List(table, 0, [](const SColumn&) { return std::string("?"); });
    return std::string("INSERT INTO ") + table.pName + " (" + Names(table) + ") VALUES (" + strParameters +
           ", ?) ON CONFLICT (" + Key(table) + ") DO NOTHING";
}

std::string Update(const STable& table) {
    return SetColumns(table, true) + Where(table, 0);
}

std::string UpdateFound(const STable& table) {
    return SetColumns(table, false) + " WHERE " + PLACE + " = ?" + std::to_string(table.iColumns + 2);
}

std::string SelectAll(const STable& table) {
    return "SELECT " + Names(table) + From(table) + InOrder(table);
}

std::string SelectUnsummed(const STable& table) {
    return "SELECT " + NamesUnsummed(table) + From(table) + InOrder(table);
}

std::string SelectFirst(const STable& table, std::size_t iColumn) {
    return "SELECT " + Names(table) + ", " + PLACE + From(table) + Where(table, iColumn) + InOrder(table) + " LIMIT 1";
}

std::string SelectChecksum(const STable& table) {
    // Of a row that it finds by an index the engine takes from the index whatever stands there.
    return std::string("SELECT ") + CHECKSUM + ", " + Key(table) + From(table) + " WHERE " + PLACE + " = (SELECT " +
           PLACE + From(table) + Where(table, 0) + ")";
}

std::string SelectHeld(const STable& table, std::size_t iColumn) {
    return "SELECT 1" + From(table) + Where(table, iColumn) + " LIMIT 1";
}

std::string SelectColumn(const STable& table, std::size_t iColumn) {
    return std::string("SELECT ") + table.pColumns[iColumn].pName + From(table) + InOrder(table);
}

std::string Remove(const STable& table) {
    return "DELETE" + From(table) + Where(table, 0);
}

std::string RemoveAll(const STable& table) {
    return "DELETE" + From(table);
}

}  // namespace SqlText
