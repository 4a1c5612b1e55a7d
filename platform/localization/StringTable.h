#pragma once

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

namespace SYS {

/** Number of the text that names the current language; has no text unless the owner of the installation gives one. */
inline constexpr int STRING_LANGUAGE = 1009;

/**
 * A text by its number: what SetStringW set, else the line of config/strings.txt under the installation directory
 * (number, TAB, text; UTF-8; lines beginning with "#" are comments), read at the first call and again after the
 * installation directory changed. Safe on any thread.
 * @return the text; empty when the number has none
 */
DLP_PLATFORM_API OS::x_wstring LoadStringW(int iNumber);

/** Sets a text for this process; it wins over the file, also when it is empty. */
DLP_PLATFORM_API void SetStringW(int iNumber, const OS::x_wstring& strText);

}  // namespace SYS
