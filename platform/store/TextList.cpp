#include "platform/store/TextList.h"

namespace {
constexpr char END = '\n';
constexpr char ESCAPE = '\\';
constexpr char ESCAPED_END = 'n';
}  // namespace

std::string JoinTextList(const std::vector<std::string>& vecTexts) {
    std::string strJoined;
    for (const std::string& strText : vecTexts) {
        for (const char c : strText) {
            if (c == END || c == ESCAPE) {
                strJoined += ESCAPE;
            }
            strJoined += c == END ? ESCAPED_END : c;
        }
        strJoined += END;
    }
    return strJoined;
}

std::vector<std::string> SplitTextList(std::string_view strJoined) {
    std::vector<std::string> vecTexts;
    std::string strText;
    bool bEscaped = false;
    for (const char c : strJoined) {
        if (bEscaped) {
            strText += c == ESCAPED_END ? END : c;
            bEscaped = false;
        } else if (c == ESCAPE) {
            bEscaped = true;
        } else if (c == END) {
            vecTexts.push_back(std::move(strText));
            strText.clear();
        } else {
            strText += c;
        }
    }
    if (!strText.empty()) {
        vecTexts.push_back(std::move(strText));
    }
    return vecTexts;
}
