#include "platform/store/CForwardingStore.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/ExceptionText.h"
#include "tests/support/FaultStore.h"
#include "tests/support/StoreDump.h"
#include "tests/support/StoreMakes.h"

namespace {

constexpr ESettingsKind KIND = ESettingsKind::EXPRESSION;

CSettingsRow Expression(const std::string& strSubject) {
    CSettingsRow row(KIND);
    row.SetText(AssetColumn::SUBJECT, strSubject);
    return row;
}

/** Notes its operations, fails one of them, notes what failed. */
class CNotingStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    std::string strFail;
    std::string strNotes;

  protected:
    void Before(const char* pOperation) override {
        strNotes += std::string(strNotes.empty() ? "" : " ") + pOperation;
        if (pOperation == strFail) {
            throw OS::CException(0, L"told to fail", 0);
        }
    }
    void Failed(const char* pOperation) override { strNotes += std::string("!") + pOperation; }
};

struct SOperation {
    const char* pName;
    void (*fnRun)(CSettingsStore& store);
};

/** Every operation but the ends of units, Begin last. */
const SOperation OPERATIONS[] = {
    {"GetInfo", [](CSettingsStore& store) { store.GetInfo(); }},
    {"Find", [](CSettingsStore& store) { store.FindOne(KIND, 0, "A"); }},
    {"FindHeld",
     [](CSettingsStore& store) {
         std::vector<bool> vecHeld;
         store.FindHeld(KIND, 0, {"A"}, vecHeld);
     }},
    {"ReadAll", [](CSettingsStore& store) { store.ReadAll(KIND, [](CSettingsRow&&) {}); }},
    {"ReadColumn",
     [](CSettingsStore& store) {
         std::vector<std::string> vecTexts;
         store.ReadColumn(KIND, 0, vecTexts);
     }},
    {"Count", [](CSettingsStore& store) { store.Count(KIND); }},
    {"Check", [](CSettingsStore& store) { store.Check([](const SStoreDamage&) {}); }},
    {"Save", [](CSettingsStore& store) { store.Save(Expression("B")); }},
    {"Remove", [](CSettingsStore& store) { store.Remove(KIND, "A"); }},
    {"ReplaceAll", [](CSettingsStore& store) { store.ReplaceAll(KIND, {}); }},
    {"Begin", [](CSettingsStore& store) { store.Begin(EUnitOfWork::WRITE); }},
};

class ForwardingStore : public testing::TestWithParam<SStoreMake> {
  protected:
    void SetUp() override {
        m_store.Save(Expression("A"));
        m_store.strNotes.clear();
    }
    CTempDir m_folder;
    CNotingStore m_store{CSettingsStore::Make(GetParam().fnUrl(m_folder))};
};
TEST_ON_ALL_STORES(ForwardingStore);

TEST_P(ForwardingStore, EveryOperationIsHeardOfAndCanFail) {
    for (const SOperation& operation : OPERATIONS) {
        m_store.strFail = operation.pName;
        m_store.strNotes.clear();
        EXPECT_EQ("told to fail", ExceptionText([&] { operation.fnRun(m_store); }));
        EXPECT_EQ(std::string(operation.pName) + "!" + operation.pName, m_store.strNotes);
    }
    m_store.strFail.clear();
    EXPECT_EQ("expressions subject=\"A\"\n", DumpStore(m_store));
    EXPECT_THROW(m_store.Rollback(), OS::CException);  // Begin did not get through either
    for (const SOperation& operation : OPERATIONS) {
        m_store.strNotes.clear();
        operation.fnRun(m_store);
        EXPECT_EQ(operation.pName, m_store.strNotes);
    }
}

TEST_P(ForwardingStore, AnswersAreThoseOfTheInnerStore) {
    EXPECT_EQ(3, m_store.GetInfo().iSchemaVersion);
    EXPECT_NE(nullptr, m_store.FindOne(KIND, 0, "A"));
    EXPECT_EQ(nullptr, m_store.FindOne(KIND, 0, "B"));
    std::vector<bool> vecHeld;
    m_store.FindHeld(KIND, 0, {"A", "B"}, vecHeld);
    EXPECT_EQ((std::vector<bool>{true, false}), vecHeld);
    std::vector<std::string> vecSubjects;
    m_store.ReadColumn(KIND, 0, vecSubjects);
    EXPECT_EQ(std::vector<std::string>{"A"}, vecSubjects);
    EXPECT_EQ(1u, m_store.Count(KIND));
    EXPECT_TRUE(m_store.Remove(KIND, "A"));
    EXPECT_FALSE(m_store.Remove(KIND, "A"));
    m_store.ReplaceAll(KIND, {Expression("C")});
    EXPECT_EQ("expressions subject=\"C\"\n", DumpStore(m_store));
}

TEST_P(ForwardingStore, FailureOfTheInnerStoreIsHeardOf) {
    EXPECT_THROW(m_store.Save(Expression("\xFF")), OS::CException);
    EXPECT_THROW(m_store.Commit(), OS::CException);
    EXPECT_THROW(m_store.Rollback(), OS::CException);
    EXPECT_EQ("Save!Save Commit!Commit Rollback!Rollback", m_store.strNotes);
}

TEST_P(ForwardingStore, WhatTheCallersFunctionThrowsIsNoFailureOfTheStore) {
    EXPECT_THROW(m_store.ReadAll(KIND, [](CSettingsRow&&) { throw std::runtime_error("caller"); }), std::runtime_error);
    EXPECT_EQ("ReadAll", m_store.strNotes);
}

/** A store with one damage. */
class CDamagedStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    void Check(const std::function<void(const SStoreDamage&)>& fnDamage) override { fnDamage({"t", "S", "gone"}); }
};

TEST_P(ForwardingStore, DamageIsHandedOn) {
    CNotingStore store(std::make_unique<CDamagedStore>(CSettingsStore::Make("memory:")));
    std::string strDamage;
    store.Check([&](const SStoreDamage& damage) { strDamage = damage.strTable + damage.strSubject + damage.strWhat; });
    EXPECT_EQ("tSgone", strDamage);
    EXPECT_THROW(store.Check([](const SStoreDamage&) { throw std::runtime_error("caller"); }), std::runtime_error);
    EXPECT_EQ("Check Check", store.strNotes);
}

TEST_P(ForwardingStore, CommitThatIsMadeToFailUndoesItsUnit) {
    m_store.Begin(EUnitOfWork::WRITE);
    m_store.Save(Expression("outer"));
    m_store.Begin(EUnitOfWork::WRITE);
    m_store.Save(Expression("inner"));
    m_store.strFail = "Commit";
    EXPECT_EQ("told to fail", ExceptionText([&] { m_store.Commit(); }));
    EXPECT_EQ("Begin Save Begin Save Commit!Commit", m_store.strNotes);
    m_store.strFail.clear();
    m_store.Commit();
    EXPECT_EQ("expressions subject=\"A\"\nexpressions subject=\"outer\"\n", DumpStore(m_store));
    EXPECT_THROW(m_store.Commit(), OS::CException);
}

TEST_P(ForwardingStore, RollbackCannotBeMadeToFail) {
    m_store.strFail = "Rollback";
    m_store.Begin(EUnitOfWork::WRITE);
    m_store.Save(Expression("B"));
    m_store.Rollback();
    EXPECT_EQ("expressions subject=\"A\"\n", DumpStore(m_store));
    EXPECT_EQ("Begin Save Rollback ReadAll ReadAll ReadAll", m_store.strNotes);
}

/** A store whose units cannot be undone. */
class CStubbornStore : public CForwardingStore {
  public:
    using CForwardingStore::CForwardingStore;
    void Rollback() override { throw OS::CException(0, L"no", 0); }
};

TEST_P(ForwardingStore, TransactionThatCannotBeUndoneEndsQuietly) {
    CStubbornStore store(CSettingsStore::Make("memory:"));
    { CSettingsTransaction transaction(store, EUnitOfWork::WRITE); }
    CSettingsTransaction transaction(store, EUnitOfWork::WRITE);
    transaction.Commit();
}

TEST_P(ForwardingStore, FaultsComeAtTheOperationThatWasNamed) {
    CStoreFaults faults;
    CSettingsStore::Open(GetParam().fnUrl(m_folder));
    CSettingsStore::Current().ReplaceAll(KIND, {});
    CSettingsStore& store = CSettingsStore::Current();
    const auto fnWork = [&] {
        CSettingsTransaction transaction;
        store.Save(Expression("A"));
        store.Count(KIND);
        transaction.Commit();
    };
    faults.CountOnly();
    fnWork();
    EXPECT_EQ((std::vector<std::string>{"Begin", "Save", "Count", "Commit"}), faults.GetOperations());
    store.ReplaceAll(KIND, {});
    for (std::size_t i = 1; i <= 4; ++i) {
        faults.FailAt(i);
        EXPECT_EQ("the store does not answer", ExceptionText(fnWork)) << i;
        EXPECT_TRUE(faults.IsReached());
        EXPECT_EQ("", DumpStore(store)) << i;
    }
    faults.FailAt(2, CStoreFaults::MemoryFault);
    EXPECT_THROW(fnWork(), std::bad_alloc);
    faults.FailAt(5);
    fnWork();
    EXPECT_FALSE(faults.IsReached());
    faults.CountOnly();
    EXPECT_EQ("expressions subject=\"A\"\n", DumpStore(store));
}

}  // namespace
