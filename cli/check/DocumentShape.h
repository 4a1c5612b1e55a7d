#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/** What an element of a policy may hold. The name of an element means the same wherever it stands. */
struct SShape {
    std::string strName;
    std::vector<std::string> vecAttributes;
    std::vector<std::string> vecChildren;
    bool bText = false;          ///< has a text of its own
    bool bChildrenOnce = false;  ///< of several children of one name the first is read
};

/** The elements of a layout. */
class CDocumentShape {
  public:
    explicit CDocumentShape(bool bOlder);

    /** @return null for an element that no policy has */
    const SShape* Find(std::string_view strElement) const;
    /** @return an element that has this attribute; null when none has */
    const SShape* FindOwner(std::string_view strAttribute) const;
    /** @return every name of an element */
    const std::vector<std::string>& GetNames() const { return m_vecNames; }

    /** @return the position in the list, its size when it is not in it */
    static std::size_t IndexOf(const std::vector<std::string>& vecNames, std::string_view strName);

  private:
    std::vector<SShape> m_vecShapes;
    std::vector<std::string> m_vecNames;
};
