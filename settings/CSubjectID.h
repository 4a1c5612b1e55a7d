#pragma once

#include <utility>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

/** Identifies a stored record to whoever is told of its changes. Its text is the record's instance name. */
class DLP_PLATFORM_API CSubjectID {
  public:
    explicit CSubjectID(OS::x_wstring strSubject) : m_strSubject(std::move(strSubject)) {}
    CSubjectID(const CSubjectID&) = default;
    CSubjectID& operator=(const CSubjectID&) = default;
    virtual ~CSubjectID();

    /** Assigns the identifier's text to strOut. */
    virtual void GetSubjectName(OS::x_wstring& strOut) const;

  private:
    OS::x_wstring m_strSubject;
};

/** What the subject identifiers of the three kinds begin with; the internal name follows at once. */
inline constexpr wchar_t SUBJECT_EXPRESSION[] = L"ORVAL_SUB_CFG_DLP_EXPRESSION";
inline constexpr wchar_t SUBJECT_KEYWORD[] = L"ORVAL_SUB_CFG_DLP_KEYWORD";
inline constexpr wchar_t SUBJECT_TEMPLATE[] = L"ORVAL_SUB_CFG_DLP_TEMPLATE";
