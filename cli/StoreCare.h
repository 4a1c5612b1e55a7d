#pragma once

#include <CLI/App.hpp>

class CCommandLine;

/** Adds what keeps a store safe to the group of the store's commands: check, backup, restore. */
void AddStoreCareCommands(CCommandLine& line, CLI::App& group);
