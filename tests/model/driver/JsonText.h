#pragma once

#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/common/TextConversion.h"
#include "platform/common/x_wstring.h"

/** Texts between JSON and the library. */

inline OS::x_wstring WideOf(const nlohmann::ordered_json& text) {
    return OS::WideText(text.get_ref<const std::string&>());
}

inline std::vector<OS::x_wstring> WideListOf(const nlohmann::ordered_json& texts) {
    std::vector<OS::x_wstring> vecTexts;
    for (const auto& text : texts) {
        vecTexts.push_back(WideOf(text));
    }
    return vecTexts;
}

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
