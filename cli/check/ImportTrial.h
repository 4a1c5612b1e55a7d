#pragma once

#include <vector>

#include "digital_assets/ImportObserver.h"
#include "platform/common/x_wstring.h"

class CCommandContext;
class CPolicyDocument;

/** What an import would make of a document. */
struct STrial {
    int iResult = 0;  ///< the library's
    std::vector<SImportItem> vecItems;
};

/**
 * Runs the import itself; the caller's unit of work undoes it.
 * @param bAssetsOnly as dlpctl assets import does
 */
STrial TryImport(const CCommandContext& context, CPolicyDocument& document, bool bAssetsOnly);

/** Language and version, which an import sets for the whole process, as they were. */
class CKeptSettings {
  public:
    CKeptSettings();
    CKeptSettings(const CKeptSettings&) = delete;
    CKeptSettings& operator=(const CKeptSettings&) = delete;
    ~CKeptSettings();

  private:
    OS::x_wstring m_strVersion;
    OS::x_wstring m_strLanguage;
};
