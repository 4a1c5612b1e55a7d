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
    HOLD,
    TOTALS,
    UPDATE_TOTALS,
    SELECT_CHECKSUM,
    INSERT,
    UPDATE,
    UPDATE_FOUND,
    REMOVE,
    REMOVE_ALL,
    BEGIN_READ,
    MARK,
    LOCK,
    COMMIT,
    DROP_MARK,
    ROLLBACK,
    ROLLBACK_TO_MARK,
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
    {StoreDoing::READING, "SELECT 1 FROM sqlite_schema LIMIT 1", nullptr},
    {StoreDoing::COUNTING, SqlText::SELECT_TOTALS, nullptr},
    {StoreDoing::COMMITTING, SqlText::UPDATE_TOTALS, nullptr},
    {StoreDoing::READING, nullptr, OfTable<SqlText::SelectChecksum>},
    {StoreDoing::SAVING, nullptr, OfTable<SqlText::Insert>},
    {StoreDoing::SAVING, nullptr, OfTable<SqlText::Update>},
    {StoreDoing::SAVING, nullptr, OfTable<SqlText::UpdateFound>},
    {StoreDoing::REMOVING, nullptr, OfTable<SqlText::Remove>},
    {StoreDoing::REPLACING, nullptr, OfTable<SqlText::RemoveAll>},
    {StoreDoing::BEGINNING, SqlText::BEGIN_READ, nullptr},
    {StoreDoing::BEGINNING, "SAVEPOINT unit", nullptr},
    {StoreDoing::BEGINNING, SqlText::LOCK, nullptr},
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

/** @return the texts of the row's indexed columns but the key, told apart by what no text holds */
std::string IndexedTexts(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    std::string strTexts;
    for (std::size_t i = 1; i < table.iColumns; ++i) {
        if (table.pColumns[i].bIndexed) {
            strTexts += row.IsNull(i) ? "" : "=";
            strTexts += row.GetText(i);
            strTexts += '\0';
        }
    }
    return strTexts;
}

}  // namespace

CSqliteStore::CSqliteStore(const std::string& strPath, int iBusyMilliseconds, EUnitOfWork eUse)
    : m_connection(AbsolutePath(strPath), iBusyMilliseconds, eUse), m_units(m_connection.GetUrl()) {
    // Undoing must not depend on memory that has run out.
    for (const EStatement eStatement : {EStatement::ROLLBACK, EStatement::ROLLBACK_TO_MARK, EStatement::DROP_MARK}) {
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

/**
 * Holds one state of the store, and the lock on its file, while many values are looked up: each lookup alone would take
 * the lock and leave it.
 */
std::unique_ptr<CSqliteRun> CSqliteStore::HoldState(std::size_t iValues) {
    if (iValues < 2) {
        return nullptr;
    }
    auto pRun = std::make_unique<CSqliteRun>(Prepared(EStatement::HOLD));
    (*pRun)->Step();
    return pRun;
}

SStoreInfo CSqliteStore::GetInfo() {
    return {m_units.GetUrl(), std::string("SQLite ") + sqlite3_libversion(), m_connection.GetSchemaVersion()};
}

void CSqliteStore::Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                        std::vector<std::unique_ptr<CSettingsRow>>& vecRows) {
    vecRows.clear();
    const std::unique_ptr<CSqliteRun> pState = HoldState(vecValues.size());
    for (const std::string& strValue : vecValues) {
        CSqliteRun run = Start(EStatement::SELECT_FIRST, eKind, iColumn);
        run->BindText(1, strValue);
        vecRows.push_back(run->Step() ? std::make_unique<CSettingsRow>(ReadVerified(*run, eKind)) : nullptr);
        RequireLookedFor(eKind, vecRows.back() == nullptr || vecRows.back()->GetText(iColumn) == strValue);
        if (vecRows.back() != nullptr && m_units.IsWriting()) {
            const CSettingsRow& row = *vecRows.back();
            m_found = {eKind, row.GetSubject(), IndexedTexts(row), run->Place(eKind), run->Checksum(eKind), m_iChanges};
        }
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
    const std::unique_ptr<CSqliteRun> pState = HoldState(vecValues.size());
    for (const std::string& strValue : vecValues) {
        vecHeld.push_back(IsHeld(eKind, iColumn, strValue));
    }
}

void CSqliteStore::ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) {
    RequireUnitKept(StoreDoing::READING);
    // Statements of this walk's own: the function may walk the same table. While the first of them is not ended, both
    // see one state of the store.
    CSqliteStatement totals(m_connection, SqlText::SELECT_TOTALS, StoreDoing::READING);
    const SStoreTotals expected = FindTotals(eKind, totals);
    const std::uint64_t iChanges = m_iChanges;
    SStoreTotals found;
    CSqliteStatement statement(m_connection, SqlText::SelectAll(GetSettingsTable(eKind)), StoreDoing::READING);
    while (statement.Step()) {
        found.Add(statement.Checksum(eKind));
        fnRow(ReadVerified(statement, eKind));
    }
    if (iChanges == m_iChanges && found != expected) {
        ThrowDamaged({GetSettingsTable(eKind).pName, "", StoreDamage::VANISHED});
    }
}

void CSqliteStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    vecValues.clear();
    CSqliteRun totals(Prepared(EStatement::TOTALS));  // not ended before the walk is, so that both see one state
    const std::uint64_t iExpected = FindTotals(eKind, *totals).iRecords;
    CSqliteRun run = Start(EStatement::SELECT_COLUMN, eKind, iColumn);
    while (run->Step()) {
        vecValues.push_back(run->Text(0));
    }
    if (vecValues.size() != iExpected) {
        ThrowDamaged({GetSettingsTable(eKind).pName, "", StoreDamage::VANISHED});
    }
}

std::size_t CSqliteStore::Count(ESettingsKind eKind) {
    RequireUnitKept(StoreDoing::COUNTING);
    CSqliteRun totals(Prepared(EStatement::TOTALS));
    return FindTotals(eKind, *totals).iRecords;
}

void CSqliteStore::Save(const CSettingsRow& row) {
    m_units.RequireWritable(StoreDoing::SAVING);
    row.Validate();
    if (!m_units.IsInside()) {
        CSettingsTransaction unit(*this, EUnitOfWork::WRITE);
        Save(row);
        unit.Commit();
        return;
    }
    const std::uint64_t iChecksum = ChecksumOf(row);
    const bool bFound = IsFound(row);
    if (!bFound && Write(EStatement::INSERT, row, iChecksum)) {
        Change(row.GetKind()).Add(iChecksum);
        return;
    }
    const std::optional<std::uint64_t> oldChecksum =
        bFound ? m_found->iChecksum : FindChecksum(row.GetKind(), row.GetSubject());
    if (!oldChecksum || !Update(row, iChecksum)) {
        ThrowDamaged({GetSettingsTable(row.GetKind()).pName, row.GetSubject(), StoreDamage::VANISHED});
    }
    SStoreTotals& totals = Change(row.GetKind());
    totals.Remove(*oldChecksum);
    totals.Add(iChecksum);
}

bool CSqliteStore::IsFound(const CSettingsRow& row) const {
    return m_found && m_found->iChanges == m_iChanges && m_found->eKind == row.GetKind() &&
           m_found->strSubject == row.GetSubject();
}

bool CSqliteStore::Remove(ESettingsKind eKind, const std::string& strSubject) {
    m_units.RequireWritable(StoreDoing::REMOVING);
    if (!m_units.IsInside()) {
        CSettingsTransaction unit(*this, EUnitOfWork::WRITE);
        const bool bThere = Remove(eKind, strSubject);
        unit.Commit();
        return bThere;
    }
    CSqliteRun run = Start(EStatement::REMOVE, eKind);
    const std::optional<std::uint64_t> checksum = FindChecksum(eKind, strSubject);
    if (!checksum) {
        return false;
    }
    run->BindText(1, strSubject);
    run->Step();
    Change(eKind).Remove(*checksum);
    return true;
}

void CSqliteStore::ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) {
    CSettingsTransaction transaction(*this, EUnitOfWork::WRITE);
    {
        CSqliteRun run = Start(EStatement::REMOVE_ALL, eKind);
        run->Step();
    }
    Change(eKind) = {};
    for (const CSettingsRow& row : vecRows) {
        Save(row);
    }
    transaction.Commit();
}

/** The engine writes the indexes of every column that a statement sets, also when the value stays what it was. */
bool CSqliteStore::Update(const CSettingsRow& row, std::uint64_t iChecksum) {
    if (IsFound(row) && m_found->strIndexed == IndexedTexts(row)) {
        return Write(EStatement::UPDATE_FOUND, row, iChecksum, m_found->iPlace);
    }
    return Write(EStatement::UPDATE, row, iChecksum);
}

/** @return whether there was a row to write */
bool CSqliteStore::Write(EStatement eStatement, const CSettingsRow& row, std::uint64_t iChecksum,
                         std::optional<std::int64_t> place) {
    const auto iColumns = static_cast<int>(GetSettingsTable(row.GetKind()).iColumns);
    CSqliteRun run = Start(eStatement, row.GetKind());
    run->BindRow(row);
    run->BindNumber(iColumns + 1, static_cast<std::int64_t>(iChecksum));
    if (place) {
        run->BindNumber(iColumns + 2, *place);
    }
    run->Step();
    return sqlite3_changes(m_connection.Get()) > 0;
}

/** @return that of the record, none when there is no such record */
std::optional<std::uint64_t> CSqliteStore::FindChecksum(ESettingsKind eKind, const std::string& strSubject) {
    CSqliteRun run = Start(EStatement::SELECT_CHECKSUM, eKind);
    run->BindText(1, strSubject);
    if (!run->Step()) {
        return std::nullopt;
    }
    RequireLookedFor(eKind, run->Text(1) == strSubject);
    return static_cast<std::uint64_t>(run->Number(0));
}

/** The engine takes from the table whatever row an index names, and never looks whether it holds what was asked for. */
void CSqliteStore::RequireLookedFor(ESettingsKind eKind, bool bLookedFor) const {
    if (!bLookedFor) {
        ThrowDamaged({GetSettingsTable(eKind).pName, "", StoreDamage::MISLED});
    }
}

CSettingsRow CSqliteStore::ReadVerified(const CSqliteStatement& statement, ESettingsKind eKind) const {
    CSettingsRow row = statement.Row(eKind);
    if (ChecksumOf(row) != statement.Checksum(eKind)) {
        ThrowDamaged({GetSettingsTable(eKind).pName, row.GetSubject(), StoreDamage::ALTERED});
    }
    return row;
}

/** What the innermost unit sees, or, outside of any, what the statement reads. */
SStoreTotals CSqliteStore::FindTotals(ESettingsKind eKind, CSqliteStatement& statement) const {
    const auto iKind = static_cast<std::size_t>(eKind);
    return m_units.IsInside() ? m_vecOpen.back().aTotals[iKind] : ReadTotals(statement)[iKind];
}

/** Leaves the statement where it is, so that what is read before its end is of the same state. */
AllStoreTotals CSqliteStore::ReadTotals(CSqliteStatement& statement) const {
    AllStoreTotals aTotals;
    std::size_t iKind = 0;
    while (iKind < SETTINGS_KINDS && statement.Step() && statement.Number(0) == static_cast<std::int64_t>(iKind) &&
           statement.IsNumber(1) && statement.IsNumber(2)) {
        aTotals[iKind++] = {static_cast<std::uint64_t>(statement.Number(1)),
                            static_cast<std::uint64_t>(statement.Number(2))};
    }
    if (iKind < SETTINGS_KINDS) {
        ThrowDamaged({"", "", "how many records it holds is missing"});
    }
    return aTotals;
}

void CSqliteStore::WriteTotals() {
    for (std::size_t i = 0; i < SETTINGS_KINDS; ++i) {
        const SStoreTotals& totals = m_vecOpen.back().aTotals[i];
        if (totals != m_aStored[i]) {
            CSqliteRun run(Prepared(EStatement::UPDATE_TOTALS));
            run->BindNumber(1, static_cast<std::int64_t>(i));
            run->BindNumber(2, static_cast<std::int64_t>(totals.iRecords));
            run->BindNumber(3, static_cast<std::int64_t>(totals.iChecksum));
            run->Step();
        }
    }
}

/** @return what the innermost unit sees, to be changed with the table */
SStoreTotals& CSqliteStore::Change(ESettingsKind eKind) {
    ++m_iChanges;
    return m_vecOpen.back().aTotals[static_cast<std::size_t>(eKind)];
}

void CSqliteStore::ThrowDamaged(const SStoreDamage& damage) const {
    m_connection.RequireUnchanged(StoreDoing::READING);
    ThrowStoreError(m_units.GetUrl(), StoreDoing::READING, "it is damaged: " + ToText(damage) + StoreAdvice::DAMAGED,
                    StoreCode::DAMAGED);
}

void CSqliteStore::Begin(EUnitOfWork eUnit) {
    RequireUnitKept(StoreDoing::BEGINNING);
    const bool bNested = m_units.IsInside();
    const bool bMarked = bNested && IsMarkWanted(eUnit);
    m_vecOpen.reserve(m_vecOpen.size() + 1);  // lack of memory must not leave a unit without its totals
    m_units.Push(eUnit);
    try {
        if (!bNested) {
            BeginOutermost(eUnit);
        } else if (bMarked) {
            Run(EStatement::MARK);
        }
    } catch (...) {
        m_units.Pop();
        if (!bNested && m_connection.IsInTransaction()) {
            Run(EStatement::ROLLBACK);
        }
        throw;
    }
    m_vecOpen.push_back({bNested ? m_vecOpen.back().aTotals : m_aStored, eUnit, bMarked, m_iChanges});
}

/**
 * A transaction that is begun by a mark can go back to its start and keep the lock, and pages are not copied for that,
 * as they are for marks inside it.
 */
void CSqliteStore::BeginOutermost(EUnitOfWork eUnit) {
    if (eUnit == EUnitOfWork::WRITE) {
        Run(EStatement::MARK);
        Run(EStatement::LOCK);
    } else {
        Run(EStatement::BEGIN_READ);
    }
    CSqliteRun run(Prepared(EStatement::TOTALS));  // for a unit that reads, this fixes the state that it sees
    m_aStored = ReadTotals(*run);
    if (eUnit == EUnitOfWork::WRITE) {
        if (m_connection.HasMoved()) {
            ThrowMoved(StoreDoing::BEGINNING, StoreWritten::NOTHING);
        }
        m_connection.GetWriterNote().Leave();
    }
}

/** A unit that changes nothing needs no mark, and one before which nothing was changed goes back to that around it. */
bool CSqliteStore::IsMarkWanted(EUnitOfWork eUnit) const {
    return eUnit == EUnitOfWork::WRITE && m_vecOpen.back().iChanges != m_iChanges;
}

void CSqliteStore::Commit() {
    m_units.RequireInside(StoreDoing::COMMITTING);
    bool bInJournal = false;
    try {
        RequireUnitKept(StoreDoing::COMMITTING);
        if (m_vecOpen.back().bMarked) {
            Run(EStatement::DROP_MARK);
        } else if (!m_units.IsNested()) {
            WriteTotals();
            if (m_units.IsWriting() && m_connection.HasMoved()) {
                ThrowMoved(StoreDoing::COMMITTING, StoreWritten::NOTHING);
            }
            bInJournal = m_units.IsWriting();
            Run(EStatement::COMMIT);
            m_connection.RequireUnchanged(StoreDoing::READING);
        }
    } catch (...) {
        Rollback();
        if (bInJournal) {
            m_connection.OverwriteRefused();
        }
        throw;
    }
    const AllStoreTotals aTotals = m_vecOpen.back().aTotals;
    const bool bWritten = m_units.IsWriting() && !m_units.IsNested();
    EndUnit();
    if (m_units.IsInside()) {
        m_vecOpen.back().aTotals = aTotals;
    } else if (bWritten && m_connection.HasMoved() && m_connection.CanLook()) {
        ThrowMoved(StoreDoing::COMMITTING, StoreWritten::ELSEWHERE, StoreCode::WRITTEN_ELSEWHERE);
    }
}

void CSqliteStore::EndUnit() {
    m_found.reset();
    m_units.Pop();
    m_vecOpen.pop_back();
    if (!m_units.IsInside()) {
        m_connection.GetWriterNote().Remove();
    }
}

void CSqliteStore::ThrowMoved(const char* pDoing, const char* pWhat, int iCode) const {
    ThrowStoreError(m_units.GetUrl(), pDoing, std::string(StoreWritten::MOVED) + pWhat, iCode);
}

void CSqliteStore::Rollback() {
    m_units.RequireInside(StoreDoing::UNDOING);
    const bool bNested = m_units.IsNested();
    const SUnit unit = m_vecOpen.back();
    EndUnit();
    ++m_iChanges;
    if (!m_connection.IsInTransaction()) {
        return;  // the engine has undone it already
    }
    if (!bNested) {
        Run(EStatement::ROLLBACK);
    } else if (unit.eUnit == EUnitOfWork::WRITE) {
        UndoNested(unit.bMarked);
    }
}

void CSqliteStore::UndoNested(bool bMarked) {
    try {
        Run(EStatement::ROLLBACK_TO_MARK);
        if (bMarked) {
            Run(EStatement::DROP_MARK);
        }
    } catch (...) {
        // Better to lose the units around it than to keep what was to be undone.
        if (m_connection.IsInTransaction()) {
            Run(EStatement::ROLLBACK);
        }
        throw;
    }
}
