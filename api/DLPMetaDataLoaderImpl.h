#pragma once

#include <vector>

#include "api/ParserExport.h"
#include "platform/common/CAutoObjPtr.h"
#include "platform/common/x_wstring.h"

class CXMLNode;

/**
 * The lists of the predefined policy file, config/PredefinedDLPPolicy.xml under the installation directory, read once by
 * the constructor. Each list is handed out as internal names and display names, cleared first and filled in step, with
 * & < > " ' escaped; false, with both empty, when the file or the section is missing. Not to be shared between threads.
 */
class DLP_PARSER_API DLPMetaDataLoaderImpl {
  public:
    DLPMetaDataLoaderImpl();
    DLPMetaDataLoaderImpl(const DLPMetaDataLoaderImpl&);
    DLPMetaDataLoaderImpl& operator=(const DLPMetaDataLoaderImpl&);
    ~DLPMetaDataLoaderImpl();

    /** Sorted by display name, ordinally. */
    bool GetValidators(std::vector<OS::x_wstring>& vecNames, std::vector<OS::x_wstring>& vecDisplayNames);
    /** In file order, like the three below. */
    bool GetExpressionTypes(std::vector<OS::x_wstring>& vecNames, std::vector<OS::x_wstring>& vecDisplayNames);
    bool GetKeywordConditions(std::vector<OS::x_wstring>& vecNames, std::vector<OS::x_wstring>& vecDisplayNames);
    bool GetIndustries(std::vector<OS::x_wstring>& vecNames, std::vector<OS::x_wstring>& vecDisplayNames);
    bool GetRegions(std::vector<OS::x_wstring>& vecNames, std::vector<OS::x_wstring>& vecDisplayNames);

  private:
    bool Load();
    OS::CAutoObjPtr<CXMLNode> MakeDOMNode(const OS::x_wstring& strXml, const wchar_t* pRootNodeName);
    bool GetNameList(const wchar_t* pRootNodeName, const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecNames,
                     std::vector<OS::x_wstring>& vecDisplayNames);

    OS::x_wstring m_strValidators;
    OS::x_wstring m_strEntityTypes;
    OS::x_wstring m_strDictionaryTypes;
    OS::x_wstring m_strIndustries;
    OS::x_wstring m_strRegions;
    bool m_bLoaded = false;
};
