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

struct SCharacters {
    wchar_t cFirst;
    wchar_t cLast;
};

/**
 * In order: C0 with DEL and C1, U+2028 and U+2029, U+FFF9 to U+FFFB, and all that has Default_Ignorable_Code_Point in
 * the Unicode Standard (UAX #44, DerivedCoreProperties), that is, may be left out of what is shown; all controls of
 * direction are among these.
 */
constexpr SCharacters CONTROLS[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x061C, 0x061C},
    {0x115F, 0x1160}, {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F}, {0x3164, 0x3164},   {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

}  // namespace

bool IsControl(wchar_t c) {
    if (c >= L' ' && c <= L'~') {
        return false;
    }
    const auto* pFound = std::lower_bound(std::begin(CONTROLS), std::end(CONTROLS), c,
                                          [](const SCharacters& some, wchar_t cOne) { return some.cLast < cOne; });
    return pFound != std::end(CONTROLS) && pFound->cFirst <= c;
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
