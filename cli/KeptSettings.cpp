#include "cli/KeptSettings.h"

#include "api/CDLPDigitalAssetsParser.h"

CKeptSettings::CKeptSettings()
    : m_strVersion(CDLPDigitalAssetsParser::GetVersion()), m_strLanguage(CDLPDigitalAssetsParser::GetLanguage()) {}

CKeptSettings::~CKeptSettings() {
    CDLPDigitalAssetsParser::SetVersion(m_strVersion);
    CDLPDigitalAssetsParser::SetLanguage(m_strLanguage);
}
