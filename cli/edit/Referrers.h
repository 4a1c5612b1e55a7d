#pragma once

#include <string>
#include <vector>

#include "platform/store/CSettingsRow.h"
#include "templates/MatchRule.h"

/** @return how building blocks refer to records of the kind; UNKNOWN: they do not */
EElementType GetElementType(ESettingsKind eKind);

/**
 * @return the stored templates that refer to a record of that kind and internal name
 * @throws OS::CException when the store fails; Signals::SInterrupted
 */
std::vector<CSettingsRow> FindReferrers(ESettingsKind eKind, const std::string& strName);

/** Makes a template's references to one name references to another. */
void RenameReferences(ESettingsKind eKind, const std::string& strOld, const std::string& strNew, CSettingsRow& row);

/** Writes a name into an element's markup. @return it; as it was when it does not parse or the root is another one */
std::string RenameElement(const std::string& strMarkup, const char* pElement, const std::string& strName);
