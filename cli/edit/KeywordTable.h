#pragma once

#include <string>
#include <vector>

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

/** @param strFile as messages call it @throws CInputError with the place of what is wrong */
std::vector<SKeywordEdit> Read(const std::string& strFile, const std::string& strBytes, const SForm& form);
std::string Write(const std::vector<SKeyword>& vecKeywords, const SForm& form);

}  // namespace KeywordTable
