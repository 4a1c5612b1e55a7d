#include "platform/store/CUnitsOfWork.h"

#include "platform/store/StoreError.h"

CUnitsOfWork::CUnitsOfWork(std::string strUrl) : m_strUrl(std::move(strUrl)) {}

void CUnitsOfWork::RequireWritable(const char* pDoing) const {
    if (IsInside() && m_vecUnits.back() == EUnitOfWork::READ) {
        ThrowStoreError(m_strUrl, pDoing, "the unit of work around it only reads");
    }
}

void CUnitsOfWork::RequireInside(const char* pDoing) const {
    if (!IsInside()) {
        ThrowStoreError(m_strUrl, pDoing, "none has been begun");
    }
}

void CUnitsOfWork::Push(EUnitOfWork eUnit) {
    if (eUnit == EUnitOfWork::WRITE) {
        RequireWritable(StoreDoing::BEGINNING);
    }
    m_vecUnits.push_back(eUnit);
}
