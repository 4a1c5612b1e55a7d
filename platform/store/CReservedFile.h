#pragma once

#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_file;

/** A file in whose place another one is put: whoever had it open goes on, and nobody else opens it meanwhile. */
class CReservedFile {
  public:
    /**
     * @param pDoing what it is for, one of StoreDoing
     * @throws OS::CException when it cannot be opened
     */
    CReservedFile(const std::string& strPath, const char* pDoing);

    /** @return whether the file's header says that it is a settings store */
    bool HoldsStore() const;

    /**
     * Waits for whoever has reserved the file.
     * @return false when another file stands in its place by then
     * @throws OS::CException when it waits in vain
     */
    bool Reserve();

    /** @return whether nobody else had it open when it was reserved */
    bool IsAlone() const { return m_bAlone; }

  private:
    struct SClose {
        void operator()(sqlite3* pDb) const noexcept;
    };

    bool TryToReserve();

    std::string m_strUrl;
    const char* m_pDoing;
    bool m_bAlone = false;
    std::unique_ptr<sqlite3, SClose> m_pDb;
    sqlite3_file* m_pFile = nullptr;
};
