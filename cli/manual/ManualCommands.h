#pragma once

class CCommandLine;

/** Commands that tell of the command line itself; they keep hold of it. */
void AddCompletionCommand(CCommandLine& line);
void AddManualCommand(CCommandLine& line);
