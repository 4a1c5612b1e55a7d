#include "xml/XmlHelpers.h"

#include "xml/Vocabulary.h"

namespace XmlHelpers {

namespace {
std::wstring Path(std::wstring strStart, std::initializer_list<std::wstring_view> lstNames) {
    for (const std::wstring_view strName : lstNames) {
        strStart += L'/';
        strStart += strName;
    }
    return strStart;
}
}  // namespace

std::wstring RootPath(std::initializer_list<std::wstring_view> lstNames) {
    return Path(std::wstring(), lstNames);
}

std::wstring RelativePath(std::initializer_list<std::wstring_view> lstNames) {
    return Path(L".", lstNames);
}

std::wstring EmptyElement(std::wstring_view strName) {
    std::wstring strText = L"<";
    strText += strName;
    strText += L"></";
    strText += strName;
    strText += L'>';
    return strText;
}

const char* FlagText(bool bFlag) {
    return bFlag ? Value::TRUE_TEXT : Value::FALSE_TEXT;
}

}  // namespace XmlHelpers
