#pragma once

#include <string>

/** Why a requested template is not in an export. */
enum class ELeftOut {
    NOT_STORED,      ///< no stored template has this name, or the store could not be read
    INVALID_ASSETS,  ///< a rule refers to an asset that is not stored, or is of no known type; the detail names it
    NO_TEMPLATE,     ///< the stored element is no template
};

/** Hears of each record of an export: what it leaves out, and over which it fails; may take text. All is UTF-8. */
class CExportObserver {
  public:
    virtual ~CExportObserver() = default;
    /** A template's or an asset's turn has come. */
    virtual void OnRecord() {}
    /**
     * The document as far as it is written, now and then while assets are: it may be taken, which leaves the text
     * empty, and then is missing from what the export gives. An export that fails later gives nothing.
     */
    virtual void OnText(std::string&) {}
    /** @param strName the name that was asked for */
    virtual void OnLeftOut(const std::string& strName, ELeftOut eReason, const std::string& strDetail) = 0;
    /** @param strSubject subject identifier of the record that cannot be written @param strMessage why */
    virtual void OnRecordFailed(const std::string& strSubject, const std::string& strMessage) = 0;
};
