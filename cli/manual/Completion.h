#pragma once

#include <string>
#include <vector>

class CCommandContext;
class CCommandLine;

/** A word that can stand next on a command line. */
struct SCandidate {
    std::string strWord;
    std::string strDescription;  ///< may be empty
};

/**
 * @param vecWords the words behind the program's name; the last one, which may be empty, is being typed
 * @return what it can become, by the table of commands and the names in the store; none where a file is meant
 */
std::vector<SCandidate> FindCandidates(const CCommandContext& context, CCommandLine& line,
                                       const std::vector<std::string>& vecWords);
