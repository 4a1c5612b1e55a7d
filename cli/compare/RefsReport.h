#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/Verdict.h"
#include "cli/compare/References.h"

/** Which references are asked for; without any name, all. */
struct SRefsChoice {
    std::vector<std::string> vecTemplates;    ///< those of these templates only
    std::vector<std::string> vecExpressions;  ///< those to these assets only
    std::vector<std::string> vecKeywords;
    bool bUnused = false;  ///< only assets to which there is none
};

/** The references of a policy that are asked for. Text, JSON and a graph are views of it. */
struct SRefsReport {
    const SPolicy& policy;
    const SRefsChoice& choice;
    SReferences chosen;

    /** @return FINDINGS when an asset is missing, is unused and that was asked for, or something was left out */
    EVerdict GetVerdict() const;
};

/** @throws CToolError (FINDINGS) for a name that the policy does not know, with the nearest one that it does */
SRefsReport MakeRefsReport(const SPolicy& policy, const SRefsChoice& choice);

/** @param iWidth of the terminal; 0: no bound */
std::string MakeRefsText(const SRefsReport& report, std::size_t iWidth);
nlohmann::ordered_json MakeRefsJson(const SRefsReport& report, const char* pFormat);
/** @return a directed graph in the language of Graphviz, from templates to assets */
std::string MakeRefsGraph(const SRefsReport& report);
