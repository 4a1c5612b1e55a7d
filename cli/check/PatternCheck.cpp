#include <optional>
#include <string>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/check/PatternProbe.h"
#include "cli/check/PatternSample.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextHash.h"

namespace {

/** For one document, enough for some thousands of patterns: trying any number would take longer than anybody waits. */
constexpr std::size_t MAX_EFFORT = 80000;

constexpr const char CORRECT_HERE[] = "correct it here or shortly before this place";
constexpr const char MATCH_FIRST[] = "let it match something before it calls itself";
constexpr const char RECURSES[] = "it calls itself again at the same place, without end";

/** @return all that says what an expression finds, however it is written */
std::string MakeMeaning(const CXMLView& element) {
    const DigitalAssets::SAssetFormat& format = DigitalAssets::EXPRESSION_FORMAT;
    CSettingsRow row(ESettingsKind::EXPRESSION);
    DigitalAssets::ReadElement(format, element, row);
    std::string strMeaning = row.GetFlag(ExpressionColumn::CASE_SENSITIVE) ? "1" : "0";
    for (const std::size_t iColumn : {ExpressionColumn::TYPE, ExpressionColumn::VALIDATOR, ExpressionColumn::PATTERN,
                                      ExpressionColumn::ALPHABET_CHARSET}) {
        strMeaning += '\0' + row.GetText(iColumn);
    }
    for (const DigitalAssets::SType& type : format.aTypes) {
        for (const DigitalAssets::SNumber& number : type.aNumbers) {
            strMeaning += '\0' + std::to_string(row.GetNumber(number.iColumn));
        }
    }
    return strMeaning;
}

class CPatternCheck {
  public:
    explicit CPatternCheck(const SCheckedDocument& document) : m_document(document) {}

    void Check(const CXMLView& node) {
        const std::string strPattern = node.Text();
        const CPatternProbe probe(strPattern);
        const auto fnPlace = [&](std::size_t iByte) {
            return FindTextOffset(m_document.strText, node.Offset(), iByte);
        };
        if (probe.GetRefusal()) {
            m_document.diagnostics.Add(ECode::PATTERN_REFUSED, fnPlace(probe.GetRefusal()->iByte),
                                       {probe.GetRefusal()->strWhy}, {CORRECT_HERE});
            return;
        }
        const EShortTrial eTrial = probe.TryShortTexts();
        if (eTrial == EShortTrial::RECURSES_FOREVER) {
            m_document.diagnostics.Add(ECode::PATTERN_REFUSED, fnPlace(FindPatternCall(strPattern)), {RECURSES},
                                       {MATCH_FIRST});
        } else if (eTrial == EShortTrial::MATCHES_EMPTY) {
            m_document.diagnostics.Add(ECode::PATTERN_EMPTY, fnPlace(0));
        }
        const std::optional<std::size_t> characters = FindRunaway(strPattern, probe);
        if (!characters) {
            m_iUntried += 1;
            m_firstUntried = m_firstUntried ? m_firstUntried : node;
        } else if (*characters != 0) {
            m_document.diagnostics.Add(ECode::PATTERN_BACKTRACKS, fnPlace(0),
                                       {std::to_string(CPatternProbe::MAX_STEPS), std::to_string(*characters)});
        }
    }

    /** Two of one name are one expression, as is told elsewhere. */
    void CheckSame(const CXMLView& element) {
        const auto [itFirst, bNew] = m_mapFirst.try_emplace(MakeMeaning(element), element);
        const std::string_view strName = element.Attribute(TagUtf8::NAME);
        const std::string_view strFirst = itFirst->second.Attribute(TagUtf8::NAME);
        if (!bNew && strName != strFirst && m_document.diagnostics.Count(ECode::SAME_PATTERN, element.Offset())) {
            m_document.diagnostics.Relate(
                m_document.diagnostics.Tell(ECode::SAME_PATTERN, element.Offset(),
                                            {Text::Quoted(strFirst), Text::Quoted(strName)}, {}),
                itFirst->second.Offset(), "the other one is here");
        }
    }

    void Finish() const {
        if (m_iUntried != 0) {
            m_document.diagnostics.Add(ECode::PATTERN_UNTRIED,
                                       FindTextOffset(m_document.strText, m_firstUntried.Offset(), 0),
                                       {Text::Counted(m_iUntried, "pattern was", "patterns were")});
        }
    }

  private:
    /** The same pattern is tried once. */
    std::optional<std::size_t> FindRunaway(const std::string& strPattern, const CPatternProbe& probe) {
        const auto [itTried, bNew] = m_mapTried.try_emplace(strPattern);
        if (bNew) {
            itTried->second = probe.FindRunaway(m_iEffort);
        }
        return itTried->second;
    }

    const SCheckedDocument& m_document;
    std::size_t m_iEffort = MAX_EFFORT;
    OS::TextMap<std::string, std::optional<std::size_t>> m_mapTried;
    OS::TextMap<std::string, CXMLView> m_mapFirst;  ///< the first expression of each meaning
    std::size_t m_iUntried = 0;
    CXMLView m_firstUntried;
};

}  // namespace

void CheckPatterns(const SCheckedDocument& document) {
    CPatternCheck check(document);
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, [&](const CXMLView& element) {
        if (const CXMLView node = element.FirstChild(TagUtf8::REGULAR_EXPRESSION)) {
            check.Check(node);
            check.CheckSame(element);
        }
    });
    check.Finish();
}
