#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "cli/check/DiagnosticCodes.h"
#include "cli/check/SourceExcerpt.h"
#include "platform/common/SourcePlaces.h"

/** Another place that a diagnostic speaks of. */
struct SRelated {
    std::size_t iOffset = std::string::npos;
    std::string strMessage;
    SPlace place;
};

/** A replacement of bytes that changes no meaning. */
struct SFix {
    std::size_t iOffset = 0;
    std::size_t iLength = 0;
    std::string strReplacement;
    SPlace place{};
    SPlace end{};  ///< behind what is replaced
};

/** What findings are counted by. */
struct SFindingHead {
    ECode eCode;
    ESeverity eSeverity;
    bool bFix;    ///< there is a replacement
    bool bFixed;  ///< it was made
};

/** Something found in a file. Texts are printable; offsets count the bytes of the file. */
struct SDiagnostic {
    ECode eCode;
    ESeverity eSeverity;
    std::string strMessage;
    std::string strAdvice;
    std::size_t iOffset = std::string::npos;  ///< npos: the file as a whole
    SPlace place;
    SExcerpt excerpt;
    std::optional<SRelated> related;
    std::optional<SFix> fix;
    bool bFixed = false;

    SFindingHead GetHead() const { return {eCode, eSeverity, fix.has_value(), bFixed}; }
};
