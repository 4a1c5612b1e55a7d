#include "api/CDLPDigitalAssetsParser.h"

#include "digital_assets/CReportedImport.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/common/TextConversion.h"
#include "platform/localization/StringTable.h"
#include "platform/xml/CXMLWriter.h"
#include "xml/CPolicyDocument.h"

using DigitalAssets::EImport;

namespace {

int Import(EImport eImport, const OS::x_wstring& strScope, const OS::x_wstring& strXml,
           std::vector<OS::x_wstring>& vecSkipped) {
    CPolicyDocument document(strXml);
    CReportedImport reported(strXml);
    const int iResult = DigitalAssets::Import(eImport, strScope, document, vecSkipped, reported.GetObserver());
    reported.Finish();
    return iResult;
}

/** Hands out as wide text what fnWrite appends as UTF-8; strOut stays as it was when it answers false. */
template <class F>
bool WriteWide(std::wstring& strOut, F fnWrite) {
    std::string strUtf8;
    if (!fnWrite(strUtf8)) {
        return false;
    }
    strOut = OS::WideText(strUtf8);
    return true;
}

}  // namespace

std::wstring CDLPDigitalAssetsParser::s_strVersion = DigitalAssets::STANDARD_VERSION;
std::wstring CDLPDigitalAssetsParser::s_strLanguage;

void CDLPDigitalAssetsParser::SetVersion(const std::wstring& strVersion) {
    s_strVersion = strVersion;
}

std::wstring CDLPDigitalAssetsParser::GetVersion() {
    return s_strVersion;
}

void CDLPDigitalAssetsParser::SetLanguage(const std::wstring& strLanguage) {
    s_strLanguage = strLanguage;
}

std::wstring CDLPDigitalAssetsParser::GetLanguage() {
    if (s_strLanguage.empty()) {
        s_strLanguage = SYS::LoadStringW(SYS::STRING_LANGUAGE);
    }
    return s_strLanguage;
}

bool CDLPDigitalAssetsParser::ExportDigitalAssets(const OS::x_wstring&,
                                                  const std::vector<OS::x_wstring>& vecExpressions,
                                                  const std::vector<OS::x_wstring>& vecKeywords, std::wstring& strOut) {
    return WriteWide(strOut, [&](std::string& strUtf8) {
        return DigitalAssets::Export(vecExpressions, vecKeywords, strUtf8, nullptr);
    });
}

bool CDLPDigitalAssetsParser::GenerateRootXML(std::wstring& strOut) {
    return WriteWide(strOut, [](std::string& strUtf8) {
        CXMLWriter writer(strUtf8);
        return DigitalAssets::WriteEmptyRoot(writer);
    });
}

bool CDLPDigitalAssetsParser::GenerateDigitalAssetsXML(const OS::x_wstring&,
                                                       const std::vector<OS::x_wstring>& vecExpressions,
                                                       const std::vector<OS::x_wstring>& vecKeywords,
                                                       std::wstring& strOut) {
    return WriteWide(strOut, [&](std::string& strUtf8) {
        CXMLWriter writer(strUtf8);
        return DigitalAssets::Generate(vecExpressions, vecKeywords, writer, nullptr);
    });
}

int CDLPDigitalAssetsParser::ImportDigitalAssets(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                                                 std::vector<OS::x_wstring>& vecSkipped) {
    return Import(EImport::ALL, strScope, strXml, vecSkipped);
}

int CDLPDigitalAssetsParser::ImportExpression(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                                              std::vector<OS::x_wstring>& vecSkipped) {
    return Import(EImport::EXPRESSIONS, strScope, strXml, vecSkipped);
}

int CDLPDigitalAssetsParser::ImportKeyword(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                                           std::vector<OS::x_wstring>& vecSkipped) {
    return Import(EImport::KEYWORDS, strScope, strXml, vecSkipped);
}
