#include "cli/JsonText.h"

#include <algorithm>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"

namespace {

using Json = nlohmann::ordered_json;

void AppendEscape(wchar_t c, std::string& strText) {
    constexpr wchar_t FIRST_PAIR = 0x10000;
    if (c >= FIRST_PAIR) {
        AppendEscape(static_cast<wchar_t>(0xD800 + ((c - FIRST_PAIR) >> 10)), strText);
        c = static_cast<wchar_t>(0xDC00 + ((c - FIRST_PAIR) & 0x3FF));
    }
    strText += fmt::format("\\u{:04X}", static_cast<unsigned>(c));
}

}  // namespace

/** JSON leaves characters as they are that a terminal obeys; they stand inside texts alone, line ends between them. */
std::string ToJsonText(const Json& value, int iIndent) {
    std::string strText = value.dump(iIndent, ' ', false, Json::error_handler_t::replace);
    if (std::all_of(strText.begin(), strText.end(), [](char c) { return c >= 0 && c < 0x7F; })) {
        return strText;
    }
    std::string strPrintable;
    std::wstring strPart;
    for (const wchar_t c : OS::WideText(strText)) {
        if (DBG::IsControl(c) && c != L'\n') {
            strPrintable += OS::Utf8Lenient(strPart);
            strPart.clear();
            AppendEscape(c, strPrintable);
        } else {
            strPart += c;
        }
    }
    return strPrintable + OS::Utf8Lenient(strPart);
}
