#include <optional>
#include <string>
#include <unordered_map>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/check/PatternProbe.h"

namespace {

/** For one document, enough for some thousands of patterns: trying any number would take longer than anybody waits. */
constexpr std::size_t MAX_EFFORT = 80000;

constexpr const char RECURSES[] = "it calls itself again at the same place, without end";

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
                                       {probe.GetRefusal()->strWhy});
            return;
        }
        const EShortTrial eTrial = probe.TryShortTexts();
        if (eTrial == EShortTrial::RECURSES_FOREVER) {
            m_document.diagnostics.Add(ECode::PATTERN_REFUSED, fnPlace(0), {RECURSES});
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
    std::unordered_map<std::string, std::optional<std::size_t>> m_mapTried;
    std::size_t m_iUntried = 0;
    CXMLView m_firstUntried;
};

}  // namespace

void CheckPatterns(const SCheckedDocument& document) {
    CPatternCheck check(document);
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, [&](const CXMLView& element) {
        if (const CXMLView node = element.FirstChild(TagUtf8::REGULAR_EXPRESSION)) {
            check.Check(node);
        }
    });
    check.Finish();
}
