#include "platform/common/CException.h"

#include <utility>

#include "platform/common/TextConversion.h"

namespace OS {

CException::CException(int iCode, OS::x_wstring strMessage, int iLine)
    : m_iCode(iCode), m_iLine(iLine), m_strMessage(std::move(strMessage)), m_strWhat(Utf8Lenient(m_strMessage)) {}

CException::~CException() = default;

const char* CException::what() const noexcept {
    return m_strWhat.c_str();
}

}  // namespace OS
