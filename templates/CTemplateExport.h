#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "digital_assets/ExportObserver.h"
#include "platform/common/x_wstring.h"
#include "templates/CAssetNames.h"
#include "templates/SPreparedTemplate.h"

class CXMLWriter;
class DLPMetaDataLoaderImpl;

/** Where an export adds the subject identifiers of the assets it carries; either may be null. */
struct SSubjectSets {
    std::set<std::wstring>* pExpressions = nullptr;
    std::set<std::wstring>* pKeywords = nullptr;
};

/** One export of templates with all they refer to. Used once. */
class CTemplateExport {
  public:
    /** A list of the policy metadata. */
    using ListOperation = bool (DLPMetaDataLoaderImpl::*)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);

    /** @param vecNames internal names @param pObserver may be null */
    CTemplateExport(const std::vector<OS::x_wstring>& vecNames, const SSubjectSets& sets, CExportObserver* pObserver);

    /**
     * @return the document in UTF-8, but for what the observer took; empty, logged, when it cannot be made
     * @throws CXMLCOMException<OS::CException> naming the record for text that XML cannot carry
     */
    std::string Run();

  private:
    /** Categories by name, each with its templates in the order of the request. */
    using Categories = std::map<std::string, std::vector<const SPreparedTemplate*>>;

    void ReadTemplates();
    bool AskForAssets();
    void LogLookup(std::size_t iRequest) const;
    void TakeTemplate(std::size_t iRequest);
    std::optional<std::string> FindInvalidReference(const SPreparedTemplate& prepared) const;
    void LeaveOut(std::size_t iRequest, ELeftOut eReason, const std::string& strDetail);
    [[noreturn]] void Fail(const CXMLException& exception, const std::string& strSubject);
    bool MakeTemplates();
    bool WriteAssets(CXMLWriter& writer);
    bool MakeCategories();
    bool MakeCategory(const char* pTag, const char* pSubTag, ListOperation pList, const Categories& categories,
                      std::string& strOut);

    std::vector<std::string> m_vecNames;
    SSubjectSets m_sets;
    CExportObserver* m_pObserver;

    bool m_bListRead = false;
    CAssetNames m_assets;
    std::vector<std::optional<SPreparedTemplate>> m_vecPrepared;  ///< per request; nothing when not stored
    std::vector<const SPreparedTemplate*> m_vecTaken;
    Categories m_industries;
    Categories m_regions;

    // The sections of the document that follow the assets, made one by one.
    std::string m_strTemplates;
    std::string m_strIndustries;
    std::string m_strRegions;
};
