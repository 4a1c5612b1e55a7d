#pragma once

#include "cli/Verdict.h"
#include "platform/store/CSettingsRow.h"

class CCommandContext;
class CStoreEdit;

/**
 * Stores a record in place of another one, or as a new one, and tells what differs as dlpctl diff does. What dlpctl
 * check finds in it is warned of; whatever an import would refuse is refused, but for EXCEPT.
 * @param pBefore the record as it is stored; null: there is none yet
 * @param after of the same key
 * @throws CToolError (INVALID) for what is refused
 */
EVerdict FinishChange(CCommandContext& context, CStoreEdit& edit, const CSettingsRow* pBefore, CSettingsRow after);
