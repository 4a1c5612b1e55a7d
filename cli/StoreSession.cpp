#include "cli/StoreSession.h"

#include <cstring>
#include <new>
#include <utility>

#include "cli/Text.h"
#include "platform/common/CException.h"
#include "platform/common/DataFileFailure.h"
#include "platform/store/CForwardingStore.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"

struct CStoreSession::SFailure {
    EVerdict eVerdict = EVerdict::DONE;
    std::string strMessage;
    bool bMadeMeanwhile = false;
};

namespace {

constexpr const char OUT_OF_MEMORY[] = "memory ran out in the settings store";

bool s_bChanged = false;

/** Keeps the first failure; the ones that follow from it say less. */
class CRecordingStore : public CForwardingStore {
  public:
    CRecordingStore(std::unique_ptr<CSettingsStore> pInner, std::shared_ptr<CStoreSession::SFailure> pFailure)
        : CForwardingStore(std::move(pInner)), m_pFailure(std::move(pFailure)) {}

    void Begin(EUnitOfWork eUnit) override {
        CForwardingStore::Begin(eUnit);
        ++m_iUnits;
        m_bWrites = m_iUnits == 1 ? eUnit == EUnitOfWork::WRITE : m_bWrites;
    }

    void Commit() override {
        --m_iUnits;
        CForwardingStore::Commit();
        s_bChanged = s_bChanged || (m_iUnits == 0 && m_bWrites);
    }

    void Rollback() override {
        --m_iUnits;
        CForwardingStore::Rollback();
    }

  protected:
    void Failed(const char*) override {
        if (m_pFailure->eVerdict != EVerdict::DONE) {
            return;
        }
        try {
            throw;
        } catch (const std::bad_alloc&) {
            m_pFailure->eVerdict = EVerdict::MEMORY;
        } catch (const OS::CException& error) {
            m_pFailure->eVerdict = EVerdict::STORE;
            m_pFailure->strMessage = Text::Printable(error.what());
            m_pFailure->bMadeMeanwhile = error.GetErrorCode() == StoreCode::MADE_MEANWHILE;
        } catch (const std::exception& error) {
            m_pFailure->eVerdict = EVerdict::STORE;
            m_pFailure->strMessage = Text::Printable(error.what());
        }
    }

  private:
    std::shared_ptr<CStoreSession::SFailure> m_pFailure;
    int m_iUnits = 0;
    bool m_bWrites = false;
};

}  // namespace

CStoreSession::CStoreSession(const std::string& strUrl, EUnitOfWork eUse) : m_pFailure(std::make_shared<SFailure>()) {
    Open([&] { CSettingsStore::Open(strUrl, eUse); });
}

CStoreSession::CStoreSession(const std::string& strUrl, CUnmadeStore::EMade eMade)
    : m_pFailure(std::make_shared<SFailure>()) {
    Open([&] {
        CheckSqlitePlace(strUrl.substr(std::strlen(CSqliteStore::SCHEME)), strUrl);
        CSettingsStore::Open(std::make_unique<CUnmadeStore>(strUrl, eMade));
    });
}

template <class F>
void CStoreSession::Open(const F& fnOpen) {
    s_bChanged = false;
    try {
        fnOpen();
    } catch (const OS::CException& error) {
        throw CToolError(EVerdict::STORE, Text::Printable(error.what()));
    }
    CSettingsStore::PutInFront([this](std::unique_ptr<CSettingsStore> pInner) {
        return std::make_unique<CRecordingStore>(std::move(pInner), m_pFailure);
    });
}

CStoreSession::~CStoreSession() {
    CSettingsStore::Close();
    OS::TakeDataFileFailure();
}

void CStoreSession::ThrowIfFailed() const {
    if (m_pFailure->eVerdict == EVerdict::MEMORY) {
        throw CToolError(EVerdict::MEMORY, OUT_OF_MEMORY);
    }
    if (m_pFailure->eVerdict != EVerdict::DONE) {
        throw CToolError(m_pFailure->eVerdict, m_pFailure->strMessage);
    }
    if (const std::string strFailure = OS::TakeDataFileFailure(); !strFailure.empty()) {
        throw CToolError(EVerdict::INVALID, Text::Printable(strFailure));
    }
}

bool CStoreSession::IsMadeMeanwhile() const {
    return m_pFailure->bMadeMeanwhile;
}

bool CStoreSession::IsChanged() noexcept {
    return s_bChanged;
}

void CStoreSession::SetChanged(bool bChanged) noexcept {
    s_bChanged = bChanged;
}
