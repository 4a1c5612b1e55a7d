#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CTextIndex.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char THRESHOLD_TYPE[] = "Threshold";
constexpr const char DISTANCE_TYPE[] = "Distance";

char Fold(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Fold(std::string_view strText) {
    std::string strFolded(strText);
    std::transform(strFolded.begin(), strFolded.end(), strFolded.begin(), [](char c) { return Fold(c); });
    return strFolded;
}

/** The keywords of one list that were met so far, each text once. */
class CKeywords {
  public:
    /** @return the offset of one that is the same; npos, with this one added, when there is none */
    std::size_t FindOrAdd(std::string_view strKeyword, bool bCaseSensitive, std::size_t iOffset) {
        const auto iNew = static_cast<Number>(m_vecKeywords.size());
        Number& iExact = m_exact.Find(strKeyword, [&](Number i) { return GetText(m_vecKeywords[i]) == strKeyword; });
        Number& iFolded = m_folded.Find(Fold(strKeyword), [&](Number i) {
            const std::string_view strText = GetText(m_vecKeywords[i]);
            return std::equal(strText.begin(), strText.end(), strKeyword.begin(), strKeyword.end(),
                              [](char c1, char c2) { return Fold(c1) == Fold(c2); });
        });
        const bool bNewExact = iExact == CTextIndex::NONE;
        const bool bNewFolded = iFolded == CTextIndex::NONE;
        if (bNewExact) {
            m_vecKeywords.push_back({m_strTexts.size(), strKeyword.size(), iOffset, false});
            m_strTexts += strKeyword;
            iExact = iNew;
        }
        iFolded = bNewFolded ? iNew : iFolded;
        SKeyword& first = m_vecKeywords[iFolded];
        const bool bOther = bNewFolded || (bCaseSensitive && !first.bAnyCase && bNewExact);
        first.bAnyCase = first.bAnyCase || !bCaseSensitive;
        const std::size_t iSame = bNewExact ? first.iOffset : m_vecKeywords[iExact].iOffset;
        if (bNewExact) {
            m_exact.NoteAdded([this](Number i) { return GetText(m_vecKeywords[i]); });
        }
        if (bNewFolded) {
            m_folded.NoteAdded([this](Number i) { return Fold(GetText(m_vecKeywords[i])); });
        }
        return bOther ? std::string::npos : iSame;
    }

  private:
    using Number = CTextIndex::Number;
    struct SKeyword {
        std::size_t iText;  ///< within m_strTexts
        std::size_t iLength;
        std::size_t iOffset;
        bool bAnyCase;  ///< of the first of its letters, whether one of them is found in any case
    };

    std::string_view GetText(const SKeyword& keyword) const {
        return std::string_view(m_strTexts).substr(keyword.iText, keyword.iLength);
    }

    std::string m_strTexts;
    std::vector<SKeyword> m_vecKeywords;
    CTextIndex m_exact;
    CTextIndex m_folded;  ///< the first of its letters
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
