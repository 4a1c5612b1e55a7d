#include "metadata/ProcessMetaData.h"

#include <atomic>
#include <mutex>

#include "api/DLPMetaDataLoaderImpl.h"

namespace {
// Never destroyed: whoever still exports while the process ends finds it alive.
std::atomic<DLPMetaDataLoaderImpl*> s_pInstance{nullptr};
std::mutex s_lock;
}  // namespace

DLPMetaDataLoaderImpl& GetProcessMetaData() {
    DLPMetaDataLoaderImpl* pInstance = s_pInstance.load(std::memory_order_acquire);
    if (pInstance == nullptr) {
        const std::lock_guard lock(s_lock);
        pInstance = s_pInstance.load(std::memory_order_relaxed);
        if (pInstance == nullptr) {
            pInstance = new DLPMetaDataLoaderImpl;
            s_pInstance.store(pInstance, std::memory_order_release);
        }
    }
    return *pInstance;
}
