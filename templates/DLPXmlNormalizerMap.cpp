#include "platform/logging/DebugLog.h"
#include "templates/DLPXmlNormalizer.h"

namespace {

constexpr char LOG_SOURCE[] = ".\\DLPTemplateMgr.h";

constexpr wchar_t DELIMITERS[] = L"\t\n";
constexpr wchar_t COMMENT_MARKER[] = L"#";

}  // namespace

bool CDLPXmlNormalizer::CLineReaderCallback::OnLine(int, const std::wstring& strLine) {
    CLineReaderTokenCallback fields(strLine);
    Enumerate(fields);
    if (!fields.GetSource().empty() && !fields.GetDestination().empty()) {
        DLP_LOG(DBG::LEVEL_INFO, L"srcName = %s", fields.GetSource());
        DLP_LOG(DBG::LEVEL_INFO, L"dstName = %s", fields.GetDestination());
        m_names[fields.GetSource()] = fields.GetDestination();
    }
    return true;
}

void CDLPXmlNormalizer::CLineReaderCallback::OnBadLine(int iIndex) {
    DLP_LOG(DBG::LEVEL_ERROR, L"Skip line %d of the digital asset names since it is not UTF-8", iIndex + 1);
}

CDLPXmlNormalizer::CLineReaderTokenCallback::CLineReaderTokenCallback(const std::wstring& strLine)
    : CIterateEachTokenCallback(strLine, DELIMITERS) {}

bool CDLPXmlNormalizer::CLineReaderTokenCallback::OnToken(int iIndex, const std::wstring& strToken) {
    if (iIndex > 1 || (iIndex == 0 && IsComment(strToken, COMMENT_MARKER))) {
        return false;
    }
    OS::x_wstring strName = strToken;
    (iIndex == 0 ? m_strSource : m_strDestination) = strName.TrimRight();
    return true;
}
