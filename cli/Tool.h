#pragma once

#include <iosfwd>
#include <string>
#include <vector>

/**
 * Runs the tool once.
 * @param vecArguments without the program's name
 * @return the exit code
 */
int RunTool(const std::vector<std::string>& vecArguments, std::istream& in, std::ostream& out, std::ostream& err);
