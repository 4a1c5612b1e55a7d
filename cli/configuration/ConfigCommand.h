#pragma once

class CCommandLine;
class CConfiguration;

/** Adds the command that lists every option with its value. @param configuration must outlive the command line */
void AddConfigCommand(CCommandLine& line, const CConfiguration& configuration);
