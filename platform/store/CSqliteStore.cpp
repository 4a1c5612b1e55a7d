#include "platform/store/CSqliteStore.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/common/CException.h"
#include "platform/store/SqlText.h"
#include "platform/store/StoreError.h"

/** Every statement that is kept prepared: those of a table, then those of units of work. */
enum class CSqliteStore::EStatement : std::size_t {
    SELECT_FIRST,
    SELECT_HELD,
    SELECT_COLUMN,
    COUNT,
    SAVE,
    REMOVE,
    REMOVE_ALL,
    BEGIN_WRITE,
    BEGIN_READ,
    FIX_SNAPSHOT,
    BEGIN_NESTED,
    COMMIT,
    COMMIT_NESTED,
    ROLLBACK,
    ROLLBACK_NESTED,
};

namespace {

/** A statement has a text of its own, or one made from a table's description. */
struct SStatement {
    const char* pDoing;
    const char* pText;
    std::string (*fnText)(const STable& table, std::size_t iColumn);
};

template <std::string (*fnText)(const STable&)>
std::string OfTable(const STable& table, std::size_t) {
    return fnText(table);
}

/** In the order of EStatement. */
constexpr SStatement STATEMENTS[] = {
    {StoreDoing::READING, nullptr, SqlText::SelectFirst},
    {StoreDoing::READING, nullptr, SqlText::SelectHeld},
    {StoreDoing::READING, nullptr, SqlText::SelectColumn},
    {StoreDoing::COUNTING, nullptr, OfTable<SqlText::Count>},
    {StoreDoing::SAVING, nullptr, OfTable<SqlText::Save>},
    {StoreDoing::REMOVING, nullptr, OfTable<SqlText::Remove>},
    {StoreDoing::REPLACING, nullptr, OfTable<SqlText::RemoveAll>},
    {StoreDoing::BEGINNING, SqlText::BEGIN_WRITE, nullptr},
    {StoreDoing::BEGINNING, "BEGIN", nullptr},
    {StoreDoing::BEGINNING, "SELECT 1 FROM sqlite_schema", nullptr},
    {StoreDoing::BEGINNING, "SAVEPOINT unit", nullptr},
    {StoreDoing::COMMITTING, SqlText::COMMIT, nullptr},
    {StoreDoing::COMMITTING, "RELEASE unit", nullptr},
    {StoreDoing::UNDOING, "ROLLBACK", nullptr},
    {StoreDoing::UNDOING, "ROLLBACK TO unit", nullptr},
};

std::string AbsolutePath(const std::string& strPath) {
    const auto fnRefuse = [&](const std::string& strWhy) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::OPENING, strWhy);
    };
    if (strPath.empty()) {
        fnRefuse("it names no file; write sqlite:PATH");
    }
    if (strPath.find('\0') != std::string::npos) {
        fnRefuse("a path cannot hold U+0000");
    }
    std::error_code error;
    std::string strAbsolute = std::filesystem::absolute(strPath, error).string();
    if (error) {
        fnRefuse(error.message());
    }
    return strAbsolute;
}

}  // namespace

CSqliteStore::CSqliteStore(const std::string& strPath, int iBusyMilliseconds, EUnitOfWork eUse)
    : m_connection(AbsolutePath(strPath), iBusyMilliseconds, eUse), m_units(m_connection.GetUrl()) {
    // Undoing must not depend on memory that has run out.
    for (const EStatement eStatement : {EStatement::ROLLBACK, EStatement::ROLLBACK_NESTED, EStatement::COMMIT_NESTED}) {
        Prepared(eStatement);
    }
}

CSqliteStatement& CSqliteStore::Prepared(EStatement eStatement, ESettingsKind eKind, std::size_t iColumn) {
    const auto key = std::make_tuple(eStatement, eKind, iColumn);
    auto itStatement = m_mapStatements.find(key);
    if (itStatement == m_mapStatements.end()) {
        const SStatement& statement = STATEMENTS[static_cast<std::size_t>(eStatement)];
        const std::string strText =
            statement.pText != nullptr ? statement.pText : statement.fnText(GetSettingsTable(eKind), iColumn);
        itStatement = m_mapStatements
                          .emplace(std::piecewise_construct, std::forward_as_tuple(key),
                                   std::forward_as_tuple(m_connection, strText, statement.pDoing))
                          .first;
    }
    return itStatement->second;
}

/** Runs a statement of units of work. */
void CSqliteStore::Run(EStatement eStatement) {
    CSqliteRun run(Prepared(eStatement));
    run->Step();
}

/** The statement of a table, ready for its parameters. */
CSqliteRun CSqliteStore::Start(EStatement eStatement, ESettingsKind eKind, std::size_t iColumn) {
    RequireUnitKept(STATEMENTS[static_cast<std::size_t>(eStatement)].pDoing);
    return CSqliteRun(Prepared(eStatement, eKind, iColumn));
}

/** After a failure of the disk the engine may have undone everything; what follows must not be kept without it. */
void CSqliteStore::RequireUnitKept(const char* pDoing) const {
    if (m_units.IsInside() && !m_connection.IsInTransaction()) {
        ThrowStoreError(m_units.GetUrl(), pDoing, "an earlier failure has undone the unit of work around it");
    }
}

SStoreInfo CSqliteStore::GetInfo() {
    return {m_units.GetUrl(), std::string("SQLite ") + sqlite3_libversion(), SETTINGS_SCHEMA_VERSION};
}

void CSqliteStore::Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                        std::vector<std::unique_ptr<CSettingsRow>>& vecRows) {
    vecRows.clear();
    for (const std::string& strValue : vecValues) {
        CSqliteRun run = Start(EStatement::SELECT_FIRST, eKind, iColumn);
        run->BindText(1, strValue);
        vecRows.push_back(run->Step() ? std::make_unique<CSettingsRow>(run->Row(eKind)) : nullptr);
    }
}

bool CSqliteStore::IsHeld(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue) {
    CSqliteRun run = Start(EStatement::SELECT_HELD, eKind, iColumn);
    run->BindText(1, strValue);
    return run->Step();
}

void CSqliteStore::FindHeld(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                            std::vector<bool>& vecHeld) {
    vecHeld.clear();
    for (const std::string& strValue : vecValues) {
        vecHeld.push_back(IsHeld(eKind, iColumn, strValue));
    }
}

void CSqliteStore::ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) {
    RequireUnitKept(StoreDoing::READING);
    // A statement of this walk's own: the function may walk the same table.
    CSqliteStatement statement(m_connection, SqlText::SelectAll(GetSettingsTable(eKind)), StoreDoing::READING);
    while (statement.Step()) {
        fnRow(statement.Row(eKind));
    }
}

void CSqliteStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    vecValues.clear();
    CSqliteRun run = Start(EStatement::SELECT_COLUMN, eKind, iColumn);
    while (run->Step()) {
        vecValues.push_back(run->Text(0));
    }
}

std::size_t CSqliteStore::Count(ESettingsKind eKind) {
    std::optional<std::size_t>& optCount = Counted(eKind);
    if (optCount && m_connection.IsInTransaction()) {
        return *optCount;
    }
    CSqliteRun run = Start(EStatement::COUNT, eKind);
    run->Step();
    const auto iCount = static_cast<std::size_t>(run->Number(0));
    if (m_units.IsInside()) {
        optCount = iCount;
    }
    return iCount;
}

void CSqliteStore::Save(const CSettingsRow& row) {
    m_units.RequireWritable(StoreDoing::SAVING);
    row.Validate();
    std::optional<std::size_t>& optCount = Counted(row.GetKind());
    CSqliteRun run = Start(EStatement::SAVE, row.GetKind());
    const bool bCountedAnew = optCount && !IsHeld(row.GetKind(), 0, row.GetSubject());
    run->BindRow(row);
    run->Step();
    if (bCountedAnew) {
        ++*optCount;
    }
}

bool CSqliteStore::Remove(ESettingsKind eKind, const std::string& strSubject) {
    m_units.RequireWritable(StoreDoing::REMOVING);
    CSqliteRun run = Start(EStatement::REMOVE, eKind);
    run->BindText(1, strSubject);
    run->Step();
    const bool bThere = sqlite3_changes(m_connection.Get()) > 0;
    if (std::optional<std::size_t>& optCount = Counted(eKind); optCount && bThere) {
        --*optCount;
    }
    return bThere;
}

void CSqliteStore::ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) {
    CSettingsTransaction transaction(*this, EUnitOfWork::WRITE);
    {
        CSqliteRun run = Start(EStatement::REMOVE_ALL, eKind);
        run->Step();
    }
    Counted(eKind).reset();
    for (const CSettingsRow& row : vecRows) {
        Save(row);
    }
    transaction.Commit();
}

void CSqliteStore::Begin(EUnitOfWork eUnit) {
    RequireUnitKept(StoreDoing::BEGINNING);
    const bool bNested = m_units.IsInside();
    m_units.Push(eUnit);
    try {
        if (bNested) {
            Run(EStatement::BEGIN_NESTED);
        } else if (eUnit == EUnitOfWork::WRITE) {
            Run(EStatement::BEGIN_WRITE);
        } else {
            Run(EStatement::BEGIN_READ);
            Run(EStatement::FIX_SNAPSHOT);
        }
    } catch (...) {
        m_units.Pop();
        if (!bNested && m_connection.IsInTransaction()) {
            Run(EStatement::ROLLBACK);
        }
        throw;
    }
}

void CSqliteStore::Commit() {
    m_units.RequireInside(StoreDoing::COMMITTING);
    try {
        RequireUnitKept(StoreDoing::COMMITTING);
        Run(m_units.IsNested() ? EStatement::COMMIT_NESTED : EStatement::COMMIT);
    } catch (...) {
        Rollback();
        throw;
    }
    m_units.Pop();
    if (!m_units.IsInside()) {
        m_aCounts = {};
    }
}

void CSqliteStore::Rollback() {
    m_units.RequireInside(StoreDoing::UNDOING);
    const bool bNested = m_units.IsNested();
    m_units.Pop();
    m_aCounts = {};
    if (!m_connection.IsInTransaction()) {
        return;  // the engine has undone it already
    }
    if (!bNested) {
        Run(EStatement::ROLLBACK);
        return;
    }
    try {
        Run(EStatement::ROLLBACK_NESTED);
        Run(EStatement::COMMIT_NESTED);
    } catch (...) {
        // Better to lose the units around it than to keep what was to be undone.
        if (m_connection.IsInTransaction()) {
            Run(EStatement::ROLLBACK);
        }
        throw;
    }
}
