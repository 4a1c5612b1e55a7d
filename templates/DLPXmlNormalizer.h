#pragma once

#include <map>
#include <string>

#include "platform/common/CAutoObjPtr.h"
#include "platform/common/x_wstring.h"
#include "platform/config/CINIReader.h"
#include "platform/xml/CXMLParser.h"

class CImportObserver;
class CPolicyDocument;

/**
 * Rewrites documents of the older layout (no version at the root, display names in displayName, older names of assets)
 * into the standard one. Only templates are carried over, and none that is built in. The map of asset names is the
 * process's, read once from its file. One thread at a time.
 */
class CDLPXmlNormalizer {
  public:
    /** The attribute of a template in the older layout that holds its display name. */
    static constexpr char OLDER_DISPLAY_NAME[] = "displayName";
    /** The one that says whether it is built in, and what it says of one that is. */
    static constexpr char OLDER_BUILT_IN[] = "builtin";
    static constexpr char BUILT_IN_VALUE[] = "1";

    /** Older asset names and what they are called now. */
    using NameMap = std::map<std::wstring, std::wstring>;

    /** Takes the lines of the map file. */
    class CLineReaderCallback : public CINIReader::CIterateEachLineCallback {
      public:
        explicit CLineReaderCallback(NameMap& names) : m_names(names) {}
        bool OnLine(int iIndex, const std::wstring& strLine) override;
        void OnBadLine(int iIndex) override;

      private:
        NameMap& m_names;
    };

    /** Takes the fields of one line: the older name, then the one of today. */
    class CLineReaderTokenCallback : public CINIReader::CIterateEachTokenCallback {
      public:
        explicit CLineReaderTokenCallback(const std::wstring& strLine);
        bool OnToken(int iIndex, const std::wstring& strToken) override;
        const std::wstring& GetSource() const { return m_strSource; }
        const std::wstring& GetDestination() const { return m_strDestination; }

      private:
        std::wstring m_strSource;
        std::wstring m_strDestination;
    };

    /** Reads the map file, relative to the current directory, unless the map holds something already. */
    void InitDigitalAssetsMappingTable();

    /**
     * Rewrites a document.
     * @param strResult left as it was when the text has no root
     * @return false, logged, when the result cannot be made
     */
    bool NormailzeXml(const OS::x_wstring& strXml, OS::x_wstring& strResult);
    /**
     * The same with the document's tree: what of it is carried over moves into the result, so that no view of the
     * document holds any more, but its offsets do.
     * @param pObserver hears of what is not carried over; may be null
     */
    bool Normalize(CPolicyDocument& document, CXMLParser& result, CImportObserver* pObserver);

    /** @return false, logged, when the text has no root */
    bool GetAllTemplateNodes(const OS::x_wstring& strXml, OS::CAutoObjPtr<CXMLNodeList>& pNodes);
    bool GetAllTemplateNodes(CPolicyDocument& document, OS::CAutoObjPtr<CXMLNodeList>& pNodes);

    /**
     * Rewrites a template in place.
     * @param strText receives its markup; empty for a built-in template, which is left as it is
     */
    void NormalizeTemplate(OS::CAutoObjPtr<CXMLNode>& pTemplate, OS::x_wstring& strText);
    /** Gives the references of a template's rules their names of today. */
    void NormalizeBuildingBlocks(OS::CAutoObjPtr<CXMLNode>& pTemplate);
    /** @return whether a template of the older layout is built in, and so is left out */
    static bool IsBuiltIn(const CXMLView& element);
    /** @return every name that the map translates, and into what */
    static const NameMap& GetOlderNames();
    /** @return the name of today; the name itself, logged, when the map does not hold it */
    std::wstring MapDigitalAssetsSourceName(const std::wstring& strSourceName);

    /**
     * Puts templates into a document of the standard layout.
     * @param strTemplates markup of template elements
     * @throws OS::CException, without a message, when that is not well-formed or the root cannot be made; logged
     */
    void WrapTemplateList(const OS::x_wstring& strTemplates, OS::x_wstring& strResult);
    /** The same for templates that stand below a complianceTemplates root. */
    void WrapTemplateList(CXMLParser& templates, CXMLParser& result);

  private:
    bool Convert(CPolicyDocument& document, CXMLParser& result, CImportObserver* pObserver);
    void Rewrite(OS::CAutoObjPtr<CXMLNode>& pTemplate);
};
