#pragma once

#include <string>

#include "platform/common/CException.h"

/** @return the message of the OS::CException that the function throws, in UTF-8; "" when it throws none */
template <class Function>
std::string ExceptionText(Function&& fnTested) {
    try {
        fnTested();
    } catch (const OS::CException& exception) {
        return exception.what();
    }
    return std::string();
}
