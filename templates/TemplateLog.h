#pragma once

#include <string_view>

#include "digital_assets/AssetLog.h"

/** Lines of the template manager that more than one of its operations writes. */
namespace TemplateLog {

inline constexpr char MANAGER_SOURCE[] = ".\\DLPTemplateMgr.cpp";

using DigitalAssets::NODE_NOT_FOUND;
using DigitalAssets::NOT_FOUND;
inline constexpr wchar_t TYPE_NOT_SUPPORTED[] = L"this digital asset type is not supported type = %s";

/** FindTemplate is entered. @param strValue UTF-8 */
void FindEntered(int iSearchField, std::string_view strValue);
/** FindTemplate is left. */
void FindLeft(bool bFound);
/** The list of templates was read, or the records that were wanted of it. */
void ListRead();
/** It could not be read: the line of the list itself. */
void ListFailed();
/** It could not be read: the line of the operation that wanted it. */
void ListUnavailable();

}  // namespace TemplateLog
