#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/RecordJson.h"
#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLParser.h"

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
    bool Remove(const std::string& strKeyword);
    /** Makes the list hold these alone, in their order. */
    void Replace(const std::vector<SKeywordEdit>& vecEdits);
    /** @return the texts, in the list's order */
    std::vector<std::string> GetTexts() const;

    /** Writes the keywords into the list's record; leaves its markup as it is when nothing was changed. */
    void Store(CSettingsRow& row) const;
    /** Writes them anew, with the attributes that go with the record's fields. */
    void Write(CSettingsRow& row) const;

  private:
    struct SEntry {
        SKeyword keyword;
        CXMLView node;  ///< its markup; null when it was changed
        bool bRemoved = false;
    };

    void Index();
    bool IsChanged() const;
    static void Apply(const SKeywordEdit& edit, SEntry& entry);

    CXMLParser m_document;
    std::vector<SEntry> m_vecEntries;
    std::unordered_map<std::string, std::vector<std::size_t>> m_index;  ///< entries by their text
};
