#pragma once

#include <memory>

#include "cli/Verdict.h"
#include "cli/check/CheckReport.h"
#include "templates/PolicyFile.h"

class CCommandContext;
class COutput;
struct SCheckFormat;
struct SImportDoor;
struct SImportOptions;
struct SImportReport;

/** The file that --report names, with what became of every file of a run. Nothing when no such file is asked for. */
class CImportReportFile {
  public:
    /** @throws CToolError (USAGE, OUTPUT) when it cannot be written, before anything is imported */
    CImportReportFile(CCommandContext& context, const SImportDoor& door, const SImportOptions& options);
    ~CImportReportFile();

    /** @return whether it goes to standard output, in place of what the command would write there */
    bool IsAnswer() const { return m_bAnswer; }
    /** @return whether the places of all items are needed */
    bool ShowsEveryItem() const;

    void Add(const SImportReport& report, const SPolicyFile& file);
    /** @param eVerdict that of the whole run @throws CToolError (OUTPUT) */
    void Finish(EVerdict eVerdict);

  private:
    const SCheckFormat* m_pFormat = nullptr;
    std::unique_ptr<COutput> m_pOutput;
    bool m_bAnswer = false;
    SCheckReport m_report;
};
