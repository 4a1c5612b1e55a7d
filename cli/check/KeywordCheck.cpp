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

/** @return how many keywords, or the sum of what they count if that is more */
std::int64_t CheckEach(const SCheckedDocument& document, const CXMLView& list) {
    CKeywords keywords;
    std::int64_t iKeywords = 0;
    std::int64_t iScores = 0;
    for (CXMLView node = list.FirstChild(TagUtf8::KEYWORD); node; node = node.NextSibling(TagUtf8::KEYWORD)) {
        const std::string strKeyword = node.Text();
        ++iKeywords;
        iScores += std::max(0, OS::TextToInt(node.Attribute(TagUtf8::SCORE)));
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
    return std::max(iKeywords, iScores);
}

}  // namespace

void CheckKeywords(const SCheckedDocument& document) {
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::DICTIONARY, [&](const CXMLView& list) {
        if (!list.FirstChild(TagUtf8::KEYWORD)) {
            document.diagnostics.Add(ECode::LIST_EMPTY, list.Offset(), {Text::Quoted(list.Attribute(TagUtf8::NAME))});
            return;
        }
        const std::int64_t iTogether = CheckEach(document, list);
        const int iThreshold = OS::TextToInt(list.Attribute(TagUtf8::THRESHOLD));
        if (OS::EqualsNoCase(list.Attribute(TagUtf8::TYPE), THRESHOLD_TYPE) && iThreshold > iTogether) {
            document.diagnostics.Add(ECode::THRESHOLD_UNREACHABLE, document.Find(list, TagUtf8::THRESHOLD).iName,
                                     {std::to_string(iThreshold), std::to_string(iTogether)});
        }
    });
}
