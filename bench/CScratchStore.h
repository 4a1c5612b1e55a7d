#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/store/CSettingsStore.h"

/** A store for measuring, in memory or in a folder that goes with it. */
class CScratchStore {
  public:
    explicit CScratchStore(bool bOnDisk) : m_bOnDisk(bOnDisk) {
        if (m_bOnDisk) {
            std::string strTemplate = (std::filesystem::temp_directory_path() / "dlpbenchXXXXXX").string();
            m_strFolder = mkdtemp(strTemplate.data());
        }
    }
    ~CScratchStore() {
        CSettingsStore::Close();
        if (m_bOnDisk) {
            std::filesystem::remove_all(m_strFolder);
        }
    }
    CScratchStore(const CScratchStore&) = delete;
    CScratchStore& operator=(const CScratchStore&) = delete;

    void OpenEmpty() {
        CSettingsStore::Close();
        if (m_bOnDisk) {
            std::filesystem::remove_all(m_strFolder);
        }
        CSettingsStore::Open(m_bOnDisk ? "sqlite:" + m_strFolder + "/settings.db" : "memory:");
    }

  private:
    bool m_bOnDisk;
    std::string m_strFolder;
};
