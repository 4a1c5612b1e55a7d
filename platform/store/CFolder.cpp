#include "platform/store/CFolder.h"

#include <filesystem>
#include <system_error>

#include "platform/store/CSqliteStore.h"
#include "platform/store/StoreError.h"
#include "platform/system/Synchronise.h"

CFolder::CFolder(const std::string& strFile)
    : m_strFile(strFile), m_strFolder(std::filesystem::path(strFile).parent_path().string()) {}

void CFolder::KeepNames(const char* pDoing, const char* pBefore) const {
    if (const int iError = SYS::SynchroniseFolder(m_strFolder); iError != 0) {
        ThrowStoreError(CSqliteStore::SCHEME + m_strFile, pDoing, pBefore + std::generic_category().message(iError),
                        iError);
    }
}
