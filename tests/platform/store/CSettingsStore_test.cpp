#include "platform/store/CSettingsStore.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/common/CException.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/StoreDump.h"
#include "tests/support/StoreMakes.h"
#include "tests/support/TempDir.h"

namespace {

using enum ESettingsKind;

/** A template row; "" as name means the name "", none means no name. */
CSettingsRow Template(const std::string& strSubject, const char* pElementName = nullptr,
                      const std::string& strDisplayName = "") {
    CSettingsRow row(TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, strSubject);
    if (pElementName != nullptr) {
        row.SetText(TemplateColumn::ELEMENT_NAME, pElementName);
    }
    row.SetText(TemplateColumn::DISPLAY_NAME, strDisplayName);
    return row;
}

CSettingsRow Expression(const std::string& strSubject, const std::string& strName = "", std::int32_t iMinLength = 0) {
    CSettingsRow row(EXPRESSION);
    row.SetText(AssetColumn::SUBJECT, strSubject);
    row.SetText(AssetColumn::NAME, strName);
    row.SetNumber(ExpressionColumn::MIN_LENGTH, iMinLength);
    return row;
}

/** Every Unicode scalar value but U+0000, in UTF-8. */
std::string EveryCharacter() {
    std::string strAll;
    for (unsigned c = 1; c < 0x110000; ++c) {
        if (c < 0x80) {
            strAll += static_cast<char>(c);
        } else if (c < 0x800) {
            strAll += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
        } else if (c >= 0xD800 && c < 0xE000) {
            continue;
        } else if (c < 0x10000) {
            strAll += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
                       static_cast<char>(0x80 | (c & 0x3F))};
        } else {
            strAll += {static_cast<char>(0xF0 | c >> 18), static_cast<char>(0x80 | (c >> 12 & 0x3F)),
                       static_cast<char>(0x80 | (c >> 6 & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
        }
    }
    return strAll;
}

const std::string AWKWARD_TEXTS[] = {
    "",
    " leading and trailing ",
    "it's \"quoted\" `thus`; DROP TABLE templates; --",
    "?1 :name @name $name %s %d %",
    "a\nb\r\nc\td\\n\\",
    "\x01\x02\x1F\x7F",
    "\xEF\xBB\xBF at the start",
    "\xEF\xBF\xBE\xEF\xBF\xBF",  // U+FFFE and U+FFFF are characters to a store
    "e\xCC\x81 \xC3\xA9",        // not normalised into each other
    "\xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF",
    std::string(1 << 20, 'x'),
};

class SettingsStore : public testing::TestWithParam<SStoreMake> {
  protected:
    std::string Url() const { return GetParam().fnUrl(m_folder); }
    std::string Dump() { return DumpStore(*m_pStore); }
    std::vector<std::string> Subjects(ESettingsKind eKind) {
        std::vector<std::string> vecSubjects;
        m_pStore->ReadColumn(eKind, 0, vecSubjects);
        return vecSubjects;
    }
    /** The key of the row that Find gives; "-" for none. */
    std::string Found(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue) {
        const auto pRow = m_pStore->FindOne(eKind, iColumn, strValue);
        return pRow != nullptr ? pRow->GetSubject() : "-";
    }

    CTempDir m_folder;
    std::unique_ptr<CSettingsStore> m_pStore = CSettingsStore::Make(Url());
};
TEST_ON_ALL_STORES(SettingsStore);

TEST_P(SettingsStore, HoldsNothingAtFirst) {
    EXPECT_EQ("", Dump());
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        EXPECT_EQ(0u, m_pStore->Count(eKind));
        EXPECT_EQ("-", Found(eKind, 0, ""));
        EXPECT_FALSE(m_pStore->Remove(eKind, ""));
    }
}

TEST_P(SettingsStore, EveryColumnIsReadBack) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        CSettingsRow row(eKind);
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            const std::string strText = "text of " + std::string(table.pColumns[i].pName);
            switch (table.pColumns[i].eType) {
                case EColumnType::TEXT:
                case EColumnType::NULLABLE_TEXT:
                    row.SetText(i, strText);
                    break;
                case EColumnType::NUMBER:
                    row.SetNumber(i, static_cast<std::int32_t>(i) - 12);
                    break;
                case EColumnType::FLAG:
                    row.SetFlag(i, true);
                    break;
                case EColumnType::TEXT_LIST:
                    row.SetList(i, {strText, "", strText});
                    break;
            }
        }
        m_pStore->Save(row);
        m_pStore->Save(Template("other"));

        const auto pRow = m_pStore->FindOne(eKind, 0, "text of subject");
        ASSERT_NE(nullptr, pRow);
        EXPECT_EQ(DumpRow(row), DumpRow(*pRow));
        EXPECT_TRUE(row == *pRow);
        m_pStore->ReadAll(eKind, [&](CSettingsRow&& read) {
            EXPECT_TRUE(read.GetSubject() == "other" || read == row) << DumpRow(read);
        });
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            if (table.pColumns[i].eType == EColumnType::TEXT) {
                std::vector<std::string> vecTexts = {"what was there before"};
                m_pStore->ReadColumn(eKind, i, vecTexts);
                EXPECT_EQ(row.GetText(i), vecTexts.back()) << table.pColumns[i].pName;
            }
        }
    }
}

TEST_P(SettingsStore, NumbersOfAllSizesAreReadBack) {
    for (const std::int32_t iNumber : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
        m_pStore->Save(Expression("S", "n", iNumber));
        EXPECT_EQ(iNumber, m_pStore->FindOne(EXPRESSION, 0, "S")->GetNumber(ExpressionColumn::MIN_LENGTH));
    }
}

TEST_P(SettingsStore, AwkwardTextsSurviveInEveryPlace) {
    std::vector<std::string> vecTexts(std::begin(AWKWARD_TEXTS), std::end(AWKWARD_TEXTS));
    vecTexts.push_back(EveryCharacter());
    for (const std::string& strText : vecTexts) {
        CSettingsRow row = Template(strText, strText.c_str(), strText);
        row.SetText(TemplateColumn::ELEMENT, strText);
        row.SetList(TemplateColumn::INDUSTRIES, {strText, "between", strText});
        m_pStore->Save(row);
        for (const std::size_t iColumn :
             {TemplateColumn::SUBJECT, TemplateColumn::ELEMENT_NAME, TemplateColumn::DISPLAY_NAME}) {
            const auto pRow = m_pStore->FindOne(TEMPLATE, iColumn, strText);
            ASSERT_NE(nullptr, pRow) << strText.substr(0, 40);
            EXPECT_TRUE(row == *pRow) << strText.substr(0, 40);
        }
    }
    EXPECT_EQ(vecTexts.size(), m_pStore->Count(TEMPLATE));
    m_pStore->ReplaceAll(TEMPLATE, {});
    EXPECT_EQ("", Dump());
}

TEST_P(SettingsStore, ListsKeepOrderDuplicatesAndEmptyTexts) {
    const std::vector<std::string> LISTS[] = {
        {}, {""}, {"", ""}, {"b", "a", "b"}, {"\n"}, {"\\"}, {"\\n"}, {"\\", "n"}, {"a\n", "\nb\\"}, {"a", ""},
    };
    for (const auto& vecList : LISTS) {
        CSettingsRow row = Template("T");
        row.SetList(TemplateColumn::REGIONS, vecList);
        m_pStore->Save(row);
        EXPECT_EQ(vecList, m_pStore->FindOne(TEMPLATE, 0, "T")->GetList(TemplateColumn::REGIONS));
    }
}

TEST_P(SettingsStore, NoNameIsNotTheEmptyName) {
    m_pStore->Save(Template("A"));
    m_pStore->Save(Template("B", ""));
    EXPECT_EQ("B", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, ""));
    EXPECT_EQ("templates subject=\"A\"\ntemplates subject=\"B\" name=\"\"\n", Dump());
    std::vector<std::string> vecNames;
    m_pStore->ReadColumn(TEMPLATE, TemplateColumn::ELEMENT_NAME, vecNames);
    EXPECT_EQ((std::vector<std::string>{"", ""}), vecNames);
    m_pStore->Save(Template("B"));
    EXPECT_EQ("-", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, ""));
}

TEST_P(SettingsStore, SaveReplacesTheRowOfTheSameKeyWhole) {
    m_pStore->Save(Expression("S", "old", 7));
    m_pStore->Save(Expression("s", "other case", 1));
    m_pStore->Save(Expression("S", "new"));
    EXPECT_EQ("expressions subject=\"S\" name=\"new\"\nexpressions subject=\"s\" name=\"other case\" min_length=1\n",
              Dump());
    EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::NAME, "old"));
}

TEST_P(SettingsStore, TablesAreApart) {
    m_pStore->Save(Expression("S"));
    m_pStore->Save(CSettingsRow(KEYWORD));
    EXPECT_EQ("-", Found(KEYWORD, 0, "S"));
    EXPECT_FALSE(m_pStore->Remove(TEMPLATE, "S"));
    m_pStore->ReplaceAll(KEYWORD, {});
    EXPECT_EQ("expressions subject=\"S\"\n", Dump());
}

TEST_P(SettingsStore, RowsComeInTheOrderOfCodePoints) {
    const std::vector<std::string> vecOrdered = {
        "", "A", "A ", "AA", "B", "a", "\xC3\xA9", "\xEF\xBF\xBD", "\xF0\x90\x80\x80"};
    for (auto itSubject = vecOrdered.rbegin(); itSubject != vecOrdered.rend(); ++itSubject) {
        m_pStore->Save(Template(*itSubject));
    }
    EXPECT_EQ(vecOrdered, Subjects(TEMPLATE));
    std::vector<std::string> vecWalked;
    m_pStore->ReadAll(TEMPLATE, [&](CSettingsRow&& row) { vecWalked.push_back(row.GetSubject()); });
    EXPECT_EQ(vecOrdered, vecWalked);
}

TEST_P(SettingsStore, FindGivesTheFirstRowInTheOrderOfKeys) {
    m_pStore->Save(Template("C", "same", "shown"));
    m_pStore->Save(Template("B", "same", "shown"));
    m_pStore->Save(Template("A", "other", "Shown"));
    EXPECT_EQ("B", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, "same"));
    EXPECT_EQ("B", Found(TEMPLATE, TemplateColumn::DISPLAY_NAME, "shown"));
    EXPECT_TRUE(m_pStore->Remove(TEMPLATE, "B"));
    EXPECT_EQ("C", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, "same"));
    m_pStore->Save(Template("C", "changed", "shown"));
    EXPECT_EQ("-", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, "same"));
    EXPECT_EQ("C", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, "changed"));
}

TEST_P(SettingsStore, FindAnswersValueByValue) {
    CSettingsTransaction transaction(*m_pStore, EUnitOfWork::WRITE);
    std::vector<std::string> vecNames;
    for (int i = 0; i < 1000; ++i) {
        vecNames.push_back("name " + std::to_string(i) + " '\"");
        if (i % 3 != 0) {
            m_pStore->Save(Expression(std::to_string(i), vecNames.back()));
        }
    }
    vecNames.push_back(vecNames[1]);
    std::vector<std::unique_ptr<CSettingsRow>> vecRows(3);
    m_pStore->Find(EXPRESSION, AssetColumn::NAME, vecNames, vecRows);
    std::vector<bool> vecHeld(3);
    m_pStore->FindHeld(EXPRESSION, AssetColumn::NAME, vecNames, vecHeld);
    ASSERT_EQ(1001u, vecRows.size());
    ASSERT_EQ(1001u, vecHeld.size());
    for (std::size_t i = 0; i < vecNames.size(); ++i) {
        EXPECT_EQ(i % 3 != 0 || i == 1000, vecHeld[i]) << i;
        EXPECT_EQ(vecHeld[i], vecRows[i] != nullptr) << i;
        EXPECT_TRUE(vecRows[i] == nullptr || vecRows[i]->GetText(AssetColumn::NAME) == vecNames[i]) << i;
    }
    m_pStore->Find(EXPRESSION, AssetColumn::NAME, {}, vecRows);
    m_pStore->FindHeld(EXPRESSION, AssetColumn::NAME, {}, vecHeld);
    EXPECT_TRUE(vecRows.empty() && vecHeld.empty());
}

TEST_P(SettingsStore, TextsThatAreNoneAreLookedForInVain) {
    m_pStore->Save(Expression("S", "n"));
    for (const std::string& strValue : {std::string("n\0", 2), std::string("n\xED\xA0\x80"), std::string("\xFF")}) {
        EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::NAME, strValue));
        EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::SUBJECT, strValue));
    }
}

TEST_P(SettingsStore, RefusesWhatNoStoreKeeps) {
    m_pStore->Save(Expression("S", "kept"));
    const std::string strBefore = Dump();
    const CSettingsRow row = Expression("S", std::string("a\0b", 3));
    const std::string strMessage = "record \"S\" cannot be saved: name, byte 1: U+0000 cannot be stored";
    EXPECT_EQ(strMessage, ExceptionText([&] { m_pStore->Save(row); }));
    EXPECT_EQ(strMessage, ExceptionText([&] { m_pStore->ReplaceAll(EXPRESSION, {Expression("T"), row}); }));
    EXPECT_EQ(strBefore, Dump());
}

TEST_P(SettingsStore, RemoveTellsWhetherThereWasSuchARow) {
    m_pStore->Save(Expression("S"));
    EXPECT_FALSE(m_pStore->Remove(EXPRESSION, "T"));
    EXPECT_TRUE(m_pStore->Remove(EXPRESSION, "S"));
    EXPECT_FALSE(m_pStore->Remove(EXPRESSION, "S"));
    EXPECT_EQ("", Dump());
}

TEST_P(SettingsStore, ReplaceAllLeavesExactlyTheseRows) {
    m_pStore->Save(Expression("A", "old"));
    m_pStore->Save(Expression("B"));
    m_pStore->Save(Template("T"));
    m_pStore->ReplaceAll(EXPRESSION, {Expression("C"), Expression("A", "new")});
    EXPECT_EQ("expressions subject=\"A\" name=\"new\"\nexpressions subject=\"C\"\ntemplates subject=\"T\"\n", Dump());
    EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::NAME, "old"));
}

TEST_P(SettingsStore, WalkMayUseTheStore) {
    for (const char* pSubject : {"A", "B", "C"}) {
        m_pStore->Save(Expression(pSubject));
    }
    std::string strWalk;
    m_pStore->ReadAll(EXPRESSION, [&](CSettingsRow&& row) {
        strWalk += row.GetSubject() + "(";
        m_pStore->ReadAll(EXPRESSION, [&](CSettingsRow&& inner) { strWalk += inner.GetSubject(); });
        strWalk += ")" + Found(EXPRESSION, 0, row.GetSubject());
        m_pStore->Save(Template(row.GetSubject()));
        m_pStore->Remove(EXPRESSION, row.GetSubject());
    });
    EXPECT_EQ("A(ABC)AB(BC)BC(C)C", strWalk);
    EXPECT_EQ("templates subject=\"A\"\ntemplates subject=\"B\"\ntemplates subject=\"C\"\n", Dump());
}

TEST_P(SettingsStore, WalkMayHoldUnitsOfWork) {
    m_pStore->Save(Expression("A"));
    m_pStore->Save(Expression("B"));
    m_pStore->ReadAll(EXPRESSION, [&](CSettingsRow&& row) {
        CSettingsTransaction transaction(*m_pStore, EUnitOfWork::WRITE);
        row.SetText(AssetColumn::NAME, "changed");
        m_pStore->Save(row);
        if (row.GetSubject() == "B") {
            transaction.Commit();
        }
    });
    EXPECT_EQ("expressions subject=\"A\"\nexpressions subject=\"B\" name=\"changed\"\n", Dump());
}

TEST_P(SettingsStore, WhatAWalkThrowsPasses) {
    m_pStore->Save(Expression("A"));
    m_pStore->Save(Expression("B"));
    int iRows = 0;
    const auto fnThrow = [&](CSettingsRow&&) {
        ++iRows;
        throw std::runtime_error("enough");
    };
    EXPECT_THROW(m_pStore->ReadAll(EXPRESSION, fnThrow), std::runtime_error);
    EXPECT_EQ(1, iRows);
    m_pStore->Save(Expression("C"));
    EXPECT_EQ(3u, m_pStore->Count(EXPRESSION));
}

/** Adds B, replaces A, removes R. */
void ChangeAll(CSettingsStore& store) {
    store.Save(Expression("B", "added"));
    store.Save(Expression("A", "replaced"));
    store.Remove(EXPRESSION, "R");
}
constexpr char CHANGED[] = "expressions subject=\"A\" name=\"replaced\"\nexpressions subject=\"B\" name=\"added\"\n";

class SettingsUnits : public SettingsStore {
  protected:
    void SetUp() override {
        m_pStore->Save(Expression("A", "a", 1));
        m_pStore->Save(Expression("R", "r", 2));
        m_strBefore = Dump();
    }
    std::string m_strBefore;
};
TEST_ON_ALL_STORES(SettingsUnits);

TEST_P(SettingsUnits, CommitKeeps) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    EXPECT_EQ(CHANGED, Dump());
    m_pStore->Commit();
    EXPECT_EQ(CHANGED, Dump());
}

TEST_P(SettingsUnits, RollbackUndoesWithAllIndexes) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    m_pStore->Rollback();
    EXPECT_EQ(m_strBefore, Dump());
    EXPECT_EQ("A", Found(EXPRESSION, AssetColumn::NAME, "a"));
    EXPECT_EQ("R", Found(EXPRESSION, AssetColumn::NAME, "r"));
    EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::NAME, "added"));
    EXPECT_EQ("-", Found(EXPRESSION, AssetColumn::NAME, "replaced"));
}

TEST_P(SettingsUnits, RollbackUndoesReplaceAll) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    m_pStore->ReplaceAll(EXPRESSION, {Expression("X")});
    EXPECT_EQ("expressions subject=\"X\"\n", Dump());
    m_pStore->Rollback();
    EXPECT_EQ(m_strBefore, Dump());
}

TEST_P(SettingsUnits, InnerRollbackLeavesTheOuterUnit) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    m_pStore->Save(Expression("O"));
    const std::string strOuter = Dump();
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    m_pStore->Rollback();
    EXPECT_EQ(strOuter, Dump());
    m_pStore->Commit();
    EXPECT_EQ(strOuter, Dump());
}

TEST_P(SettingsUnits, InnerRollbackBeforeAnyOtherChangeLeavesTheOuterUnit) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    for (int i = 0; i < 2; ++i) {
        m_pStore->Begin(EUnitOfWork::WRITE);
        m_pStore->Begin(EUnitOfWork::WRITE);
        m_pStore->Save(Expression("O"));
        m_pStore->Commit();
        const std::string strInner = Dump();
        m_pStore->Begin(EUnitOfWork::READ);
        m_pStore->Rollback();
        m_pStore->Begin(EUnitOfWork::WRITE);
        ChangeAll(*m_pStore);
        m_pStore->Rollback();
        EXPECT_EQ(strInner, Dump());
        m_pStore->Rollback();
        EXPECT_EQ(m_strBefore, Dump());
    }
    ChangeAll(*m_pStore);
    m_pStore->Commit();
    EXPECT_EQ(CHANGED, Dump());
}

TEST_P(SettingsUnits, OuterRollbackUndoesACommittedInnerUnit) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    m_pStore->Begin(EUnitOfWork::WRITE);
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    m_pStore->Commit();
    m_pStore->Commit();
    EXPECT_EQ(CHANGED, Dump());
    m_pStore->Rollback();
    EXPECT_EQ(m_strBefore, Dump());
}

TEST_P(SettingsUnits, WhatWasFoundIsFoundByTheNamesItIsSavedWith) {
    m_pStore->Save(Template("T", nullptr, "display"));
    const auto fnSave = [&](const char* pName, const char* pDisplayName) {
        CSettingsTransaction unit(*m_pStore, EUnitOfWork::WRITE);
        ASSERT_NE(nullptr, m_pStore->FindOne(TEMPLATE, 0, "T"));
        m_pStore->Save(Template("T", pName, pDisplayName));
        unit.Commit();
    };
    const auto fnFound = [&](const char* pName, const char* pDisplayName) {
        return Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, pName) +
               Found(TEMPLATE, TemplateColumn::DISPLAY_NAME, pDisplayName);
    };
    EXPECT_EQ("-T", fnFound("", "display"));
    fnSave("", "display");
    EXPECT_EQ("TT", fnFound("", "display"));
    fnSave("name", "other");
    EXPECT_EQ("--", fnFound("", "display"));
    EXPECT_EQ("TT", fnFound("name", "other"));
    fnSave("name", "other");
    EXPECT_EQ("TT", fnFound("name", "other"));
    fnSave(nullptr, "other");
    EXPECT_EQ("-T", fnFound("name", "other"));
    EXPECT_EQ("-", Found(TEMPLATE, TemplateColumn::ELEMENT_NAME, ""));
}

TEST_P(SettingsUnits, UnitsFollowEachOther) {
    for (int i = 0; i < 3; ++i) {
        m_pStore->Begin(EUnitOfWork::WRITE);
        ChangeAll(*m_pStore);
        m_pStore->Rollback();
        m_pStore->Begin(EUnitOfWork::READ);
        EXPECT_EQ(m_strBefore, Dump());
        m_pStore->Commit();
    }
    m_pStore->Begin(EUnitOfWork::READ);
    m_pStore->Rollback();
    EXPECT_EQ(m_strBefore, Dump());
}

TEST_P(SettingsUnits, RefusedRowLeavesTheUnitAsItWas) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    EXPECT_THROW(m_pStore->Save(Expression(std::string(1, '\0'))), OS::CException);
    EXPECT_THROW(m_pStore->ReplaceAll(EXPRESSION, {Expression("X"), Expression("\xFF")}), OS::CException);
    m_pStore->Commit();
    EXPECT_EQ(CHANGED, Dump());
}

TEST_P(SettingsUnits, ReadingUnitRefusesToWrite) {
    m_pStore->Begin(EUnitOfWork::READ);
    m_pStore->Begin(EUnitOfWork::READ);
    const std::string strStore = "settings store " + m_pStore->GetInfo().strUrl + ", ";
    const std::string strWhy = ": the unit of work around it only reads";
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy,
              ExceptionText([&] { m_pStore->Begin(EUnitOfWork::WRITE); }));
    EXPECT_EQ(strStore + "saving a record" + strWhy, ExceptionText([&] { m_pStore->Save(Expression("X")); }));
    EXPECT_EQ(strStore + "removing a record" + strWhy, ExceptionText([&] { m_pStore->Remove(EXPRESSION, "A"); }));
    EXPECT_EQ(strStore + "beginning a unit of work" + strWhy,
              ExceptionText([&] { m_pStore->ReplaceAll(EXPRESSION, {}); }));
    m_pStore->Commit();
    m_pStore->Commit();
    EXPECT_EQ(m_strBefore, Dump());
    m_pStore->Save(Expression("X"));
}

TEST_P(SettingsUnits, ReadingUnitInsideAWritingOneSeesItsChanges) {
    m_pStore->Begin(EUnitOfWork::WRITE);
    ChangeAll(*m_pStore);
    m_pStore->Begin(EUnitOfWork::READ);
    EXPECT_EQ(CHANGED, Dump());
    EXPECT_THROW(m_pStore->Begin(EUnitOfWork::WRITE), OS::CException);
    m_pStore->Commit();
    m_pStore->Save(Expression("X"));
    m_pStore->Commit();
    EXPECT_EQ(CHANGED + std::string("expressions subject=\"X\"\n"), Dump());
}

TEST_P(SettingsUnits, EndWithoutBeginIsRefused) {
    const std::string strStore = "settings store " + m_pStore->GetInfo().strUrl + ", ";
    EXPECT_EQ(strStore + "committing a unit of work: none has been begun", ExceptionText([&] { m_pStore->Commit(); }));
    EXPECT_EQ(strStore + "undoing a unit of work: none has been begun", ExceptionText([&] { m_pStore->Rollback(); }));
}

TEST_P(SettingsUnits, CountFollowsEveryChange) {
    EXPECT_EQ(2u, m_pStore->Count(EXPRESSION));
    m_pStore->Begin(EUnitOfWork::WRITE);
    EXPECT_EQ(2u, m_pStore->Count(EXPRESSION));
    m_pStore->Save(Expression("B"));
    EXPECT_EQ(3u, m_pStore->Count(EXPRESSION));
    m_pStore->Save(Expression("B", "again"));
    EXPECT_EQ(3u, m_pStore->Count(EXPRESSION));
    m_pStore->Remove(EXPRESSION, "R");
    m_pStore->Remove(EXPRESSION, "not there");
    EXPECT_EQ(2u, m_pStore->Count(EXPRESSION));
    EXPECT_EQ(0u, m_pStore->Count(TEMPLATE));

    m_pStore->Begin(EUnitOfWork::WRITE);
    m_pStore->ReplaceAll(EXPRESSION, {Expression("1"), Expression("2"), Expression("3"), Expression("3")});
    EXPECT_EQ(3u, m_pStore->Count(EXPRESSION));
    m_pStore->Save(Expression("4"));
    m_pStore->Save(Template("T"));
    EXPECT_EQ(4u, m_pStore->Count(EXPRESSION));
    EXPECT_EQ(1u, m_pStore->Count(TEMPLATE));
    m_pStore->Rollback();
    EXPECT_EQ(2u, m_pStore->Count(EXPRESSION));
    EXPECT_EQ(0u, m_pStore->Count(TEMPLATE));

    m_pStore->Rollback();
    EXPECT_EQ(2u, m_pStore->Count(EXPRESSION));
    m_pStore->Save(Expression("B"));
    EXPECT_EQ(3u, m_pStore->Count(EXPRESSION));
}

TEST_P(SettingsUnits, TransactionIsUndoneUnlessCommitted) {
    {
        CSettingsTransaction transaction(*m_pStore, EUnitOfWork::WRITE), inner(*m_pStore, EUnitOfWork::WRITE);
        ChangeAll(*m_pStore);
        inner.Commit();
    }
    EXPECT_EQ(m_strBefore, Dump());
    try {
        CSettingsTransaction transaction(*m_pStore, EUnitOfWork::WRITE);
        ChangeAll(*m_pStore);
        throw std::runtime_error("on the way");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(m_strBefore, Dump());
    }
    {
        CSettingsTransaction transaction(*m_pStore, EUnitOfWork::WRITE);
        ChangeAll(*m_pStore);
        transaction.Commit();
    }
    EXPECT_EQ(CHANGED, Dump());
}

TEST_P(SettingsUnits, TransactionThatCannotBeginLeavesNothingOpen) {
    m_pStore->Begin(EUnitOfWork::READ);
    EXPECT_THROW(CSettingsTransaction(*m_pStore, EUnitOfWork::WRITE), OS::CException);
    m_pStore->Commit();
    EXPECT_THROW(m_pStore->Commit(), OS::CException);
}

}  // namespace
