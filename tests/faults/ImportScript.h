#pragma once

#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLCOMException.h"
#include "templates/DLPTemplateMgr.h"
#include "tests/support/FaultStore.h"

/**
 * An import written down: each call of the store and each operation of the XML layer, the lines before it, and what its
 * failure amounts to. Expected reads from it how the import must end when any one of them fails.
 */
namespace ImportScript {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

inline std::string Manager(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " DLPTemplateMgr.cpp " + strMessage;
}
inline std::string Assets(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " util_ParseDLPDigitalAssets.cpp " + strMessage;
}

/** What the failure of a step amounts to. */
enum class EFailure { FORMAT, CONVERSION, ROOT, CATEGORIES, EXPRESSIONS, LISTS, IMPORT, LOOKUP, COUNT, SAVE };

/** What becomes of an import over a failure. */
enum class EEnd { NO_POLICY, FAILED, ITEM_SKIPPED };

struct SFailure {
    EEnd eEnd;
    bool bAnyException;  ///< whatever is thrown; else what is no OS::CException passes, and the import is undone
    Lines vecLines;      ///< %s stands for the exception's text
};

/** In the order of EFailure. */
inline const SFailure& Failure(EFailure eFailure) {
    static const std::string STOPPED = Manager("0x1003", "Fail to construct ImportTemplateImpl, Error: %s");
    static const std::string UNREAD = Manager("0x1003", "Fail to call GetTemplateList");
    static const std::string UNAVAILABLE = Manager("0x1003", "Unable to get tempate list.");
    static const SFailure FAILURES[] = {
        {EEnd::NO_POLICY, false, {Manager("0x1004", "CTemplateMgr::IsStandardFormat(), Error: %s")}},
        {EEnd::FAILED, false, {Manager("0x1004", "CDLPXmlNormalizer::NormailzeXml(), Error: %s")}},
        // the root's generator tells of its own failure; its empty text is then no root
        {EEnd::FAILED,
         false,
         {Assets("0x1004", "Fail to generate xml file root part, Error: %s"),
          Manager("0x1004", "Fail to find node SAPolicy"),
          Manager("0x1004", "CDLPXmlNormalizer::NormailzeXml(), Error: ")}},
        {EEnd::FAILED, false, {Manager("0x1004", "CTemplateMgr::MakeCategoryMap(), Error: %s")}},
        {EEnd::FAILED,
         true,
         {Assets("0x1004", "Fail to import expression xml file, Error: %s"),
          Assets("0x1004", "fail to import entity.")}},
        {EEnd::FAILED,
         true,
         {Assets("0x1004", "Fail to import dictionary xml file, Error: %s"),
          Assets("0x1004", "fail to import dictionary.")}},
        {EEnd::FAILED, false, {STOPPED}},
        {EEnd::FAILED, false, {UNREAD, UNAVAILABLE, STOPPED}},
        {EEnd::ITEM_SKIPPED, false, {UNREAD, UNAVAILABLE}},
        {EEnd::ITEM_SKIPPED,
         false,
         {Manager("0x1003", "Fail to call SetTemplateList."), Manager("0x111", "CTemplateMgr::EditTemplate = 0")}},
    };
    return FAILURES[static_cast<std::size_t>(eFailure)];
}

enum class EFrom { STORE, XML };

struct SStep {
    EFrom eFrom;
    const char* pOperation;
    EFailure eFailure;
    Lines vecBefore = {};
    std::string strSaved = {};  ///< the subject that it stores
    bool bUndoes = false;       ///< its failure undoes what was stored before
};

enum class EList { NONE, IMPORTED, SKIPPED, ASSETS };

/** What happens over one item of the document, or between items. */
struct SItem {
    std::vector<SStep> vecSteps;
    Lines vecLeft = {};
    EList eList = EList::NONE;
    const wchar_t* pName = L"";
};

using Script = std::vector<SItem>;

struct SOutcome {
    int iResult = 0;
    bool bPassed = false;  ///< an exception reached the caller
    Names vecImported = {L"before"};
    Names vecSkipped = {};
    Names vecAssets = {};
    Lines vecLines = {};
    Lines vecSaved = {};  ///< subjects
};

/** What is thrown over a step. */
struct SThrown {
    CStoreFaults::Fault fnThrow;
    std::string strText;
    bool bException;  ///< an OS::CException
};

inline const SThrown INJECTED = {{}, "injected fault", true};

inline const std::vector<SThrown>& AllThrown() {
    static const std::vector<SThrown> THROWN = {
        {CStoreFaults::StoreFault, OS::Utf8Lenient(STORE_FAULT), true},
        {[] { throw CXMLException(0, L"no element", 0); }, "no element", true},
        {CStoreFaults::MemoryFault, std::bad_alloc().what(), false},
        {[] { throw std::runtime_error("broken"); }, "broken", false},
        {[] { throw 7; }, "unknown exception", false},
    };
    return THROWN;
}

/** Takes over what the failure of a step amounts to. @return whether the import goes on, with the next item */
inline bool Fail(const SStep& step, const SThrown& thrown, const SItem& item, SOutcome& outcome) {
    const SFailure& failure = Failure(step.eFailure);
    outcome.bPassed = !failure.bAnyException && !thrown.bException;
    const bool bEndsUnit = step.bUndoes && step.eFailure == EFailure::IMPORT;
    if (outcome.bPassed || step.bUndoes) {
        outcome.vecSaved.clear();
    }
    if (outcome.bPassed || bEndsUnit) {
        outcome.vecImported.resize(1);
    }
    if (outcome.bPassed) {
        return false;
    }
    for (std::string strLine : failure.vecLines) {
        const std::size_t iText = strLine.find("%s");
        outcome.vecLines.push_back(iText == std::string::npos ? strLine : strLine.replace(iText, 2, thrown.strText));
    }
    if (failure.eEnd == EEnd::ITEM_SKIPPED) {
        outcome.vecSkipped.emplace_back(item.pName);
        return true;
    }
    outcome.iResult = failure.eEnd == EEnd::NO_POLICY ? CTemplateMgr::RESULT_NO_POLICY : CTemplateMgr::RESULT_FAILED;
    return false;
}

inline void Finish(const SItem& item, SOutcome& outcome) {
    outcome.vecLines.insert(outcome.vecLines.end(), item.vecLeft.begin(), item.vecLeft.end());
    Names* const aLists[] = {nullptr, &outcome.vecImported, &outcome.vecSkipped, &outcome.vecAssets};
    if (Names* const pList = aLists[static_cast<std::size_t>(item.eList)]) {
        pList->emplace_back(item.pName);
    }
}

/** @return what the script says of an import whose n-th step of this kind fails; 0: none */
inline SOutcome Expected(const Script& script, EFrom eFrom, std::size_t n, const SThrown& thrown) {
    SOutcome outcome;
    std::size_t iStep = 0;
    for (const SItem& item : script) {
        const SStep* pFailed = nullptr;
        for (const SStep& step : item.vecSteps) {
            outcome.vecLines.insert(outcome.vecLines.end(), step.vecBefore.begin(), step.vecBefore.end());
            if (step.eFrom == eFrom && ++iStep == n) {
                pFailed = &step;
                break;
            }
            if (!step.strSaved.empty()) {
                outcome.vecSaved.push_back(step.strSaved);
            }
        }
        if (pFailed == nullptr) {
            Finish(item, outcome);
        } else if (!Fail(*pFailed, thrown, item, outcome)) {
            break;
        }
    }
    if (!outcome.bPassed) {
        outcome.vecLines.push_back(
            Manager("0x111", "CTemplateMgr::ImportTemplate result = " + std::to_string(outcome.iResult)));
    }
    return outcome;
}

inline Lines Operations(const Script& script, EFrom eFrom) {
    Lines vecOperations;
    for (const SItem& item : script) {
        for (const SStep& step : item.vecSteps) {
            if (step.eFrom == eFrom) {
                vecOperations.emplace_back(step.pOperation);
            }
        }
    }
    return vecOperations;
}

}  // namespace ImportScript
