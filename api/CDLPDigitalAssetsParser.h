#pragma once

#include <string>
#include <vector>

#include "api/ParserExport.h"
#include "platform/common/x_wstring.h"

/**
 * Expressions and keyword lists as an XML document, to and from the settings store. The version and the language are
 * shared by all objects of the process; neither is locked, so no two threads may import or export at once.
 */
class DLP_PARSER_API CDLPDigitalAssetsParser {
  public:
    /** One attribute or child element: its name and its value. */
    struct SKeyValuePair {
        std::wstring strKey;
        std::wstring strValue;
    };

    /** Format version written into documents; "3.0.1000" at first, replaced by that of every document imported. */
    static void SetVersion(const std::wstring& strVersion);
    static std::wstring GetVersion();
    /** Language written into documents and asked of those imported; an empty one is filled from text 1009 when read. */
    static void SetLanguage(const std::wstring& strLanguage);
    static std::wstring GetLanguage();

    /**
     * Writes the chosen assets as one document.
     * @param strScope not used
     * @param vecExpressions, vecKeywords subject identifiers: the kind's prefix followed by the internal name
     * @param strOut receives the document; left as it was on failure
     * @return false, logged, when any one record cannot be read or written
     */
    bool ExportDigitalAssets(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecExpressions,
                             const std::vector<OS::x_wstring>& vecKeywords, std::wstring& strOut);
    /** Writes an empty root with declaration, version and language. strOut is left as it was on failure. */
    bool GenerateRootXML(std::wstring& strOut);
    /** As ExportDigitalAssets, but the digitalAssets element alone. */
    bool GenerateDigitalAssetsXML(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecExpressions,
                                  const std::vector<OS::x_wstring>& vecKeywords, std::wstring& strOut);

    /**
     * Reads the assets of a document into the store.
     * @param strScope kept with each record written
     * @param vecSkipped display names of the items that were not taken are appended
     * @return 0 imported; 2 the document's language is another one or it is no policy document, nothing imported;
     *         3 a pass failed: what was saved before stays
     */
    int ImportDigitalAssets(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                            std::vector<OS::x_wstring>& vecSkipped);
    /** The expressions alone. */
    int ImportExpression(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                         std::vector<OS::x_wstring>& vecSkipped);
    /** The keyword lists alone. */
    int ImportKeyword(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                      std::vector<OS::x_wstring>& vecSkipped);

  private:
    static std::wstring s_strVersion;
    static std::wstring s_strLanguage;
};
