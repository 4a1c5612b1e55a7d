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

/** The keywords of one list that were met so far, those of equal letters together. */
class CKeywords {
  public:
    struct SSeen {
        std::string strKeyword;
        bool bCaseSensitive;
        std::size_t iOffset;
    };

    /** @return one that is the same; null, with this one added, when there is none */
    const SSeen* FindOrAdd(SSeen&& keyword) {
        const auto [itFirst, itEnd] = m_mapSeen.equal_range(Fold(keyword.strKeyword));
        for (auto itSeen = itFirst; itSeen != itEnd; ++itSeen) {
            const SSeen& seen = itSeen->second;
            if (!seen.bCaseSensitive || !keyword.bCaseSensitive || seen.strKeyword == keyword.strKeyword) {
                return &seen;
            }
        }
        std::string strFolded = Fold(keyword.strKeyword);
        m_mapSeen.emplace(std::move(strFolded), std::move(keyword));
        return nullptr;
    }

  private:
    std::unordered_multimap<std::string, SSeen> m_mapSeen;
};

/** @return how many keywords, or the sum of what they count if that is more */
std::int64_t CheckEach(const SCheckedDocument& document, const CXMLView& list) {
    CKeywords keywords;
    std::int64_t iKeywords = 0;
    std::int64_t iScores = 0;
    for (CXMLView node = list.FirstChild(TagUtf8::KEYWORD); node; node = node.NextSibling(TagUtf8::KEYWORD)) {
        std::string strKeyword = node.Text();
        ++iKeywords;
        iScores += std::max(0, OS::TextToInt(node.Attribute(TagUtf8::SCORE)));
        if (OS::Trim(std::string_view(strKeyword)).empty()) {
            document.diagnostics.Add(ECode::KEYWORD_BLANK, node.Offset());
            continue;
        }
        const std::string strShown = Text::Quoted(strKeyword);
        const bool bCaseSensitive = OS::EqualsNoCase(node.Attribute(TagUtf8::CASE_SENSITIVE), Value::TRUE_TEXT);
        if (const CKeywords::SSeen* pSeen =
                keywords.FindOrAdd({std::move(strKeyword), bCaseSensitive, node.Offset()})) {
            document.diagnostics.Relate(document.diagnostics.Add(ECode::KEYWORD_TWICE, node.Offset(), {strShown}),
                                        pSeen->iOffset, "the first one is here");
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
