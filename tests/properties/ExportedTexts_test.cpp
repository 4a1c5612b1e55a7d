// Every character that XML carries, in every text of a record of each kind, comes back by an export and an import.

#include <gtest/gtest.h>

#include <climits>

#include "api/CDLPSubKeywordFormater.h"
#include "api/CDLPTemplateParse.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "tests/support/Sanitized.h"
#include "tests/support/XmlText.h"

namespace {

using Texts = std::vector<OS::x_wstring>;

constexpr char MEMORY[] = "memory:";
constexpr std::size_t CHARACTERS_PER_TEXT = 100000;
constexpr wchar_t STEP = SANITIZED ? 7 : 1;

/** Blanks alone, too: a text of them is easily lost. */
Texts AllTexts() {
    Texts vecTexts = {L" ", L"\n", L"\r", L"\t", L"\r\n", L""};
    for (wchar_t c = 0; c <= Xml::LAST_CHARACTER; c += STEP) {
        if (Xml::IsCarried(c)) {
            if (vecTexts.back().size() == CHARACTERS_PER_TEXT) {
                vecTexts.emplace_back();
            }
            vecTexts.back() += c;
        }
    }
    return vecTexts;
}

void SaveExpression(const OS::x_wstring& strText) {
    CCfgSettingDLPFilterExpression record(SUBJECT_EXPRESSION + strText);
    record.SetInternalName(strText);
    record.SetUniqueName(L"", strText);
    record.SetDescription(strText);
    record.SetType(L"Type 2");
    record.SetValidator(strText);
    record.SetPattern(strText);
    record.SetAlphabetCharset(strText);
    record.SetDisplayFormat(strText);
    record.SetExample(strText);
    record.SetMinLength(INT_MIN);
    record.SetMaxLength(INT_MAX);
    record.SetSuffixLength(-1);
    record.SaveThis();
}

void SaveKeyword(const OS::x_wstring& strText) {
    std::vector<CDLPSubKeyword> vecKeywords = {CDLPSubKeyword(strText, strText, strText, strText)};
    CCfgSettingDLPFilterKeyword record(SUBJECT_KEYWORD + strText);
    record.SetInternalName(strText);
    record.SetUniqueName(L"", strText);
    record.SetDescription(strText);
    record.SetCondition(L"Distance");
    record.SetNumber(INT_MIN);
    record.SetSubkeywordList(CDLPSubKeywordFormater::ToXmlFormat(vecKeywords));
    record.SaveThis();
}

/** A template that refers to the expression and the keyword list of its name, written as an export writes it. */
OS::x_wstring Element(const OS::x_wstring& strName) {
    CXMLParser document;
    EXPECT_TRUE(document.LoadUtf8(
        "<template name=\"\"><matchRule><buildingBlock sourceType=\"ENTITY\" entityHits=\"2147483647\"/>"
        "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"\" operation=\"OR\"/></matchRule></template>"));
    const auto pRoot = document.GetRootElement();
    pRoot->SetAttribute(L"name", strName);
    const auto pBlock = pRoot->GetFirstChild()->GetFirstChild();
    pBlock->ToElement()->SetAttribute(L"sourceName", strName);
    pBlock->GetNextSibling()->ToElement()->SetAttribute(L"sourceName", strName);
    return pRoot->GetXML();
}

void SaveTemplate(const OS::x_wstring& strText) {
    CCfgSettingDLPFilterTemplate record(SUBJECT_TEMPLATE + strText);
    record.SetElement(Element(strText));
    record.SetUniqueName(L"", strText);
    record.SetDescription(strText);
    record.SetIndustry({strText});
    record.SetRegion({strText});
    record.SaveThis();
}

/** Every row of the store; of a keyword list without its markup, which is the exported element afterwards. */
std::vector<CSettingsRow> Rows() {
    std::vector<CSettingsRow> vecRows;
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        CSettingsStore::Current().ReadAll(eKind, [&](CSettingsRow&& row) {
            if (eKind == ESettingsKind::KEYWORD) {
                row.SetText(KeywordColumn::TEXT, "");
            }
            vecRows.push_back(std::move(row));
        });
    }
    return vecRows;
}

OS::x_wstring Exported(const OS::x_wstring& strName) {
    OS::x_wstring strText;
    CDLPTemplateParse(L"").DoTemplateExport(L"", {strName}, strText);
    return strText;
}

/** @return the tables of the rows that differ */
std::vector<std::string> Differences(const std::vector<CSettingsRow>& vecBefore,
                                     const std::vector<CSettingsRow>& vecAfter) {
    if (vecBefore.size() != vecAfter.size()) {
        return {"number of rows"};
    }
    std::vector<std::string> vecNames;
    for (std::size_t i = 0; i < vecBefore.size(); ++i) {
        if (vecBefore[i] != vecAfter[i]) {
            vecNames.push_back(GetSettingsTable(vecBefore[i].GetKind()).pName);
        }
    }
    return vecNames;
}

/** Whether the one keyword of the list stored under a text is that text in all its fields. */
bool HoldsKeyword(const OS::x_wstring& strText) {
    CCfgSettingDLPFilterKeyword record(SUBJECT_KEYWORD + strText);
    record.GetThis();
    OS::x_wstring strMarkup;
    record.GetSubkeywordList(strMarkup);
    std::vector<CDLPSubKeyword> vecKeywords;
    CDLPSubKeywordFormater::ToUIFormat(strMarkup, vecKeywords);
    return vecKeywords.size() == 1 && vecKeywords[0].m_strKeyword == strText &&
           vecKeywords[0].m_strDescription == strText && vecKeywords[0].m_strScore == strText &&
           vecKeywords[0].m_strCaseSensitive == strText;
}

}  // namespace

TEST(ExportedTexts, EveryCharacterComesBackInEveryText) {
    std::size_t iCharacters = 0;
    for (const OS::x_wstring& strText : AllTexts()) {
        SCOPED_TRACE(testing::Message() << "from U+" << std::hex << static_cast<int>(strText[0]));
        CSettingsStore::Open(MEMORY);
        SaveExpression(strText);
        SaveKeyword(strText);
        SaveTemplate(strText);
        const std::vector<CSettingsRow> vecBefore = Rows();
        const OS::x_wstring strExported = Exported(strText);

        CSettingsStore::Open(MEMORY);
        Texts vecImported;
        Texts vecSkipped;
        Texts vecSkippedAssets;
        EXPECT_EQ(0,
                  CDLPTemplateParse(L"").DoTemplateImport(L"", strExported, vecImported, vecSkipped, vecSkippedAssets));
        EXPECT_TRUE(Texts{strText} == vecImported);
        EXPECT_EQ(3U, vecBefore.size());
        EXPECT_EQ(std::vector<std::string>(), Differences(vecBefore, Rows()));
        EXPECT_TRUE(HoldsKeyword(strText));
        EXPECT_TRUE(strExported == Exported(strText));
        iCharacters += strText.size();
    }
    EXPECT_TRUE(SANITIZED || iCharacters == 6 + Xml::CARRIED_CHARACTERS) << iCharacters;
    CSettingsStore::Close();
}
