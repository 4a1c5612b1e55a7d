#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <sys/stat.h>

/** @return the open descriptor that a path such as /proc/self/fd/1 stands for; -1 when it stands for none */
int GetDescriptor(const std::filesystem::path& path);

/**
 * Follows links at the path's end one by one, also into nothing, but not out of the folder of open descriptors.
 * @param fnLink hears of each link before it is followed; what it throws passes
 */
std::filesystem::path FollowLinks(std::filesystem::path path,
                                  const std::function<void(const std::filesystem::path& link)>& fnLink = {});

/**
 * @param status of what lies in the folder
 * @return whether everybody may put things into the folder, and another user, not the folder's owner, has put this
 * there
 */
bool IsForeign(const struct stat& status, const std::filesystem::path& folder);

/** @return whether both name one file, through links too, whether it is there or not */
bool IsSameFile(const std::string& strLeft, const std::string& strRight);

/**
 * @param strStore path of a store; empty when it has none
 * @return whether the path is that of the store, or of a file that is kept beside it while the store is used
 */
bool IsOfStore(const std::string& strPath, const std::string& strStore);

/** @return whether the file begins as a database of settings does; writing to it would destroy a store */
bool IsDatabase(const std::string& strPath);

/** @return whether the path is that of a file that is kept beside such a database while it is used, there or not */
bool IsBesideDatabase(const std::string& strPath);
