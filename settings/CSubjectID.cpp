#include "settings/CSubjectID.h"

CSubjectID::~CSubjectID() = default;

void CSubjectID::GetSubjectName(OS::x_wstring& strOut) const {
    strOut = m_strSubject;
}
