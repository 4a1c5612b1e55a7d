#include "cli/CUnmadeStore.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/common/CException.h"
#include "tests/support/TempDir.h"

namespace {

class UnmadeStore : public ::testing::Test {
  protected:
    static CSettingsRow Row(const std::string& strName) {
        CSettingsRow row(ESettingsKind::EXPRESSION);
        row.SetText(AssetColumn::SUBJECT, "s" + strName);
        row.SetText(AssetColumn::NAME, strName);
        return row;
    }
    bool IsMade() const { return std::filesystem::exists(m_dir.Path("store.db")); }
    std::size_t CountMade() const {
        return CSettingsStore::Make(m_strUrl, EUnitOfWork::READ)->Count(ESettingsKind::EXPRESSION);
    }

    CTempDir m_dir;
    std::string m_strUrl = "sqlite:" + m_dir.Path("store.db");
    CUnmadeStore m_late{m_strUrl, CUnmadeStore::EMade::AT_COMMIT};
    CUnmadeStore m_early{m_strUrl, CUnmadeStore::EMade::AT_FIRST_WRITE};
};

}  // namespace

TEST_F(UnmadeStore, IsEmptyAndNotMadeWhereNothingIsWritten) {
    for (CUnmadeStore* pStore : {&m_late, &m_early}) {
        CSettingsTransaction unit(*pStore, EUnitOfWork::WRITE);
        EXPECT_EQ(pStore->Count(ESettingsKind::EXPRESSION), 0U);
        EXPECT_EQ(pStore->FindOne(ESettingsKind::EXPRESSION, AssetColumn::NAME, "a"), nullptr);
        EXPECT_EQ(pStore->GetInfo().strUrl, m_strUrl);
        unit.Commit();
        EXPECT_FALSE(IsMade());
    }
}

TEST_F(UnmadeStore, IsMadeWithTheFirstWriteInsideItsUnits) {
    CSettingsTransaction outer(m_early, EUnitOfWork::WRITE);
    {
        CSettingsTransaction inner(m_early, EUnitOfWork::WRITE);
        m_early.Save(Row("a"));
        EXPECT_TRUE(IsMade());
    }
    EXPECT_EQ(m_early.Count(ESettingsKind::EXPRESSION), 0U);
    m_early.Save(Row("b"));
    EXPECT_EQ(CountMade(), 0U);
    outer.Commit();
    EXPECT_EQ(CountMade(), 1U);
}

TEST_F(UnmadeStore, IsMadeWithWhatIsCommitted) {
    {
        CSettingsTransaction undone(m_late, EUnitOfWork::WRITE);
        m_late.Save(Row("a"));
    }
    EXPECT_FALSE(IsMade());
    CSettingsTransaction outer(m_late, EUnitOfWork::WRITE);
    {
        CSettingsTransaction inner(m_late, EUnitOfWork::WRITE);
        m_late.Save(Row("b"));
        inner.Commit();
    }
    EXPECT_FALSE(IsMade());
    outer.Commit();
    EXPECT_EQ(CountMade(), 1U);
    m_late.Save(Row("c"));
    EXPECT_EQ(CountMade(), 2U);
}

TEST_F(UnmadeStore, OneThatSomebodyElseHasMadeMeanwhileIsLeftAsItIs) {
    CSettingsTransaction late(m_late, EUnitOfWork::WRITE);
    CSettingsTransaction early(m_early, EUnitOfWork::WRITE);
    m_late.Save(Row("a"));
    CSettingsStore::Make(m_strUrl)->Save(Row("z"));
    const auto fnMessage = [](const auto& fn) {
        try {
            fn();
        } catch (const OS::CException& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string strExpected =
        "settings store " + m_strUrl + ", opening it: another process is writing to it; try again";
    EXPECT_EQ(fnMessage([&] { m_early.Save(Row("b")); }), strExpected);
    EXPECT_EQ(fnMessage([&] { late.Commit(); }), strExpected);
    EXPECT_EQ(CountMade(), 1U);
}
