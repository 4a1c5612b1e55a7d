#pragma once

#include <string>

class CCommandContext;

/** A text in a file of its own that a person changes in an editor. The file stays unless it is removed. */
class CEditedText {
  public:
    /** @throws CToolError (USAGE) when no editor is set; (OUTPUT) when the file cannot be written */
    CEditedText(CCommandContext& context, const std::string& strText);

    /**
     * Waits for $VISUAL, else $EDITOR.
     * @return the text as it is then
     * @throws CToolError USAGE when the editor cannot be run, FINDINGS when it ends with an error of its own
     */
    std::string Edit();
    const std::string& GetPath() const { return m_strPath; }
    void Remove() const;

  private:
    CCommandContext& m_context;
    std::string m_strEditor;
    std::string m_strFolder;
    std::string m_strPath;
};
