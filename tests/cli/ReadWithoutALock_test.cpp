#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <streambuf>

#include <sys/stat.h>
#include <unistd.h>

#include "cli/Tool.h"
#include "tests/cli/ToolRun.h"
#include "tests/cli/Unprivileged.h"

// A user who may not write the store's folder reads it without a lock; whoever writes meanwhile must not go unnoticed.

namespace {

namespace fs = std::filesystem;

/** Calls a function as soon as a text is written. */
class CListeningBuffer : public std::stringbuf {
  public:
    CListeningBuffer(std::string strText, std::function<void()> fnHeard)
        : m_strText(std::move(strText)), m_fnHeard(std::move(fnHeard)) {}

  protected:
    std::streamsize xsputn(const char* pText, std::streamsize iLength) override {
        const std::streamsize iWritten = std::stringbuf::xsputn(pText, iLength);
        if (m_fnHeard && str().find(m_strText) != std::string::npos) {
            m_fnHeard();
            m_fnHeard = nullptr;
        }
        return iWritten;
    }

  private:
    std::string m_strText;
    std::function<void()> m_fnHeard;
};

class ReadWithoutALock : public CToolTest {
  protected:
    ReadWithoutALock() {
        Import(Documents::Small());
        fs::permissions(m_dir.Path(), fs::perms(0755));
        fs::create_directory(m_dir.Path("fixed"));
        fs::copy_file(m_dir.Path("store.db"), Store());
        fs::permissions(Store(), fs::perms(0644));
        fs::permissions(m_dir.Path("fixed"), fs::perms(0555));
    }

    ~ReadWithoutALock() override { fs::permissions(m_dir.Path("fixed"), fs::perms(0755)); }

    std::string Store() const { return m_dir.Path("fixed/store.db"); }

    /** Runs a command while another writes the store as soon as the text is written. */
    SToolRun RunWhile(std::vector<std::string> vecArguments, const std::string& strText) const {
        const CUnprivileged unprivileged;
        const auto fnWrite = [&] {
            const uid_t iUser = ::geteuid();
            ASSERT_EQ(0, ::seteuid(0));
            fs::last_write_time(Store(), fs::last_write_time(Store()) + std::chrono::seconds(1));
            ASSERT_EQ(0, ::seteuid(iUser));
        };
        CListeningBuffer data(strText, fnWrite);
        CListeningBuffer messages(strText, fnWrite);
        std::ostream out(&data);
        std::ostream err(&messages);
        std::istringstream in;
        vecArguments.insert(vecArguments.begin(), {"--store", "sqlite:" + Store(), "--log", "-", "--log-level", "all"});
        const int iCode = RunTool(vecArguments, in, out, err);
        return {iCode, data.str(), messages.str()};
    }
};

TEST_F(ReadWithoutALock, AWriterInBetweenIsTold) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can write what others read";
    }
    struct {
        std::vector<std::string> vecArguments;
        const char* pHeard;
    } const aCommands[] = {
        {{"export", "--all"}, "Export"},
        {{"assets", "export", "--all"}, "Export"},
    };
    for (const auto& command : aCommands) {
        EXPECT_EQ(RunWhile(command.vecArguments, "never written").iCode, 0);
        const SToolRun run = RunWhile(command.vecArguments, command.pHeard);
        EXPECT_EQ(run.iCode, 4) << command.vecArguments[0];
        EXPECT_NE(run.strErr.find("dlpctl: settings store sqlite:" + Store() +
                                  ", reading records: another process changed it while it was read; try again"),
                  std::string::npos)
            << command.vecArguments[0] << '\n' << run.strErr;
    }
}

}  // namespace
