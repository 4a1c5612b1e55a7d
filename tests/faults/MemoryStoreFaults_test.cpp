#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "platform/common/CException.h"
#include "platform/store/CMemoryStore.h"
#include "tests/faults/AllocationFaults.h"
#include "tests/support/StoreDump.h"

// Memory runs out at each allocation of the store in memory in turn: a change is made whole or not at all, its indexes
// included, and what is undone needs no memory.

namespace {

// Too long for a string to keep without an allocation.
const std::string FIRST = "a name that needs an allocation of its own";
const std::string SECOND = "another name that needs an allocation of its own";
const std::string KEY = "the first subject, in the order of subjects";
const std::string OTHER_KEY = "the second subject, in the order of subjects";

CSettingsRow Row(const std::string& strSubject, const std::string& strName) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, strSubject);
    row.SetText(TemplateColumn::DISPLAY_NAME, strName);
    if (strName != SECOND) {
        row.SetText(TemplateColumn::ELEMENT_NAME, strName);
    }
    return row;
}

using Change = std::function<void(CSettingsStore&)>;

/** From a store that holds KEY as FIRST. */
const struct {
    const char* pName;
    Change fnMake;
} CHANGES[] = {
    {"add", [](CSettingsStore& store) { store.Save(Row(OTHER_KEY, FIRST)); }},
    {"replace", [](CSettingsStore& store) { store.Save(Row(KEY, SECOND)); }},
    {"replace by the same", [](CSettingsStore& store) { store.Save(Row(KEY, FIRST)); }},
    {"remove", [](CSettingsStore& store) { store.Remove(ESettingsKind::TEMPLATE, KEY); }},
    {"replace all",
     [](CSettingsStore& store) {
         store.ReplaceAll(ESettingsKind::TEMPLATE, {Row(OTHER_KEY, FIRST), Row(FIRST, SECOND)});
     }},
    {"unit of work",
     [](CSettingsStore& store) {
         CSettingsTransaction unit(store, EUnitOfWork::WRITE);
         store.Save(Row(OTHER_KEY, FIRST));
         store.Save(Row(KEY, SECOND));
         unit.Commit();
     }},
};

void Fill(CSettingsStore& store) {
    store.Save(Row(KEY, FIRST));
}

/** @return all that the store holds, and what its indexes answer */
std::string Seen(CSettingsStore& store) {
    std::string strSeen = DumpStore(store);
    for (const std::size_t iColumn : {TemplateColumn::ELEMENT_NAME, TemplateColumn::DISPLAY_NAME}) {
        for (const std::string& strName : {FIRST, SECOND}) {
            const std::unique_ptr<CSettingsRow> pRow = store.FindOne(ESettingsKind::TEMPLATE, iColumn, strName);
            strSeen += pRow == nullptr ? "-\n" : pRow->GetSubject() + '\n';
        }
    }
    return strSeen;
}

std::string Seen(const Change& fnMake) {
    CMemoryStore store;
    Fill(store);
    fnMake(store);
    return Seen(store);
}

/** Runs the function with its n-th allocation failing. @return whether it has failed */
template <class F>
bool RunsOutAt(int n, const F& fnRun) {
    bool bFailed = false;
    AllocationFaults::FailAt(n);
    try {
        fnRun();
    } catch (const std::bad_alloc&) {
        bFailed = true;
    }
    return AllocationFaults::Disarm() || bFailed;
}

}  // namespace

TEST(MemoryStoreFaults, ChangeWithoutMemoryIsNotMade) {
    const std::string strBefore = Seen([](CSettingsStore&) {});
    for (const auto& change : CHANGES) {
        const std::string strAfter = Seen(change.fnMake);
        for (int n = 1;; ++n) {
            CMemoryStore store;
            Fill(store);
            const bool bFailed = RunsOutAt(n, [&] { change.fnMake(store); });
            EXPECT_EQ(Seen(store), bFailed ? strBefore : strAfter) << change.pName << ' ' << n;
            change.fnMake(store);
            EXPECT_EQ(Seen(store), strAfter) << change.pName << ' ' << n;
            if (!bFailed) {
                EXPECT_GT(n, 2) << change.pName;
                break;
            }
        }
    }
}

TEST(MemoryStoreFaults, ChangeWithoutMemoryLeavesTheUnitAsItWas) {
    for (const auto& change : CHANGES) {
        for (int n = 1;; ++n) {
            CMemoryStore store;
            Fill(store);
            const std::string strBefore = Seen(store);
            store.Begin(EUnitOfWork::WRITE);
            store.Save(Row(OTHER_KEY, SECOND));
            const std::string strInside = Seen(store);
            const bool bFailed = RunsOutAt(n, [&] { change.fnMake(store); });
            if (bFailed) {
                EXPECT_EQ(Seen(store), strInside) << change.pName << ' ' << n;
            }
            store.Rollback();
            EXPECT_EQ(Seen(store), strBefore) << change.pName << ' ' << n;
            if (!bFailed) {
                break;
            }
        }
    }
}

TEST(MemoryStoreFaults, UndoingAndKeepingNeedNoMemory) {
    for (const auto& change : CHANGES) {
        for (const bool bKeep : {false, true}) {
            CMemoryStore store;
            Fill(store);
            const std::string strBefore = Seen(store);
            store.Begin(EUnitOfWork::WRITE);
            change.fnMake(store);
            const std::string strAfter = Seen(store);
            EXPECT_FALSE(RunsOutAt(1, [&] { bKeep ? store.Commit() : store.Rollback(); })) << change.pName;
            EXPECT_EQ(Seen(store), bKeep ? strAfter : strBefore) << change.pName;
        }
    }
}

TEST(MemoryStoreFaults, UnitThatCannotBeginIsNone) {
    bool bFailed = true;
    for (int n = 1; bFailed; ++n) {
        CMemoryStore store;
        bFailed = RunsOutAt(n, [&] { store.Begin(EUnitOfWork::WRITE); });
        if (bFailed) {
            EXPECT_THROW(store.Commit(), OS::CException) << n;
        } else {
            EXPECT_GT(n, 1);
            store.Commit();
        }
    }
}
