#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"

/** Runs commands that change single records of a store, and looks at what became of it. */
class CEditTest : public CToolTest {
  protected:
    static constexpr const char DRY_RUN_NOTE[] = "Nothing was written: this was a dry run.\n";

    nlohmann::ordered_json DumpJson() const { return nlohmann::ordered_json::parse(Dump()); }

    /** Expects exit code 0. */
    void ExpectDone(const std::vector<std::string>& vecArguments, const std::string& strOut,
                    const std::string& strErr = "", const std::string& strInput = "") const {
        const SToolRun run = Run(vecArguments, strInput);
        EXPECT_EQ(run.iCode, 0) << run.strErr;
        EXPECT_EQ(run.strOut, strOut);
        EXPECT_EQ(run.strErr, strErr);
    }

    /** Expects one error, and the store as it was. @param strMessage without the program's name */
    void ExpectRefused(const std::vector<std::string>& vecArguments, int iCode, const std::string& strMessage,
                       const std::string& strInput = "") const {
        const std::string strDump = Dump();
        const SToolRun run = Run(vecArguments, strInput);
        EXPECT_EQ(run.iCode, iCode);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, "dlpctl: " + strMessage + '\n');
        EXPECT_EQ(Dump(), strDump);
    }

    /** Expects the same text as without it, a note, and the store as it was. */
    void ExpectSameDry(std::vector<std::string> vecArguments, const std::string& strOut,
                       const std::string& strInput = "") const {
        const std::string strDump = Dump();
        vecArguments.emplace_back("--dry-run");
        ExpectDone(vecArguments, strOut, DRY_RUN_NOTE, strInput);
        EXPECT_EQ(Dump(), strDump);
    }

    nlohmann::ordered_json RunJson(std::vector<std::string> vecArguments, const std::string& strInput = "") const {
        vecArguments.emplace_back("--json");
        return nlohmann::ordered_json::parse(Run(vecArguments, strInput).strOut);
    }
};
