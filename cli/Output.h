#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

class CCommandContext;
class COutputFile;

/**
 * Where a command's document goes: the file that -o names, or standard output. Writes in large pieces, so that a short
 * document that fails on its way leaves nothing behind; with --json in one piece to standard output, so that either the
 * whole document stands there or the answer that says why not.
 */
class COutput {
  public:
    /** @param strFile as it was given; empty or "-": standard output @throws CToolError (OUTPUT), as all below */
    COutput(CCommandContext& context, const std::string& strFile);
    ~COutput();

    /** Whether nothing that is written to such a file can be seen before it is committed. @throws CToolError (OUTPUT)
     */
    static bool IsUndone(const CCommandContext& context, const std::string& strFile);
    void Write(std::string_view strText);
    /** Until then a regular file is as it was. */
    void Commit();

    /** @return whether the file is standard output, under whatever name */
    static bool IsStandard(const CCommandContext& context, const std::string& strFile);
    /** A document and an answer in JSON cannot share standard output. @throws CToolError (USAGE) when they would */
    static void CheckLeavesAnswer(const CCommandContext& context, const std::string& strFile);

  private:
    void Put(std::string_view strText);

    CCommandContext& m_context;
    std::size_t m_iPiece;  ///< what is shorter waits
    std::string m_strWaiting;
    std::unique_ptr<COutputFile> m_pFile;
};
