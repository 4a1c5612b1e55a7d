#include "platform/common/x_wstring.h"

#include "platform/common/TextTools.h"

namespace OS {

namespace {

const wchar_t* EntityOf(wchar_t c) {
    switch (c) {
        case L'&':
            return L"&amp;";
        case L'<':
            return L"&lt;";
        case L'>':
            return L"&gt;";
        case L'"':
            return L"&quot;";
        case L'\'':
            return L"&apos;";
        default:
            return nullptr;
    }
}

}  // namespace

x_wstring x_wstring::EscapeSpecialCharacters() const {
    x_wstring strEscaped;
    strEscaped.reserve(size());
    for (const wchar_t c : *this) {
        if (const wchar_t* pEntity = EntityOf(c)) {
            strEscaped += pEntity;
        } else {
            strEscaped += c;
        }
    }
    return strEscaped;
}

int x_wstring::CompareNoCase(const std::wstring& strOther) const {
    return ToUpper(*this).compare(ToUpper(strOther));
}

x_wstring& x_wstring::TrimRight() {
    while (!empty() && IsSpace(back())) {
        pop_back();
    }
    return *this;
}

}  // namespace OS
