#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/store/CSettingsRow.h"
#include "platform/store/CSqliteConnection.h"

struct sqlite3_stmt;

/** One prepared statement. Parameters count from 1, result columns from 0. Failures throw as CSqliteConnection::Throw.
 */
class CSqliteStatement {
  public:
    /**
     * @param connection must outlive the statement
     * @param pDoing what it is for, one of StoreDoing
     */
    CSqliteStatement(CSqliteConnection& connection, const std::string& strSql, const char* pDoing);

    /** @param strText must outlive the run */
    void BindText(int iParameter, const std::string& strText);
    void BindNumber(int iParameter, std::int64_t iNumber);
    /** Binds every value of the row, in the order of its table's columns. @param row must outlive the run */
    void BindRow(const CSettingsRow& row);
    /** Goes on to the next result row. @return false when there is none */
    bool Step();
    /** Ends the run, so that the statement can be run again. */
    void Reset() noexcept;

    /** @return 0 for what is no number */
    std::int64_t Number(int iColumn) const;
    bool IsNumber(int iColumn) const;
    /** @return "" for a null */
    std::string Text(int iColumn) const;
    /** @return the result row as a record; its columns are those of the record's table */
    CSettingsRow Row(ESettingsKind eKind) const;
    /** @return the checksum that stands behind the record's columns */
    std::uint64_t Checksum(ESettingsKind eKind) const;
    /** @return the engine's number of the row, which stands behind the checksum */
    std::int64_t Place(ESettingsKind eKind) const;

  private:
    struct SFinalize {
        void operator()(sqlite3_stmt* pStatement) const noexcept;
    };
    void Check(int iCode) const;
    void BindColumn(const CSettingsRow& row, std::size_t iColumn, EColumnType eType);

    CSqliteConnection& m_connection;
    const char* m_pDoing;
    std::unique_ptr<sqlite3_stmt, SFinalize> m_pStatement;
};

/** One run of a prepared statement; it can be run again when this is gone. */
class CSqliteRun {
  public:
    explicit CSqliteRun(CSqliteStatement& statement) : m_statement(statement) {}
    CSqliteRun(const CSqliteRun&) = delete;
    CSqliteRun& operator=(const CSqliteRun&) = delete;
    ~CSqliteRun() { m_statement.Reset(); }
    CSqliteStatement* operator->() { return &m_statement; }
    CSqliteStatement& operator*() { return m_statement; }

  private:
    CSqliteStatement& m_statement;
};
