#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
}  // namespace CLI

/** @return the whole number of 32 bits that the text is; nothing when it is none */
std::optional<int> ReadNumber(const std::string& strText);

/** An option whose value may be left out, or be empty, which are not the same. */
struct SGivenOption {
    std::string strText;
    const CLI::Option* pOption = nullptr;

    bool IsGiven() const;
    /** @throws CToolError (USAGE) unless the value is a whole number of 32 bits */
    int ToNumber() const;
    /** @throws CToolError (USAGE) unless the value is true or false */
    bool ToFlag() const;
};

void AddGivenOption(CLI::App& command, const char* pName, const char* pValue, SGivenOption& option,
                    const char* pSummary);
