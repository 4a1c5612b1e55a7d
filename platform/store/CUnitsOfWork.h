#pragma once

#include <string>
#include <vector>

#include "platform/store/CSettingsStore.h"

/** The units of work that are open, outermost first, and the rules that hold for them whatever keeps the rows. */
class CUnitsOfWork {
  public:
    /** @param strUrl names the store in messages */
    explicit CUnitsOfWork(std::string strUrl);

    const std::string& GetUrl() const { return m_strUrl; }
    bool IsInside() const { return !m_vecUnits.empty(); }
    /** Whether the innermost unit stands inside another one. */
    bool IsNested() const { return m_vecUnits.size() > 1; }
    bool IsWriting() const { return IsInside() && m_vecUnits.back() == EUnitOfWork::WRITE; }
    /** @throws OS::CException when the innermost unit only reads */
    void RequireWritable(const char* pDoing) const;
    /** @throws OS::CException when no unit is open */
    void RequireInside(const char* pDoing) const;
    /** @throws OS::CException for a unit that writes inside one that only reads */
    void Push(EUnitOfWork eUnit);
    void Pop() { m_vecUnits.pop_back(); }

  private:
    std::string m_strUrl;
    std::vector<EUnitOfWork> m_vecUnits;
};
