#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** @return what is usually meant by that word for an element or attribute in the element strPlace; empty for others */
std::string FindSlip(std::string_view strPlace, std::string_view strWritten);

/** @return what to do about an unknown element @param strMeant what is most likely meant by it; "" when none is near */
std::string AdviseElement(std::string_view strPlace, std::string_view strWritten, const std::string& strMeant);

/**
 * What is most likely meant by the unknown names of one file. Looking for the nearest name takes long, and nobody reads
 * hundreds of them: so many different ones are looked for, and what is known without looking is said of all.
 */
class CMeantNames {
  public:
    static constexpr std::size_t MOST_NAMES = 20;

    /** @return the slip's meaning if it is one of the names, else the nearest of them; empty when none is near */
    std::string Find(std::string_view strPlace, std::string_view strWritten, const std::vector<std::string>& vecNames);
    /** @return the same for an element, by what a policy has in strPlace */
    std::string FindElement(std::string_view strPlace, std::string_view strWritten);
    /** @return whether no further name is looked for */
    bool IsFull() const { return m_mapMeant.size() >= MOST_NAMES; }

  private:
    std::map<std::pair<std::string, std::string>, std::string> m_mapMeant;  ///< by place and name
};
