#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

/** What may be asked of every import of files. */
struct SImportOptions {
    std::vector<std::string> vecFiles;
    std::vector<std::string> vecOnly;
    std::string strReport;
    std::string strReportFormat;
    bool bDryRun = false;
    bool bSkipExisting = false;
    bool bFailOnSkip = false;
};

/** @param pFiles what the files are, for the help */
void AddImportOptions(CLI::App& command, SImportOptions& options, const char* pFiles);
