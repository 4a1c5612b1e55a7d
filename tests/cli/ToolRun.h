#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TempDir.h"

/** What a run of the tool gave. */
struct SToolRun {
    int iCode = 0;  ///< the exit code; of a program that a signal ended 1000 and the signal
    std::string strOut;
    std::string strErr;
};

/**
 * Runs the tool as a fresh program would: version and language are at their start again. An empty store and an installation
 * directory of the test's own stand in $DLP_STORE and $DLP_INSTALL_PATH; the configuration is looked for below
 * config/ in its folder, where there is none. Every answer in JSON is held against its schema.
 */
class CToolTest : public ::testing::Test {
  protected:
    CToolTest();
    ~CToolTest() override;

    SToolRun Run(const std::vector<std::string>& vecArguments, const std::string& strInput = "") const;
    /** The same with another store. */
    SToolRun RunOn(const std::string& strUrl, std::vector<std::string> vecArguments,
                   const std::string& strInput = "") const;
    /** Runs and expects exit code 0. @return the data */
    std::string Get(const std::vector<std::string>& vecArguments) const;
    /** Takes the store away: it is as before anything was stored. */
    void RemoveStore() const;
    /** @return the whole store as it is dumped */
    std::string Dump() const;
    std::string Url(const std::string& strFile) const { return "sqlite:" + m_dir.Path(strFile); }
    /** Writes a document, imports it and expects exit code 0. */
    void Import(const std::string& strDocument) const;

    CTempDir m_dir;
};

/** Runs the built program itself. */
class CProgram {
  public:
    /** @param strShell a command line for sh; the program is "$DLPCTL" */
    static SToolRun Shell(const std::string& strShell);
};

/** Small documents, each with what its name says. */
namespace Documents {

/** @return a policy of the present layout around these elements */
std::string Policy(const std::string& strAssets, const std::string& strTemplates, const std::string& strRest = "");
/** An expression of type Generic. */
std::string Entity(const std::string& strName, const std::string& strMore = "");
/** A keyword list with the words "one" and "two". */
std::string Dictionary(const std::string& strName, const std::string& strMore = "");
/** A template with one rule: so many hits of an expression and a keyword list. */
std::string Template(const std::string& strName, const std::string& strExpression, const std::string& strKeyword);
/** Two expressions, one keyword list, one template of one industry and two regions that refers to two of them. */
std::string Small();

}  // namespace Documents
