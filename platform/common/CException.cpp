#include "platform/common/CException.h"

#include <algorithm>
#include <utility>

#include "platform/common/TextConversion.h"

namespace OS {

namespace {

/** A zero character would end it before the message does. */
std::string MakeWhat(std::wstring strMessage) {
    constexpr wchar_t REPLACEMENT = 0xFFFD;
    std::replace(strMessage.begin(), strMessage.end(), L'\0', REPLACEMENT);
    return Utf8Lenient(strMessage);
}

}  // namespace

CException::CException(int iCode, OS::x_wstring strMessage, int iLine)
    : m_iCode(iCode), m_iLine(iLine), m_strMessage(std::move(strMessage)), m_strWhat(MakeWhat(m_strMessage)) {}

CException::~CException() = default;

const char* CException::what() const noexcept {
    return m_strWhat.c_str();
}

}  // namespace OS
