#pragma once

class CCommandLine;

/** Each adds commands to the command line. */
void AddImportCommand(CCommandLine& line);
void AddExportCommand(CCommandLine& line);
void AddAssetCommands(CCommandLine& line);
void AddListCommand(CCommandLine& line);
void AddShowCommand(CCommandLine& line);
void AddMetadataCommand(CCommandLine& line);
void AddStoreCommands(CCommandLine& line);
void AddDiffCommand(CCommandLine& line);
void AddRefsCommand(CCommandLine& line);
void AddCheckCommand(CCommandLine& line);
void AddExplainCommand(CCommandLine& line);
void AddFmtCommand(CCommandLine& line);
void AddConvertCommand(CCommandLine& line);
void AddRenameCommand(CCommandLine& line);
void AddDeleteCommand(CCommandLine& line);
void AddKeywordsCommands(CCommandLine& line);
void AddExpressionCommands(CCommandLine& line);
void AddTemplateCommands(CCommandLine& line);
