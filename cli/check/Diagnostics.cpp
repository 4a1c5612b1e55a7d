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
    const bool bKept = ++m_aCounts[static_cast<std::size_t>(eCode)] <= MAX_OF_CODE || m_choice.bAll ||
                       m_choice.bKeepAll || (m_choice.bKeepFixable && IsFixable(eCode));
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
    KeepLast();
    m_bLast = true;
    m_bSpelled = false;
    m_last = {.eCode = eCode,
              .eSeverity = Judge(GetCodeRow(eCode).eSeverity, m_choice.bStrict),
              .strMessage = {},
              .strAdvice = {},
              .iOffset = iOffset == std::string::npos ? iOffset : iOffset + m_iStart,
              .place = {},
              .excerpt = {},
              .related = {},
              .fix = {}};
    m_blanks = {vecWhat, vecAdvice};
    return &m_last;
}

bool CDiagnostics::TellAgain(std::size_t iTold, std::size_t iOffset) {
    const bool bLast = CountTold() == iTold;
    if (bLast) {
        KeepLast();
        m_findings.AddAgain(iOffset + m_iStart);
    }
    return bLast;
}

SDiagnostic& CDiagnostics::Spell(SDiagnostic& diagnostic) {
    const SCodeRow& row = GetCodeRow(diagnostic.eCode);
    diagnostic.strMessage = FillSentence(row.pWhat, m_blanks.vecWhat);
    diagnostic.strAdvice = FillSentence(row.pAdvice, m_blanks.vecAdvice);
    m_bSpelled = true;
    return diagnostic;
}

void CDiagnostics::KeepLast() {
    if (m_bLast) {
        m_findings.Add(m_last, m_bSpelled ? nullptr : &m_blanks);
        m_bLast = false;
    }
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

CFindings CDiagnostics::Finish(std::string_view strBytes) {
    KeepLast();
    m_findings.Sort();
    m_findings.Locate(strBytes);
    return std::move(m_findings);
}
