#pragma once

#include <string>
#include <vector>

class CCommandContext;

/**
 * What a FILE of the command line stands for.
 * @return the file itself; for a folder the .xml files below it, in the order of their paths, named as the folder was
 * @throws CInputError when the folder, or one below it, cannot be read
 */
std::vector<std::string> ListFiles(const CCommandContext& context, const std::string& strFile);

/** Of a folder, when ListFiles gives none. */
inline constexpr const char NO_FILES[] = "no .xml file is below it";
