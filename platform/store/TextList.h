#pragma once

#include <string>
#include <string_view>
#include <vector>

/**
 * A list of texts as one text: each item with backslash written \\ and LF written \n, ended by LF. So no list and a
 * list of one empty text differ, and any text survives.
 */
std::string JoinTextList(const std::vector<std::string>& vecTexts);
/** Undoes JoinTextList; damaged input gives some list. */
std::vector<std::string> SplitTextList(std::string_view strJoined);
