#include "digital_assets/CAssetImport.h"

#include <optional>
#include <span>
#include <utility>

#include <boost/make_shared.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/AssetFormat.h"
#include "digital_assets/AssetLog.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CMgmtClass.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace DigitalAssets {

struct SPass {
    const SAssetFormat& format;
    const wchar_t* pSubjectPrefix;
    boost::shared_ptr<CCfgSettingDLPDigitalAsset> (*fnFind)(std::string_view strName);
    boost::shared_ptr<CCfgSettingDLPDigitalAsset> (*fnMake)(const OS::x_wstring& strSubject);
    OS::x_wstring (*fnCategory)();

    const wchar_t* pEntered;  ///< null: not logged
    const wchar_t* pNoNodes;
    const wchar_t* pFindEntered;
    const wchar_t* pFound;
    const wchar_t* pNotFound;
    const wchar_t* pExists;
    const wchar_t* pEdited;
    const wchar_t* pAdded;
    const wchar_t* pNotAdded;
    const wchar_t* pLeft;
    const wchar_t* pException;
    const wchar_t* pFailed;
};

namespace {

template <class Manager>
boost::shared_ptr<CCfgSettingDLPDigitalAsset> Find(std::string_view strName) {
    return Manager::Instance()->FindByInternalName(strName);
}

template <class Record>
boost::shared_ptr<CCfgSettingDLPDigitalAsset> Make(const OS::x_wstring& strSubject) {
    return boost::make_shared<Record>(strSubject);
}

constexpr wchar_t ENTITY_PASS[] = L"CDLPDigitalAssetsParser::ImportEntity()";

}  // namespace

constexpr SPass EXPRESSION_PASS = {
    .format = EXPRESSION_FORMAT,
    .pSubjectPrefix = SUBJECT_EXPRESSION,
    .fnFind = Find<CCfgSettingDLPFilterExpressionMgr>,
    .fnMake = Make<CCfgSettingDLPFilterExpression>,
    .fnCategory = CCfgSettingDLPFilterExpression::GetCategroyName,
    .pEntered = ENTITY_PASS,
    .pNoNodes =
        L"CDLPDigitalAssetsParser::ImportEntity() Unable to find node %s.                    The xml file format is "
        L"incompatible.",
    .pFindEntered = L"CDLPDigitalAssetsParser::FindExpression, internalName = %s",
    .pFound = L"CDLPDigitalAssetsParser::FindExpression",
    .pNotFound = L"Unable to find the expression",
    .pExists = L"there exists a expression with the same internal name: %s",
    .pEdited = L"CDLPDigitalAssetsParser::EditExpression()",
    .pAdded = L"CDLPDigitalAssetsParser::AddExpression()",
    .pNotAdded = L"CDLPDigitalAssetsParser::AddExpression() fail to add expression.",
    .pLeft = ENTITY_PASS,
    .pException = L"Fail to import expression xml file, Error: %s",
    .pFailed = L"fail to import entity.",
};

constexpr SPass KEYWORD_PASS = {
    .format = KEYWORD_FORMAT,
    .pSubjectPrefix = SUBJECT_KEYWORD,
    .fnFind = Find<CCfgSettingDLPFilterKeywordMgr>,
    .fnMake = Make<CCfgSettingDLPFilterKeyword>,
    .fnCategory = CCfgSettingDLPFilterKeyword::GetCategroyName,
    .pEntered = nullptr,
    .pNoNodes =
        L"CDLPDigitalAssetsParser::ImportDictionary Unable to find node %s.                    The xml file format is "
        L"incompatible.",
    .pFindEntered = L"CDLPDigitalAssetsParser::FindKeyword, internalName = %s",
    .pFound = L"CDLPDigitalAssetsParser::FindKeyword",
    .pNotFound = L"Unable to find the keyword",
    .pExists = L"there exists a keyword with the same internal name: %s",
    .pEdited = L"CDLPDigitalAssetsParser::EditDictionary()",
    .pAdded = L"CDLPDigitalAssetsParser::AddDictionary()",
    .pNotAdded = L"CDLPDigitalAssetsParser::AddDictionary() fail to add keyword.",
    .pLeft = L"CDLPDigitalAssetsParser::ImportDictionary()",
    .pException = L"Fail to import dictionary xml file, Error: %s",
    .pFailed = L"fail to import dictionary.",
};

namespace {

constexpr const SPass* PASSES[] = {&EXPRESSION_PASS, &KEYWORD_PASS};
constexpr wchar_t ASSETS_IMPORTED[] = L"CDLPDigitalAssetsParser::ImportDigitalAssets()";

struct SMode {
    std::span<const SPass* const> passes;
    const wchar_t* pDone;
};

/** In the order of EImport. */
constexpr SMode MODES[] = {
    {PASSES, ASSETS_IMPORTED},
    {{PASSES, 1}, L"CDLPDigitalAssetsParser::ImportEntityWithCheck()"},
    {{PASSES + 1, 1}, ASSETS_IMPORTED},
};

/** Answers what the step answers, and false when it throws, which is logged and told. */
template <class F>
bool Guarded(CImportObserver* pObserver, const wchar_t* pException, F fnStep) {
    try {
        return fnStep();
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, pException, error.GetErrorMessage());
        TellStoreFailure(pObserver, error);
    } catch (const std::exception& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, pException, OS::WideLenient(error.what()));
    } catch (...) {
        DLP_LOG(DBG::LEVEL_FAILURE, pException, L"unknown exception");
    }
    return false;
}

/** The line over a missing pattern goes through the narrow entry, which reads the wide texts' memory as bytes. */
void LogMissingChild(const SChild& child, std::string_view strDisplayName) {
    const std::wstring strPath = XmlHelpers::RelativePath({OS::WideText(child.pName)});
    const OS::x_wstring strEntity = OS::WideText(strDisplayName);
    if (child.eNeed == ENeed::EVERY_TYPE) {
        DLP_LOG(DBG::LEVEL_FAILURE, "Fail to find tag %s, skip entity: %s", strPath.c_str(), strEntity.c_str());
    } else {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to find tag %s, skip entity: %s", strPath, strEntity);
    }
}

/** What is written there is meant to be kept as much as the asset. */
void TellUnknownChildren(const CPolicyDocument& document, const CXMLView& asset, CImportObserver* pObserver) {
    if (asset.Name() == KEYWORD_FORMAT.pElement) {
        ::TellUnknownElements(document, asset, {TagUtf8::KEYWORD}, pObserver, KEYWORD_FORMAT.eKind);
    } else if (asset.Name() == EXPRESSION_FORMAT.pElement) {
        ::TellUnknownElements(
            document, asset,
            {TagUtf8::REGULAR_EXPRESSION, TagUtf8::ALPHABET_CHARSET, TagUtf8::PATTERN_FOR_DISPLAY, TagUtf8::EXAMPLES},
            pObserver, EXPRESSION_FORMAT.eKind);
    }
}

}  // namespace

int Import(EImport eImport, const OS::x_wstring& strScope, CPolicyDocument& document,
           std::vector<OS::x_wstring>& vecSkipped, CImportObserver* pObserver) {
    return CAssetImport(strScope, document, vecSkipped, pObserver).Run(eImport);
}

void TellUnknownElements(CPolicyDocument& document, CImportObserver* pObserver) {
    const CXMLView root = document.Load().RootView();
    ::TellUnknownElements(
        document, root, {TagUtf8::DIGITAL_ASSETS, TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::INDUSTRIES, TagUtf8::REGIONS},
        pObserver);
    for (CXMLView section = root.FirstChild(TagUtf8::DIGITAL_ASSETS); section;
         section = section.NextSibling(TagUtf8::DIGITAL_ASSETS)) {
        ::TellUnknownElements(document, section, {EXPRESSION_FORMAT.pElement, KEYWORD_FORMAT.pElement}, pObserver);
        for (CXMLView asset = section.FirstChild(); asset; asset = asset.NextSibling()) {
            TellUnknownChildren(document, asset, pObserver);
        }
    }
}

CAssetImport::CAssetImport(const OS::x_wstring& strScope, CPolicyDocument& document,
                           std::vector<OS::x_wstring>& vecSkipped, CImportObserver* pObserver)
    : m_strScope(OS::Utf8Loose(strScope)), m_document(document), m_vecSkipped(vecSkipped), m_pObserver(pObserver) {}

int CAssetImport::Run(EImport eImport) {
    if (!CheckLanguage()) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Invalid localization_language, skip import.");
        return RESULT_WRONG_LANGUAGE;
    }
    const SMode& mode = MODES[static_cast<std::size_t>(eImport)];
    std::optional<CSettingsTransaction> unit;
    const auto begin = [&unit] { return unit.emplace(), true; };
    const auto commit = [&unit] { return unit->Commit(), true; };
    const SPass* pFailed = Guarded(m_pObserver, mode.passes.front()->pException, begin) ? nullptr : mode.passes.front();
    for (const SPass* pPass : mode.passes) {
        if (pFailed == nullptr && !RunPass(*pPass)) {
            pFailed = pPass;
        }
    }
    // A pass that failed is committed as well: what was saved before it failed stays.
    if (unit.has_value() && !Guarded(m_pObserver, mode.passes.back()->pException, commit)) {
        pFailed = pFailed == nullptr ? mode.passes.back() : pFailed;
        if (m_pObserver != nullptr) {
            m_pObserver->OnUndone();
        }
    }
    if (pFailed != nullptr) {
        DLP_LOG(DBG::LEVEL_FAILURE, pFailed->pFailed);
        return RESULT_FAILED;
    }
    if (m_pObserver != nullptr) {
        TellUnknownElements(m_document, m_pObserver);
    }
    DLP_LOG(DBG::LEVEL_LEAVE, mode.pDone);
    return RESULT_DONE;
}

bool CAssetImport::CheckLanguage() {
    // Its line is the one of the keyword lists, whatever is imported.
    return Guarded(m_pObserver, KEYWORD_PASS.pException, [this] { return ReadRoot(); });
}

bool CAssetImport::ReadRoot() {
    DLP_LOG(DBG::LEVEL_ENTER, L"CDLPDigitalAssetsParser::CheckImportVersion()");
    const CXMLView root = m_document.Load().RootView();
    if (root.Name() != TagUtf8::SA_POLICY) {
        DLP_LOG(DBG::LEVEL_FAILURE, NODE_NOT_FOUND, Tag::SA_POLICY);
        return false;
    }
    const OS::x_wstring strLanguage = OS::WideText(root.Attribute(TagUtf8::LOCALIZATION_LANGUAGE));
    if (!strLanguage.empty() && strLanguage.CompareNoCase(CDLPDigitalAssetsParser::GetLanguage()) != 0) {
        DLP_LOG(DBG::LEVEL_INFO, L"old language is: %s, new language is: %s, not match, skip import",
                CDLPDigitalAssetsParser::GetLanguage(), strLanguage);
        return false;
    }
    CDLPDigitalAssetsParser::SetVersion(OS::WideText(root.Attribute(TagUtf8::TEMPLATE_VERSION)));
    DLP_LOG(DBG::LEVEL_LEAVE, L"CDLPDigitalAssetsParser::CheckImportVersion(), result = %d", true);
    return true;
}

bool CAssetImport::RunPass(const SPass& pass) {
    return Guarded(m_pObserver, pass.pException, [&] { return ReadElements(pass); });
}

bool CAssetImport::ReadElements(const SPass& pass) {
    if (pass.pEntered != nullptr) {
        DLP_LOG(DBG::LEVEL_ENTER, pass.pEntered);
    }
    const std::wstring strPath =
        XmlHelpers::RootPath({Tag::SA_POLICY, Tag::DIGITAL_ASSETS, OS::WideText(pass.format.pElement)});
    const OS::CAutoObjPtr<CXMLNodeList> pNodes = m_document.Load().XPathSelectNodes(strPath);
    if (pNodes == nullptr) {
        DLP_LOG(DBG::LEVEL_FAILURE, pass.pNoNodes, strPath);
        return false;
    }
    for (int i = 0; i < pNodes->GetLength(); ++i) {
        const CXMLView element = pNodes->ViewAt(i);
        if (m_pObserver == nullptr || !m_pObserver->PassesOver(pass.format.eKind, element.Attribute(TagUtf8::NAME))) {
            Import(pass, element);
        }
    }
    DLP_LOG(DBG::LEVEL_LEAVE, pass.pLeft);
    return true;
}

void CAssetImport::Import(const SPass& pass, const CXMLView& element) {
    SFate fate{EDisposition::FAILED};
    try {
        fate = Take(pass, element);
    } catch (const OS::CException& error) {
        Report(pass, element, {EDisposition::FAILED, EReason::STORE, error.what()});
        throw;
    }
    Report(pass, element, std::move(fate));
}

CAssetImport::SFate CAssetImport::Take(const SPass& pass, const CXMLView& element) {
    const std::string_view strName = element.Attribute(TagUtf8::NAME);
    const EReason eReason = CheckNames(element);
    if (eReason != EReason::NONE) {
        return {EDisposition::SKIPPED, eReason};
    }
    DLP_LOG(DBG::LEVEL_ENTER, pass.pFindEntered, OS::WideText(strName));
    const Record pRecord = pass.fnFind(strName);
    DLP_LOG(DBG::LEVEL_LEAVE, pRecord != nullptr ? pass.pFound : pass.pNotFound);
    SFate fate = pRecord != nullptr ? Replace(pass, element, *pRecord) : Add(pass, element);
    if (fate.eDisposition == EDisposition::SKIPPED) {
        m_vecSkipped.push_back(OS::WideText(element.Attribute(TagUtf8::DISPLAY_NAME)));
    }
    return fate;
}

CAssetImport::SFate CAssetImport::Replace(const SPass& pass, const CXMLView& element,
                                          CCfgSettingDLPDigitalAsset& record) {
    DLP_LOG(DBG::LEVEL_INFO, pass.pExists, OS::WideText(element.Attribute(TagUtf8::NAME)));
    if (m_pObserver != nullptr && m_pObserver->KeepsStored()) {
        return {EDisposition::SKIPPED, EReason::EXISTING};
    }
    if (IsBuiltInKept(record.Row(), element)) {
        DLP_LOG(DBG::LEVEL_INFO, BUILT_IN_KEPT);
        return {EDisposition::SKIPPED, EReason::BUILT_IN};
    }
    return Edit(pass, element, record, true);
}

CAssetImport::SFate CAssetImport::Add(const SPass& pass, const CXMLView& element) {
    const OS::x_wstring strSubject = pass.pSubjectPrefix + OS::WideText(element.Attribute(TagUtf8::NAME));
    CMgmtClass management(pass.fnCategory().c_str(), true);
    management.CreateInstance(strSubject.c_str());
    const Record pRecord = pass.fnMake(strSubject);
    SFate fate = Edit(pass, element, *pRecord, false);
    if (fate.eDisposition == EDisposition::CREATED) {
        DLP_LOG(DBG::LEVEL_LEAVE, pass.pAdded);
    } else {
        DLP_LOG(DBG::LEVEL_FAILURE, pass.pNotAdded);
    }
    return fate;
}

CAssetImport::SFate CAssetImport::Edit(const SPass& pass, const CXMLView& element, CCfgSettingDLPDigitalAsset& record,
                                       bool bStored) {
    CSettingsRow row = record.Row();
    if (const SChild* pMissing = ReadElement(pass.format, element, row)) {
        LogMissingChild(*pMissing, element.Attribute(TagUtf8::DISPLAY_NAME));
        return {EDisposition::SKIPPED, EReason::MISSING_CHILD, pMissing->pName};
    }
    row.SetText(AssetColumn::SCOPE, m_strScope);
    const bool bChanged = !bStored || row != record.Row();
    if (bChanged) {
        record.Row() = std::move(row);
        record.SaveThis();
    }
    DLP_LOG(DBG::LEVEL_LEAVE, pass.pEdited);
    return {!bStored ? EDisposition::CREATED : bChanged ? EDisposition::UPDATED : EDisposition::UNCHANGED};
}

void CAssetImport::Report(const SPass& pass, const CXMLView& element, SFate&& fate) {
    if (m_pObserver == nullptr) {
        return;
    }
    SImportItem item;
    item.eKind = pass.format.eKind;
    item.strName = element.Attribute(TagUtf8::NAME);
    item.strDisplayName = element.Attribute(TagUtf8::DISPLAY_NAME);
    item.eDisposition = fate.eDisposition;
    item.eReason = fate.eReason;
    item.strDetail = std::move(fate.strDetail);
    item.iOffset = element.Offset();
    m_pObserver->OnItem(item);
}

}  // namespace DigitalAssets
