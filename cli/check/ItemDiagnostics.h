#pragma once

#include <string_view>

#include "cli/check/Diagnostics.h"

class CXMLView;
struct SReportItem;

/**
 * Tells of an item that an import does not take.
 * @param strText what the item's offset counts in
 * @return false when a rule is to blame: nothing is told, for there is more to say of its parts
 */
bool TellItem(const SReportItem& item, std::string_view strText, CDiagnostics& diagnostics);
/** Tells of each foreign child of a template. */
void TellForeign(const CXMLView& element, CDiagnostics& diagnostics);
/** Tells of all that a template has, and of what they refer to that is not stored. */
void TellForeign(const SReportItem& item, CDiagnostics& diagnostics);
/** Tells of a template over whose rule TellItem gave false. */
void TellFault(const SReportItem& item, CDiagnostics& diagnostics);
