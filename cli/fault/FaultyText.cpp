#include "cli/fault/FaultyText.h"

#include <algorithm>

namespace FaultyText {

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (c & '\x80') != 0 ||
           std::string_view("_:-.#").find(c) != std::string_view::npos;
}

std::string_view TakeName(std::string_view strText) {
    const auto itEnd = std::find_if_not(strText.begin(), strText.end(), IsNameCharacter);
    return strText.substr(0, static_cast<std::size_t>(itEnd - strText.begin()));
}

bool IsAttribute(std::string_view strText) {
    const std::string_view strName = TakeName(strText);
    const std::string_view strBehind = SkipSpace(strText.substr(strName.size()));
    const std::string_view strValue = SkipSpace(strBehind.substr(strBehind.empty() ? 0 : 1));
    return !strName.empty() && strBehind.substr(0, 1) == "=" && !strValue.empty() &&
           QUOTES.find(strValue.front()) != std::string_view::npos;
}

std::string_view SkipSpace(std::string_view strText) {
    return strText.substr(std::min(strText.find_first_not_of(SPACE), strText.size()));
}

std::string_view TrimEnd(std::string_view strText) {
    return strText.substr(0, strText.find_last_not_of(SPACE) + 1);
}

SLastValue FindLastValue(std::string_view strTag) {
    SLastValue value;
    char cQuote = '\0';
    for (std::size_t i = 0; i < strTag.size(); ++i) {
        const char c = strTag[i];
        if (cQuote == '\0' && QUOTES.find(c) != std::string_view::npos) {
            cQuote = c;
            value.iQuote = i;
        } else if (c == cQuote) {
            cQuote = '\0';
        }
    }
    value.bOpen = cQuote != '\0';
    return value;
}

bool IsInValue(std::string_view strTag) {
    return FindLastValue(strTag).bOpen;
}

}  // namespace FaultyText
