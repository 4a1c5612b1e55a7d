#pragma once

#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_file;

/** A file in whose place another one is put: whoever had it open goes on, and nobody else opens it meanwhile. */
class CReservedFile {
  public:
    /** @throws OS::CException when it cannot be opened */
    explicit CReservedFile(const std::string& strPath);

    /**
     * Waits for whoever has reserved the file.
     * @return false when another file stands in its place by then
     * @throws OS::CException when it waits in vain
     */
    bool Reserve();

  private:
    struct SClose {
        void operator()(sqlite3* pDb) const noexcept;
    };

    bool TryToReserve();

    std::string m_strUrl;
    std::unique_ptr<sqlite3, SClose> m_pDb;
    sqlite3_file* m_pFile = nullptr;
};
