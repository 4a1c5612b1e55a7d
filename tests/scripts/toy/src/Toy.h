#pragma once

#include <string>
#include <vector>

inline constexpr int GROWN = 18;

bool IsGrown(int iAge);
std::string Greet(const std::string& strName, bool bGrown);
void Note(std::vector<int>& vecAges, int iAge);
int Between(int iLeft, int iRight);
