#pragma once

#include <string>
#include <vector>

class CCommandLine;

/** A page of the manual. */
struct SManualPage {
    std::string strName;
    int iSection = 1;
    std::string strSummary;
};

/** @return all pages: the tool, each of its commands, the configuration file, the policy document */
std::vector<SManualPage> ListManualPages(const CCommandLine& line);
/** @param page one of the list @return the page as man reads it */
std::string MakeManualPage(CCommandLine& line, const SManualPage& page);
