#pragma once

#include <string>

class CCommandContext;

/** A file of the installation that the library reads on its own account. */
struct SInstalledFile {
    std::string strPath;  ///< where it is looked for
    bool bFound = false;
};

/** @return the file with the predefined lists, below the installation directory */
SInstalledFile FindPolicyFile();
/** @return the map of older asset names, below the working directory */
SInstalledFile FindMapFile();
/** Says that a file is missing, what that leads to and how to set the place. */
void WarnOfMissing(CCommandContext& context, const SInstalledFile& file, const char* pEffect);

/** What the lack of the predefined lists leads to. */
inline constexpr const char NO_POLICY_FILE[] = "industries and regions are exported without display names";
/** What the lack of the map leads to. */
inline constexpr const char NO_MAP_FILE[] = "names of assets in documents of the older layout are taken as they stand";
