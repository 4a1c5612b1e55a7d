#pragma once

#include <string>

/** The folder of a file, found before the work: its end must not depend on memory that has run out. */
class CFolder {
  public:
    explicit CFolder(const std::string& strFile);

    /**
     * From now on a power cut does not undo what was done to the names in it.
     * @param pDoing one of StoreDoing
     * @param pBefore comes before why that failed
     * @throws OS::CException
     */
    void KeepNames(const char* pDoing, const char* pBefore = "") const;

  private:
    std::string m_strFile;
    std::string m_strFolder;
};
