#include "platform/common/TextTools.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace OS {

namespace {

template <class C>
constexpr C Upper(C c) {
    return c >= 'a' && c <= 'z' ? static_cast<C>(c - 'a' + 'A') : c;
}

template <class C>
std::basic_string_view<C> TrimText(std::basic_string_view<C> strText) noexcept {
    while (!strText.empty() && IsSpace(static_cast<wchar_t>(strText.front()))) {
        strText.remove_prefix(1);
    }
    while (!strText.empty() && IsSpace(static_cast<wchar_t>(strText.back()))) {
        strText.remove_suffix(1);
    }
    return strText;
}

template <class C>
bool EqualTexts(std::basic_string_view<C> strLeft, std::basic_string_view<C> strRight) noexcept {
    return std::equal(strLeft.begin(), strLeft.end(), strRight.begin(), strRight.end(),
                      [](C left, C right) { return Upper(left) == Upper(right); });
}

template <class C>
int ReadInt(std::basic_string_view<C> strText) noexcept {
    strText = TrimText(strText);
    const bool bNegative = !strText.empty() && strText.front() == '-';
    if (bNegative || (!strText.empty() && strText.front() == '+')) {
        strText.remove_prefix(1);
    }
    // Counted below zero, where there is one number more than above.
    constexpr std::int64_t iLowest = std::numeric_limits<int>::min();
    std::int64_t iValue = 0;
    for (const C c : strText) {
        if (c < '0' || c > '9') {
            break;
        }
        iValue = std::max(iLowest, iValue * 10 - (c - '0'));
    }
    return static_cast<int>(bNegative ? iValue : std::min<std::int64_t>(-iValue, std::numeric_limits<int>::max()));
}

}  // namespace

std::wstring_view Trim(std::wstring_view strText) noexcept {
    return TrimText(strText);
}
std::string_view Trim(std::string_view strText) noexcept {
    return TrimText(strText);
}

std::wstring ToUpper(std::wstring_view strText) {
    std::wstring strUpper(strText);
    std::transform(strUpper.begin(), strUpper.end(), strUpper.begin(), Upper<wchar_t>);
    return strUpper;
}

bool EqualsNoCase(std::string_view strLeft, std::string_view strRight) noexcept {
    return EqualTexts(strLeft, strRight);
}
bool EqualsNoCase(std::wstring_view strLeft, std::wstring_view strRight) noexcept {
    return EqualTexts(strLeft, strRight);
}

int WideToInt(std::wstring_view strText) noexcept {
    return ReadInt(strText);
}
int TextToInt(std::string_view strText) noexcept {
    return ReadInt(strText);
}

}  // namespace OS
