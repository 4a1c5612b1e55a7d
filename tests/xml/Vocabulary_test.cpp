#include "xml/Vocabulary.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/xml/CXMLWriter.h"

namespace {

const std::vector<std::pair<std::wstring, std::string>> ENTRIES = {
#define DLP_BOTH_ENTRY(name, text) {Tag::name, TagUtf8::name},
    DLP_VOCABULARY(DLP_BOTH_ENTRY)
#undef DLP_BOTH_ENTRY
};

}  // namespace

TEST(Vocabulary, EveryTextIsAsDocumentsSpellIt) {
    const std::set<std::string> EXPECTED = {"web\\xml\\DLP_Element.xml",
                                            "//DLP_Elements/patterns/pattern",
                                            "//DLP_Elements/keywords/keyword",
                                            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                                            "SAPolicy",
                                            "digitalAssets",
                                            "dictionary",
                                            "entity",
                                            "regularExpression",
                                            "patternForDisplay",
                                            "examples",
                                            "alphabetCharset",
                                            "keyword",
                                            "complianceTemplates",
                                            "template",
                                            "matchRule",
                                            "buildingBlock",
                                            "industries",
                                            "industry",
                                            "template_id",
                                            "regions",
                                            "region",
                                            "template_version",
                                            "localization_language",
                                            "command",
                                            "name",
                                            "validator",
                                            "type",
                                            "display_name",
                                            "description",
                                            "pre-defined",
                                            "severity",
                                            "minLength",
                                            "maxLength",
                                            "suffixLength",
                                            "minLeftRadius",
                                            "maxLeftRadius",
                                            "maxRightRadius",
                                            "caseSensitive",
                                            "threshold",
                                            "number",
                                            "score",
                                            "sourceName",
                                            "sourceType",
                                            "entityHits",
                                            "operation"};
    std::set<std::string> setTexts;
    for (const auto& entry : ENTRIES) {
        EXPECT_TRUE(setTexts.insert(entry.second).second) << entry.second << " stands twice";
    }
    EXPECT_EQ(EXPECTED, setTexts);
}

TEST(Vocabulary, WideAndUtf8TextsAreTheSame) {
    for (const auto& [strWide, strUtf8] : ENTRIES) {
        EXPECT_EQ(strWide, std::wstring(strUtf8.begin(), strUtf8.end()));
    }
}

TEST(Vocabulary, NamesStandForTheirTexts) {
    EXPECT_EQ(L"SAPolicy", Tag::SA_POLICY);
    EXPECT_EQ(L"template", Tag::TEMPLATE);
    EXPECT_EQ(L"pre-defined", Tag::PRE_DEFINED);
    EXPECT_STREQ("template_id", TagUtf8::TEMPLATE_ID);
    EXPECT_STREQ("maxRightRadius", TagUtf8::MAX_RIGHT_RADIUS);
}

TEST(Vocabulary, OleDateZeroIsTheEveOf1899) {
    EXPECT_EQ(1899, OLE_DATE_ZERO.GetYear());
    EXPECT_EQ(12, OLE_DATE_ZERO.GetMonth());
    EXPECT_EQ(30, OLE_DATE_ZERO.GetDay());
    EXPECT_EQ(6, OLE_DATE_ZERO.GetDayOfWeek());
    EXPECT_EQ(0, OLE_DATE_ZERO.GetHour() + OLE_DATE_ZERO.GetMinute() + OLE_DATE_ZERO.GetSecond());
}

TEST(Vocabulary, DeclarationIsTheOneTheWriterWrites) {
    std::string strOut;
    CXMLWriter(strOut).Declaration();
    EXPECT_EQ(TagUtf8::DECLARATION, strOut);
}
