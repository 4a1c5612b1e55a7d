#include "platform/logging/DebugLog.h"

#include <fmt/printf.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>
#include <vector>

namespace DBG {

namespace {

struct SListener {
    std::function<void(const CLogRecord&)> fnSink;
    std::function<bool(int)> fnFilter;
};

/** Never destroyed: whoever logs while the process ends still finds it. */
SListener& Listener() {
    static SListener* const s_pListener = new SListener;
    return *s_pListener;
}

using CFormatContext = fmt::wprintf_context;
using CFormatArgument = fmt::basic_format_arg<CFormatContext>;
using CFormatArguments = fmt::basic_format_args<CFormatContext>;

template <class T>
CFormatArgument MakeArgument(const T& value) {
    const auto store = fmt::make_wprintf_args(value);
    return CFormatArguments(store).get(0);
}

/** The text arguments become views, so that a null is written out and no text is copied before it is formatted. */
struct SMakeArgument {
    CFormatArgument operator()(const wchar_t* pText) const {
        return MakeArgument(std::wstring_view(pText != nullptr ? pText : L"(null)"));
    }
    template <class T>
    CFormatArgument operator()(const T& value) const {
        return MakeArgument(value);
    }
};

std::wstring Format(const wchar_t* pFormat, const std::vector<CLogArgument>& vecArguments) {
    std::vector<CFormatArgument> vecFormatArguments;
    std::transform(vecArguments.begin(), vecArguments.end(), std::back_inserter(vecFormatArguments),
                   [](const CLogArgument& argument) { return std::visit(SMakeArgument(), argument); });
    try {
        return fmt::vsprintf(std::wstring_view(pFormat),
                             CFormatArguments(vecFormatArguments.data(), static_cast<int>(vecFormatArguments.size())));
    } catch (const fmt::format_error&) {
        return pFormat;  // better than to lose the line
    }
}

void Deliver(int iLevel, const char* pSource, int iLine, const wchar_t* pFormat,
             const std::vector<CLogArgument>& vecArguments) {
    if (IsListened(iLevel)) {
        Listener().fnSink({iLevel, pSource, iLine, Format(pFormat, vecArguments)});
    }
}

std::wstring WidenBytes(const char* pText) {
    std::wstring strWide;
    for (; *pText != '\0'; ++pText) {
        strWide += static_cast<wchar_t>(static_cast<unsigned char>(*pText));
    }
    return strWide;
}

/** The bytes in memory of the text that an argument points to; the zeros that end a wide text end the bytes as well. */
const char* BytesOf(const CLogArgument& argument) {
    if (const auto* pText = std::get_if<std::wstring_view>(&argument)) {
        return reinterpret_cast<const char*>(pText->data());
    }
    const auto* pText = std::get_if<const wchar_t*>(&argument);
    return pText != nullptr ? reinterpret_cast<const char*>(*pText) : nullptr;
}

}  // namespace

bool IsControl(wchar_t c) {
    constexpr std::wstring_view CONTROLS =
        L"\u007F\u00AD\u061C\u180E\u200B\u200E\u200F\u2028\u2029\u202A\u202B\u202C\u202D\u202E\u2060\u2066\u2067"
        L"\u2068\u2069\uFEFF\uFFF9\uFFFA\uFFFB";
    const bool bC0 = c >= 0 && c < 0x20;
    const bool bC1 = c >= 0x80 && c < 0xA0;
    const bool bTag = c >= 0xE0000 && c < 0xE0080;
    return bC0 || bC1 || bTag || CONTROLS.find(c) != std::wstring_view::npos;
}

void SetLogSink(std::function<void(const CLogRecord&)> fnSink) {
    Listener().fnSink = std::move(fnSink);
}

void SetLogFilter(std::function<bool(int)> fnFilter) {
    Listener().fnFilter = std::move(fnFilter);
}

bool IsListened(int iLevel) noexcept {
    const SListener& listener = Listener();
    try {
        return listener.fnSink && (!listener.fnFilter || listener.fnFilter(iLevel));
    } catch (...) {
        return false;
    }
}

std::wstring EscapeControls(const std::wstring& strText) {
    std::wstring strEscaped;
    strEscaped.reserve(strText.size());
    for (const wchar_t c : strText) {
        if (IsControl(c)) {
            strEscaped += fmt::format(L"\\u{:04X}", static_cast<unsigned>(c));
        } else if (c == L'\\') {
            strEscaped += L"\\\\";
        } else {
            strEscaped += c;
        }
    }
    return strEscaped;
}

namespace Detail {

void Write(int iLevel, const char* pSource, int iLine, const wchar_t* pFormat, const CLogArgument* pArguments,
           int iCount) noexcept {
    try {
        Deliver(iLevel, pSource, iLine, pFormat, std::vector<CLogArgument>(pArguments, pArguments + iCount));
    } catch (...) {  // a log line changes nothing for the code that writes it
    }
}

void Write(int iLevel, const char* pSource, int iLine, const char* pFormat, const CLogArgument* pArguments,
           int iCount) noexcept {
    try {
        std::vector<CLogArgument> vecArguments(pArguments, pArguments + iCount);
        std::vector<std::wstring> vecTexts(vecArguments.size());
        for (std::size_t i = 0; i < vecArguments.size(); ++i) {
            if (const char* pBytes = BytesOf(vecArguments[i])) {
                vecTexts[i] = WidenBytes(pBytes);
                vecArguments[i] = std::wstring_view(vecTexts[i]);
            }
        }
        Deliver(iLevel, pSource, iLine, WidenBytes(pFormat).c_str(), vecArguments);
    } catch (...) {
    }
}

}  // namespace Detail

}  // namespace DBG
