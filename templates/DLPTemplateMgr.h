#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/common/TextHash.h"
#include "platform/common/x_wstring.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"

class CExportObserver;
class CImportObserver;
class CPolicyDocument;
struct STemplateFinding;

/**
 * Compliance templates between the store and documents: list, find, replace, export, check, import. Made for one
 * operation and dropped; keeps nothing but its scope. Store exceptions pass unless an operation says otherwise.
 */
class CTemplateMgr {
  public:
    using List = CCfgSettingDLPFilterTemplateMgr::List;
    using Record = boost::shared_ptr<CCfgSettingDLPFilterTemplate>;
    /** For each internal name of a template the categories that name it, in document order. */
    using CategoryMap = std::map<std::wstring, std::vector<std::wstring>>;
    /** The same in UTF-8. */
    using CategoryIndex = OS::TextMap<std::string, std::vector<std::string>>;

    /** Fields that FindTemplate compares. */
    enum ESearchField : int { SEARCH_SUBJECT = 0, SEARCH_NAME = 1, SEARCH_ELEMENT_NAME = 2 };

    /** What an import answers; the asset import has further codes. */
    enum EResult : int { RESULT_DONE = 0, RESULT_NO_POLICY = 1, RESULT_FAILED = 3 };

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
     * @return false, logged, when there is none or the store cannot be read
     */
    bool FindTemplate(int iSearchField, const OS::x_wstring& strFieldValue, Record& pFound);
    /**
     * As FindTemplate, for a value in UTF-8.
     * @return null when there is none
     * @throws OS::CException, logged likewise, when the store cannot be read
     */
    Record FindStored(int iSearchField, const std::string& strFieldValue);
    /** Replaces the stored template of the same subject identifier, whole. @return false, logged, when there is none */
    bool EditTemplate(const Record& pTemplate);
    /**
     * As EditTemplate, for a record that is known to be stored.
     * @param bWrite false: the stored one is equal already
     */
    bool ReplaceStored(const Record& pTemplate, bool bWrite);

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
     * Lists the templates of a document that cannot be imported: their internal names are appended to vecInvalid, at
     * most twice each (first bad building block, first bad rule operation).
     * @param vecImported not used
     * @return false when the document has no template
     */
    bool CheckImportTemplate(const OS::x_wstring& strXmlContent, std::vector<OS::x_wstring>& vecImported,
                             std::vector<OS::x_wstring>& vecInvalid);
    /** The same with what is wrong with each. The findings point into the document. */
    bool CheckImportTemplate(CPolicyDocument& document, std::vector<STemplateFinding>& vecFindings);

    /** Imports a document; see CDLPTemplateParse::DoTemplateImport. */
    int ImportTemplate(const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecImported,
                       std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets);
    /** The same for a document that any door made. @param pObserver hears of each item's fate; may be null */
    int ImportDocument(CPolicyDocument& document, std::vector<OS::x_wstring>& vecImported,
                       std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets,
                       CImportObserver* pObserver);

    /**
     * Tells the standard layout, whose root has a version, from the older one.
     * @param bNeedConvert receives whether it is the older one
     * @return false, logged, when it is no policy document at all
     */
    bool CheckFormat(const OS::x_wstring& strXml, bool& bNeedConvert);
    bool CheckFormat(CPolicyDocument& document, bool& bNeedConvert);

    /**
     * Collects which industries, or which regions, name each template.
     * @param strContainer, strItem the tags, such as industries and industry
     * @return false, logged, when the XML layer fails
     */
    bool MakeCategoryMap(const OS::x_wstring& strXml, const std::wstring& strContainer, const std::wstring& strItem,
                         CategoryMap& categories);
    bool MakeCategoryMap(CPolicyDocument& document, const std::wstring& strContainer, const std::wstring& strItem,
                         CategoryIndex& categories);

    /** Imports a document of the standard layout, as ImportTemplate, in one unit of work. */
    int ImportTemplateImpl(const OS::x_wstring& strXml, std::vector<OS::x_wstring>& vecImported,
                           std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets);
    int ImportTemplateImpl(CPolicyDocument& document, std::vector<OS::x_wstring>& vecImported,
                           std::vector<OS::x_wstring>& vecSkipped, std::vector<OS::x_wstring>& vecAssets,
                           CImportObserver* pObserver);

  private:
    bool Edit(const Record& pTemplate, bool bKnownStored, bool bWrite);

    OS::x_wstring m_strScope;
    CCfgSettingDLPFilterTemplateMgr* m_pStore;
};
