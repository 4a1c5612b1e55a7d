#include "cli/check/CheckReport.h"

#include <algorithm>
#include <functional>
#include <numeric>

bool SFileReport::IsInvalid() const {
    return std::any_of(vecDiagnostics.begin(), vecDiagnostics.end(),
                       [](const SDiagnostic& diagnostic) { return IsAboutNoDocument(diagnostic.eCode); });
}

std::size_t SFileReport::CountOmitted() const {
    return std::accumulate(aOmitted.begin(), aOmitted.end(), std::size_t{0});
}

SeverityCounts SCheckReport::Count() const {
    SeverityCounts aCounts{};
    for (const SFileReport& file : vecFiles) {
        std::transform(aCounts.begin(), aCounts.end(), file.aOmitted.begin(), aCounts.begin(), std::plus<>());
        for (const SDiagnostic& diagnostic : file.vecDiagnostics) {
            aCounts[static_cast<std::size_t>(diagnostic.eSeverity)] += diagnostic.bFixed ? 0 : 1;
        }
    }
    return aCounts;
}

std::size_t SCheckReport::CountFixed() const {
    std::size_t iFixed = 0;
    for (const SFileReport& file : vecFiles) {
        iFixed +=
            static_cast<std::size_t>(std::count_if(file.vecDiagnostics.begin(), file.vecDiagnostics.end(),
                                                   [](const SDiagnostic& diagnostic) { return diagnostic.bFixed; }));
    }
    return iFixed;
}

std::size_t SCheckReport::CountLeft() const {
    std::size_t iLeft = 0;
    for (const SFileReport& file : vecFiles) {
        for (const SDiagnostic& diagnostic : file.vecDiagnostics) {
            iLeft += bFix && IsAboutValue(diagnostic.eCode) && !diagnostic.fix ? 1 : 0;
        }
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
        bFails = bFails || std::any_of(file.vecDiagnostics.begin(), file.vecDiagnostics.end(),
                                       [this](const SDiagnostic& diagnostic) { return Fails(*this, diagnostic); });
    }
    return bFails ? EVerdict::FINDINGS : EVerdict::DONE;
}

bool Fails(const SCheckReport& report, const SDiagnostic& diagnostic) {
    return !diagnostic.bFixed && diagnostic.eSeverity <= report.eFailOn;
}
