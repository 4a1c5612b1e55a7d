#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "api/CDLPImportReport.h"
#include "platform/common/CException.h"
#include "platform/xml/CXMLView.h"

class CPolicyDocument;

using EItemKind = CDLPImportReport::EKind;
using EDisposition = CDLPImportReport::EDisposition;

/** Why an item was not taken. */
enum class EReason {
    NONE,
    NO_NAME,             ///< name is empty or absent
    NO_DISPLAY_NAME,     ///< display_name is empty or absent
    BUILT_IN,            ///< the stored item is built in, this one is not
    EXISTING,            ///< the name is stored already, and the observer keeps what is stored
    MISSING_CHILD,       ///< a required child element is missing; the detail names it
    UNSUPPORTED_ASSETS,  ///< a rule cannot be imported; the detail says what of it
    OLDER_BUILT_IN,      ///< a built-in template of the older layout
    OLDER_SECTION,       ///< a section that the older layout does not carry over
    UNKNOWN_TEMPLATE,    ///< a category entry that names no template of the document; the detail is that name
    STORE,               ///< the store could not write it
    UNKNOWN_ELEMENT,     ///< an element that stands where items do and is none; the detail is what it stands in
    UNDONE,              ///< it would have been taken, but nothing of the document was kept
};

/** What keeps a template from being imported. */
enum class ETemplateFault { UNKNOWN_EXPRESSION, UNKNOWN_KEYWORD, SOURCE_TYPE, BLOCK_OPERATION, RULE_OPERATION };

/**
 * A child element of a template that is no match rule, or of a match rule that is no building block, and yet is read as
 * one. What it holds is not looked at before it is stored.
 */
struct SForeignChild {
    struct SReference {
        EItemKind eKind;
        std::string strName;
        std::size_t iOffset;
    };

    std::string strElement;
    bool bRule = true;
    std::string strReadAs;  ///< the text of the rule or building block; "" when it refers to nothing
    std::size_t iOffset = std::string::npos;
    std::vector<SReference> vecReferences;
};

/** A template may consist of foreign children; no more than so many are told one by one, but for what is said below. */
inline constexpr std::size_t MAX_FOREIGN_CHILDREN = 1000;

/** One item of a document and its fate. Texts are UTF-8. */
struct SImportItem {
    EItemKind eKind = EItemKind::TEMPLATE;
    std::string strName;
    std::string strDisplayName;
    EDisposition eDisposition = EDisposition::CREATED;
    EReason eReason = EReason::NONE;
    std::string strDetail;
    /** For UNSUPPORTED_ASSETS: what of the rule cannot be imported. */
    std::optional<ETemplateFault> fault;
    /** The value that is to blame for it; for an unknown expression or keyword list its name. */
    std::string strFaulty;
    /** The first of them, and each behind those that refers to something that none before it does. */
    std::vector<SForeignChild> vecForeign;
    std::size_t iUntoldForeign = 0;  ///< the others
    /** Bytes from the start of the text to the start tag's "<"; npos when there is no such place. */
    std::size_t iOffset = std::string::npos;

    bool IsUnknownReference() const {
        return fault == ETemplateFault::UNKNOWN_EXPRESSION || fault == ETemplateFault::UNKNOWN_KEYWORD;
    }
};

/** Hears of each item of an import when its fate is known, in the order of the work, and may have items left alone. */
class CImportObserver {
  public:
    virtual ~CImportObserver() = default;
    /** Asked of each item before anything is done with it. @return whether the import takes no notice of it */
    virtual bool PassesOver(EItemKind, std::string_view /*strName*/) { return false; }
    /** Asked of an item whose name is stored. @return whether the stored one stays as it is */
    virtual bool KeepsStored() { return false; }
    virtual void OnItem(const SImportItem& item) = 0;
    /** The store failed. What was taken before stays, unless it is undone. */
    virtual void OnStoreFailed(const std::string& /*strMessage*/) {}
    /** Nothing was kept of all that was told so far. */
    virtual void OnUndone() {}
    /** An unknown element that is not told as an item: so many were before. */
    virtual void OnUntoldElement() {}

    /** A document may consist of unknown elements; no more than so many are told as items. */
    static constexpr std::size_t MAX_UNKNOWN_ELEMENTS = 1000;
    /** @return whether one more unknown element is to be told as an item */
    bool TakesUnknownElement() { return m_iUnknownElements++ < MAX_UNKNOWN_ELEMENTS; }

  private:
    std::size_t m_iUnknownElements = 0;
};

/**
 * Tells of each child element that none of the names is of, and that therefore is passed over with all it holds.
 * @param parent where items stand, or an item @param pObserver may be null
 * @param eParent the item that it is; what stands in an item is passed over with it alone. ELEMENT: it is none
 */
void TellUnknownElements(const CPolicyDocument& document, const CXMLView& parent,
                         std::initializer_list<const char*> lstKnown, CImportObserver* pObserver,
                         EItemKind eParent = EItemKind::ELEMENT);

/** Tells of what was thrown, unless it was not the store's. @param pObserver may be null */
void TellStoreFailure(CImportObserver* pObserver, const OS::CException& exception);
