#pragma once

#include "platform/common/x_wstring.h"

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
