#include "platform/common/CAutoObjPtr.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using OS::CAutoObjPtr;

namespace {

struct CThing {
    CThing(std::string& strEvents, char cName) : m_strEvents(strEvents), m_cName(cName) {}
    virtual ~CThing() { m_strEvents += m_cName; }
    std::string& m_strEvents;
    char m_cName;
};

struct CDerivedThing : CThing {
    using CThing::CThing;
    ~CDerivedThing() override { m_strEvents += "derived "; }
};

}  // namespace

TEST(AutoObjPtr, OwnsNothingAtFirst) {
    const CAutoObjPtr<CThing> pEmpty;
    const CAutoObjPtr<CThing> pNull = nullptr;
    EXPECT_FALSE(pEmpty);
    EXPECT_TRUE(pNull == nullptr);
    EXPECT_EQ(pNull.Get(), nullptr);
}

TEST(AutoObjPtr, DeletesAtItsEndThroughTheVirtualDestructor) {
    std::string strDeleted;
    { CAutoObjPtr<CThing> pThing(new CDerivedThing(strDeleted, 'a')); }
    EXPECT_EQ(strDeleted, "derived a");
}

TEST(AutoObjPtr, ResetDeletesTheOldAndOwnsTheNew) {
    std::string strDeleted;
    CAutoObjPtr<CThing> pThing(new CThing(strDeleted, 'a'));
    pThing.Reset(new CThing(strDeleted, 'b'));
    EXPECT_EQ(strDeleted, "a");
    EXPECT_EQ(pThing->m_cName, 'b');
    pThing.Reset();
    EXPECT_EQ(strDeleted, "ab");
    EXPECT_FALSE(pThing);
}

TEST(AutoObjPtr, AssignmentMovesAndDeletesTheOld) {
    std::string strDeleted;
    CAutoObjPtr<CThing> pFirst(new CThing(strDeleted, 'a'));
    CAutoObjPtr<CThing> pSecond(new CThing(strDeleted, 'b'));
    pFirst = std::move(pSecond);
    EXPECT_EQ(strDeleted, "a");
    EXPECT_EQ((*pFirst).m_cName, 'b');
    EXPECT_TRUE(pSecond == nullptr);
    pFirst = nullptr;
    EXPECT_EQ(strDeleted, "ab");
}

TEST(AutoObjPtr, AssignmentToItselfKeepsTheObject) {
    std::string strDeleted;
    CAutoObjPtr<CThing> pThing(new CThing(strDeleted, 'a'));
    CAutoObjPtr<CThing>& pSame = pThing;
    pThing = std::move(pSame);
    EXPECT_EQ(strDeleted, "");
    EXPECT_TRUE(pThing != nullptr);
}

TEST(AutoObjPtr, TakesOverAnObjectOfADerivedClass) {
    std::string strDeleted;
    CAutoObjPtr<CDerivedThing> pDerived(new CDerivedThing(strDeleted, 'a'));
    CAutoObjPtr<CThing> pThing(std::move(pDerived));
    EXPECT_FALSE(pDerived);
    pThing.Reset();
    EXPECT_EQ(strDeleted, "derived a");
}

TEST(AutoObjPtr, ReleaseGivesTheObjectAway) {
    std::string strDeleted;
    CAutoObjPtr<CThing> pThing(new CThing(strDeleted, 'a'));
    CThing* pReleased = pThing.Release();
    EXPECT_FALSE(pThing);
    EXPECT_EQ(strDeleted, "");
    delete pReleased;
}

TEST(AutoObjPtr, IsNeverCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<CAutoObjPtr<CThing>>);
    EXPECT_FALSE(std::is_copy_assignable_v<CAutoObjPtr<CThing>>);
}
