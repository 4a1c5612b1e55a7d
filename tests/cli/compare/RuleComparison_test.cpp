#include "cli/compare/RuleComparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "cli/compare/RuleText.h"

namespace {

struct SRule {
    const wchar_t* pOperator;
    const wchar_t* pText;
};

std::vector<SMatchRule> Rules(const std::vector<SRule>& vecTexts) {
    std::vector<SMatchRule> vecRules;
    for (const SRule& rule : vecTexts) {
        vecRules.push_back(ParseMatchRule(rule.pText, rule.pOperator));
    }
    return vecRules;
}

std::string Show(const std::optional<std::vector<SCondition>>& example) {
    std::string strText = example ? "{" : "-";
    for (const SCondition& condition : example.value_or(std::vector<SCondition>())) {
        strText += (strText.size() > 1 ? ", " : "") + FormatCondition(condition);
    }
    return strText + (example ? "}" : "");
}

std::string Show(const SRuleComparison& comparison) {
    return GetRelationName(comparison.eRelation) + (" +" + Show(comparison.gained)) + " -" + Show(comparison.lost);
}

struct SCase {
    std::vector<SRule> vecBefore;
    std::vector<SRule> vecAfter;
    const char* pExpected;
};

const SCase CASES[] = {
    {{{L"", L"P:a(2) AND K:w"}}, {{L"", L"P:a(2) AND K:w"}}, "same +- --"},
    {{{L"AND", L"K:a"}}, {{L"EXCEPT", L"K:a"}}, "same +- --"},
    {{{L"", L"K:a"}, {L"", L"K:b"}}, {{L"", L"K:a"}, {L"AND", L"K:b"}}, "same +- --"},
    {{{L"", L"K:a AND K:b"}}, {{L"", L"K:b AND K:a"}}, "reordered +- --"},
    {{{L"", L"K:a AND K:b"}}, {{L"", L"K:a"}, {L"AND", L"K:b"}}, "reordered +- --"},
    {{{L"", L"K:a"}}, {{L"", L"K:a OR K:a"}}, "reordered +- --"},
    {{{L"", L"K:a EXCEPT K:b EXCEPT K:c"}}, {{L"", L"K:a"}, {L"EXCEPT", L"K:c OR K:b"}}, "reordered +- --"},
    {{{L"", L"K:a"}}, {{L"", L"K:a AND K:b OR K:a"}}, "same +- --"},
    {{{L"", L"K:a"}}, {{L"", L"K:a AND K:b"}}, "stricter +- -{K:a}"},
    {{{L"", L"K:a"}}, {{L"", L"K:a EXCEPT K:b"}}, "stricter +- -{K:a, K:b}"},
    {{{L"", L"K:a AND K:b"}}, {{L"", L"K:a OR K:b"}}, "looser +{K:a} --"},
    {{{L"", L"K:a"}}, {{L"", L"K:b"}}, "different +{K:b} -{K:a}"},
    // From left to right: (a or b) and c, against (b and c) or a.
    {{{L"", L"K:a OR K:b AND K:c"}}, {{L"", L"K:b AND K:c OR K:a"}}, "looser +{K:a} --"},
    {{{L"", L"P:a(2)"}}, {{L"", L"P:a(3)"}}, "stricter +- -{P:a(2)}"},
    {{{L"", L"P:a(3)"}}, {{L"", L"P:a(2)"}}, "looser +{P:a(2)} --"},
    {{{L"", L"P:a(3)"}}, {{L"", L"P:a(3) AND P:a(2)"}}, "same +- --"},
    {{{L"", L"P:a(2)"}}, {{L"", L"P:a(2) EXCEPT P:a(5)"}}, "stricter +- -{P:a(5)}"},
    {{{L"", L"P:a(1)"}}, {{L"", L"K:a"}}, "different +{K:a} -{P:a(1)}"},
    {{{L"", L"P:a(1)"}}, {{L"", L"P:a(0)"}}, "looser +{} --"},
    {{{L"", L"K:w"}}, {{L"", L"K:w AND P:a(0)"}}, "same +- --"},
    {{}, {{L"", L"K:w"}}, "looser +{K:w} --"},
    {{{L"", L"K:w"}}, {}, "stricter +- -{K:w}"},
    {{}, {{L"", L"K:w EXCEPT K:w"}}, "same +- --"},
    {{}, {}, "same +- --"},
};

/** The rules K:0 OR K:1 OR …, joined by that operator in the order given. */
std::vector<SMatchRule> Chain(int iCount, EOperator eOperator, bool bBackwards) {
    SMatchRule rule;
    for (int i = 0; i < iCount; ++i) {
        rule.vecElements.push_back(
            {std::to_wstring(bBackwards ? iCount - 1 - i : i), 0, eOperator, EElementType::KEYWORD});
    }
    return {rule};
}

/** How often each reference occurs: of a keyword list 0 or 1. */
using Content = std::map<std::pair<EElementType, std::wstring>, int>;

bool Holds(const SRuleElement& element, const Content& content) {
    const auto itFound = content.find({element.eType, element.strName});
    const int iOccurs = itFound == content.end() ? 0 : itFound->second;
    return element.eType == EElementType::ENTITY ? iOccurs >= element.iCount : iOccurs > 0;
}

bool Join(bool bLeft, EOperator eOperator, bool bRight) {
    return eOperator == EOperator::OR ? bLeft || bRight : bLeft && bRight != (eOperator == EOperator::EXCEPT);
}

/** Tells straight from the rules' meaning whether they match. */
bool Matches(const std::vector<SMatchRule>& vecRules, const Content& content) {
    bool bAll = false;
    bool bFirstRule = true;
    for (const SMatchRule& rule : vecRules) {
        if (rule.vecElements.empty()) {
            continue;
        }
        bool bRule = Holds(rule.vecElements.front(), content);
        for (std::size_t i = 1; i < rule.vecElements.size(); ++i) {
            bRule = Join(bRule, rule.vecElements[i].eOperator, Holds(rule.vecElements[i], content));
        }
        bAll = bFirstRule ? bRule : Join(bAll, rule.eOperator, bRule);
        bFirstRule = false;
    }
    return bAll;
}

class CRandomRules {
  public:
    explicit CRandomRules(unsigned int iSeed) : m_random(iSeed) {}

    std::vector<SMatchRule> Make() {
        std::vector<SMatchRule> vecRules(Below(4));
        for (SMatchRule& rule : vecRules) {
            rule.eOperator = static_cast<EOperator>(Below(4));
            rule.vecElements.resize(Below(4));
            for (SRuleElement& element : rule.vecElements) {
                element = {Below(2) == 0 ? L"a" : L"b", static_cast<int>(Below(5)) - 1,
                           static_cast<EOperator>(Below(4)), static_cast<EElementType>(Below(3))};
            }
        }
        return vecRules;
    }
    /** The same rules in an order that says the same, if there is one other than theirs. */
    std::vector<SMatchRule> Shuffle(std::vector<SMatchRule> vecRules) {
        for (SMatchRule& rule : vecRules) {
            for (SRuleElement& element : rule.vecElements) {
                element.eOperator = EOperator::OR;
            }
            rule.eOperator = EOperator::AND;
            std::shuffle(rule.vecElements.begin(), rule.vecElements.end(), m_random);
        }
        std::shuffle(vecRules.begin(), vecRules.end(), m_random);
        return vecRules;
    }

  private:
    std::size_t Below(std::size_t iEnd) { return std::uniform_int_distribution<std::size_t>(0, iEnd - 1)(m_random); }

    std::mt19937 m_random;
};

/** Every content that any of the random rules can tell from another. */
std::vector<Content> AllContents() {
    std::vector<Content> vecContents;
    for (int i = 0; i < 4 * 4 * 2 * 2 * 2 * 2; ++i) {
        vecContents.push_back({{{EElementType::ENTITY, L"a"}, i & 3},
                               {{EElementType::ENTITY, L"b"}, i >> 2 & 3},
                               {{EElementType::KEYWORD, L"a"}, i >> 4 & 1},
                               {{EElementType::KEYWORD, L"b"}, i >> 5 & 1},
                               {{EElementType::UNKNOWN, L"a"}, i >> 6 & 1},
                               {{EElementType::UNKNOWN, L"b"}, i >> 7 & 1}});
    }
    return vecContents;
}

Content ToContent(const std::vector<SCondition>& vecHeld) {
    Content content;
    for (const SCondition& condition : vecHeld) {
        content[{condition.eType, condition.strName}] = condition.eType == EElementType::ENTITY ? condition.iCount : 1;
    }
    return content;
}

ERelation Judge(bool bGained, bool bLost) {
    return bGained ? bLost ? ERelation::DIFFERENT : ERelation::LOOSER : bLost ? ERelation::STRICTER : ERelation::SAME;
}

}  // namespace

TEST(RuleComparison, RelationsComeWithExamples) {
    for (const SCase& pair : CASES) {
        EXPECT_EQ(Show(CompareRules(Rules(pair.vecBefore), Rules(pair.vecAfter))), pair.pExpected);
    }
}

TEST(RuleComparison, RulesWithoutElementsSayNothing) {
    const SMatchRule empty{{}, EOperator::EXCEPT};
    std::vector<SMatchRule> vecRules = Rules({{L"", L"K:a"}, {L"OR", L"K:b"}});
    const std::vector<SMatchRule> vecWith{empty, vecRules[0], empty, vecRules[1], empty};
    EXPECT_EQ(Show(CompareRules(vecRules, vecWith)), "same +- --");
    EXPECT_EQ(Show(CompareRules({}, {empty})), "same +- --");
}

TEST(RuleComparison, HitsOfAKeywordListSayNothing) {
    const SMatchRule one{{{L"w", 1, EOperator::UNKNOWN, EElementType::KEYWORD}}, EOperator::UNKNOWN};
    const SMatchRule two{{{L"w", 2, EOperator::UNKNOWN, EElementType::KEYWORD}}, EOperator::UNKNOWN};
    EXPECT_EQ(Show(CompareRules({one}, {two})), "same +- --");
}

TEST(RuleComparison, SixteenConditionsAreTriedOut) {
    const auto fnCompare = [](int iCount) {
        std::vector<SMatchRule> vecAfter = Chain(iCount, EOperator::AND, false);
        vecAfter.front().vecElements.back().eOperator = EOperator::OR;
        return GetRelationName(CompareRules(Chain(iCount, EOperator::AND, false), vecAfter).eRelation);
    };
    EXPECT_STREQ(fnCompare(16), "looser");
    EXPECT_STREQ(fnCompare(17), "unknown");
}

TEST(RuleComparison, OrderIsSeenThroughHoweverManyConditionsThereAre) {
    EXPECT_EQ(Show(CompareRules(Chain(20000, EOperator::OR, false), Chain(20000, EOperator::OR, true))),
              "reordered +- --");
    EXPECT_EQ(Show(CompareRules(Chain(20000, EOperator::OR, false), Chain(20000, EOperator::OR, false))), "same +- --");
}

TEST(RuleComparison, AgreesWithTryingEveryContent) {
    const std::vector<Content> vecContents = AllContents();
    CRandomRules random(1);
    std::map<ERelation, int> mapSeen;
    for (int i = 0; i < 4000; ++i) {
        const std::vector<SMatchRule> vecBefore = random.Make();
        const std::vector<SMatchRule> vecAfter = random.Make();
        const auto fnAny = [&](const std::vector<SMatchRule>& vecMatch, const std::vector<SMatchRule>& vecMiss) {
            return std::any_of(vecContents.begin(), vecContents.end(), [&](const Content& content) {
                return Matches(vecMatch, content) && !Matches(vecMiss, content);
            });
        };
        const SRuleComparison comparison = CompareRules(vecBefore, vecAfter);
        const ERelation eFound = comparison.eRelation == ERelation::REORDERED ? ERelation::SAME : comparison.eRelation;
        ASSERT_EQ(eFound, Judge(fnAny(vecAfter, vecBefore), fnAny(vecBefore, vecAfter))) << i;
        if (comparison.gained) {
            const Content content = ToContent(*comparison.gained);
            ASSERT_TRUE(Matches(vecAfter, content) && !Matches(vecBefore, content)) << i;
        }
        if (comparison.lost) {
            const Content content = ToContent(*comparison.lost);
            ASSERT_TRUE(Matches(vecBefore, content) && !Matches(vecAfter, content)) << i;
        }
        ++mapSeen[comparison.eRelation];
    }
    for (const ERelation eRelation : {ERelation::SAME, ERelation::STRICTER, ERelation::LOOSER, ERelation::DIFFERENT}) {
        EXPECT_GT(mapSeen[eRelation], 50) << GetRelationName(eRelation);
    }
}

TEST(RuleComparison, ShuffledRulesAreNeverMoreThanReordered) {
    CRandomRules random(2);
    int iReordered = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::vector<SMatchRule> vecRules = random.Shuffle(random.Make());
        const ERelation eRelation = CompareRules(vecRules, random.Shuffle(vecRules)).eRelation;
        ASSERT_TRUE(eRelation == ERelation::SAME || eRelation == ERelation::REORDERED) << i;
        iReordered += eRelation == ERelation::REORDERED ? 1 : 0;
    }
    EXPECT_GT(iReordered, 100);
}
