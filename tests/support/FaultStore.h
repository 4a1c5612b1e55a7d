#pragma once

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "platform/common/CException.h"
#include "platform/store/CForwardingStore.h"

/** The message of the failure that CStoreFaults makes. */
inline constexpr wchar_t STORE_FAULT[] = L"the store does not answer";

/**
 * While it lives, every operation of the stores that CSettingsStore::Open opens is counted, and one of them can be made
 * to fail. Open the store after making this; it is closed at the end.
 */
class CStoreFaults {
  public:
    using Fault = std::function<void()>;

    CStoreFaults() {
        CSettingsStore::SetWrapper([this](std::unique_ptr<CSettingsStore> pInner) {
            return std::make_unique<CFaultStore>(std::move(pInner), *this);
        });
    }
    CStoreFaults(const CStoreFaults&) = delete;
    CStoreFaults& operator=(const CStoreFaults&) = delete;
    ~CStoreFaults() {
        CSettingsStore::SetWrapper({});
        CSettingsStore::Close();
    }

    /** What FailAt can throw: the store's own failure, or the lack of memory, which is none of it. */
    static void StoreFault() { throw OS::CException(0, STORE_FAULT, 0); }
    static void MemoryFault() { throw std::bad_alloc(); }

    /** Counts anew; the n-th operation from now on fails, once. 0: none. */
    void FailAt(std::size_t iOperation, Fault fnFault = StoreFault) {
        m_vecOperations.clear();
        m_iFailAt = iOperation;
        m_fnFault = std::move(fnFault);
        m_bReached = false;
    }
    /** Counts without failing anything. */
    void CountOnly() { FailAt(0); }

    /** The names of the operations since FailAt, in order. */
    const std::vector<std::string>& GetOperations() const { return m_vecOperations; }
    std::size_t GetCount() const { return m_vecOperations.size(); }
    /** Whether the operation that was to fail has come. A Rollback comes, but cannot be made to fail. */
    bool IsReached() const { return m_bReached; }

  private:
    class CFaultStore : public CForwardingStore {
      public:
        CFaultStore(std::unique_ptr<CSettingsStore> pInner, CStoreFaults& faults)
            : CForwardingStore(std::move(pInner)), m_faults(faults) {}

      protected:
        void Before(const char* pOperation) override { m_faults.OnOperation(pOperation); }

      private:
        CStoreFaults& m_faults;
    };

    void OnOperation(const char* pOperation) {
        m_vecOperations.emplace_back(pOperation);
        if (m_vecOperations.size() == m_iFailAt) {
            m_bReached = true;
            m_fnFault();
        }
    }

    std::vector<std::string> m_vecOperations;
    std::size_t m_iFailAt = 0;
    Fault m_fnFault;
    bool m_bReached = false;
};
