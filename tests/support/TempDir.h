#pragma once

#include <string>

/** A fresh folder, removed with all it holds at the end. */
class CTempDir {
  public:
    CTempDir();
    ~CTempDir();
    CTempDir(const CTempDir&) = delete;
    CTempDir& operator=(const CTempDir&) = delete;

    /** @return the folder's path, or that of something in it; nothing is made */
    std::string Path(const std::string& strRelative = "") const;

    /** Writes a file byte for byte, making the folders on its way. @return its path */
    std::string Write(const std::string& strRelative, const std::string& strContent) const;

    /** Makes a folder and those on its way. @return its path */
    std::string MakeFolder(const std::string& strRelative) const;

    /** @return the bytes of a file in the folder; "" when there is none */
    std::string Read(const std::string& strRelative) const;

  private:
    std::string m_strPath;
};
