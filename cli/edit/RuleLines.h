#pragma once

#include <string>
#include <vector>

#include "cli/Verdict.h"
#include "cli/check/SourceExcerpt.h"
#include "platform/common/SourcePlaces.h"
#include "templates/MatchRule.h"

/**
 * The rules of a template as text: one rule a line, such as OR P:card(2) AND K:words, the rule's own operator first if
 * it has one. Empty lines and those that begin with # say nothing.
 */
namespace RuleLines {

struct SFault {
    std::string strWhy;  ///< printable
    SPlace place;
    SExcerpt excerpt;
};

/** Rules that would not be read as they are written, or refer to nothing. Its message is the first fault's. */
class CFaults : public CToolError {
  public:
    /** @param strFile as messages call the text @param vecFaults at least one */
    CFaults(std::string strFile, std::vector<SFault> vecFaults);
    const std::string& GetFile() const { return m_strFile; }
    const std::vector<SFault>& Get() const { return m_vecFaults; }

  private:
    std::string m_strFile;
    std::vector<SFault> m_vecFaults;
};

/**
 * Reads the rules; the store says what they may refer to.
 * @throws CFaults with every fault; OS::CException when the store fails
 */
std::vector<SMatchRule> Read(const std::string& strFile, const std::string& strText);

/** @return whether every part of a rule but the first has an operator; a missing one counts as AND */
bool IsComplete(const std::vector<SMatchRule>& vecRules);
/** @return the rules as Read reads them, a printable line each; a missing operator is written as AND */
std::string Write(const std::vector<SMatchRule>& vecRules);
/** @return whether Read would read rules of that meaning from what Write writes, but for what they refer to */
bool Survive(const std::vector<SMatchRule>& vecRules);

}  // namespace RuleLines
