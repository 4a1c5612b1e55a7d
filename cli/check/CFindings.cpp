#include "cli/check/CFindings.h"

#include <algorithm>
#include <cstring>
#include <utility>

// A wording is what findings may have in common: code, severity and marks, a byte each, and their texts, each with its
// length before it: the blanks of both sentences with their numbers, or the sentences; the replacement; what is said of
// the other place.

namespace {

enum EMark : unsigned char { SPELLED = 1, FIX = 2, RELATED = 4 };

constexpr std::size_t SEVERITY = 1;
constexpr std::size_t MARKS = 2;
constexpr std::size_t TEXTS = 3;

void Put(std::string& strWording, std::size_t iNumber) {
    const auto iSmall = static_cast<std::uint32_t>(iNumber);
    char aBytes[sizeof iSmall];
    std::memcpy(aBytes, &iSmall, sizeof iSmall);
    strWording.append(aBytes, sizeof iSmall);
}

void Put(std::string& strWording, std::string_view strText) {
    Put(strWording, strText.size());
    strWording += strText;
}

void Put(std::string& strWording, const std::vector<std::string>& vecTexts) {
    Put(strWording, vecTexts.size());
    for (const std::string& strText : vecTexts) {
        Put(strWording, strText);
    }
}

/** Takes what was put, in its order. */
class CTexts {
  public:
    explicit CTexts(std::string_view strWording) : m_strRest(strWording.substr(TEXTS)) {}

    std::string_view Take() {
        const std::string_view strText = m_strRest.substr(0, TakeNumber());
        return Pass(strText.size());
    }
    std::vector<std::string> TakeAll() {
        std::vector<std::string> vecTexts(TakeNumber());
        std::generate(vecTexts.begin(), vecTexts.end(), [this] { return std::string(Take()); });
        return vecTexts;
    }

  private:
    std::string_view Pass(std::size_t iBytes) {
        const std::string_view strPassed = m_strRest.substr(0, iBytes);
        m_strRest.remove_prefix(iBytes);
        return strPassed;
    }
    std::uint32_t TakeNumber() {
        std::uint32_t iNumber = 0;
        std::memcpy(&iNumber, Pass(sizeof iNumber).data(), sizeof iNumber);
        return iNumber;
    }

    std::string_view m_strRest;
};

bool Has(std::string_view strWording, EMark eMark) {
    return (static_cast<unsigned char>(strWording[MARKS]) & eMark) != 0;
}

std::string MakeWording(const SDiagnostic& diagnostic, const CFindings::SBlanks* pBlanks) {
    const int iMarks =
        (pBlanks == nullptr ? SPELLED : 0) + (diagnostic.fix ? FIX : 0) + (diagnostic.related ? RELATED : 0);
    std::string strWording = {static_cast<char>(diagnostic.eCode), static_cast<char>(diagnostic.eSeverity),
                              static_cast<char>(iMarks)};
    if (pBlanks == nullptr) {
        Put(strWording, diagnostic.strMessage);
        Put(strWording, diagnostic.strAdvice);
    } else {
        Put(strWording, pBlanks->vecWhat);
        Put(strWording, pBlanks->vecAdvice);
    }
    if (diagnostic.fix) {
        Put(strWording, diagnostic.fix->strReplacement);
    }
    if (diagnostic.related) {
        Put(strWording, diagnostic.related->strMessage);
    }
    return strWording;
}

void TakeSentences(bool bSpelled, CTexts& texts, SDiagnostic& diagnostic) {
    if (bSpelled) {
        diagnostic.strMessage = texts.Take();
        diagnostic.strAdvice = texts.Take();
    } else {
        const SCodeRow& row = GetCodeRow(diagnostic.eCode);
        diagnostic.strMessage = FillSentence(row.pWhat, texts.TakeAll());
        diagnostic.strAdvice = FillSentence(row.pAdvice, texts.TakeAll());
    }
}

}  // namespace

void CFindings::Add(const SDiagnostic& diagnostic, const SBlanks* pBlanks) {
    SEntry entry{Small(diagnostic.iOffset), FindWording(MakeWording(diagnostic, pBlanks)), Small(diagnostic.place),
                 NONE};
    if (diagnostic.fix || diagnostic.related) {
        entry.iMore = Small(m_vecMore.size());
        SMore& more = m_vecMore.emplace_back();
        if (const auto& related = diagnostic.related) {
            more.iRelated = Small(related->iOffset);
            more.related = Small(related->place);
        }
        if (const auto& fix = diagnostic.fix) {
            more.iFix = Small(fix->iOffset);
            more.iFixLength = Small(fix->iLength);
            more.fix = Small(fix->place);
            more.fixEnd = Small(fix->end);
        }
    }
    m_vecEntries.push_back(entry);
}

void CFindings::AddAgain(std::size_t iOffset) {
    m_vecEntries.push_back({Small(iOffset), m_vecEntries.back().iWording, {}, NONE});
}

CFindings::Number CFindings::FindWording(const std::string& strWording) {
    Number& iWording = m_index.Find(strWording, [&](Number i) { return GetWording(i) == strWording; });
    if (iWording != CTextIndex::NONE) {
        return iWording;
    }
    const Number iNew = Small(m_vecWordings.size());
    iWording = iNew;
    m_vecWordings.push_back(m_strWordings.size());
    m_strWordings += strWording;
    m_index.NoteAdded([this](Number i) { return GetWording(i); });
    return iNew;
}

std::string_view CFindings::GetWording(Number iWording) const {
    const std::size_t iStart = m_vecWordings[iWording];
    const std::size_t iEnd = iWording + 1 < m_vecWordings.size() ? m_vecWordings[iWording + 1] : m_strWordings.size();
    return std::string_view(m_strWordings).substr(iStart, iEnd - iStart);
}

SFindingHead CFindings::GetHead(const SEntry& entry) const {
    const std::string_view strWording = GetWording(entry.iWording);
    const bool bFix = Has(strWording, FIX);
    return {static_cast<ECode>(strWording[0]), static_cast<ESeverity>(strWording[SEVERITY]), bFix, bFix && m_bFixed};
}

SDiagnostic CFindings::Get(std::size_t i) const {
    const SEntry& entry = m_vecEntries[i];
    const std::string_view strWording = GetWording(entry.iWording);
    const SFindingHead head = GetHead(entry);
    SDiagnostic diagnostic{.eCode = head.eCode,
                           .eSeverity = head.eSeverity,
                           .strMessage = {},
                           .strAdvice = {},
                           .iOffset = Large(entry.iOffset),
                           .place = Large(entry.place),
                           .excerpt = {},
                           .related = {},
                           .fix = {},
                           .bFixed = head.bFixed};
    CTexts texts(strWording);
    TakeSentences(Has(strWording, SPELLED), texts, diagnostic);
    if (head.bFix) {
        const SMore& more = m_vecMore[entry.iMore];
        diagnostic.fix = {more.iFix, more.iFixLength, std::string(texts.Take()), Large(more.fix), Large(more.fixEnd)};
    }
    if (Has(strWording, RELATED)) {
        const SMore& more = m_vecMore[entry.iMore];
        diagnostic.related = {Large(more.iRelated), std::string(texts.Take()), Large(more.related)};
    }
    if (!m_strText.empty() && entry.iOffset != NONE) {
        diagnostic.excerpt = MakeExcerpt(m_strText, entry.iOffset);
    } else if (i < m_vecExcerpts.size()) {
        diagnostic.excerpt = m_vecExcerpts[i];
    }
    return diagnostic;
}

void CFindings::Sort() {
    const auto fnIsBefore = [](const SEntry& left, const SEntry& right) {
        return left.iOffset + 1 < right.iOffset + 1;  // the file as a whole comes first
    };
    if (!std::is_sorted(m_vecEntries.begin(), m_vecEntries.end(), fnIsBefore)) {
        std::stable_sort(m_vecEntries.begin(), m_vecEntries.end(), fnIsBefore);
    }
}

void CFindings::Locate(std::string_view strText) {
    m_vecExcerpts.clear();
    const auto fnIsPlaced = [](const SEntry& entry) { return entry.iOffset != NONE; };
    if (std::none_of(m_vecEntries.begin(), m_vecEntries.end(), fnIsPlaced)) {
        return;
    }
    const CSourcePlaces places(strText);
    for (SEntry& entry : m_vecEntries) {
        if (m_vecExcerpts.size() < MAX_SHOWN) {
            m_vecExcerpts.push_back(fnIsPlaced(entry) ? MakeExcerpt(strText, entry.iOffset) : SExcerpt());
        }
        if (!fnIsPlaced(entry)) {
            continue;
        }
        entry.place = Small(places.Find(entry.iOffset));
        if (entry.iMore != NONE) {
            SMore& more = m_vecMore[entry.iMore];
            more.related = Small(places.Find(Large(more.iRelated)));
            more.fix = Small(places.Find(more.iFix));
            more.fixEnd = Small(places.Find(std::size_t{more.iFix} + more.iFixLength));
        }
    }
}

void CFindings::ForEachFix(
    const std::function<void(std::size_t iOffset, std::size_t iLength, std::string_view strReplacement)>& fnFix) const {
    for (std::size_t i = 0; i < size(); ++i) {
        if (GetHead(m_vecEntries[i]).bFix) {
            const SFix fix = *Get(i).fix;
            fnFix(fix.iOffset, fix.iLength, fix.strReplacement);
        }
    }
}

void CFindings::NoteFixed(const std::function<std::size_t(std::size_t iOffset)>& fnMove) {
    m_bFixed = true;
    const auto fnMoveTo = [&](Number& iOffset) { iOffset = iOffset == NONE ? iOffset : Small(fnMove(iOffset)); };
    for (std::size_t i = 0; i < size(); ++i) {
        SEntry& entry = m_vecEntries[i];
        fnMoveTo(entry.iOffset);
        if (entry.iMore != NONE) {
            SMore& more = m_vecMore[entry.iMore];
            fnMoveTo(more.iRelated);
            fnMoveTo(more.iFix);
            more.iFixLength = GetHead(entry).bFix ? Small(Get(i).fix->strReplacement.size()) : 0;
        }
    }
}
