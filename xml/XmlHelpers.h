#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "platform/common/PlatformExport.h"

/** Texts around the vocabulary's names, made at run time. */
namespace XmlHelpers {

/** @return "/a/b/c" */
DLP_PLATFORM_API std::wstring RootPath(std::initializer_list<std::wstring_view> lstNames);
/** @return "./a/b/c" */
DLP_PLATFORM_API std::wstring RelativePath(std::initializer_list<std::wstring_view> lstNames);
/** @return "<name></name>" */
DLP_PLATFORM_API std::wstring EmptyElement(std::wstring_view strName);
/** @return "true" or "false" */
DLP_PLATFORM_API const char* FlagText(bool bFlag);

}  // namespace XmlHelpers
