#pragma once

#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "api/ParserExport.h"
#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLParser.h"

/**
 * The door to compliance templates: edits one template element, exports stored templates, imports documents and files.
 * Objects are values; document operations touch process-wide state and the store, so one thread at a time.
 */
class DLP_PARSER_API CDLPTemplateParse {
  public:
    /** @param strContent the XML text of one template element */
    explicit CDLPTemplateParse(OS::x_wstring strContent);
    CDLPTemplateParse(const CDLPTemplateParse&);
    CDLPTemplateParse& operator=(const CDLPTemplateParse&);
    ~CDLPTemplateParse();

    /** Assigns the template's XML text to strOut. */
    void GetXMLContent(OS::x_wstring& strOut);

    /**
     * Appends one rule text (such as P:name(2) AND K:list, with tabs around the operator) per match rule, and one operator
     * text per rule ("SKIP" when it has none). Content that holds no template appends nothing.
     * @return true
     */
    bool ParseContent(std::vector<OS::x_wstring>& vecRules, std::vector<OS::x_wstring>& vecOperators);

    /**
     * Replaces the content by a template made from the arguments; rules and operators are read in pairs as far as the
     * shorter list goes. pre-defined is always "false". When it cannot be written the content stays as it was.
     * @return true
     */
    bool SaveToXMLStr(const std::vector<OS::x_wstring>& vecRules, const std::vector<OS::x_wstring>& vecOperators,
                      OS::x_wstring strName, OS::x_wstring strDisplayName, OS::x_wstring strDescription);

    /**
     * Imports a document: its assets first, then its templates.
     * @param strScope kept with each record written
     * @param vecImported, vecSkipped display names of the templates taken and not taken are appended, in document order
     * @param vecSkippedAssets display names of the assets not taken are appended
     * @return 0 processed (some templates may be skipped); 1 no policy document; 2 another language; 3 failed: what was
     *         saved before stays
     * @throws std::bad_alloc and whatever else is no failure of the store or the document; nothing of it is kept then
     */
    int DoTemplateImport(const OS::x_wstring& strScope, const OS::x_wstring& strXml,
                         std::vector<OS::x_wstring>& vecImported, std::vector<OS::x_wstring>& vecSkipped,
                         std::vector<OS::x_wstring>& vecSkippedAssets);

    /**
     * Exports templates with all they refer to.
     * @param vecNames internal names; what is not stored, or refers to what is not stored, is left out and logged
     * @param strOut receives the document; empty on failure
     * @throws OS::CException when the store fails outside the steps that report it by an empty text
     */
    void DoTemplateExport(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecNames,
                          OS::x_wstring& strOut);
    /** The same; the subject identifiers of the assets in the document are added to both sets (made when null). */
    void DoTemplateExport(const OS::x_wstring& strScope, const std::vector<OS::x_wstring>& vecNames,
                          OS::x_wstring& strOut, boost::shared_ptr<std::set<std::wstring>>& pExpressionSubjects,
                          boost::shared_ptr<std::set<std::wstring>>& pKeywordSubjects);

    /**
     * Imports a file with an empty scope; bytes before its first "<" are passed over.
     * @return false when it cannot be read or is not UTF-8; true otherwise: the import's own result is only logged
     */
    bool ImportDLPTemplateFromFile(OS::x_wstring& strPath);

  private:
    CXMLParser m_document;
    OS::x_wstring m_strContent;
};
