#pragma once

#include <string>
#include <string_view>

#include "platform/common/PlatformExport.h"

/** Small text operations that look at ASCII only and so depend on no locale. */
namespace OS {

/** @return true for blank, TAB, LF, VT, FF and CR */
constexpr bool IsSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

/** @return the text without leading and trailing white space (IsSpace) */
DLP_PLATFORM_API std::wstring_view Trim(std::wstring_view strText) noexcept;
DLP_PLATFORM_API std::string_view Trim(std::string_view strText) noexcept;

/** @return the text with a to z turned to A to Z */
DLP_PLATFORM_API std::wstring ToUpper(std::wstring_view strText);

/** @return whether both texts are equal without regard to the case of ASCII letters */
DLP_PLATFORM_API bool EqualsNoCase(std::string_view strLeft, std::string_view strRight) noexcept;
DLP_PLATFORM_API bool EqualsNoCase(std::wstring_view strLeft, std::wstring_view strRight) noexcept;

/**
 * Reads a decimal number: white space, one optional sign, then digits as far as they go.
 * @return the number, 0 when there are no digits, 2147483647 or -2147483648 when it is larger or smaller
 */
DLP_PLATFORM_API int WideToInt(std::wstring_view strText) noexcept;
DLP_PLATFORM_API int TextToInt(std::string_view strText) noexcept;

}  // namespace OS
