#pragma once

#include "cli/edit/RecordFields.h"
#include "digital_assets/AssetFormat.h"

/**
 * Keeps of an asset only what its type uses, as an import does.
 * @param fields those that were given and are applied
 * @throws CToolError USAGE for a type that there is not; INVALID for a field that the type does not have, and for an
 * empty display name
 */
void CompleteAsset(const DigitalAssets::SAssetFormat& format, const CRecordFields& fields, CSettingsRow& row);
