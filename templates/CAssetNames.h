#pragma once

#include <string>
#include <string_view>

#include "platform/common/TextHash.h"
#include "templates/MatchRule.h"

/**
 * The names of assets that templates refer to: collected first, then asked of the store all together, so that no list
 * of all names is ever read.
 */
class CAssetNames {
    using Names = OS::TextMap<std::string, bool>;

  public:
    /** A name in UTF-8, and whether an asset of it is stored; stays in place while the object lives. */
    using Entry = Names::value_type;

    /** @param eType ENTITY or KEYWORD */
    const Entry& Add(EElementType eType, std::string_view strName);
    /** Finds out which of the names are stored. @throws OS::CException when the store cannot answer */
    void Ask();
    /** @return whether the name was added and is stored */
    bool IsStored(EElementType eType, std::string_view strName) const;

  private:
    const Names& Of(EElementType eType) const { return eType == EElementType::ENTITY ? m_expressions : m_keywords; }

    Names m_expressions;
    Names m_keywords;
};
