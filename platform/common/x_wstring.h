#pragma once

#include <string>

#include "platform/common/PlatformExport.h"

namespace OS {

/**
 * Wide text at every interface: a std::wstring with the few operations that the rooms above share.
 * One wchar_t is one code point. Converts to and from std::wstring without ceremony.
 */
class DLP_PLATFORM_API x_wstring : public std::wstring {
  public:
    using std::wstring::wstring;
    x_wstring() = default;
    x_wstring(const std::wstring& strText) : std::wstring(strText) {}
    x_wstring(std::wstring&& strText) noexcept : std::wstring(std::move(strText)) {}

    /** @return a copy with & < > " ' written as &amp; &lt; &gt; &quot; &apos;; text that is escaped is escaped again. */
    x_wstring EscapeSpecialCharacters() const;

    /**
     * Orders two texts without regard to the case of ASCII letters; all other characters compare as they are, in any
     * locale.
     * @return 0 when equal, below 0 when this text comes first, above 0 otherwise
     */
    int CompareNoCase(const std::wstring& strOther) const;

    /** Removes trailing ASCII white space (blank, TAB, LF, VT, FF, CR) in place. @return this text */
    x_wstring& TrimRight();
};

/** Narrow text at the interfaces; UTF-8 wherever it came from wide text. */
class x_astring : public std::string {
  public:
    using std::string::string;
    x_astring() = default;
    x_astring(const std::string& strText) : std::string(strText) {}
    x_astring(std::string&& strText) noexcept : std::string(std::move(strText)) {}
};

}  // namespace OS
