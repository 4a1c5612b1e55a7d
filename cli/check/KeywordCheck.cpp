#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char THRESHOLD_TYPE[] = "Threshold";
constexpr const char DISTANCE_TYPE[] = "Distance";

std::string Fold(std::string strText) {
    std::transform(strText.begin(), strText.end(), strText.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return strText;
}

/** The keywords of one list that were met so far. */
class CKeywords {
  public:
    /** @return the offset of one that is the same; npos, with this one added, when there is none */
    std::size_t FindOrAdd(const std::string& strKeyword, bool bCaseSensitive, std::size_t iOffset) {
        const auto [itFolded, bNewFolded] =
            m_mapFolded.try_emplace(Fold(strKeyword), SFolded{iOffset, !bCaseSensitive});
        const auto [itExact, bNewExact] = m_mapExact.try_emplace(strKeyword, iOffset);
        SFolded& folded = itFolded->second;
        const bool bOther = bNewFolded || (bCaseSensitive && !folded.bAnyCase && bNewExact);
        folded.bAnyCase = folded.bAnyCase || !bCaseSensitive;
        return bOther ? std::string::npos : bNewExact ? folded.iOffset : itExact->second;
    }

  private:
    /** The first keyword of these letters, and whether one of them is found in any case. */
    struct SFolded {
        std::size_t iOffset;
        bool bAnyCase;
    };

    std::unordered_map<std::string, SFolded> m_mapFolded;
    std::unordered_map<std::string, std::size_t> m_mapExact;
};

/** What the keywords of a list come to. */
struct SSum {
    std::int64_t iKeywords = 0;
    std::int64_t iScores = 0;  ///< without those below 0
    bool bEveryScore = true;   ///< none is missing
};

SSum CheckEach(const SCheckedDocument& document, const CXMLView& list) {
    CKeywords keywords;
    SSum sum;
    for (CXMLView node = list.FirstChild(TagUtf8::KEYWORD); node; node = node.NextSibling(TagUtf8::KEYWORD)) {
        const std::string strKeyword = node.Text();
        ++sum.iKeywords;
        sum.iScores += std::max(0, OS::TextToInt(node.Attribute(TagUtf8::SCORE)));
        sum.bEveryScore = sum.bEveryScore && node.HasAttribute(TagUtf8::SCORE);
        if (OS::Trim(std::string_view(strKeyword)).empty()) {
            document.diagnostics.Add(ECode::KEYWORD_BLANK, node.Offset());
            continue;
        }
        const bool bCaseSensitive = OS::EqualsNoCase(node.Attribute(TagUtf8::CASE_SENSITIVE), Value::TRUE_TEXT);
        const std::size_t iSame = keywords.FindOrAdd(strKeyword, bCaseSensitive, node.Offset());
        if (iSame != std::string::npos) {
            document.diagnostics.Relate(
                document.diagnostics.Add(ECode::KEYWORD_TWICE, node.Offset(), {Text::Quoted(strKeyword)}), iSame,
                "the first one is here");
        }
    }
    return sum;
}

/** Counted is what is more, the number of keywords or the sum of what they count. */
void CheckThreshold(const SCheckedDocument& document, const CXMLView& list, const SSum& sum) {
    const std::int64_t iTogether = std::max(sum.iKeywords, sum.iScores);
    const int iThreshold = OS::TextToInt(list.Attribute(TagUtf8::THRESHOLD));
    if (iThreshold > iTogether) {
        document.diagnostics.Add(ECode::THRESHOLD_UNREACHABLE, document.Find(list, TagUtf8::THRESHOLD).iName,
                                 {std::to_string(iThreshold), std::to_string(iTogether)});
    }
    if (sum.iScores == 0 && sum.bEveryScore) {
        document.diagnostics.Add(ECode::SCORES_ZERO, list.Offset());
    }
}

}  // namespace

void CheckKeywords(const SCheckedDocument& document) {
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::DICTIONARY, [&](const CXMLView& list) {
        if (!list.FirstChild(TagUtf8::KEYWORD)) {
            document.diagnostics.Add(ECode::LIST_EMPTY, list.Offset(), {Text::Quoted(list.Attribute(TagUtf8::NAME))});
            return;
        }
        const SSum sum = CheckEach(document, list);
        const std::string_view strType = list.Attribute(TagUtf8::TYPE);
        if (OS::EqualsNoCase(strType, THRESHOLD_TYPE)) {
            CheckThreshold(document, list, sum);
        } else if (OS::EqualsNoCase(strType, DISTANCE_TYPE) && sum.iKeywords == 1) {
            document.diagnostics.Add(ECode::DISTANCE_OF_ONE, list.Offset());
        }
    });
}
