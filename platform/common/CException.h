#pragma once

#include <exception>
#include <string>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

namespace OS {

/**
 * The one exception of the platform: what failed, in words. Foreign libraries' errors are translated into it where they
 * are reported. Also a std::exception, so that a foreign caller can catch it.
 */
class DLP_PLATFORM_API CException : public std::exception {
  public:
    /**
     * @param iCode the reporter's own number, 0 when it has none
     * @param strMessage what was being done and why it failed
     * @param iLine line in the text at fault, or in the source that reports; 0 when unknown
     */
    CException(int iCode, OS::x_wstring strMessage, int iLine);
    ~CException() override;

    int GetErrorCode() const noexcept { return m_iCode; }
    const OS::x_wstring& GetErrorMessage() const noexcept { return m_strMessage; }
    int GetErrorLine() const noexcept { return m_iLine; }

    /** @return the message in UTF-8; characters that UTF-8 cannot carry appear as U+FFFD */
    const char* what() const noexcept override;

  private:
    int m_iCode;
    int m_iLine;
    OS::x_wstring m_strMessage;
    std::string m_strWhat;
};

}  // namespace OS
