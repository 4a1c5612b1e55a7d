#include "cli/Output.h"

#include <filesystem>
#include <system_error>

#include "cli/CommandContext.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"

namespace {

constexpr std::size_t PIECE = 262144;

/** Whether both name one file, through links too; files that are not there yet are told by their paths. */
bool IsSameFile(const std::string& strLeft, const std::string& strRight) {
    std::error_code error;
    return strLeft == strRight || std::filesystem::equivalent(strLeft, strRight, error);
}

}  // namespace

COutput::COutput(CCommandContext& context, const std::string& strFile) : m_context(context) {
    if (!IsStandard(strFile)) {
        if (IsSameFile(context.GetAbsolute(strFile), context.GetStorePath())) {
            throw CToolError(EVerdict::USAGE, Text::Printable(strFile) + ": is the store itself; name another file");
        }
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
