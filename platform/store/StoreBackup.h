#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/store/CSettingsStore.h"

/** Backups of a store, each a store of its own in one file. All of it throws OS::CException, as stores do. */
namespace StoreBackup {

/** Called for each record that is copied; what it throws ends the work, undoes it and passes. */
using Step = std::function<void()>;
/** Numbers of records, by kind. */
using Counts = std::array<std::size_t, SETTINGS_KINDS>;

/**
 * Writes what the store holds at one moment into the file, which is made or replaced whole, and verified, or not at
 * all. Others may go on using the store meanwhile.
 * @param strPath absolute; nothing is there, an empty file, or a settings store that is not in use
 */
Counts Save(CSettingsStore& store, const std::string& strPath, const Step& fnStep);

/**
 * Puts a new store that holds the records in the place of the one at the path, whole or not at all; it belongs to whom
 * that one belonged to. The caller sees to it that nobody else has that one open.
 * @param strPath absolute
 * @param fnLook called last of all; what it throws undoes the work and passes
 */
void Renew(CSettingsStore& records, const std::string& strPath, const std::function<void()>& fnLook);

/** @return the backup, to be read @throws OS::CException also when any of it is damaged */
std::unique_ptr<CSettingsStore> Open(const std::string& strPath);

/** What restoring did, or would do. */
struct SRestored {
    Counts aReplaced{};
    Counts aRestored{};
    bool bDamaged = false;  ///< the former file was damaged, and was put aside as it was
    std::string strFormer;  ///< where the former content is now; "" when there was none
};

/**
 * Puts what the backup holds in place of what the store at the path holds. A sound store is changed in one unit of
 * work, whoever else uses it, and its former content is saved beside it; the file of a damaged one is put aside as it
 * is.
 * @param strPath absolute
 * @param bTry only says what would be done
 */
SRestored Restore(CSettingsStore& backup, const std::string& strPath, bool bTry, const Step& fnStep);

}  // namespace StoreBackup
