#pragma once

#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/common/TextConversion.h"
#include "platform/common/x_wstring.h"

/** Texts between JSON and the library. */

/** Stands, with four hexadecimal digits after it, for a lone surrogate, which JSON cannot carry. */
inline constexpr wchar_t SURROGATE_MARK = 0xF8FF;

inline OS::x_wstring WideOf(const nlohmann::ordered_json& text) {
    constexpr std::size_t DIGITS = 4;
    OS::x_wstring strText = OS::WideText(text.get_ref<const std::string&>());
    for (std::size_t i = strText.find(SURROGATE_MARK); i != std::wstring::npos; i = strText.find(SURROGATE_MARK, i)) {
        const int iSurrogate = std::stoi(strText.substr(i + 1, DIGITS), nullptr, 16);
        strText.replace(i, 1 + DIGITS, 1, static_cast<wchar_t>(iSurrogate));
    }
    return strText;
}

inline std::vector<OS::x_wstring> WideListOf(const nlohmann::ordered_json& texts) {
    std::vector<OS::x_wstring> vecTexts;
    for (const auto& text : texts) {
        vecTexts.push_back(WideOf(text));
    }
    return vecTexts;
}

/** Lone surrogates come out as U+FFFD. */
inline nlohmann::ordered_json JsonOf(const std::wstring& strText) {
    return OS::Utf8Lenient(strText);
}

/** @return a vector's or a set's texts, in its order */
template <class Texts>
nlohmann::ordered_json JsonListOf(const Texts& texts) {
    auto list = nlohmann::ordered_json::array();
    for (const std::wstring& strText : texts) {
        list.push_back(JsonOf(strText));
    }
    return list;
}

/** @return the bytes of {"hex": "efbbbf"}, or those of a text in UTF-8 */
inline std::string BytesOf(const nlohmann::ordered_json& content) {
    if (content.is_string()) {
        return content.get<std::string>();
    }
    const std::string& strHex = content.at("hex").get_ref<const std::string&>();
    std::string strBytes;
    for (std::size_t i = 0; i + 1 < strHex.size(); i += 2) {
        strBytes.push_back(static_cast<char>(std::stoi(strHex.substr(i, 2), nullptr, 16)));
    }
    return strBytes;
}
