#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/common/x_wstring.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"

class CExportObserver;
class CImportObserver;
class CPolicyDocument;

/**
 * Compliance templates between the store and documents: list, find, replace, export, check, import. Made for one
 * operation and dropped; keeps nothing but its scope. Store exceptions pass unless an operation says otherwise.
 */
class CTemplateMgr {
  public:
    using List = CCfgSettingDLPFilterTemplateMgr::List;
    using CategoryMap = std::map<std::wstring, std::vector<std::wstring>>;

    /** Fields that FindTemplate compares. */
    enum ESearchField : int { SEARCH_SUBJECT = 0, SEARCH_NAME = 1, SEARCH_ELEMENT_NAME = 2 };

    /** @param strScope kept with each record that an import writes */
    explicit CTemplateMgr(const OS::x_wstring& strScope);

    /** Fills the caller's empty set with every stored template. @return false, logged, when the store cannot be read */
    bool GetTemplateList(List& lstTemplates);
    /** Makes the store hold exactly this set. @return false, logged, on failure */
    bool SaveSetting(List& lstTemplates);
    /**
     * The first template, in the list's order, whose field equals the value exactly.
     * @param iSearchField an ESearchField; any other finds nothing
     * @param pFound assigned only when found
     */
    bool FindTemplate(int iSearchField, const OS::x_wstring& strFieldValue,
                      boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pFound);
    /** Replaces the stored template of the same subject identifier, whole. @return false, logged, when there is none */
    bool EditTemplate(const boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pTemplate);

    /** @return the whole document of the templates of these internal names and all they refer to; empty on failure */
    std::wstring ExportTemplate(const std::vector<OS::x_wstring>& lstTemplateName);
    /** The same; the subject identifiers of the assets are added to both sets, which are made when null. */
    std::wstring ExportTemplate(const std::vector<OS::x_wstring>& lstTemplateName,
                                boost::shared_ptr<std::set<std::wstring>>& pExpressionSubjects,
                                boost::shared_ptr<std::set<std::wstring>>& pKeywordSubjects);
    /** The same as UTF-8, without a wide copy unless a listener wants one. The sets are filled when pointed to. */
    std::string ExportDocument(const std::vector<OS::x_wstring>& lstTemplateName, CExportObserver* pObserver,
                               std::set<std::wstring>* pExpressionSubjects, std::set<std::wstring>* pKeywordSubjects);

    /**
     * Lists the templates of a document that cannot be imported: their internal names are appended to vecInvalid, at most
     * twice each (first bad building block, first bad rule operation).
     * @param vecImported not used
     * @return false when the document has no template
     */
    bool CheckImportTemplate(const OS::x_wstring& strXmlContent, std::vector<OS::x_wstring>& vecImported,
                             std::vector<OS::x_wstring>& vecInvalid);

    /** Imports a document; see CDLPTemplateParse::DoTemplateImport. */
    int ImportTemplate(const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecImported,
                       std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets);
    /** The same for a document that any door made. @param pObserver hears of each item's fate; may be null */
    int ImportDocument(CPolicyDocument& document, std::vector<OS::x_wstring>& vecImported,
                       std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets,
                       CImportObserver* pObserver);
};
