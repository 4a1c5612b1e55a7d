#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CTextIndex.h"
#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLParser.h"

class CXMLWriter;

/** What is to become of a keyword; what is not given stays as it is, or is that of a new keyword. */
struct SKeywordEdit {
    std::string strKeyword;
    std::optional<std::string> strDescription;
    std::optional<int> iScore;
    std::optional<bool> bCaseSensitive;
};

/** The keywords of one list, to be changed. What is not changed keeps its markup. */
class CKeywordList {
  public:
    explicit CKeywordList(const CSettingsRow& row);
    CKeywordList(const CKeywordList&) = delete;
    CKeywordList& operator=(const CKeywordList&) = delete;

    /** Changes every keyword of that text, or adds one. */
    void Put(const SKeywordEdit& edit);
    /** @return whether there was one */
    bool Remove(std::string_view strKeyword);
    /** Makes the list hold nothing but what Place is given from then on, in its order. */
    void Clear();
    /** Adds a keyword, as it was before the list was cleared where the edit does not say otherwise. */
    void Place(const SKeywordEdit& edit);
    /** @return the texts, in the list's order */
    std::vector<std::string> GetTexts() const;

    /** Writes the keywords into the list's record; leaves its markup as it is when nothing was changed. */
    void Store(CSettingsRow& row) const;
    /** Writes them anew, with the attributes that go with the record's fields. */
    void Write(CSettingsRow& row) const;

  private:
    using Number = CTextIndex::Number;

    /** A text within m_strTexts. */
    struct SText {
        std::uint32_t iStart = 0;
        std::uint32_t iLength = 0;
    };
    struct SEntry {
        CXMLView node{};  ///< its markup; null when it was changed
        SText keyword{};
        SText description{};
        int iScore = 0;
        Number iNext = CTextIndex::NONE;  ///< the next entry of the same text
        bool bCaseSensitive = false;
        bool bRemoved = false;
    };

    std::string_view GetText(SText text) const {
        return std::string_view(m_strTexts).substr(text.iStart, text.iLength);
    }
    SText Keep(std::string_view strText);
    SEntry MakeNew(std::string_view strKeyword);
    void Apply(const SKeywordEdit& edit, SEntry& entry);
    void Add(const SEntry& entry);
    Number& Find(const std::vector<SEntry>& vecEntries, std::string_view strKeyword);
    void Write(const SEntry& entry, CXMLWriter& writer) const;
    bool IsChanged() const;

    CXMLParser m_document;
    std::string m_strTexts;
    std::vector<SEntry> m_vecEntries;
    std::vector<SEntry> m_vecFormer;  ///< those of before the list was cleared; the index stays theirs
    CTextIndex m_index;               ///< the first entry of each text
};
