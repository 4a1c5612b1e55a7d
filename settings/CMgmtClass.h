#pragma once

#include <memory>
#include <vector>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

/** A registered instance; owned by the CMgmtClass that made it. */
class DLP_PLATFORM_API CMgmtObjectBase {
  public:
    explicit CMgmtObjectBase(OS::x_wstring strInstanceName);
    virtual ~CMgmtObjectBase();
    const OS::x_wstring& GetInstanceName() const { return m_strInstanceName; }

  private:
    OS::x_wstring m_strInstanceName;
};

/** Registers new instances of one record category. Nothing is stored until the record itself is saved. */
class DLP_PLATFORM_API CMgmtClass {
  public:
    /** @param pCategory copied @param bCreate reserved, true */
    CMgmtClass(const wchar_t* pCategory, bool bCreate);
    CMgmtClass(const CMgmtClass&) = delete;
    CMgmtClass& operator=(const CMgmtClass&) = delete;
    virtual ~CMgmtClass();

    const OS::x_wstring& GetCategory() const { return m_strCategory; }
    /** @return the registered instance, released with this object; registering a name twice is harmless */
    virtual CMgmtObjectBase* CreateInstance(const wchar_t* pInstanceName);

  private:
    OS::x_wstring m_strCategory;
    std::vector<std::unique_ptr<CMgmtObjectBase>> m_vecInstances;
};
