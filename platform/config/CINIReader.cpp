#include "platform/config/CINIReader.h"

#include <algorithm>
#include <string_view>

#include "platform/common/CException.h"
#include "platform/common/DataFileFailure.h"
#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"

CINIReader::CIterateEachTokenCallback::CIterateEachTokenCallback(const std::wstring& strLine,
                                                                 const std::wstring& strDelimiter)
    : m_strLine(strLine), m_strDelimiter(strDelimiter) {}

CINIReader::CIterateEachTokenCallback::~CIterateEachTokenCallback() = default;

bool CINIReader::CIterateEachTokenCallback::IsComment(const std::wstring& strToken,
                                                      const std::wstring& strMarker) const {
    return strToken.compare(0, strMarker.size(), strMarker) == 0;
}

const std::wstring& CINIReader::CIterateEachTokenCallback::GetLineContent() const {
    return m_strLine;
}

const std::wstring& CINIReader::CIterateEachTokenCallback::GetDelimiter() const {
    return m_strDelimiter;
}

CINIReader::CIterateEachLineCallback::~CIterateEachLineCallback() = default;

void CINIReader::CIterateEachLineCallback::OnBegin() {}

void CINIReader::CIterateEachLineCallback::OnEnd() {}

void CINIReader::CIterateEachLineCallback::OnBadLine(int) {}

void CINIReader::CIterateEachLineCallback::Enumerate(CIterateEachTokenCallback& callback) {
    const std::wstring& strLine = callback.GetLineContent();
    std::size_t iBegin = 0;
    for (int iIndex = 0; iBegin != std::wstring::npos; ++iIndex) {
        const std::size_t iEnd = strLine.find_first_of(callback.GetDelimiter(), iBegin);
        if (!callback.OnToken(iIndex, strLine.substr(iBegin, iEnd - iBegin))) {
            return;
        }
        iBegin = iEnd == std::wstring::npos ? iEnd : iEnd + 1;
    }
}

bool CINIReader::Parse(const wchar_t* pPath, const wchar_t* pMode) {
    m_strContent.clear();
    if (std::wstring_view(pMode) != L"r") {
        return false;
    }
    try {
        m_strContent = OS::ReadWholeFile(OS::WCharToChar(pPath));
    } catch (const OS::CException& error) {
        OS::NoteDataFileFailure(error.GetErrorCode(), error.what());
        return false;
    }
    return true;
}

void CINIReader::Enumerate(CIterateEachLineCallback& callback) const {
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    std::string_view strRest = m_strContent;
    if (strRest.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
        strRest.remove_prefix(BYTE_ORDER_MARK.size());
    }
    callback.OnBegin();
    bool bMore = true;
    for (int iIndex = 0; bMore && !strRest.empty(); ++iIndex) {
        const std::string_view strLine = strRest.substr(0, strRest.find('\n'));
        strRest.remove_prefix(std::min(strLine.size() + 1, strRest.size()));
        if (OS::FindInvalidUtf8(strLine) != std::string_view::npos) {
            callback.OnBadLine(iIndex);
        } else {
            bMore = callback.OnLine(iIndex, OS::WideText(strLine));
        }
    }
    callback.OnEnd();
}
