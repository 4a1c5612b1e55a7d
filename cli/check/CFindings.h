#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CTextIndex.h"
#include "cli/check/SDiagnostic.h"

/**
 * What was found in one file, kept small where there are millions: what is said alike of several is kept once, and each
 * becomes a diagnostic when it is looked at. Of a file no more than 4 GiB has places.
 */
class CFindings {
  public:
    /** Text shows no more than this unless all are wanted, so no others get an excerpt. */
    static constexpr std::size_t MAX_SHOWN = 100;

    /** What stands for each {} of the sentences of a code. */
    struct SBlanks {
        std::vector<std::string> vecWhat;
        std::vector<std::string> vecAdvice;
    };

    /** @param pBlanks the sentences are those of the code, filled in; null: they are those of the diagnostic */
    void Add(const SDiagnostic& diagnostic, const SBlanks* pBlanks = nullptr);

    /** Adds what was added last for another place of the file too; it has no other place and no replacement. */
    void AddAgain(std::size_t iOffset);

    std::size_t size() const { return m_vecEntries.size(); }
    SDiagnostic Get(std::size_t i) const;

    /** Gives each as a diagnostic. */
    class CIterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = SDiagnostic;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = SDiagnostic;

        CIterator(const CFindings& findings, std::size_t i) : m_pFindings(&findings), m_i(i) {}
        SDiagnostic operator*() const { return m_pFindings->Get(m_i); }
        CIterator& operator++() {
            ++m_i;
            return *this;
        }
        bool operator==(const CIterator& other) const = default;

      private:
        const CFindings* m_pFindings;
        std::size_t m_i;
    };
    CIterator begin() const { return {*this, 0}; }
    CIterator end() const { return {*this, size()}; }

    /** Hands over what each is counted by. */
    template <class F>
    void ForEachHead(const F& fnHead) const {
        for (const SEntry& entry : m_vecEntries) {
            fnHead(GetHead(entry));
        }
    }
    /** @return of how many the function says yes to what they are counted by */
    template <class F>
    std::size_t CountIf(const F& fnIs) const {
        std::size_t iCount = 0;
        ForEachHead([&](const SFindingHead& finding) { iCount += fnIs(finding) ? 1 : 0; });
        return iCount;
    }

    /** In the order of the file, of which what is about it as a whole comes first. */
    void Sort();
    /** Gives each its places in that text, and the first ones their excerpts. */
    void Locate(std::string_view strText);
    /**
     * Keeps the text that they are located in, from which every excerpt is made when it is looked at; not where all of
     * them have one already.
     */
    void KeepText(std::string strText) {
        if (size() > MAX_SHOWN) {
            m_strText = std::move(strText);
        }
    }

    /** Hands over each replacement. */
    void ForEachFix(const std::function<void(std::size_t iOffset, std::size_t iLength,
                                             std::string_view strReplacement)>& fnFix) const;
    /** The replacements were made. @param fnMove where a byte of the text before stands now */
    void NoteFixed(const std::function<std::size_t(std::size_t iOffset)>& fnMove);

  private:
    using Number = std::uint32_t;
    static constexpr Number NONE = static_cast<Number>(-1);

    struct SSmallPlace {
        Number iLine = 0;
        Number iColumn = 0;
    };
    struct SEntry {
        Number iOffset;  ///< NONE: the file as a whole
        Number iWording;
        SSmallPlace place;
        Number iMore;  ///< NONE: it has neither another place nor a replacement
    };
    struct SMore {
        Number iRelated = NONE;
        SSmallPlace related;
        Number iFix = 0;
        Number iFixLength = 0;
        SSmallPlace fix;
        SSmallPlace fixEnd;
    };

    static Number Small(std::size_t iNumber) { return iNumber < NONE ? static_cast<Number>(iNumber) : NONE; }
    static std::size_t Large(Number iNumber) { return iNumber == NONE ? std::string::npos : iNumber; }
    static SSmallPlace Small(SPlace place) { return {Small(place.iLine), Small(place.iColumn)}; }
    static SPlace Large(SSmallPlace place) { return {place.iLine, place.iColumn}; }

    Number FindWording(const std::string& strWording);
    std::string_view GetWording(Number iWording) const;
    SFindingHead GetHead(const SEntry& entry) const;

    std::vector<SEntry> m_vecEntries;
    std::vector<SMore> m_vecMore;
    std::string m_strWordings;
    std::vector<std::size_t> m_vecWordings;  ///< where each begins
    CTextIndex m_index;
    std::vector<SExcerpt> m_vecExcerpts;  ///< of the first ones
    std::string m_strText;
    bool m_bFixed = false;
};
