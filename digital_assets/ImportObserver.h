#pragma once

#include <cstddef>
#include <string>

/** Kinds of items in a document. */
enum class EItemKind { EXPRESSION, KEYWORD, TEMPLATE, CATEGORY, SECTION };

/** What became of an item; every item ends in exactly one. */
enum class EDisposition { CREATED, UPDATED, UNCHANGED, SKIPPED, FAILED };

/** Why an item was not taken. */
enum class EReason {
    NONE,
    NO_NAME,             ///< name is empty or absent
    NO_DISPLAY_NAME,     ///< display_name is empty or absent
    BUILT_IN,            ///< the stored item is built in, this one is not
    MISSING_CHILD,       ///< a required child element is missing; the detail names it
    UNSUPPORTED_ASSETS,  ///< a rule cannot be imported; the detail says what of it
    OLDER_BUILT_IN,      ///< a built-in template of the older layout
    OLDER_SECTION,       ///< a section that the older layout does not carry over
    UNKNOWN_TEMPLATE,    ///< a category entry that names no template of the document
    STORE,               ///< the store could not write it
};

/** One item of a document and its fate. Texts are UTF-8. */
struct SImportItem {
    EItemKind eKind = EItemKind::TEMPLATE;
    std::string strName;
    std::string strDisplayName;
    EDisposition eDisposition = EDisposition::CREATED;
    EReason eReason = EReason::NONE;
    std::string strDetail;
    /** For UNSUPPORTED_ASSETS over an unknown reference: which kind of asset and the name that is not stored. */
    bool bUnknownReference = false;
    EItemKind eReferenceKind = EItemKind::EXPRESSION;
    std::string strReference;
    /** Child elements of a template that are no match rules and are read as empty ones. */
    std::size_t iForeignChildren = 0;
    /** Bytes from the start of the text to the start tag's "<"; npos when there is no such place. */
    std::size_t iOffset = std::string::npos;
};

/** Hears of each item of an import when its fate is known, in the order of the work. */
class CImportObserver {
  public:
    virtual ~CImportObserver() = default;
    virtual void OnItem(const SImportItem& item) = 0;
};
