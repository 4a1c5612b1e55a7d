#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "digital_assets/ImportObserver.h"
#include "platform/xml/CXMLView.h"

/** A name that a document was to have and has not. */
struct SMissingName {
    std::string strName;
    std::string strNearest;  ///< the name in the document that most likely is meant; "" when none is near
};

/** The items of one document that go by one of some names, and the assets that the templates among them refer to. */
class CItemChoice {
  public:
    /** @param vecNames internal names, of any kind @param root the document's, only looked at here */
    CItemChoice(const std::vector<std::string>& vecNames, const CXMLView& root);

    bool Holds(EItemKind eKind, std::string_view strName) const;
    /** @return the names that no item of the document has */
    std::vector<SMissingName> FindMissing() const;

  private:
    void AddNames(const CXMLView& root, const char* pSection, const char* pElement);
    void AddReferences(const CXMLView& element);

    std::set<std::string, std::less<>> m_setWanted;
    std::set<std::pair<EItemKind, std::string>> m_setReferences;
    std::vector<std::string> m_vecNames;  ///< of the document's items
};
