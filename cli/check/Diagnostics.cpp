#include "cli/check/Diagnostics.h"

#include <algorithm>
#include <utility>

namespace {

ESeverity Judge(ESeverity eSeverity, bool bStrict) {
    return bStrict && eSeverity == ESeverity::WARNING ? ESeverity::ERROR : eSeverity;
}

}  // namespace

CDiagnostics::CDiagnostics(const SCheckChoice& choice) : m_choice(choice) {}

SDiagnostic* CDiagnostics::Add(ECode eCode, std::size_t iOffset, const std::vector<std::string>& vecWhat,
                               const std::vector<std::string>& vecAdvice) {
    return Count(eCode, iOffset) ? Tell(eCode, iOffset, vecWhat, vecAdvice) : nullptr;
}

bool CDiagnostics::Count(ECode eCode, std::size_t iOffset) {
    const ESeverity eSeverity = GetCodeRow(eCode).eSeverity;
    if (eSeverity == ESeverity::ERROR) {
        CountError(iOffset);
    }
    if (IsAllowed(eCode)) {
        return false;
    }
    const bool bKept =
        ++m_aCounts[static_cast<std::size_t>(eCode)] <= MAX_OF_CODE || m_choice.bAll || m_choice.bKeepAll;
    m_aOmitted[static_cast<std::size_t>(Judge(eSeverity, m_choice.bStrict))] += bKept ? 0 : 1;
    return bKept;
}

void CDiagnostics::Omit(ECode eCode, std::size_t iMore) {
    m_aOmitted[static_cast<std::size_t>(Judge(GetCodeRow(eCode).eSeverity, m_choice.bStrict))] +=
        IsAllowed(eCode) ? 0 : iMore;
}

bool CDiagnostics::IsAllowed(ECode eCode) const {
    return std::find(m_choice.vecAllow.begin(), m_choice.vecAllow.end(), eCode) != m_choice.vecAllow.end();
}

SDiagnostic* CDiagnostics::Tell(ECode eCode, std::size_t iOffset, const std::vector<std::string>& vecWhat,
                                const std::vector<std::string>& vecAdvice) {
    const SCodeRow& row = GetCodeRow(eCode);
    m_vecDiagnostics.push_back({.eCode = eCode,
                                .eSeverity = Judge(row.eSeverity, m_choice.bStrict),
                                .strMessage = FillSentence(row.pWhat, vecWhat),
                                .strAdvice = FillSentence(row.pAdvice, vecAdvice),
                                .iOffset = iOffset == std::string::npos ? iOffset : iOffset + m_iStart,
                                .place = {},
                                .excerpt = {},
                                .related = {},
                                .fix = {}});
    return &m_vecDiagnostics.back();
}

void CDiagnostics::CountError(std::size_t iOffset) {
    ++m_iErrors;
    if (iOffset == std::string::npos) {
        return;
    }
    if (iOffset >= m_vecErrors.size()) {
        m_vecErrors.resize(iOffset + 1);
    }
    m_vecErrors[iOffset] = true;
}

bool CDiagnostics::HasErrors(std::size_t iFirst, std::size_t iBehind) const {
    const auto fnAt = [this](std::size_t i) {
        return m_vecErrors.begin() + static_cast<std::ptrdiff_t>(std::min(i, m_vecErrors.size()));
    };
    const auto itBehind = fnAt(iBehind);
    return std::find(fnAt(iFirst), itBehind, true) != itBehind;
}

void CDiagnostics::Relate(SDiagnostic* pDiagnostic, std::size_t iOffset, const std::string& strMessage) const {
    if (pDiagnostic != nullptr) {
        pDiagnostic->related = {iOffset + m_iStart, strMessage, {}};
    }
}

void CDiagnostics::Raise(SDiagnostic* pDiagnostic, ESeverity eSeverity) {
    if (pDiagnostic == nullptr) {
        return;
    }
    pDiagnostic->eSeverity = Judge(eSeverity, m_choice.bStrict);
    if (eSeverity == ESeverity::ERROR) {
        CountError(pDiagnostic->iOffset - m_iStart);
    }
}

void CDiagnostics::Fix(SDiagnostic* pDiagnostic, std::size_t iOffset, std::size_t iLength,
                       std::string strReplacement) const {
    if (pDiagnostic != nullptr) {
        pDiagnostic->fix = {iOffset + m_iStart, iLength, std::move(strReplacement), {}, {}};
    }
}

std::vector<SDiagnostic> CDiagnostics::Finish(std::string_view strBytes) {
    std::stable_sort(m_vecDiagnostics.begin(), m_vecDiagnostics.end(),
                     [](const SDiagnostic& left, const SDiagnostic& right) {
                         return left.iOffset + 1 < right.iOffset + 1;  // the file as a whole comes first
                     });
    Locate(m_vecDiagnostics, strBytes);
    return std::move(m_vecDiagnostics);
}

void CDiagnostics::Locate(std::vector<SDiagnostic>& vecDiagnostics, std::string_view strBytes) const {
    std::optional<CSourcePlaces> places;
    for (SDiagnostic& diagnostic : vecDiagnostics) {
        if (diagnostic.iOffset == std::string::npos) {
            continue;
        }
        if (!places) {
            places.emplace(strBytes);
        }
        diagnostic.place = places->Find(diagnostic.iOffset);
        if (m_choice.bAll || &diagnostic < vecDiagnostics.data() + MAX_SHOWN) {
            diagnostic.excerpt = MakeExcerpt(strBytes, diagnostic.iOffset);
        }
        if (diagnostic.fix) {
            diagnostic.fix->place = places->Find(diagnostic.fix->iOffset);
            diagnostic.fix->end = places->Find(diagnostic.fix->iOffset + diagnostic.fix->iLength);
        }
        if (diagnostic.related) {
            diagnostic.related->place = places->Find(diagnostic.related->iOffset);
        }
    }
}
