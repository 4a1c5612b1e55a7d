// The policies of examples/ that carry assets: their form, their names and what refers to what.

#include <algorithm>
#include <map>
#include <set>

#include <gmock/gmock.h>

#include "platform/common/TextTools.h"
#include "tests/content/PolicyContent.h"

using namespace Content;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> NodeNames(const std::vector<CXMLView>& vecNodes) {
    std::vector<std::string> vecNames;
    for (const CXMLView& node : vecNodes) {
        vecNames.emplace_back(node.Name());
    }
    return vecNames;
}

/** What the type of an asset makes of its attributes, in the order of an export. */
const std::map<std::string, std::string, std::less<>> ATTRIBUTES = {
    {"Generic", "name type caseSensitive validator display_name description pre-defined"},
    {"Type 1", "name type caseSensitive validator minLength maxLength display_name description pre-defined"},
    {"Type 2",
     "name type caseSensitive validator minLength maxLength suffixLength display_name description pre-defined"},
    {"Type 3",
     "name type caseSensitive validator minLeftRadius maxLeftRadius maxRightRadius display_name description "
     "pre-defined"},
    {"All", "name type display_name description pre-defined"},
    {"Any", "name type display_name description pre-defined"},
    {"Threshold", "name type threshold display_name description pre-defined"},
    {"Distance", "name type number display_name description pre-defined"},
};

std::string Label(const CXMLView& node) {
    return std::string(node.Attribute(TagUtf8::NAME));
}

/** Small letters and digits in words joined by hyphens: easy in a shell, and never read as an operator in a rule. */
bool IsGoodName(std::string_view strName) {
    return !strName.empty() && strName.front() != '-' && strName.back() != '-' &&
           strName.find("--") == std::string_view::npos &&
           strName.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string_view::npos;
}

/** Named, described, made by the user, ascending by name, each name and display name once. */
void ExpectGoodItems(const std::vector<CXMLView>& vecItems) {
    std::set<std::string> setDisplayNames;
    std::string strBefore;
    for (const CXMLView& item : vecItems) {
        EXPECT_TRUE(IsGoodName(Label(item))) << Label(item);
        EXPECT_LT(strBefore, Label(item));
        EXPECT_TRUE(setDisplayNames.emplace(item.Attribute(TagUtf8::DISPLAY_NAME)).second) << Label(item);
        EXPECT_FALSE(item.Attribute(TagUtf8::DISPLAY_NAME).empty()) << Label(item);
        EXPECT_TRUE(item.Attribute(TagUtf8::DESCRIPTION).ends_with(".")) << Label(item);
        EXPECT_EQ(item.Attribute(TagUtf8::PRE_DEFINED), "false") << Label(item);
        strBefore = Label(item);
    }
}

}  // namespace

/** What holds for every document with assets. */
class AssetsOf : public testing::TestWithParam<std::string> {
  protected:
    CXMLParser m_document = Load(GetParam());
    CXMLView m_assets = m_document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS);
    std::vector<CXMLView> m_vecExpressions = Children(m_assets, TagUtf8::ENTITY);
    std::vector<CXMLView> m_vecLists = Children(m_assets, TagUtf8::DICTIONARY);
};

INSTANTIATE_TEST_SUITE_P(Content, AssetsOf, testing::Values(STARTER, ASSETS),
                         [](const auto& file) { return file.param == STARTER ? "Starter" : "DigitalAssets"; });

TEST_P(AssetsOf, RootTellsTheVersionAndNoLanguage) {
    EXPECT_EQ(m_document.RootView().Name(), "SAPolicy");
    EXPECT_EQ(AttributeNames(m_document.RootView()), "template_version");
    EXPECT_EQ(m_document.RootView().Attribute(TagUtf8::TEMPLATE_VERSION), "3.0.1000");
    EXPECT_EQ(m_assets.Attribute(TagUtf8::COMMAND), "overwrite");
}

TEST_P(AssetsOf, ExpressionsStandBeforeKeywordLists) {
    std::vector<std::string> vecInOrder(m_vecExpressions.size(), "entity");
    vecInOrder.resize(m_vecExpressions.size() + m_vecLists.size(), "dictionary");
    EXPECT_EQ(NodeNames(Children(m_assets)), vecInOrder);
}

TEST_P(AssetsOf, ItemsAreWellNamedAndAscend) {
    ExpectGoodItems(m_vecExpressions);
    ExpectGoodItems(m_vecLists);
}

TEST_P(AssetsOf, AttributesStandInTheOrderOfAnExport) {
    for (const std::vector<CXMLView>& vecItems : {m_vecExpressions, m_vecLists}) {
        for (const CXMLView& item : vecItems) {
            const auto iType = ATTRIBUTES.find(item.Attribute(TagUtf8::TYPE));
            ASSERT_NE(iType, ATTRIBUTES.end()) << Label(item);
            EXPECT_EQ(AttributeNames(item), iType->second) << Label(item);
        }
    }
}

TEST_P(AssetsOf, ExpressionsHaveTheirFourTexts) {
    for (const CXMLView& entity : m_vecExpressions) {
        EXPECT_THAT(NodeNames(Children(entity)),
                    ElementsAre("regularExpression", "alphabetCharset", "patternForDisplay", "examples"))
            << Label(entity);
        const bool bGeneric = entity.Attribute(TagUtf8::TYPE) == "Generic";
        EXPECT_EQ(entity.FirstChild(TagUtf8::ALPHABET_CHARSET).Text().empty(), bGeneric) << Label(entity);
        EXPECT_FALSE(entity.FirstChild(TagUtf8::PATTERN_FOR_DISPLAY).Text().empty()) << Label(entity);
    }
}

TEST_P(AssetsOf, KeywordsAreDistinctAndWeighted) {
    for (const CXMLView& list : m_vecLists) {
        std::set<std::string> setKeywords;
        for (const CXMLView& keyword : Children(list)) {
            const std::string strKeyword = keyword.Text();
            EXPECT_EQ(keyword.Name(), "keyword") << Label(list);
            EXPECT_EQ(AttributeNames(keyword), "description score caseSensitive") << Label(list);
            EXPECT_FALSE(strKeyword.empty()) << Label(list);
            EXPECT_EQ(OS::Trim(std::string_view(strKeyword)), strKeyword) << Label(list);
            EXPECT_TRUE(setKeywords.insert(strKeyword).second) << Label(list) << ": " << strKeyword << " stands twice";
            EXPECT_GE(OS::TextToInt(keyword.Attribute(TagUtf8::SCORE)), 1) << Label(list);
        }
        EXPECT_GE(setKeywords.size(), 2u) << Label(list);
    }
}

TEST_P(AssetsOf, NumbersOfListsCanBeReached) {
    for (const CXMLView& list : m_vecLists) {
        const std::string_view strType = list.Attribute(TagUtf8::TYPE);
        if (strType == "Threshold") {
            const int iThreshold = OS::TextToInt(list.Attribute(TagUtf8::THRESHOLD));
            EXPECT_GE(iThreshold, 2) << Label(list);
            EXPECT_LE(static_cast<std::size_t>(iThreshold), Children(list).size()) << Label(list);
        } else if (strType == "Distance") {
            EXPECT_GE(OS::TextToInt(list.Attribute(TagUtf8::NUMBER)), 1) << Label(list);
        }
    }
}

TEST(DigitalAssetsContent, AreNotThoseOfTheStarterPolicy) {
    const CXMLParser starter = Load(STARTER);
    const CXMLParser assets = Load(ASSETS);
    std::vector<std::string> vecStarter = Names(Children(starter.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS)));
    std::ranges::sort(vecStarter);
    EXPECT_THAT(NodeNames(Children(assets.RootView())), ElementsAre("digitalAssets"));
    for (const std::string& strName : Names(Children(assets.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS)))) {
        EXPECT_FALSE(std::ranges::binary_search(vecStarter, strName)) << strName;
    }
}

class StarterContent : public testing::Test {
  protected:
    CXMLParser m_document = Load(STARTER);
    CXMLView m_root = m_document.RootView();
    CXMLView m_assets = m_root.FirstChild(TagUtf8::DIGITAL_ASSETS);
    std::vector<CXMLView> m_vecTemplates = Children(m_root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES));

    /** The building blocks of all rules of a template. */
    static std::vector<CXMLView> Blocks(const CXMLView& item) {
        std::vector<CXMLView> vecBlocks;
        for (const CXMLView& rule : Children(item)) {
            for (const CXMLView& block : Children(rule)) {
                vecBlocks.push_back(block);
            }
        }
        return vecBlocks;
    }
};

TEST_F(StarterContent, SectionsStandInTheOrderOfAnExport) {
    EXPECT_THAT(NodeNames(Children(m_root)),
                ElementsAre("digitalAssets", "complianceTemplates", "industries", "regions"));
    EXPECT_EQ(m_root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES).Attribute(TagUtf8::COMMAND), "overwrite");
}

TEST_F(StarterContent, HoldsEnoughOfEveryTypeAndCondition) {
    std::map<std::string, int, std::less<>> mapCounts;
    for (const CXMLView& asset : Children(m_assets)) {
        ++mapCounts[std::string(asset.Name())];
        ++mapCounts[std::string(asset.Attribute(TagUtf8::TYPE))];
    }
    EXPECT_GE(mapCounts["entity"], 15);
    EXPECT_GE(mapCounts["dictionary"], 10);
    EXPECT_GE(m_vecTemplates.size(), 12u);
    for (const auto& [strType, strAttributes] : ATTRIBUTES) {
        EXPECT_GE(mapCounts[strType], 2) << strType;
    }
}

TEST_F(StarterContent, TemplatesAreWellNamedAndAscend) {
    ExpectGoodItems(m_vecTemplates);
    for (const CXMLView& item : m_vecTemplates) {
        EXPECT_EQ(item.Name(), "template");
        EXPECT_EQ(AttributeNames(item), "name display_name description pre-defined") << Label(item);
    }
}

TEST_F(StarterContent, RulesAreMadeOfBuildingBlocksAlone) {
    for (const CXMLView& item : m_vecTemplates) {
        EXPECT_FALSE(Children(item).empty()) << Label(item);
        for (const CXMLView& rule : Children(item)) {
            EXPECT_EQ(rule.Name(), "matchRule") << Label(item);
            EXPECT_FALSE(Children(rule).empty()) << Label(item);
        }
        for (const CXMLView& block : Blocks(item)) {
            EXPECT_EQ(block.Name(), "buildingBlock") << Label(item);
            EXPECT_TRUE(Children(block).empty()) << Label(item);
        }
    }
}

namespace {

/** The first carries no operator, the others carry one and the same. */
void ExpectOneOperator(const std::vector<CXMLView>& vecNodes, const std::string& strWhere) {
    std::set<std::string> setOperators;
    for (std::size_t i = 0; i < vecNodes.size(); ++i) {
        EXPECT_EQ(vecNodes[i].HasAttribute(TagUtf8::OPERATION), i > 0) << strWhere;
        if (i > 0) {
            setOperators.emplace(vecNodes[i].Attribute(TagUtf8::OPERATION));
        }
    }
    EXPECT_LE(setOperators.size(), 1u) << strWhere << " mixes operators";
    for (const std::string& strOperator : setOperators) {
        EXPECT_TRUE(strOperator == "AND" || strOperator == "OR") << strWhere << ": " << strOperator;
    }
}

}  // namespace

TEST_F(StarterContent, OperatorsAreNeverMixed) {
    for (const CXMLView& item : m_vecTemplates) {
        ExpectOneOperator(Children(item), Label(item));
        for (const CXMLView& rule : Children(item)) {
            ExpectOneOperator(Children(rule), Label(item));
        }
    }
}

TEST_F(StarterContent, OperatorsOccurBetweenBlocksAndBetweenRules) {
    std::set<std::string> setSeen;
    for (const CXMLView& item : m_vecTemplates) {
        for (const CXMLView& rule : Children(item)) {
            setSeen.insert("rule " + std::string(rule.Attribute(TagUtf8::OPERATION)));
        }
        for (const CXMLView& block : Blocks(item)) {
            setSeen.insert("block " + std::string(block.Attribute(TagUtf8::OPERATION)));
        }
    }
    EXPECT_THAT(setSeen, ElementsAre("block ", "block AND", "block OR", "rule ", "rule AND", "rule OR"));
}

TEST_F(StarterContent, BlocksNameAssetsAndAllAssetsAreNamed) {
    std::set<std::string> setUnused;
    for (const CXMLView& asset : Children(m_assets)) {
        setUnused.insert((asset.Name() == "entity" ? "ENTITY " : "KEYWORD ") + Label(asset));
    }
    const std::set<std::string> setAssets = setUnused;
    for (const CXMLView& item : m_vecTemplates) {
        for (const CXMLView& block : Blocks(item)) {
            const bool bExpression = block.Attribute(TagUtf8::SOURCE_TYPE) == "ENTITY";
            const std::string strAsset = std::string(block.Attribute(TagUtf8::SOURCE_TYPE)) + " " +
                                         std::string(block.Attribute(TagUtf8::SOURCE_NAME));
            EXPECT_TRUE(setAssets.contains(strAsset)) << Label(item) << ": " << strAsset;
            EXPECT_EQ(block.HasAttribute(TagUtf8::ENTITY_HITS), bExpression) << Label(item);
            EXPECT_GE(OS::TextToInt(block.Attribute(TagUtf8::ENTITY_HITS)), bExpression ? 1 : 0) << Label(item);
            EXPECT_TRUE(AttributeNames(block).starts_with(bExpression ? "sourceType entityHits sourceName"
                                                                      : "sourceType sourceName"))
                << Label(item);
            setUnused.erase(strAsset);
        }
    }
    EXPECT_THAT(setUnused, IsEmpty());
}

TEST_F(StarterContent, ValidatorsAreThoseOfThePredefinedPolicy) {
    const CXMLParser policy = Load(POLICY);
    const std::vector<std::string> vecValidators = Names(Children(policy.RootView().FirstChild("validators")));
    for (const std::string& strFile : {STARTER, ASSETS}) {
        const CXMLParser document = Load(strFile);
        for (const CXMLView& entity : Children(document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS), "entity")) {
            const std::string_view strValidator = entity.Attribute(TagUtf8::VALIDATOR);
            EXPECT_TRUE(strValidator.empty() || std::ranges::binary_search(vecValidators, strValidator))
                << Label(entity) << ": " << strValidator;
        }
    }
}

TEST_F(StarterContent, CategoriesAreThoseOfThePredefinedPolicy) {
    const CXMLParser policy = Load(POLICY);
    for (const char* pSection : {TagUtf8::INDUSTRIES, TagUtf8::REGIONS}) {
        std::map<std::string, std::string> mapKnown;
        for (const CXMLView& item : Children(policy.RootView().FirstChild(pSection))) {
            mapKnown[Label(item)] = item.Attribute(TagUtf8::DISPLAY_NAME);
        }
        const std::vector<CXMLView> vecItems = Children(m_root.FirstChild(pSection));
        EXPECT_TRUE(std::ranges::is_sorted(Names(vecItems))) << pSection;
        for (const CXMLView& item : vecItems) {
            EXPECT_EQ(AttributeNames(item), "name display_name") << Label(item);
            ASSERT_TRUE(mapKnown.contains(Label(item))) << Label(item);
            EXPECT_EQ(item.Attribute(TagUtf8::DISPLAY_NAME), mapKnown[Label(item)]);
        }
    }
}

TEST_F(StarterContent, CategoriesListTemplatesInTheirOrderAndLeaveNoneOut) {
    const std::vector<std::string> vecTemplates = Names(m_vecTemplates);
    for (const char* pSection : {TagUtf8::INDUSTRIES, TagUtf8::REGIONS}) {
        std::set<std::string> setListed;
        for (const CXMLView& item : Children(m_root.FirstChild(pSection))) {
            std::vector<std::string> vecListed;
            for (const CXMLView& id : Children(item)) {
                EXPECT_EQ(id.Name(), "template_id") << Label(item);
                vecListed.push_back(id.Text());
            }
            EXPECT_TRUE(std::ranges::is_sorted(vecListed)) << Label(item);
            EXPECT_EQ(std::ranges::adjacent_find(vecListed), vecListed.end()) << Label(item);
            EXPECT_TRUE(std::ranges::includes(vecTemplates, vecListed)) << Label(item);
            setListed.insert(vecListed.begin(), vecListed.end());
        }
        EXPECT_EQ(setListed, std::set<std::string>(vecTemplates.begin(), vecTemplates.end())) << pSection;
    }
}
