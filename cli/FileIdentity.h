#pragma once

#include <string>

/** @return whether both name one file, through links too; files that are not there yet are told by their paths */
bool IsSameFile(const std::string& strLeft, const std::string& strRight);

/**
 * @param strStore path of a store; empty when it has none
 * @return whether the path is that of the store, or of a file that is kept beside it while the store is used
 */
bool IsOfStore(const std::string& strPath, const std::string& strStore);

/** @return whether the file begins as a database of settings does; writing to it would destroy a store */
bool IsDatabase(const std::string& strPath);
