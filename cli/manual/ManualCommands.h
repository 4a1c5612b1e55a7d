#pragma once

class CCommandLine;

/** Commands that tell of the command line itself; they keep hold of it. */
void AddHelpCommand(CCommandLine& line);
void AddCompletionCommand(CCommandLine& line);
void AddManualCommand(CCommandLine& line);
