// The expressions of the example policies: they compile, match their examples, keep their bounds and never run away.

#include <memory>

#include <gtest/gtest.h>
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "platform/common/TextTools.h"
#include "tests/content/Checksums.h"
#include "tests/content/PolicyContent.h"

using namespace Content;

namespace {

/** A compiled expression. */
class CPattern {
  public:
    CPattern(const std::string& strPattern, bool bCaseSensitive) {
        const std::uint32_t iOptions = PCRE2_UTF | (bCaseSensitive ? 0u : PCRE2_CASELESS);
        PCRE2_SIZE iOffset = 0;
        int iError = 0;
        m_pCode.reset(pcre2_compile(Bytes(strPattern), strPattern.size(), iOptions, &iError, &iOffset, nullptr));
        if (m_pCode == nullptr) {
            throw std::runtime_error(strPattern + ": error " + std::to_string(iError) + " at " +
                                     std::to_string(iOffset));
        }
        m_pMatch.reset(pcre2_match_data_create_from_pattern(m_pCode.get(), nullptr));
        pcre2_set_match_limit(m_pContext.get(), MATCH_LIMIT);
    }

    /** @return what the first match covers; empty when there is none */
    std::string_view Search(std::string_view strText) const {
        m_iResult = pcre2_match(m_pCode.get(), Bytes(strText), strText.size(), 0, 0, m_pMatch.get(), m_pContext.get());
        if (m_iResult < 0) {
            return {};
        }
        const PCRE2_SIZE* pBounds = pcre2_get_ovector_pointer(m_pMatch.get());
        return strText.substr(pBounds[0], pBounds[1] - pBounds[0]);
    }

    /** @return whether the last search gave up at the limit */
    bool RanAway() const { return m_iResult < 0 && m_iResult != PCRE2_ERROR_NOMATCH; }

  private:
    /** Steps allowed from each place at which a match may begin. */
    static constexpr std::uint32_t MATCH_LIMIT = 20000;

    static PCRE2_SPTR Bytes(std::string_view strText) { return reinterpret_cast<PCRE2_SPTR>(strText.data()); }

    template <auto FREE>
    struct SFree {
        template <class T>
        void operator()(T* pObject) const {
            FREE(pObject);
        }
    };

    std::unique_ptr<pcre2_code, SFree<pcre2_code_free>> m_pCode;
    std::unique_ptr<pcre2_match_data, SFree<pcre2_match_data_free>> m_pMatch;
    std::unique_ptr<pcre2_match_context, SFree<pcre2_match_context_free>> m_pContext{
        pcre2_match_context_create(nullptr)};
    mutable int m_iResult = 0;
};

struct SExpression {
    CXMLView entity;
    std::string strName;
    std::string strType;
    CPattern pattern;

    int Number(const char* pAttribute) const { return OS::TextToInt(entity.Attribute(pAttribute)); }
};

}  // namespace

class ExpressionsOf : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        for (const CXMLView& entity :
             Children(m_document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS), TagUtf8::ENTITY)) {
            m_vecExpressions.push_back({entity, std::string(entity.Attribute(TagUtf8::NAME)),
                                        std::string(entity.Attribute(TagUtf8::TYPE)),
                                        CPattern(entity.FirstChild(TagUtf8::REGULAR_EXPRESSION).Text(),
                                                 entity.Attribute(TagUtf8::CASE_SENSITIVE) == "true")});
        }
    }

    CXMLParser m_document = Load(GetParam());
    std::vector<SExpression> m_vecExpressions;
};

INSTANTIATE_TEST_SUITE_P(Content, ExpressionsOf, testing::Values(STARTER, ASSETS),
                         [](const auto& file) { return file.param == STARTER ? "Starter" : "DigitalAssets"; });

TEST_P(ExpressionsOf, MatchTheWholeOfEachExample) {
    for (const SExpression& expression : m_vecExpressions) {
        for (const std::string& strExample : Examples(expression.entity)) {
            EXPECT_EQ(expression.pattern.Search(strExample), strExample) << expression.strName;
            EXPECT_EQ(expression.pattern.Search("see:\n" + strExample + "\nthere"), strExample) << expression.strName;
        }
    }
}

TEST_P(ExpressionsOf, ExamplesPassTheirValidator) {
    for (const SExpression& expression : m_vecExpressions) {
        const std::string_view strValidator = expression.entity.Attribute(TagUtf8::VALIDATOR);
        if (strValidator.empty()) {
            continue;
        }
        const Checksums::SCheck* pCheck = Checksums::Find(strValidator);
        ASSERT_NE(pCheck, nullptr) << strValidator;
        for (const std::string& strExample : Examples(expression.entity)) {
            EXPECT_TRUE(pCheck->fnPasses(Checksums::Compact(strExample))) << expression.strName << ": " << strExample;
        }
    }
}

TEST_P(ExpressionsOf, ExamplesWithAnotherLastCharacterFailTheirValidator) {
    for (const SExpression& expression : m_vecExpressions) {
        const Checksums::SCheck* pCheck = Checksums::Find(expression.entity.Attribute(TagUtf8::VALIDATOR));
        if (pCheck == nullptr || expression.strName == "vin") {  // its check digit weighs the other places, some alike
            continue;
        }
        for (const std::string& strExample : Examples(expression.entity)) {
            std::string strOther = Checksums::Compact(strExample);
            strOther.back() = strOther.back() == '7' ? '8' : '7';
            EXPECT_FALSE(pCheck->fnPasses(strOther)) << expression.strName << ": " << strOther;
        }
    }
}

TEST_P(ExpressionsOf, ExamplesKeepToCharactersAndLength) {
    for (const SExpression& expression : m_vecExpressions) {
        if (expression.strType == "Generic") {
            continue;
        }
        const std::string strCharset = expression.entity.FirstChild(TagUtf8::ALPHABET_CHARSET).Text();
        for (const std::string& strExample : Examples(expression.entity)) {
            EXPECT_EQ(strExample.find_first_not_of(strCharset), std::string::npos)
                << expression.strName << ": " << strExample;
            if (expression.strType != "Type 3") {
                EXPECT_GE(static_cast<int>(strExample.size()), expression.Number(TagUtf8::MIN_LENGTH)) << strExample;
                EXPECT_LE(static_cast<int>(strExample.size()), expression.Number(TagUtf8::MAX_LENGTH)) << strExample;
            }
        }
    }
}

TEST_P(ExpressionsOf, BoundsAreInOrder) {
    for (const SExpression& expression : m_vecExpressions) {
        if (expression.strType == "Type 1" || expression.strType == "Type 2") {
            EXPECT_GE(expression.Number(TagUtf8::MIN_LENGTH), 1) << expression.strName;
            EXPECT_LE(expression.Number(TagUtf8::MIN_LENGTH), expression.Number(TagUtf8::MAX_LENGTH))
                << expression.strName;
        }
        if (expression.strType == "Type 2") {
            EXPECT_GE(expression.Number(TagUtf8::SUFFIX_LENGTH), 1) << expression.strName;
            EXPECT_LT(expression.Number(TagUtf8::SUFFIX_LENGTH), expression.Number(TagUtf8::MIN_LENGTH))
                << expression.strName;
        }
        if (expression.strType == "Type 3") {
            EXPECT_GE(expression.Number(TagUtf8::MIN_LEFT_RADIUS), 1) << expression.strName;
            EXPECT_LE(expression.Number(TagUtf8::MIN_LEFT_RADIUS), expression.Number(TagUtf8::MAX_LEFT_RADIUS))
                << expression.strName;
            EXPECT_GE(expression.Number(TagUtf8::MAX_RIGHT_RADIUS), 1) << expression.strName;
        }
    }
}

TEST_P(ExpressionsOf, ExamplesKeepToRadiiAroundTheirAnchor) {
    for (const SExpression& expression : m_vecExpressions) {
        if (expression.strType != "Type 3") {
            continue;
        }
        const char* pAnchor = expression.strName == "password-assignment" ? ":=" : "@";
        for (const std::string& strExample : Examples(expression.entity)) {
            const std::size_t iAnchor = strExample.find_first_of(pAnchor);
            ASSERT_NE(iAnchor, std::string::npos) << strExample;
            const int iLeft = static_cast<int>(iAnchor);
            EXPECT_GE(iLeft, expression.Number(TagUtf8::MIN_LEFT_RADIUS)) << strExample;
            EXPECT_LE(iLeft, expression.Number(TagUtf8::MAX_LEFT_RADIUS)) << strExample;
            EXPECT_LE(static_cast<int>(strExample.size()) - iLeft - 1, expression.Number(TagUtf8::MAX_RIGHT_RADIUS))
                << strExample;
        }
    }
}

TEST_P(ExpressionsOf, AreSearchedInFewStepsFromEveryPlace) {
    std::vector<std::string> vecUnits = {"1",    "1 ",      "12-",     "A",       "A1",     "a",        "a.",  "<",
                                         "a@",   "x://",    "x://a:",  "-",       "= ",     "\"",       " \t", "\n\t",
                                         "eyJ",  "secret=", "select ", "static ", "#if ",   "%B1",      "^",   "1.",
                                         "10.1", "+1 ",     "Bearer ", "BEGIN ",  "\u00e9", "a b from "};
    for (const SExpression& expression : m_vecExpressions) {
        for (const std::string& strExample : Examples(expression.entity)) {
            vecUnits.push_back(strExample.substr(0, strExample.size() - 1));
        }
    }
    for (const std::string& strUnit : vecUnits) {
        std::string strText;
        while (strText.size() < 4000) {
            strText += strUnit;
        }
        for (const SExpression& expression : m_vecExpressions) {
            for (const char* pTail : {"", "!", "_"}) {
                expression.pattern.Search(strText + pTail);
                EXPECT_FALSE(expression.pattern.RanAway()) << expression.strName << " over many of " << strUnit;
            }
        }
    }
}

TEST(ExpressionSteps, AreSeenToRunAway) {
    const CPattern pattern(R"(\b(?:[A-Z]+)+\b)", true);
    EXPECT_EQ(pattern.Search(std::string(4000, 'A') + "_"), "");
    EXPECT_TRUE(pattern.RanAway());
}

namespace {

struct SNearMiss {
    const char* pName;
    const char* pText;
};

}  // namespace

/** Texts that look alike and are none: each would be a false alarm in use. */
TEST(StarterContentExpressions, PassOverWhatOnlyLooksAlike) {
    const CXMLParser document = Load(STARTER);
    constexpr SNearMiss MISSES[] = {
        {"aba-routing-number", "999999999"},
        {"aba-routing-number", "1123456780"},
        {"bic", "PASSWORD1"},
        {"br-cpf", "111.444.777.35"},
        {"email-address", "jane.doe at example.com"},
        {"email-address", "user@localhost"},
        {"es-dni-nie", "12345678I"},
        {"http-credentials", "Authorization: Digest username"},
        {"iban", "GB29 NWBK"},
        {"icd-10-code", "E11"},
        {"in-aadhaar", "1999 4105 7058"},
        {"international-phone-number", "+0 20 7946 0958"},
        {"iso-8601-date", "2024-13-01"},
        {"json-web-token", "eyJhbGciOiJub25lIn0"},
        {"passport-mrz", "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<"},
        {"password-assignment", "password = short"},
        {"payment-card-number", "1234 5678 9012 3456"},
        {"payment-card-number", "41111111111111111111"},
        {"private-ip-address", "172.32.0.1"},
        {"private-ip-address", "10.0.0.1.5"},
        {"private-key-header", "-----BEGIN PUBLIC KEY-----"},
        {"source-code-declaration", "the class of 2024"},
        {"source-code-directive", "# include your name"},
        {"source-code-sql", "please select one of these"},
        {"url-with-password", "https://user@host.example/"},
        {"us-npi", "3234567893"},
        {"us-social-security-number", "000-12-3456"},
        {"us-social-security-number", "987-65-4321"},
        {"us-social-security-number", "219-099999"},
        {"vin", "1M8GDM9AXKP04278O"},
    };
    for (const SNearMiss& miss : MISSES) {
        bool bFound = false;
        for (const CXMLView& entity :
             Children(document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS), TagUtf8::ENTITY)) {
            if (entity.Attribute(TagUtf8::NAME) == miss.pName) {
                bFound = true;
                const CPattern pattern(entity.FirstChild(TagUtf8::REGULAR_EXPRESSION).Text(),
                                       entity.Attribute(TagUtf8::CASE_SENSITIVE) == "true");
                EXPECT_EQ(pattern.Search(miss.pText), "") << miss.pName;
            }
        }
        EXPECT_TRUE(bFound) << miss.pName;
    }
}
