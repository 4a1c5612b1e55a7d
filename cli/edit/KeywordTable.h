#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/RecordJson.h"
#include "cli/edit/KeywordList.h"

/** Keywords as a table for spreadsheets. The first row names the columns, of which all but "keyword" may be missing. */
namespace KeywordTable {

struct SForm {
    const char* pName;
    char cSeparator;
};

/**
 * @param strName csv or tsv; empty: as the file's name ends, else csv
 * @throws CToolError (USAGE) for another name
 */
const SForm& FindForm(const std::string& strName, const std::string& strFile);

/** A table of keywords to be taken into a list. */
class CReader {
  public:
    /** @param strFile as messages call it @throws CInputError with the place of what is wrong */
    CReader(const std::string& strFile, std::string strBytes, const SForm& form);
    /** Hands over the keywords, in the order of the table. @throws what fnKeyword throws */
    void ForEach(const std::function<void(const SKeywordEdit&)>& fnKeyword) const;

  private:
    std::string m_strBytes;
    const SForm& m_form;
};

std::string Write(const std::vector<SKeyword>& vecKeywords, const SForm& form);

}  // namespace KeywordTable
