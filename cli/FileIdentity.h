#pragma once

#include <string>

/** @return whether both name one file, through links too; files that are not there yet are told by their paths */
bool IsSameFile(const std::string& strLeft, const std::string& strRight);

/** @return whether the file begins as a database of settings does; writing to it would destroy a store */
bool IsDatabase(const std::string& strPath);
