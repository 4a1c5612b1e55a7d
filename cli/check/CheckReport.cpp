#include "cli/check/CheckReport.h"

#include <algorithm>
#include <functional>
#include <numeric>

bool SFileReport::IsInvalid() const {
    return findings.CountIf([](const SFindingHead& finding) { return IsAboutNoDocument(finding.eCode); }) != 0;
}

std::size_t SFileReport::CountOmitted() const {
    return std::accumulate(aOmitted.begin(), aOmitted.end(), std::size_t{0});
}

SeverityCounts SCheckReport::Count() const {
    SeverityCounts aCounts{};
    for (const SFileReport& file : vecFiles) {
        std::transform(aCounts.begin(), aCounts.end(), file.aOmitted.begin(), aCounts.begin(), std::plus<>());
        file.findings.ForEachHead([&aCounts](const SFindingHead& finding) {
            aCounts[static_cast<std::size_t>(finding.eSeverity)] += finding.bFixed ? 0 : 1;
        });
    }
    return aCounts;
}

std::size_t SCheckReport::CountFixed() const {
    std::size_t iFixed = 0;
    for (const SFileReport& file : vecFiles) {
        iFixed += file.findings.CountIf([](const SFindingHead& finding) { return finding.bFixed; });
    }
    return iFixed;
}

std::size_t SCheckReport::CountLeft() const {
    std::size_t iLeft = 0;
    for (const SFileReport& file : vecFiles) {
        iLeft += file.findings.CountIf(
            [this](const SFindingHead& finding) { return bFix && IsAboutValue(finding.eCode) && !finding.bFix; });
    }
    return iLeft;
}

EVerdict SCheckReport::GetVerdict() const {
    if (verdict) {
        return *verdict;
    }
    bool bFails = false;
    for (const SFileReport& file : vecFiles) {
        if (file.IsInvalid()) {
            return EVerdict::INVALID;
        }
        bFails = bFails || file.findings.CountIf([this](const SFindingHead& finding) { return Fails(*this, finding); });
    }
    return bFails ? EVerdict::FINDINGS : EVerdict::DONE;
}

bool Fails(const SCheckReport& report, const SFindingHead& finding) {
    return !finding.bFixed && finding.eSeverity <= report.eFailOn;
}
