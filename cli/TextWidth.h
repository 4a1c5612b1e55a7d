#pragma once

#include <cstddef>
#include <string_view>

/** @return how many columns of a terminal the text takes: none for combining marks, two for wide characters */
std::size_t GetTextWidth(std::wstring_view strText);
