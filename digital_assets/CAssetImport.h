#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "digital_assets/DigitalAssets.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLView.h"
#include "settings/CCfgSettingDLPDigitalAsset.h"

namespace DigitalAssets {

/** A pass of an import reads the elements of one kind. */
struct SPass;
extern const SPass EXPRESSION_PASS;
extern const SPass KEYWORD_PASS;

/** One import of a document. Nothing throws: what an exception ends is logged and answered with false. */
class CAssetImport {
  public:
    /** @param pObserver may be null */
    CAssetImport(const OS::x_wstring& strScope, CPolicyDocument& document, std::vector<OS::x_wstring>& vecSkipped,
                 CImportObserver* pObserver);

    /** Checks the language and runs the passes, in one unit of work. @return an EResult */
    int Run(EImport eImport);
    /** Whether the document is a policy in the parser's language, or in none. Its version becomes the parser's then. */
    bool CheckLanguage();
    /** Reads every element of the pass's kind into the store; an element that is not taken does not end it. */
    bool RunPass(const SPass& pass);

  private:
    using Record = boost::shared_ptr<CCfgSettingDLPDigitalAsset>;

    struct SFate {
        EDisposition eDisposition;
        EReason eReason = EReason::NONE;
        std::string strDetail{};
    };

    bool ReadRoot();
    bool ReadElements(const SPass& pass);
    void Import(const SPass& pass, const CXMLView& element);
    SFate Take(const SPass& pass, const CXMLView& element);
    SFate Replace(const SPass& pass, const CXMLView& element, CCfgSettingDLPDigitalAsset& record);
    SFate Add(const SPass& pass, const CXMLView& element);
    SFate Edit(const SPass& pass, const CXMLView& element, CCfgSettingDLPDigitalAsset& record, bool bStored);
    void Report(const SPass& pass, const CXMLView& element, SFate&& fate);

    std::string m_strScope;
    CPolicyDocument& m_document;
    std::vector<OS::x_wstring>& m_vecSkipped;
    CImportObserver* m_pObserver;
};

}  // namespace DigitalAssets
