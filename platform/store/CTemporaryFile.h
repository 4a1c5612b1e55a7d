#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/store/CWriterNote.h"

/**
 * A file on its way to become a store beside it: gone unless it became one, or its maker was killed; then it goes with
 * the next one. A note beside it, "-maker", says that it is one and whether its maker lives; where none can be left it
 * is done without. All of it throws OS::CException.
 */
class CTemporaryFile {
  public:
    /**
     * @param strTarget absolute
     * @param pDoing what it is for, one of StoreDoing
     */
    CTemporaryFile(const std::string& strTarget, const char* pDoing);
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile();

    /** @return whether nothing of it is left */
    bool Remove() const;

    const std::string& GetPath() const { return m_strPath; }

    /**
     * The new file belongs to whom the old one belonged to, as far as this user may give it away. Where its group is
     * another one, that one may do nothing.
     * @param strFormer with all links followed
     */
    void TakeOwner(const std::string& strFormer) const;

    /** From now on the disk holds what the file holds. It takes its time, so what is looked at last comes after it. */
    void Keep(const std::string& strTarget) const;

    /**
     * Until the names in the folder are kept a power cut may undo it.
     * @param bReplacing whether it may come into the place of another file
     * @return false when it may not, and another file is there
     * @throws OS::CException also when somebody has put another file in this one's place
     */
    bool Become(const std::string& strTarget, bool bReplacing = true);

  private:
    explicit CTemporaryFile(const char* pDoing) : m_pDoing(pDoing) {}
    void Make(const std::string& strTarget);
    int Look() const;
    void Close();

    const char* m_pDoing;
    int m_iFile = -1;         ///< whoever else may change the folder may let the path lead to another file
    struct stat m_status {};  ///< of the file as it was made
    std::string m_strPath;
    std::optional<CWriterNote> m_optNote;
    std::vector<std::string> m_vecSideFiles;  ///< removing them must not depend on memory that has run out
};
