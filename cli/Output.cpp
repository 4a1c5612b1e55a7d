#include "cli/Output.h"

#include "cli/CommandContext.h"
#include "cli/FileIdentity.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"

namespace {

constexpr std::size_t PIECE = 262144;
constexpr const char STANDARD_OUTPUT[] = "/dev/stdout";
constexpr const char NOWHERE[] = "/dev/null";

bool IsDash(const std::string& strFile) {
    return strFile.empty() || strFile == "-";
}

/** Refuses files that would be lost. */
void CheckTarget(const CCommandContext& context, const std::string& strFile, const std::string& strPath) {
    const std::string strStore = context.GetStorePath();
    if (IsOfStore(strPath, strStore) || IsDatabase(strPath) || IsBesideDatabase(strPath)) {
        const char* pWhat = IsSameFile(strPath, strStore)  ? ": is the store itself"
                            : IsDatabase(strPath)          ? ": is a store"
                            : IsOfStore(strPath, strStore) ? ": is a file of the store"
                                                           : ": is a file of a store";
        throw CToolError(EVerdict::USAGE, Text::Printable(strFile) + pWhat + "; name another file");
    }
    context.CheckIsNoLog(strFile);
}

}  // namespace

COutput::COutput(CCommandContext& context, const std::string& strFile)
    : m_context(context), m_iPiece(context.IsJson() ? std::string().max_size() : PIECE) {
    if (!IsDash(strFile)) {
        const std::string strPath = context.GetAbsolute(strFile);
        CheckTarget(context, strFile, strPath);
        m_pFile = std::make_unique<COutputFile>(strPath, Text::Printable(strFile));
        m_iPiece = PIECE;
    }
}

COutput::~COutput() = default;

bool COutput::IsUndone(const CCommandContext& context, const std::string& strFile) {
    return !IsDash(strFile) && COutputFile::IsReplaced(context.GetAbsolute(strFile), Text::Printable(strFile));
}

void COutput::Write(std::string_view strText) {
    if (m_strWaiting.size() + strText.size() < m_iPiece) {
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

bool COutput::IsStandard(const CCommandContext& context, const std::string& strFile) {
    const std::string strPath = context.GetAbsolute(strFile);
    return IsDash(strFile) || (IsSameFile(strPath, STANDARD_OUTPUT) && !IsSameFile(strPath, NOWHERE));
}

void COutput::CheckLeavesAnswer(const CCommandContext& context, const std::string& strFile) {
    if (context.IsJson() && IsStandard(context, strFile)) {
        throw CToolError(EVerdict::USAGE,
                         "--json needs -o FILE here: the document and the answer cannot share standard output");
    }
}
