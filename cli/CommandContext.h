#pragma once

#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "cli/CUnmadeStore.h"
#include "cli/Verdict.h"
#include "platform/common/x_wstring.h"
#include "platform/store/CSettingsStore.h"

class CLogFile;
class CStoreSession;

/** What may stand on the command line of every command. */
struct SGlobalOptions {
    std::string strStore;
    std::string strHome;
    std::string strLanguage;
    std::string strScope;
    std::string strLog;
    std::string strLogLevels;
    bool bJson = false;
    bool bQuiet = false;
    bool bVerbose = false;
};

/** What a command works with: the global options, the streams, the store. Data goes to out, all else to err. */
class CCommandContext {
  public:
    CCommandContext(std::istream& in, std::ostream& out, std::ostream& err);
    CCommandContext(const CCommandContext&) = delete;
    CCommandContext& operator=(const CCommandContext&) = delete;
    /** Goes back to the working and installation directory of the start, and closes what is open. */
    ~CCommandContext();

    SGlobalOptions& Options() { return m_options; }
    bool IsJson() const { return m_options.bJson; }

    /**
     * Puts the global options into effect; the installation directory becomes the working directory, since the name map
     * is looked for there.
     * @throws CToolError (USAGE)
     */
    void Prepare();

    /** @return the path as it was meant where the tool was started */
    std::string GetAbsolute(const std::string& strPath) const;
    /** @return a store's URL, with the path that it may hold as it was meant where the tool was started */
    std::string GetAbsoluteUrl(const std::string& strUrl) const;
    /** @return the absolute path of the store's file; empty when the store is none */
    std::string GetStorePath() const;
    /** Another file of the command must not be the one that the log is appended to. @throws CToolError (USAGE) */
    void CheckIsNoLog(const std::string& strFile) const;
    /** @return the scope option, as the library takes it */
    OS::x_wstring GetScope() const;
    /** @return all that is to be read from standard input */
    std::string ReadStandardInput();
    /** From now on the store is an empty one in memory. */
    void TakeEmptyStore();
    /** No store is made: when the store's file does not exist yet, an empty one in memory stands for it. */
    void MakeNoStore();
    /**
     * The store; opened when first asked for. One that is not there is made when something is to be kept in it.
     * @param eMade when exactly
     * @throws CToolError (USAGE, STORE)
     */
    CStoreSession& GetStore(CUnmadeStore::EMade eMade = CUnmadeStore::EMade::AT_FIRST_WRITE);
    /** @return whether another process has made the store since it was opened; it is then to be opened again */
    bool CloseIfMadeMeanwhile();
    /**
     * The same for commands that only read: nothing is made or written. Unless a store is named, one that was never
     * made counts as empty.
     * @throws CToolError (USAGE, STORE) also when the store that is named is not there
     */
    CStoreSession& GetStoreToRead();
    /** The same for commands that change what is there: they never make a store. */
    CStoreSession& GetStoreToChange();
    /** For what opens the store's file in another way: warns of others who may read, change or replace it. */
    void WarnOfStore();

    /**
     * Called while an exception is handled.
     * @return what it means for the command: an interruption before all else, then a failure of the store or of memory
     */
    CToolError ExplainException() const;

    /** Writes data. @throws CToolError (OUTPUT) */
    void Write(std::string_view strText);
    /** @throws CToolError (OUTPUT) when something of all that was written could not be */
    void Flush();
    /** Writes one object on one line, and all that waits to be written. */
    void WriteJson(const nlohmann::ordered_json& object);
    /**
     * Writes the first members of the next object, so that an output that takes nothing shows before anything is
     * decided. The object that WriteJson gets next begins with the same members.
     */
    void StartJson(const nlohmann::ordered_json& head);
    /**
     * Begins the answer about a change that is not kept yet: writes its head and makes room for its rest, so that what
     * can fail about the output, or for want of memory, fails while the change can be undone. The end comes after the
     * change is kept, since it says so.
     */
    void StartAnswer(std::string_view strHead, std::string strRest);
    /** The same for the object, of which the head is the first members; WriteJson ends it in another way. */
    void StartAnswer(const nlohmann::ordered_json& head, const nlohmann::ordered_json& whole);
    void FinishAnswer();
    /** Tells of a failure: as an error, and as the JSON object of that format unless other data went before. */
    void Fail(const char* pFormat, const CToolError& error);

    /** One line each, printable, for people. Notes are left out with -q, and progress as well. */
    void Error(const std::string& strMessage);
    void Warn(const std::string& strMessage);
    void Note(const std::string& strMessage);
    /** What -v adds. */
    void Detail(const std::string& strMessage);
    bool ShowsProgress() const { return m_bTerminal && !m_options.bQuiet; }
    std::ostream& GetError() { return m_err; }
    /** @return whether data may be coloured: it goes to a terminal, and $NO_COLOR asks for no other */
    bool ColoursData() const;
    /** @return how many columns a line of data may take: $COLUMNS or the terminal's; 0 when it goes to none */
    std::size_t GetDataWidth() const;

    /** @return the URL of the store that is or would be opened @throws CToolError (USAGE) when nothing says where */
    std::string GetStoreUrl() const;

  private:
    void OpenStore(const std::string& strUrl, EUnitOfWork eUse,
                   CUnmadeStore::EMade eMade = CUnmadeStore::EMade::AT_FIRST_WRITE);
    bool IsStoreNamed() const;
    bool IsStoreMissing() const;
    bool IsStoreUnmade() const;
    void SetHome();
    void OpenLog();
    std::string Paint(const char* pColour, const std::string& strText) const;
    void Put(std::string_view strText);
    void MakeRoom(std::size_t iBytes) const;
    void CheckOutput() const;

    std::istream& m_in;
    std::ostream& m_out;
    std::ostream& m_err;
    bool m_bTerminal;
    SGlobalOptions m_options;
    std::filesystem::path m_start;
    std::unique_ptr<nlohmann::ordered_json> m_pHead;  ///< what StartJson has written
    std::string m_strRest;                            ///< of the answer that is begun
    bool m_bData = false;
    std::unique_ptr<CLogFile> m_pLog;
    std::unique_ptr<CStoreSession> m_pStore;
};
