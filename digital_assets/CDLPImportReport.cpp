#include "api/CDLPImportReport.h"

#include "digital_assets/CReportedImport.h"

CDLPImportReport::CDLPImportReport() : m_pState(std::make_unique<SState>()) {
    m_pState->pOuter = SState::Listening();
    SState::Listening() = m_pState.get();
}

CDLPImportReport::~CDLPImportReport() {
    SState::Listening() = m_pState->pOuter;
}

const std::vector<CDLPImportReport::SItem>& CDLPImportReport::GetItems() const {
    return m_pState->vecItems;
}

bool CDLPImportReport::HasStoreFailed() const {
    return m_pState->bStoreFailed;
}

const OS::x_wstring& CDLPImportReport::GetStoreFailure() const {
    return m_pState->strStoreFailure;
}

void CDLPImportReport::Clear() {
    m_pState->vecItems.clear();
    m_pState->bStoreFailed = false;
    m_pState->strStoreFailure.clear();
}
