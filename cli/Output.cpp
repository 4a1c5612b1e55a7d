#include "cli/Output.h"

#include "cli/CommandContext.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"

namespace {
constexpr std::size_t PIECE = 262144;
}

COutput::COutput(CCommandContext& context, const std::string& strFile) : m_context(context) {
    if (!IsStandard(strFile)) {
        m_pFile = std::make_unique<COutputFile>(context.GetAbsolute(strFile), Text::Printable(strFile));
    }
}

COutput::~COutput() = default;

void COutput::Write(std::string_view strText) {
    if (m_strWaiting.size() + strText.size() < PIECE) {
        m_strWaiting += strText;
        return;
    }
    Put(m_strWaiting);
    m_strWaiting.clear();
    Put(strText);
}

void COutput::Commit() {
    Put(m_strWaiting);
    if (m_pFile != nullptr) {
        m_pFile->Commit();
    } else {
        m_context.Flush();
    }
}

void COutput::Put(std::string_view strText) {
    if (m_pFile != nullptr) {
        m_pFile->Write(strText);
    } else {
        m_context.Write(strText);
    }
}

bool COutput::IsStandard(const std::string& strFile) {
    return strFile.empty() || strFile == "-";
}
