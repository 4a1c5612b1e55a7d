#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "digital_assets/ImportObserver.h"
#include "platform/common/TextHash.h"
#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLView.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/STemplateFinding.h"

class CPolicyDocument;

/** The lists that an import fills, by display name; the caller's, appended to. */
struct SImportLists {
    std::vector<OS::x_wstring>& vecImported;
    std::vector<OS::x_wstring>& vecSkipped;
    std::vector<OS::x_wstring>& vecAssets;
};

/** One import of a document of the standard layout: its assets, then each of its templates. Used once. */
class CTemplateImport {
  public:
    /** @param pObserver may be null */
    CTemplateImport(CTemplateMgr& manager, const OS::x_wstring& strScope, CPolicyDocument& document,
                    const SImportLists& lists, CImportObserver* pObserver);

    /** @return a CTemplateMgr::EResult or a code of the asset import @throws OS::CException when the store fails */
    int Run();

  private:
    /** A template of the document. */
    struct SItem {
        CXMLView node;
        std::size_t iIndex = 0;
        std::string strName;
        std::string strDisplayName;
        bool bPreDefined = false;
    };

    bool MakeCategoryMaps();
    bool ImportTemplates();
    void ImportItem(const SItem& item);
    void Store(const SItem& item);
    void Update(const SItem& item, const CTemplateMgr::Record& pRecord);
    void Create(const SItem& item);
    void Fill(const SItem& item, CCfgSettingDLPFilterTemplate& record);
    void Skip(const SItem& item, EDisposition eDisposition, EReason eReason);
    void Take(const SItem& item, EDisposition eDisposition);

    void Report(const SItem& item, EDisposition eDisposition, EReason eReason);
    const STemplateFinding& FindingFor(const SItem& item) const;

    CTemplateMgr& m_manager;
    const OS::x_wstring& m_strScope;
    std::string m_strScopeUtf8;
    CPolicyDocument& m_document;
    SImportLists m_lists;
    CImportObserver* m_pObserver;
    CTemplateMgr::CategoryIndex m_industries;
    CTemplateMgr::CategoryIndex m_regions;
    std::vector<STemplateFinding> m_vecFindings;
    OS::TextMap<std::string_view, const STemplateFinding*> m_invalid;  ///< by internal name
    OS::TextSet<std::string> m_names;  ///< of the document's templates, for the observer
};
