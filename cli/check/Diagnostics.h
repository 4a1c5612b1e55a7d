#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "cli/check/CFindings.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/check/SDiagnostic.h"

/** What the user asked to see. */
struct SCheckChoice {
    bool bStrict = false;         ///< every warning is an error
    bool bAll = false;            ///< however many there are
    bool bKeepAll = false;        ///< those too that text does not show: each has a row in a report
    bool bKeepFixable = false;    ///< those too that text does not show, of codes that may have a fix
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
    static constexpr std::size_t MAX_SHOWN = CFindings::MAX_SHOWN;

    explicit CDiagnostics(const SCheckChoice& choice);

    /** Offsets that are handed in count from there on. */
    void SetStart(std::size_t iStart) { m_iStart = iStart; }

    /**
     * @param iOffset npos: the file as a whole
     * @param vecWhat, vecAdvice what stands for each {} of the code's sentences, printable
     * @return what was added, to be completed before the next one; its texts are empty, unless it is spelled; null when
     *         it is not kept
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
    /**
     * The same for what was told last, but for its place.
     * @param iTold what CountTold gave then @return whether it is still the last one, and was told again
     */
    bool TellAgain(std::size_t iTold, std::size_t iOffset);
    /** @return how many are kept so far */
    std::size_t CountTold() const { return m_findings.size() + (m_bLast ? 1 : 0); }
    /** So many more were found of a code that is no error, and whoever found them keeps nothing else of them. */
    void Omit(ECode eCode, std::size_t iMore);
    /** Both places. @param pDiagnostic may be null */
    void Relate(SDiagnostic* pDiagnostic, std::size_t iOffset, const std::string& strMessage) const;
    /** Makes the texts of what was added, so that they can be changed. */
    SDiagnostic& Spell(SDiagnostic& diagnostic);
    /** A note becomes heavier. */
    void Raise(SDiagnostic* pDiagnostic, ESeverity eSeverity);
    void Fix(SDiagnostic* pDiagnostic, std::size_t iOffset, std::size_t iLength, std::string strReplacement) const;

    /** @return what was kept, in the order of the file, with places and the excerpts that are shown */
    CFindings Finish(std::string_view strBytes);
    /** @return how many errors were found, those that are not told included */
    std::size_t GetErrors() const { return m_iErrors; }
    /** @return whether an error was found at such an offset, told or not */
    bool HasErrors(std::size_t iFirst, std::size_t iBehind) const;
    /** @return how many were found of those codes and not kept */
    const SeverityCounts& GetOmitted() const { return m_aOmitted; }

  private:
    void KeepLast();
    void CountError(std::size_t iOffset);
    bool IsAllowed(ECode eCode) const;

    const SCheckChoice& m_choice;
    std::array<std::size_t, static_cast<std::size_t>(ECode::COUNT)> m_aCounts{};
    std::size_t m_iStart = 0;
    std::size_t m_iErrors = 0;
    std::vector<bool> m_vecErrors;  ///< whether one is at an offset, as handed in
    SeverityCounts m_aOmitted{};
    CFindings m_findings;
    bool m_bLast = false;  ///< whether there is one that may yet be completed
    SDiagnostic m_last{};
    CFindings::SBlanks m_blanks;  ///< of its sentences, unless it is spelled
    bool m_bSpelled = false;
};
