#include <algorithm>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "fuzz/Targets.h"
#include "platform/common/CException.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/SqlitePageSums.h"
#include "tests/support/TempDir.h"

namespace Fuzz {

namespace {

/** Any file of the engine begins so; whatever else does not is a list of changes. */
constexpr std::string_view FILE_START = "SQLite format 3";
/** Changes of pages follow; what stands in place of a page's number means something else then. */
constexpr std::size_t PAGE_CHANGE_SIZE = 4;
constexpr std::size_t CUT = 255;
constexpr std::size_t HEADER = 254;

CSettingsRow MakeRow(ESettingsKind eKind, const std::string& strSubject) {
    CSettingsRow row(eKind);
    const STable& table = GetSettingsTable(eKind);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        const std::string strText = i == 0 ? strSubject : std::string(table.pColumns[i].pName) + " of " + strSubject;
        switch (table.pColumns[i].eType) {
            case EColumnType::TEXT:
            case EColumnType::NULLABLE_TEXT:
                row.SetText(i, strText);
                break;
            case EColumnType::NUMBER:
                row.SetNumber(i, static_cast<std::int32_t>(i));
                break;
            case EColumnType::FLAG:
                row.SetFlag(i, i % 2 == 0);
                break;
            case EColumnType::TEXT_LIST:
                row.SetList(i, {strText, "b"});
                break;
        }
    }
    return row;
}

std::vector<CSettingsRow> MakeRows(ESettingsKind eKind) {
    std::vector<CSettingsRow> vecRows;
    for (const char* pSubject : {"a", "b", "c", "d"}) {
        vecRows.push_back(MakeRow(eKind, pSubject));
    }
    return vecRows;
}

void RemoveSideFiles(const std::string& strFile) {
    for (const char* pSide : {"-wal", "-shm", "-journal", "-writer"}) {
        std::filesystem::remove(strFile + pSide);
    }
}

constexpr const char WHOLE_STORE[] = "whole.db";

void FillStore() {
    const auto pStore = CSettingsStore::Make("sqlite:" + Folder().Path(WHOLE_STORE));
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        pStore->ReplaceAll(eKind, MakeRows(eKind));
    }
}

/** The bytes of a store that holds MakeRows of each kind. */
const std::string& WholeStore() {
    static const std::string s_strStore = (FillStore(), Folder().Read(WHOLE_STORE));
    return s_strStore;
}

void MendSums(std::string& strStore) {
    constexpr std::size_t PAGE = SqlitePageSums::PAGE_SIZE;
    for (std::size_t iPage = 0; iPage + PAGE <= strStore.size(); iPage += PAGE) {
        auto* const pPage = reinterpret_cast<unsigned char*>(strStore.data()) + iPage;
        SqlitePageSums::MakeSum(pPage, static_cast<std::int64_t>(iPage), pPage + PAGE - SqlitePageSums::SUM_SIZE);
    }
}

bool AreSumsMended(std::string_view strChanges) {
    return !strChanges.empty() && static_cast<unsigned char>(strChanges[0]) % 2 == 0;
}

/**
 * The first byte says whether the pages get checksums that fit. Each change is a page, a place in it (two bytes), a
 * number of bytes and these bytes.
 */
std::string ChangeStore(std::string_view strChanges) {
    std::string strStore = WholeStore();
    const auto Byte = [&](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(strChanges[i]));
    };
    const std::size_t iPages = strStore.size() / SqlitePageSums::PAGE_SIZE;
    std::size_t i = 1;
    while (i + PAGE_CHANGE_SIZE <= strChanges.size()) {
        const std::size_t iWhere = (Byte(i + 1) << 8U | Byte(i + 2)) % SqlitePageSums::PAGE_SIZE;
        const std::size_t iPage = Byte(i) == HEADER ? 0 : Byte(i) % iPages;
        const std::size_t iPlace = iPage * SqlitePageSums::PAGE_SIZE + (Byte(i) == HEADER ? iWhere % 100 : iWhere);
        const std::size_t iCount = std::min(Byte(i + 3), strChanges.size() - i - PAGE_CHANGE_SIZE);
        if (Byte(i) == CUT) {
            strStore.resize(std::min(strStore.size(), iPlace));
        } else if (iPlace < strStore.size()) {
            strStore.replace(iPlace, std::min(iCount, strStore.size() - iPlace),
                             strChanges.substr(i + PAGE_CHANGE_SIZE, std::min(iCount, strStore.size() - iPlace)));
        }
        i += PAGE_CHANGE_SIZE + iCount;
    }
    if (AreSumsMended(strChanges)) {
        MendSums(strStore);
    }
    return strStore;
}

/** Damaged, or no store of ours: that is said, and the next thing tried. Of some schemas the engine says "no memory".
 */
void Try(const std::function<void()>& fnUse) {
    try {
        fnUse();
    } catch (const OS::CException&) {
    } catch (const std::bad_alloc&) {
    }
}

void RequireKept(const CSettingsRow& row) {
    const std::vector<CSettingsRow> vecRows = MakeRows(row.GetKind());
    Require(std::find(vecRows.begin(), vecRows.end(), row) != vecRows.end(), "what is read was kept");
}

/** What a file is, as far as it says what must be noticed. */
enum class EStoreFile {
    DAMAGED,  ///< whole but for its changes, with the checksums of pages that it had
    MENDED,   ///< the same with checksums that fit: only what a record says of itself can tell
    FOREIGN,
};

/** What was done without a word is there, and what was refused has changed nothing. */
void ChangeRecords(CSettingsStore& store, ESettingsKind eKind, bool bNoticed) {
    std::vector<std::string> vecExpected{"a", "b", "c", "d"};
    CSettingsRow changed = MakeRow(eKind, "b");
    changed.SetText(1, "changed");
    bool bChanged = false;
    Try([&] {
        store.Save(changed);
        bChanged = true;
    });
    Try([&] {
        const bool bThere = store.Remove(eKind, "c");
        Require(bThere || !bNoticed, "what is removed was there");
        vecExpected.erase(vecExpected.begin() + 2);
    });
    Try([&] {
        store.Save(MakeRow(eKind, "e"));
        vecExpected.emplace_back("e");
    });
    Try([&] {
        std::vector<std::string> vecSubjects;
        store.ReadAll(eKind, [&](CSettingsRow&& row) {
            vecSubjects.push_back(row.GetSubject());
            Require(!bNoticed || row.GetSubject() != "b" || (row == changed) == bChanged, "a change is kept");
        });
        Require(!bNoticed || vecSubjects == vecExpected, "the records are those that were left");
    });
}

void UseStore(CSettingsStore& store, EStoreFile eFile) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        std::size_t iRows = 0;
        Try([&] {
            store.ReadAll(eKind, [&](CSettingsRow&& row) {
                ++iRows;
                if (eFile != EStoreFile::FOREIGN) {
                    RequireKept(row);
                }
            });
            Require(eFile == EStoreFile::FOREIGN || iRows == MakeRows(eKind).size(),
                    "a walk that ends has seen every record");
        });
        Try([&] {
            const auto pRow = store.FindOne(eKind, 0, "b");
            Require(pRow == nullptr || pRow->GetSubject() == "b", "what is found is what was looked for");
            Require(pRow != nullptr || eFile != EStoreFile::DAMAGED, "no page denies what is there");
            if (eFile != EStoreFile::FOREIGN && pRow != nullptr) {
                RequireKept(*pRow);
            }
        });
        ChangeRecords(store, eKind, eFile == EStoreFile::DAMAGED);
    }
    Try([&] { store.Check([](const SStoreDamage&) {}); });
}

}  // namespace

void OpenStore(std::string_view strData) {
    const bool bFile = strData.substr(0, FILE_START.size()) == FILE_START;
    const std::string strFile = Folder().Write("store.db", bFile ? std::string(strData) : ChangeStore(strData));
    RemoveSideFiles(strFile);
    const EStoreFile eOwn = AreSumsMended(strData) ? EStoreFile::MENDED : EStoreFile::DAMAGED;
    Try([&] { UseStore(*CSettingsStore::Make("sqlite:" + strFile), bFile ? EStoreFile::FOREIGN : eOwn); });
}

}  // namespace Fuzz
