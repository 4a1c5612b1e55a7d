#pragma once

#include <string>
#include <vector>

/**
 * @return the name that somebody who wrote strWanted most likely meant: the one of fewest changed characters (code
 *         points, ASCII case apart) if those are at most a third of them; the first of several; empty when none is near
 */
std::string FindNearestName(const std::string& strWanted, const std::vector<std::string>& vecNames);
