#include <string>

#include "cli/check/CheckedDocument.h"
#include "cli/check/PatternProbe.h"

namespace {

/** For one document, enough for some thousands of patterns: trying any number would take longer than anybody waits. */
constexpr std::size_t MAX_EFFORT = 60000;

void CheckPattern(const SCheckedDocument& document, const CXMLView& node, std::size_t& iEffort) {
    const std::string strPattern = node.Text();
    const CPatternProbe probe(strPattern);
    const auto fnPlace = [&](std::size_t iByte) { return FindTextOffset(document.strText, node.Offset(), iByte); };
    if (probe.GetRefusal()) {
        document.diagnostics.Add(ECode::PATTERN_REFUSED, fnPlace(probe.GetRefusal()->iByte),
                                 {probe.GetRefusal()->strWhy});
        return;
    }
    if (probe.MatchesEmpty()) {
        document.diagnostics.Add(ECode::PATTERN_EMPTY, fnPlace(0));
    }
    if (const std::size_t iCharacters = probe.FindRunaway(iEffort)) {
        document.diagnostics.Add(ECode::PATTERN_BACKTRACKS, fnPlace(0),
                                 {std::to_string(CPatternProbe::MAX_STEPS), std::to_string(iCharacters)});
    }
}

}  // namespace

void CheckPatterns(const SCheckedDocument& document) {
    std::size_t iEffort = MAX_EFFORT;
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, [&](const CXMLView& element) {
        if (const CXMLView node = element.FirstChild(TagUtf8::REGULAR_EXPRESSION)) {
            CheckPattern(document, node, iEffort);
        }
    });
}
