#include "cli/Output.h"

#include "cli/CommandContext.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"

namespace {
constexpr std::size_t PIECE = 256 * 1024;
}

COutput::COutput(CCommandContext& context, const std::string& strFile) : m_context(context) {
    if (!IsStandard(strFile)) {
        m_pFile = std::make_unique<COutputFile>(context.GetAbsolute(strFile), Text::Printable(strFile));
    }
}

COutput::~COutput() = default;

void COutput::Write(std::string_view strText) {
    m_strWaiting += strText;
    if (m_strWaiting.size() >= PIECE) {
        Flush();
    }
}

void COutput::Commit() {
    Flush();
    if (m_pFile != nullptr) {
        m_pFile->Commit();
    } else {
        m_context.Flush();
    }
}

void COutput::Flush() {
    if (m_pFile != nullptr) {
        m_pFile->Write(m_strWaiting);
    } else {
        m_context.Write(m_strWaiting);
    }
    m_strWaiting.clear();
}

bool COutput::IsStandard(const std::string& strFile) {
    return strFile.empty() || strFile == "-";
}
