#include "settings/CMgmtClass.h"

#include <utility>

CMgmtObjectBase::CMgmtObjectBase(OS::x_wstring strInstanceName) : m_strInstanceName(std::move(strInstanceName)) {}

CMgmtObjectBase::~CMgmtObjectBase() = default;

CMgmtClass::CMgmtClass(const wchar_t* pCategory, bool) : m_strCategory(pCategory) {}

CMgmtClass::~CMgmtClass() = default;

CMgmtObjectBase* CMgmtClass::CreateInstance(const wchar_t* pInstanceName) {
    m_vecInstances.push_back(std::make_unique<CMgmtObjectBase>(OS::x_wstring(pInstanceName)));
    return m_vecInstances.back().get();
}
