#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "api/ParserExport.h"
#include "platform/common/x_wstring.h"

/**
 * What became of each item of the imports that are called while it lives: those of CDLPTemplateParse, texts and files,
 * and of CDLPDigitalAssetsParser. What they answer, store and log is the same with and without it.
 *
 * It hears of the imports of the thread that made it, and must be destroyed there. Of several the one that was made
 * last hears alone, and it must be destroyed first.
 */
class DLP_PARSER_API CDLPImportReport {
  public:
    enum class EKind : std::int32_t {
        EXPRESSION,
        KEYWORD,
        TEMPLATE,
        CATEGORY,  ///< an industry or region without a name, or an entry of one; told of only when it is skipped
        SECTION,   ///< of the older layout, which is told of only when it is skipped
        ELEMENT,   ///< one that stands where items do and is none; told of only because it is skipped
    };

    /** Every item ends in exactly one. */
    enum class EDisposition : std::int32_t { CREATED, UPDATED, UNCHANGED, SKIPPED, FAILED };

    /** Why an item was not taken. */
    enum class EReason : std::int32_t {
        NONE,
        NO_NAME,                ///< the name is empty or absent
        NO_DISPLAY_NAME,        ///< the display name is empty or absent
        BUILT_IN,               ///< the stored item is built in, this one is not
        MISSING_CHILD,          ///< a required child element is missing
        UNKNOWN_EXPRESSION,     ///< a rule refers to an expression that is not stored
        UNKNOWN_KEYWORD,        ///< a rule refers to a keyword list that is not stored
        UNSUPPORTED_TYPE,       ///< a rule refers to neither
        UNSUPPORTED_OPERATION,  ///< a rule joins by an operation that is not taken
        OLDER_BUILT_IN,         ///< a built-in template of the older layout
        OLDER_SECTION,          ///< a section that the older layout does not carry over
        UNKNOWN_TEMPLATE,       ///< the entry names no template of the document
        STORE,                  ///< the store could not write it
        UNKNOWN_ELEMENT,        ///< no policy has such an element where it stands; the first thousand are told
    };

    static constexpr std::size_t NO_PLACE = static_cast<std::size_t>(-1);

    struct SItem {
        EKind eKind = EKind::TEMPLATE;
        OS::x_wstring strName;
        OS::x_wstring strDisplayName;
        EDisposition eDisposition = EDisposition::CREATED;
        EReason eReason = EReason::NONE;
        /**
         * The missing child, the value that the rule is skipped for, the unknown template, what an unknown element
         * stands in, or what the store said.
         */
        OS::x_wstring strDetail;
        /** Of the start tag's "<": bytes of the file, or characters of the text. */
        std::size_t iOffset = NO_PLACE;
        std::size_t iLine = 0;    ///< from 1; 0 without a place
        std::size_t iColumn = 0;  ///< from 1, in code points
    };

    CDLPImportReport();
    CDLPImportReport(const CDLPImportReport&) = delete;
    CDLPImportReport& operator=(const CDLPImportReport&) = delete;
    ~CDLPImportReport();

    /**
     * The items, import by import, each in the order of its document. An import whose result is not 0 may end before it
     * has come to every item, and one that throws tells of none.
     */
    const std::vector<SItem>& GetItems() const;
    /** @return whether the store failed during an import; what is told to be taken may be lost only then */
    bool HasStoreFailed() const;
    /** @return what the store said first; empty when it has not failed */
    const OS::x_wstring& GetStoreFailure() const;
    /** Forgets all that was told. */
    void Clear();

    struct SState;

  private:
    std::unique_ptr<SState> m_pState;
};
