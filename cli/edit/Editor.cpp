#include "cli/edit/Editor.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <sys/wait.h>

#include "cli/CommandContext.h"
#include "cli/InputFile.h"
#include "cli/OutputFile.h"
#include "cli/Text.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* EDITORS[] = {"VISUAL", "EDITOR"};
constexpr const char NO_EDITOR[] = "no editor is set; set VISUAL or EDITOR";
constexpr const char NO_FOLDER[] = "the folder for temporary files cannot be used: ";
constexpr const char FOLDER_PATTERN[] = "dlpctl-XXXXXX";
constexpr const char FILE_NAME[] = "template.rules";
constexpr int FIRST_SHELL_ERROR = 126;  ///< what the shell answers when it cannot run a command

std::string FindEditor() {
    for (const char* pVariable : EDITORS) {
        const char* pEditor = std::getenv(pVariable);
        if (pEditor != nullptr && *pEditor != '\0') {
            return pEditor;
        }
    }
    throw CToolError(EVerdict::USAGE, NO_EDITOR);
}

std::string MakeFolder() {
    std::error_code error;
    std::string strFolder = (fs::temp_directory_path(error) / FOLDER_PATTERN).string();
    if (error) {
        throw CToolError(EVerdict::OUTPUT, NO_FOLDER + error.message());
    }
    if (::mkdtemp(strFolder.data()) == nullptr) {
        ThrowOutputError(Text::Printable(strFolder), errno);
    }
    return strFolder;
}

/** @return the text as one word of a shell */
std::string ToWord(const std::string& strText) {
    std::string strWord = "'";
    for (const char c : strText) {
        strWord += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return strWord + '\'';
}

}  // namespace

CEditedText::CEditedText(CCommandContext& context, const std::string& strText)
    : m_context(context),
      m_strEditor(FindEditor()),
      m_strFolder(MakeFolder()),
      m_strPath(m_strFolder + '/' + FILE_NAME) {
    COutputFile file(m_strPath, Text::Printable(m_strPath));
    file.Write(strText);
    file.Commit();
}

std::string CEditedText::Edit() {
    // The editor is meant where the tool was started. While it runs, its signals from the terminal are its own.
    const std::string strCommand =
        "cd " + ToWord(m_context.GetAbsolute("")) + " && " + m_strEditor + ' ' + ToWord(m_strPath);
    const int iStatus = std::system(strCommand.c_str());
    const int iCode = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : FIRST_SHELL_ERROR - 1;
    if (iCode != 0) {
        Remove();
    }
    if (iStatus == -1 || iCode >= FIRST_SHELL_ERROR) {
        throw CToolError(EVerdict::USAGE, "the editor " + Text::Quoted(m_strEditor) + " cannot be run");
    }
    if (iCode != 0) {
        throw CToolError(EVerdict::FINDINGS, "the editor ended with an error; nothing was changed");
    }
    return ReadBytes(m_context, m_strPath);
}

void CEditedText::Remove() const {
    std::error_code error;
    fs::remove_all(m_strFolder, error);
}
