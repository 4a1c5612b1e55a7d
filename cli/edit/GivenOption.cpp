#include "cli/edit/GivenOption.h"

#include <charconv>
#include <string_view>

#include "cli/CommandLine.h"
#include "cli/Text.h"
#include "platform/common/TextTools.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char NO_NUMBER[] = " is no whole number of 32 bits";
constexpr const char NO_FLAG[] = " is neither true nor false";

[[noreturn]] void Refuse(const SGivenOption& option, const char* pWhy) {
    throw CToolError(EVerdict::USAGE, option.pOption->get_name() + ": " + Text::Quoted(option.strText) + pWhy);
}

}  // namespace

bool SGivenOption::IsGiven() const {
    return pOption != nullptr && pOption->count() != 0;
}

std::optional<int> ReadNumber(const std::string& strText) {
    int iNumber = 0;
    const char* pLast = strText.data() + strText.size();
    const auto [pEnd, eError] = std::from_chars(strText.data(), pLast, iNumber);
    return eError == std::errc() && pEnd == pLast ? std::optional(iNumber) : std::nullopt;
}

int SGivenOption::ToNumber() const {
    const std::optional<int> number = ReadNumber(strText);
    if (!number) {
        Refuse(*this, NO_NUMBER);
    }
    return *number;
}

bool SGivenOption::ToFlag() const {
    const bool bTrue = OS::EqualsNoCase(strText, std::string_view(Value::TRUE_TEXT));
    if (!bTrue && !OS::EqualsNoCase(strText, std::string_view(Value::FALSE_TEXT))) {
        Refuse(*this, NO_FLAG);
    }
    return bTrue;
}

void AddGivenOption(CLI::App& command, const char* pName, const char* pValue, SGivenOption& option,
                    const char* pSummary) {
    option.pOption =
        CCommandLine::AllowEmpty(CCommandLine::AddText(command, pName, pValue, option.strText, pSummary)->take_last());
}
