#include "cli/edit/AssetFields.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "cli/Kinds.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char NO_DISPLAY_NAME[] = "--display-name: no import takes an item whose display name is empty";

/** @return null when there is none of that name, in any case of letters */
const DigitalAssets::SType* FindType(const DigitalAssets::SAssetFormat& format, const std::string& strName) {
    const auto itType = std::find_if(format.aTypes.begin(), format.aTypes.end(), [&](const DigitalAssets::SType& type) {
        return OS::EqualsNoCase(strName, std::string_view(type.pName));
    });
    return itType == format.aTypes.end() ? nullptr : &*itType;
}

std::string ListTypes(const DigitalAssets::SAssetFormat& format) {
    std::string strTypes;
    for (const DigitalAssets::SType& type : format.aTypes) {
        strTypes += (strTypes.empty() ? "" : ", ") + Text::Quoted(type.pName);
    }
    return strTypes;
}

}  // namespace

void CompleteAsset(const DigitalAssets::SAssetFormat& format, const CRecordFields& fields, CSettingsRow& row) {
    const DigitalAssets::SType* pType = FindType(format, row.GetText(format.iTypeColumn));
    if (pType != nullptr) {
        row.SetText(format.iTypeColumn, pType->pName);
    } else if (fields.IsGiven(format.iTypeColumn)) {
        throw CToolError(EVerdict::USAGE, "--type: there is no type " + Text::Quoted(row.GetText(format.iTypeColumn)) +
                                              "; write one of " + ListTypes(format));
    }
    if (row.GetText(DISPLAY_NAME_COLUMN).empty()) {
        throw CToolError(EVerdict::INVALID, NO_DISPLAY_NAME);
    }
    DigitalAssets::Normalise(format, row);
    if (const SRecordField* pLost = fields.FindLost(row, format.iTypeColumn)) {
        throw CToolError(EVerdict::INVALID, std::string(pLost->pOption) + ": type " +
                                                Text::Quoted(row.GetText(format.iTypeColumn)) + " of " +
                                                GetKind(row.GetKind()).pWords + " does not have it");
    }
}
