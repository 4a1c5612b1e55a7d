#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

/**
 * Wide text to UTF-8 and back. Three degrees of strictness: the strict ones throw, the lenient ones (for messages, which
 * must never fail) write U+FFFD, the loose ones carry every wchar_t value there and back (for records in memory, whose
 * setters take anything and whose saving is strict).
 */
namespace OS {

/**
 * Strict: one code point per wchar_t to UTF-8.
 * @param iFlags reserved, 0
 * @throws OS::CException naming the position when a value is no Unicode scalar value (a surrogate, above U+10FFFF)
 */
DLP_PLATFORM_API x_astring WCharToChar(const x_wstring& strText, int iFlags = 0);

/**
 * Strict: iLength bytes of UTF-8 to wide text, U+0000 included.
 * @param iFlags reserved, 0
 * @throws OS::CException whose message gives the byte offset of the first overlong form, surrogate, value above U+10FFFF
 *         or sequence cut short
 */
DLP_PLATFORM_API x_wstring UTF8CharToWChar(const char* pText, std::size_t iLength, int iFlags = 0);

/** Strict, for views. */
inline x_wstring WideText(std::string_view strUtf8) { return UTF8CharToWChar(strUtf8.data(), strUtf8.size()); }

/** @return the offset of the first byte that is not strict UTF-8, npos when all is well */
DLP_PLATFORM_API std::size_t FindInvalidUtf8(std::string_view strUtf8) noexcept;

/** @return the number of code points in well-formed UTF-8 */
DLP_PLATFORM_API std::size_t CountCodePoints(std::string_view strUtf8) noexcept;

/** Lenient: each value that is no scalar value becomes U+FFFD. */
DLP_PLATFORM_API std::string Utf8Lenient(std::wstring_view strText);
/** Lenient: each byte that belongs to no well-formed sequence becomes U+FFFD. */
DLP_PLATFORM_API x_wstring WideLenient(std::string_view strUtf8);

/** Loose: as UTF-8, with values that are none in the same scheme (up to seven bytes); WideLoose gives them back. */
DLP_PLATFORM_API std::string Utf8Loose(std::wstring_view strText);
DLP_PLATFORM_API x_wstring WideLoose(std::string_view strLoose);

}  // namespace OS
