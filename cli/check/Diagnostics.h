#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
};

/** What the user asked to see. */
struct SCheckChoice {
    bool bStrict = false;         ///< every warning is an error
    bool bAll = false;            ///< however many there are
    bool bKeepAll = false;        ///< those too that text does not show: each may have a fix, or a row in a report
    std::vector<ECode> vecAllow;  ///< not to be told
};

/** A number for each severity, in its order. */
using SeverityCounts = std::array<std::size_t, 3>;

/** Collects what is found in one file. */
class CDiagnostics {
  public:
    /** Of one code no more than this are kept unless all are to be; the others are counted. */
    static constexpr std::size_t MAX_OF_CODE = 1000;
    /** Text shows no more than this unless all are wanted, so no others get an excerpt. */
    static constexpr std::size_t MAX_SHOWN = 100;

    explicit CDiagnostics(const SCheckChoice& choice);

    /** Offsets that are handed in count from there on. */
    void SetStart(std::size_t iStart) { m_iStart = iStart; }

    /**
     * @param iOffset npos: the file as a whole
     * @param vecWhat, vecAdvice what stands for each {} of the code's sentences, printable
     * @return what was added, to be completed at once; null when it is not kept
     */
    SDiagnostic* Add(ECode eCode, std::size_t iOffset, const std::vector<std::string>& vecWhat = {},
                     const std::vector<std::string>& vecAdvice = {});
    /**
     * The first half of Add, for what there may be millions of: counts it.
     * @return whether it is kept; then Tell, the other half, follows
     */
    bool Count(ECode eCode, std::size_t iOffset);
    SDiagnostic* Tell(ECode eCode, std::size_t iOffset, const std::vector<std::string>& vecWhat,
                      const std::vector<std::string>& vecAdvice);
    /** So many more were found of a code that is no error, and whoever found them keeps nothing else of them. */
    void Omit(ECode eCode, std::size_t iMore);
    /** Both places. @param pDiagnostic may be null */
    void Relate(SDiagnostic* pDiagnostic, std::size_t iOffset, const std::string& strMessage) const;
    /** A note becomes heavier. */
    void Raise(SDiagnostic* pDiagnostic, ESeverity eSeverity);
    void Fix(SDiagnostic* pDiagnostic, std::size_t iOffset, std::size_t iLength, std::string strReplacement) const;

    /** @return what was kept, in the order of the file, with places and excerpts */
    std::vector<SDiagnostic> Finish(std::string_view strBytes);
    /** Gives each of what was kept its places and its excerpt in that text. */
    void Locate(std::vector<SDiagnostic>& vecDiagnostics, std::string_view strBytes) const;
    /** @return how many errors were found, those that are not told included */
    std::size_t GetErrors() const { return m_iErrors; }
    /** @return whether an error was found at such an offset, told or not */
    bool HasErrors(std::size_t iFirst, std::size_t iBehind) const;
    /** @return how many were found of those codes and not kept */
    const SeverityCounts& GetOmitted() const { return m_aOmitted; }

  private:
    void CountError(std::size_t iOffset);
    bool IsAllowed(ECode eCode) const;

    const SCheckChoice& m_choice;
    std::array<std::size_t, static_cast<std::size_t>(ECode::COUNT)> m_aCounts{};
    std::size_t m_iStart = 0;
    std::size_t m_iErrors = 0;
    std::vector<bool> m_vecErrors;  ///< whether one is at an offset, as handed in
    SeverityCounts m_aOmitted{};
    std::vector<SDiagnostic> m_vecDiagnostics;
};
