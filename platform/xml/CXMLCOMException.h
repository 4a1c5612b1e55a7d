#pragma once

#include <utility>

#include "platform/common/CException.h"
#include "platform/common/PlatformExport.h"

/** What the XML layer throws: the same exception as the common one, told apart by its type. */
template <class B>
class DLP_PLATFORM_API CXMLCOMException : public B {
  public:
    CXMLCOMException(int iCode, OS::x_wstring strMessage, int iLine) : B(iCode, std::move(strMessage), iLine) {}
};

using CXMLException = CXMLCOMException<OS::CException>;
