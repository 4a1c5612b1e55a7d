#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/common/PlatformExport.h"
#include "platform/store/CSettingsRow.h"
#include "platform/store/SettingsSchema.h"

/** What a store is, for people. */
struct SStoreInfo {
    std::string strUrl;
    std::string strEngine;  ///< such as "SQLite 3.40.1"
    int iSchemaVersion = 0;
};

/** Something in a store that is not as it was written. */
struct SStoreDamage {
    std::string strTable;    ///< "" when it is not about one
    std::string strSubject;  ///< the record's; "" when it is not about one
    std::string strWhat;     ///< for people; what the record or the engine holds may stand in it as it is
};

/** What a unit of work will do. A READ unit sees one state of the store throughout. */
enum class EUnitOfWork { READ, WRITE };

/**
 * The settings store: rows of three tables under their keys, found through indexes, written in nestable units of work.
 * Every operation throws OS::CException when the store cannot do it, saying what was being done and why it failed;
 * nothing else is reported by exceptions, but std::bad_alloc. One thread at a time.
 */
class DLP_PLATFORM_API CSettingsStore {
  public:
    virtual ~CSettingsStore();

    /**
     * Opens the process's store in place of the one that is open: "memory:" (empty at each Open), "sqlite:PATH".
     * @throws OS::CException; the store that was open is closed then too
     */
    static void Open(const std::string& strUrl);
    /** The same for one use. @param eUse as for Make */
    static void Open(const std::string& strUrl, EUnitOfWork eUse);
    /** Takes one that is open already. @param pStore not null */
    static void Open(std::unique_ptr<CSettingsStore> pStore);
    /** Closes the process's store; the next use opens the default again. */
    static void Close();
    /** The process's store; opens the default one (GetDefaultUrl) when none is open. @throws as Open */
    static CSettingsStore& Current();
    /** @return $DLP_STORE, else sqlite:${XDG_DATA_HOME:-~/.local/share}/dlpparser/settings.db */
    static std::string GetDefaultUrl();
    /**
     * Opens a store beside the process's one.
     * @param eUse READ: a file that is missing or no store is refused instead of made, and no write succeeds
     * @throws as Open
     */
    static std::unique_ptr<CSettingsStore> Make(const std::string& strUrl, EUnitOfWork eUse = EUnitOfWork::WRITE);
    /** @return whether the text begins as the URLs of some kind of store do */
    static bool IsUrl(const std::string& strText);
    /** Sets what is asked while a store waits for another process's lock: true ends the wait as if its time were up. */
    static void SetWaitEnder(std::function<bool()> fnEndsWait);
    /** @return what the function set above says; false without one */
    static bool IsWaitEnded();
    /** Puts something in front of every store that is opened: to count, to record, to fail. */
    using Wrapper = std::function<std::unique_ptr<CSettingsStore>(std::unique_ptr<CSettingsStore>)>;
    /** Sets it for what Open opens from now on; an empty function: nothing. */
    static void SetWrapper(Wrapper fnWrapper);
    /** Puts something in front of the process's store that is open now, before anything else that may stand there. */
    static void PutInFront(const Wrapper& fnWrapper);

    virtual SStoreInfo GetInfo() = 0;

    /**
     * For each value the first row, in the order of keys, whose column equals it exactly.
     * @param iColumn an indexed text column or the key
     * @param vecRows receives as many entries as there are values, null where there is no such row
     */
    virtual void Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                      std::vector<std::unique_ptr<CSettingsRow>>& vecRows) = 0;
    /** Which of the values stand in the column of any row. @param vecHeld receives one entry per value */
    virtual void FindHeld(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                          std::vector<bool>& vecHeld) = 0;
    /** Every row, in the order of keys. What the function throws ends the walk and passes. */
    virtual void ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) = 0;
    /** One text column of every row, in the order of keys; a null reads as "". */
    virtual void ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) = 0;
    virtual std::size_t Count(ESettingsKind eKind) = 0;

    /**
     * Looks at everything that is kept, in one state of the store.
     * @param fnDamage is told of each damage; what it throws ends the walk and passes
     */
    virtual void Check(const std::function<void(const SStoreDamage&)>& fnDamage) = 0;

    /** Adds the row or replaces the one with its key, whole. @throws also for what CSettingsRow::Validate refuses */
    virtual void Save(const CSettingsRow& row) = 0;
    /** @return whether there was such a row */
    virtual bool Remove(ESettingsKind eKind, const std::string& strSubject) = 0;
    /** Makes the table hold exactly these rows, or leaves it as it was. */
    virtual void ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) = 0;

    /** Begins a unit of work, inside the current one if there is one. A WRITE unit inside a READ unit is refused. */
    virtual void Begin(EUnitOfWork eUnit) = 0;
    /**
     * Keeps what the innermost unit did. @throws when the engine has undone it meanwhile (a full disk) or cannot keep
     * it; the unit is ended, and undone, then too
     */
    virtual void Commit() = 0;
    /** Undoes what the innermost unit did. */
    virtual void Rollback() = 0;

    /** Find for one value. @return null when there is no such row */
    std::unique_ptr<CSettingsRow> FindOne(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue);
};

/** One unit of work: begun by the constructor, undone by the destructor unless committed. */
class DLP_PLATFORM_API CSettingsTransaction {
  public:
    explicit CSettingsTransaction(EUnitOfWork eUnit = EUnitOfWork::WRITE);
    CSettingsTransaction(CSettingsStore& store, EUnitOfWork eUnit);
    CSettingsTransaction(const CSettingsTransaction&) = delete;
    CSettingsTransaction& operator=(const CSettingsTransaction&) = delete;
    ~CSettingsTransaction();

    /** @throws OS::CException when nothing was kept */
    void Commit();

  private:
    CSettingsStore& m_store;
    bool m_bOpen = false;
};
