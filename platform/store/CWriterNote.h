#pragma once

#include <string>

#include "platform/store/SqliteFile.h"

/**
 * Says who writes to a store: a file beside the store's, "-writer", that a process leaves while its unit of work lasts,
 * for those who wait in vain. It only informs: a note that cannot be left is done without, and one whose process is
 * gone is not believed.
 */
class CWriterNote {
  public:
    /**
     * @param strStorePath absolute
     * @param pSuffix of the note's name
     */
    explicit CWriterNote(const std::string& strStorePath, const char* pSuffix = SqliteSuffix::WRITER_NOTE)
        : m_strStorePath(strStorePath), m_pSuffix(pSuffix) {}
    CWriterNote(const CWriterNote&) = delete;
    CWriterNote& operator=(const CWriterNote&) = delete;
    ~CWriterNote() { Remove(); }

    void Leave() noexcept;
    /** Takes the note of a process that is gone; where none is, or one without a text, it makes and changes nothing. */
    void TakeOver() noexcept;
    void Remove() noexcept;
    bool IsLeft() const { return m_iFile >= 0; }
    /** @return such as "process 12 on host-a, since 2026-03-01T08:00:00Z"; "" when nobody says so */
    std::string Read() const;
    /** Whether a note keeps this one from being left: another's, which may have no text yet. */
    bool IsHeld() const;

  private:
    std::string GetPath() const;
    int Take(bool bAnew) const;

    std::string m_strStorePath;
    const char* m_pSuffix;
    int m_iFile = -1;
};
