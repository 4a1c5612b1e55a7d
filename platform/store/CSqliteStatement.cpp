#include "platform/store/CSqliteStatement.h"

#include <sqlite3.h>

#include <new>

#include "platform/store/TextList.h"

CSqliteStatement::CSqliteStatement(CSqliteConnection& connection, const std::string& strSql, const char* pDoing)
    : m_connection(connection), m_pDoing(pDoing) {
    sqlite3_stmt* pStatement = nullptr;
    const int iCode = sqlite3_prepare_v3(connection.Get(), strSql.c_str(), static_cast<int>(strSql.size()) + 1,
                                         SQLITE_PREPARE_PERSISTENT, &pStatement, nullptr);
    m_pStatement.reset(pStatement);
    Check(iCode);
}

void CSqliteStatement::SFinalize::operator()(sqlite3_stmt* pStatement) const noexcept {
    sqlite3_finalize(pStatement);
}

void CSqliteStatement::Check(int iCode) const {
    if (iCode != SQLITE_OK) {
        m_connection.Throw(iCode, m_pDoing);
    }
}

void CSqliteStatement::BindText(int iParameter, const std::string& strText) {
    Check(sqlite3_bind_text64(m_pStatement.get(), iParameter, strText.data(), strText.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
}

void CSqliteStatement::BindNumber(int iParameter, std::int64_t iNumber) {
    Check(sqlite3_bind_int64(m_pStatement.get(), iParameter, iNumber));
}

void CSqliteStatement::BindColumn(const CSettingsRow& row, std::size_t iColumn, EColumnType eType) {
    const int iParameter = static_cast<int>(iColumn) + 1;
    switch (eType) {
        case EColumnType::TEXT:
            BindText(iParameter, row.GetText(iColumn));
            break;
        case EColumnType::NULLABLE_TEXT:
            if (row.IsNull(iColumn)) {
                Check(sqlite3_bind_null(m_pStatement.get(), iParameter));
            } else {
                BindText(iParameter, row.GetText(iColumn));
            }
            break;
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            Check(sqlite3_bind_int(m_pStatement.get(), iParameter, row.GetNumber(iColumn)));
            break;
        case EColumnType::TEXT_LIST: {
            const std::string strJoined = JoinTextList(row.GetList(iColumn));
            Check(sqlite3_bind_text64(m_pStatement.get(), iParameter, strJoined.data(), strJoined.size(),
                                      SQLITE_TRANSIENT, SQLITE_UTF8));
            break;
        }
    }
}

void CSqliteStatement::BindRow(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        BindColumn(row, i, table.pColumns[i].eType);
    }
}

bool CSqliteStatement::Step() {
    const int iCode = sqlite3_step(m_pStatement.get());
    if (iCode != SQLITE_ROW && iCode != SQLITE_DONE) {
        m_connection.Throw(iCode, m_pDoing);
    }
    return iCode == SQLITE_ROW;
}

void CSqliteStatement::Reset() noexcept {
    sqlite3_reset(m_pStatement.get());
}

std::int64_t CSqliteStatement::Number(int iColumn) const {
    return sqlite3_column_int64(m_pStatement.get(), iColumn);
}

bool CSqliteStatement::IsNumber(int iColumn) const {
    return sqlite3_column_type(m_pStatement.get(), iColumn) == SQLITE_INTEGER;
}

std::string CSqliteStatement::Text(int iColumn) const {
    const unsigned char* pText = sqlite3_column_text(m_pStatement.get(), iColumn);
    if (pText == nullptr) {
        if (sqlite3_errcode(m_connection.Get()) == SQLITE_NOMEM) {
            throw std::bad_alloc();
        }
        return std::string();
    }
    const int iBytes = sqlite3_column_bytes(m_pStatement.get(), iColumn);
    return std::string(reinterpret_cast<const char*>(pText), static_cast<std::size_t>(iBytes));
}

CSettingsRow CSqliteStatement::Row(ESettingsKind eKind) const {
    const STable& table = GetSettingsTable(eKind);
    CSettingsRow row(eKind);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        const int iColumn = static_cast<int>(i);
        switch (table.pColumns[i].eType) {
            case EColumnType::NULLABLE_TEXT:
                if (sqlite3_column_type(m_pStatement.get(), iColumn) == SQLITE_NULL) {
                    break;
                }
                [[fallthrough]];
            case EColumnType::TEXT:
                row.SetText(i, Text(iColumn));
                break;
            case EColumnType::NUMBER:
            case EColumnType::FLAG:
                row.SetNumber(i, static_cast<std::int32_t>(Number(iColumn)));
                break;
            case EColumnType::TEXT_LIST:
                row.SetList(i, SplitTextList(Text(iColumn)));
                break;
        }
    }
    return row;
}

std::uint64_t CSqliteStatement::Checksum(ESettingsKind eKind) const {
    return static_cast<std::uint64_t>(Number(static_cast<int>(GetSettingsTable(eKind).iColumns)));
}

std::int64_t CSqliteStatement::Place(ESettingsKind eKind) const {
    return Number(static_cast<int>(GetSettingsTable(eKind).iColumns) + 1);
}
