#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/xml/CXMLCOMException.h"
#include "templates/CAssetNames.h"
#include "templates/MatchRule.h"

class CSettingsRow;

/** One stored template as an export needs it once the tree of its element is gone. Texts are UTF-8. */
struct SPreparedTemplate {
    /** What a building block refers to. */
    struct SReference {
        EElementType eType;
        const CAssetNames::Entry* pName;
        bool bChecked;  ///< the reference check looks at it
    };

    /**
     * Reads a stored row; the element is parsed here, once.
     * @param names learns every asset that the template refers to; must outlive the result
     */
    static SPreparedTemplate Make(const CSettingsRow& row, CAssetNames& names);

    std::string strSubject;
    std::string strName;  ///< the element's
    std::vector<std::string> vecIndustries;
    std::vector<std::string> vecRegions;
    std::string strMarkup;                  ///< the element as it is exported
    std::vector<SReference> vecReferences;  ///< in document order
    std::optional<std::string>
        strUnsupportedType;                ///< of the block, after those that are checked, where the check ends
    bool bTemplate = false;                ///< the element is a template
    std::optional<CXMLException> failure;  ///< why it cannot be written
};
