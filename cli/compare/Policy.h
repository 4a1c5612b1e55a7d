#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cli/ImportReport.h"
#include "platform/store/CSettingsRow.h"
#include "platform/store/SettingsSchema.h"

class CCommandContext;

/** A policy as it is compared: each item as the row that an import of it would store. */
struct SPolicy {
    using Items = std::map<std::string, CSettingsRow>;

    std::string strPlace;  ///< as it was given
    /** By kind and internal name. A stored record that cannot be found by its name stands under its subject. */
    std::array<Items, SETTINGS_KINDS> aItems;
    ReportItems vecLeftOut;  ///< elements of a file that import would not take either
    ReportItems vecRefused;  ///< templates that are here all the same, though no import takes their rules

    Items& Of(ESettingsKind eKind) { return aItems[static_cast<std::size_t>(eKind)]; }
    const Items& Of(ESettingsKind eKind) const { return aItems[static_cast<std::size_t>(eKind)]; }
};

/** @throws CToolError (INVALID for a file, STORE for a store) */
SPolicy ReadPolicyOf(CCommandContext& context, const std::string& strPlace);

/** Warns of each element that was left out of it, and of each template that no import takes. */
void WarnOfLeftOut(CCommandContext& context, const SPolicy& policy);
