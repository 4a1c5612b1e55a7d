#pragma once

#include <string>
#include <vector>

#include "platform/common/PlatformExport.h"

/**
 * Reads a text file line by line and hands each line to a callback, which may have it split into tokens.
 * UTF-8, a leading byte order mark is dropped; a line ends at LF (a CR before it stays in the line), the last one needs
 * none. A line that is not UTF-8 is left out and counted.
 */
class DLP_PLATFORM_API CINIReader {
  public:
    /** Splits one line: the reader asks for the line and its delimiters and hands over each field. */
    class DLP_PLATFORM_API CIterateEachTokenCallback {
      public:
        CIterateEachTokenCallback(const std::wstring& strLine, const std::wstring& strDelimiter);
        virtual ~CIterateEachTokenCallback();
        /** @return whether the field begins with the marker */
        virtual bool IsComment(const std::wstring& strToken, const std::wstring& strMarker) const;
        virtual const std::wstring& GetLineContent() const;
        /** @return the characters each of which ends a field; runs of them are not joined */
        virtual const std::wstring& GetDelimiter() const;
        /** Takes one field. @param iIndex from 0 @return false: no more fields */
        virtual bool OnToken(int iIndex, const std::wstring& strToken) = 0;

      private:
        std::wstring m_strLine;
        std::wstring m_strDelimiter;
    };

    /** Takes the lines of one file. */
    class DLP_PLATFORM_API CIterateEachLineCallback {
      public:
        virtual ~CIterateEachLineCallback();
        /** Called before the first line. */
        virtual void OnBegin();
        /** Called after the last line. */
        virtual void OnEnd();
        /** Takes one line, without its LF. @param iIndex from 0 @return false: no more lines */
        virtual bool OnLine(int iIndex, const std::wstring& strLine) = 0;
        /** Told of a line that is not UTF-8 instead of OnLine; the default does nothing. @param iIndex from 0 */
        virtual void OnBadLine(int iIndex);
        /** Hands each field of the token callback's line to it until it says stop. */
        void Enumerate(CIterateEachTokenCallback& callback);
    };

    /**
     * Reads a whole file, replacing what was read before.
     * @param pPath as given, else with backslashes turned into slashes; relative to the current directory
     * @param pMode "r"
     * @return false when it cannot be read (nothing is kept then)
     */
    bool Parse(const wchar_t* pPath, const wchar_t* pMode);

    /** Hands each line that Parse read to the callback until it says stop. */
    void Enumerate(CIterateEachLineCallback& callback) const;

  private:
    std::string m_strContent;
};
