#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/** Names that go, or go back, in the end, unless they are kept. */
class CNewNames {
  public:
    CNewNames() { m_vecNames.reserve(MOST); }
    CNewNames(const CNewNames&) = delete;
    CNewNames& operator=(const CNewNames&) = delete;
    ~CNewNames();

    /** At most MOST. @param strFormer what the file was called before; "" when that name is to go alone */
    void Add(std::string&& strName, std::string&& strFormer = {}) noexcept {
        m_vecNames.push_back({std::move(strName), std::move(strFormer)});
    }
    void Keep() noexcept { m_vecNames.clear(); }

    static constexpr std::size_t MOST = 3;

  private:
    struct SName {
        std::string strName;
        std::string strFormer;
    };
    std::vector<SName> m_vecNames;
};
