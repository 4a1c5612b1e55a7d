// The lists that policies choose from, the texts and the name map that are installed beside the library.

#include <algorithm>
#include <map>
#include <set>

#include <gmock/gmock.h>

#include "platform/common/TextTools.h"
#include "tests/content/PolicyContent.h"

using namespace Content;
using testing::ElementsAre;

namespace {

struct SSection {
    const char* pName;
    const char* pItem;
    std::size_t iLeast;
};

constexpr SSection SECTIONS[] = {{"validators", "validator", 40},
                                 {"entity_types", "entity_type", 4},
                                 {"dictionary_types", "dictionary_type", 4},
                                 {"industries", "industry", 20},
                                 {"regions", "region", 15}};

}  // namespace

TEST(PredefinedPolicyContent, HoldsTheFiveSections) {
    const CXMLParser document = Load(POLICY);
    EXPECT_EQ(document.RootView().Name(), "SAPolicy");
    std::vector<std::string> vecSections;
    for (const CXMLView& section : Children(document.RootView())) {
        vecSections.emplace_back(section.Name());
    }
    EXPECT_THAT(vecSections, ElementsAre("validators", "entity_types", "dictionary_types", "industries", "regions"));
}

TEST(PredefinedPolicyContent, TypesAndConditionsAreThoseOfAssets) {
    const CXMLParser document = Load(POLICY);
    const CXMLView root = document.RootView();
    EXPECT_THAT(Names(Children(root.FirstChild("entity_types"))), ElementsAre("Generic", "Type 1", "Type 2", "Type 3"));
    EXPECT_THAT(Names(Children(root.FirstChild("dictionary_types"))),
                ElementsAre("All", "Any", "Threshold", "Distance"));
}

TEST(PredefinedPolicyContent, ItemsHaveNameAndTextAndNothingThatXmlEscapes) {
    const CXMLParser document = Load(POLICY);
    for (const SSection& section : SECTIONS) {
        const std::vector<CXMLView> vecItems = Children(document.RootView().FirstChild(section.pName));
        EXPECT_GE(vecItems.size(), section.iLeast) << section.pName;
        for (const CXMLView& item : vecItems) {
            const std::string strItem = std::string(item.Name()) + " " + std::string(item.Attribute("name"));
            EXPECT_EQ(item.Name(), section.pItem) << strItem;
            EXPECT_EQ(AttributeNames(item), "name display_name") << strItem;
            for (const char* pAttribute : {"name", "display_name"}) {
                const std::string_view strValue = item.Attribute(pAttribute);
                EXPECT_FALSE(strValue.empty()) << strItem;
                EXPECT_EQ(strValue.find_first_of("&<>\"'"), std::string_view::npos) << strItem;
                EXPECT_EQ(OS::Trim(strValue), strValue) << strItem;
            }
        }
    }
}

TEST(PredefinedPolicyContent, NamesAndTextsOfASectionAreDistinct) {
    const CXMLParser document = Load(POLICY);
    for (const SSection& section : SECTIONS) {
        const std::vector<CXMLView> vecItems = Children(document.RootView().FirstChild(section.pName));
        for (const char* pAttribute : {"name", "display_name"}) {
            const std::vector<std::string> vecValues = Values(vecItems, pAttribute);
            EXPECT_EQ(std::set<std::string>(vecValues.begin(), vecValues.end()).size(), vecValues.size())
                << section.pName << " " << pAttribute;
        }
    }
}

TEST(PredefinedPolicyContent, ValidatorsIndustriesAndRegionsAscendByName) {
    const CXMLParser document = Load(POLICY);
    for (const char* pSection : {"validators", "industries", "regions"}) {
        const std::vector<std::string> vecNames = Names(Children(document.RootView().FirstChild(pSection)));
        EXPECT_TRUE(std::ranges::is_sorted(vecNames)) << pSection;
    }
}

TEST(PredefinedPolicyContent, EveryValidatorStandsBelowAWordOnItsStandard) {
    std::string strAbove;
    for (const std::string& strLine : ReadLines(POLICY)) {
        if (OS::Trim(std::string_view(strLine)).starts_with("<validator ")) {
            EXPECT_TRUE(OS::Trim(std::string_view(strAbove)).starts_with("<!-- ")) << strLine;
            EXPECT_TRUE(strAbove.ends_with(". -->")) << strLine;
        }
        strAbove = strLine;
    }
}

TEST(InstalledTexts, NamesNoLanguage) {
    for (const std::string& strLine : ReadLines(STRINGS)) {
        EXPECT_TRUE(strLine.starts_with("#")) << strLine;
    }
}

namespace {

/** The pairs of the name map, in file order. */
std::vector<std::pair<std::string, std::string>> ReadNameMap() {
    std::vector<std::pair<std::string, std::string>> vecPairs;
    for (const std::string& strLine : ReadLines(NAME_MAP)) {
        if (!strLine.starts_with("#")) {
            const std::size_t iTab = strLine.find('\t');
            vecPairs.emplace_back(strLine.substr(0, iTab), iTab == std::string::npos ? "" : strLine.substr(iTab + 1));
        }
    }
    return vecPairs;
}

/** The names of all assets of the starter policy. */
std::set<std::string> AssetNames(const std::string& strFile) {
    const CXMLParser document = Load(strFile);
    const std::vector<std::string> vecNames = Names(Children(document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS)));
    return {vecNames.begin(), vecNames.end()};
}

/** The sourceName of every building block. */
std::set<std::string> References(const CXMLParser& document) {
    std::set<std::string> setNames;
    for (const CXMLView& item : Children(document.RootView().FirstChild(TagUtf8::COMPLIANCE_TEMPLATES))) {
        for (const CXMLView& rule : Children(item)) {
            for (const CXMLView& block : Children(rule)) {
                setNames.emplace(block.Attribute(TagUtf8::SOURCE_NAME));
            }
        }
    }
    return setNames;
}

}  // namespace

TEST(InstalledNameMap, TellsAssetsOfTheStarterPolicy) {
    const std::set<std::string> setAssets = AssetNames(STARTER);
    std::set<std::string> setOld;
    for (const auto& [strOld, strNew] : ReadNameMap()) {
        EXPECT_TRUE(setOld.insert(strOld).second) << strOld << " stands twice";
        EXPECT_EQ(OS::Trim(std::string_view(strOld)), strOld);
        EXPECT_EQ(setAssets.count(strOld), 0u) << strOld << " is a current name";
        EXPECT_EQ(setAssets.count(strNew), 1u) << strOld << " becomes " << strNew;
    }
}

TEST(OlderLayoutContent, HasNoVersionAndNoAssets) {
    const CXMLParser document = Load(OLDER);
    EXPECT_EQ(document.RootView().Name(), "SAPolicy");
    EXPECT_EQ(AttributeNames(document.RootView()), "");
    const std::vector<CXMLView> vecSections = Children(document.RootView());
    ASSERT_EQ(vecSections.size(), 1u);
    EXPECT_EQ(vecSections[0].Name(), "complianceTemplates");
}

TEST(OlderLayoutContent, OneTemplateIsBuiltIn) {
    const CXMLParser document = Load(OLDER);
    const std::vector<CXMLView> vecTemplates = Children(document.RootView().FirstChild(TagUtf8::COMPLIANCE_TEMPLATES));
    EXPECT_THAT(Values(vecTemplates, "builtin"), ElementsAre("1", "0", "", "", ""));
    for (const CXMLView& item : vecTemplates) {
        EXPECT_EQ(item.Name(), "template");
        EXPECT_NE(item.Attribute("name"), "");
        EXPECT_NE(item.Attribute("displayName"), "");
        EXPECT_EQ(item.Attribute("display_name"), "");
    }
}

TEST(OlderLayoutContent, EveryNameIsMappedOrCurrent) {
    const std::vector<std::pair<std::string, std::string>> vecMap = ReadNameMap();
    const std::map<std::string, std::string> mapNames(vecMap.begin(), vecMap.end());
    const std::set<std::string> setAssets = AssetNames(STARTER);
    std::size_t iMapped = 0;
    for (const std::string& strName : References(Load(OLDER))) {
        EXPECT_TRUE(mapNames.contains(strName) != setAssets.contains(strName)) << strName;
        iMapped += mapNames.count(strName);
    }
    EXPECT_GE(iMapped, 5u);
}
