#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/xml/CXMLView.h"

/** Finds the template of a document that an entry of a category most likely means. */
class CTemplateSuggestions {
  public:
    /** @param root of the document */
    explicit CTemplateSuggestions(const CXMLView& root) : m_root(root) {}

    /** Looks for the first few that are asked for: it takes long, and nobody reads hundreds of hints. @return "" when
     * none is near */
    std::string Find(const std::string& strName);

  private:
    CXMLView m_root;
    std::vector<std::string> m_vecNames;
    std::size_t m_iFound = 0;
};
