#include "platform/store/CWriterNote.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <regex>

#include "tests/support/TempDir.h"

namespace fs = std::filesystem;

namespace {

class WriterNote : public testing::Test {
  protected:
    std::string Path() const { return m_folder.Path("settings.db"); }
    CTempDir m_folder;
};

TEST_F(WriterNote, SaysWhoWritesAndSinceWhen) {
    const CWriterNote reader(Path());
    EXPECT_EQ("", reader.Read());
    m_folder.Write("settings.db", "");
    ::chmod(Path().c_str(), 0640);
    CWriterNote writer(Path());
    writer.Leave();
    const std::string strNote = reader.Read();
    EXPECT_TRUE(std::regex_match(strNote, std::regex("process " + std::to_string(::getpid()) +
                                                     " on [\\w.-]+, since \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ")))
        << strNote;
    EXPECT_EQ(fs::perms(0640), fs::status(Path() + "-writer").permissions());
    writer.Remove();
    EXPECT_EQ("", reader.Read());
    EXPECT_FALSE(fs::exists(Path() + "-writer"));
}

TEST_F(WriterNote, NoteOfAProcessThatIsGoneIsNotBelieved) {
    const pid_t iProcess = ::fork();
    if (iProcess == 0) {
        CWriterNote writer(Path());
        writer.Leave();
        ::raise(SIGKILL);
    }
    int iStatus = 0;
    ::waitpid(iProcess, &iStatus, 0);
    ASSERT_TRUE(fs::exists(Path() + "-writer"));
    EXPECT_EQ("", CWriterNote(Path()).Read());
    CWriterNote next(Path());
    next.Leave();
    EXPECT_NE(std::string::npos, CWriterNote(Path()).Read().find(std::to_string(::getpid())));
}

TEST_F(WriterNote, NoteThatLostItsTextToAPowerCutIsTakenOver) {
    m_folder.Write("settings.db-writer", std::string(50, '\0'));
    CWriterNote writer(Path());
    writer.Leave();
    EXPECT_NE("", writer.Read());
    writer.Remove();
    EXPECT_FALSE(fs::exists(Path() + "-writer"));
}

TEST_F(WriterNote, SecondWriterTakesNothingFromTheFirst) {
    CWriterNote first(Path());
    first.Leave();
    const std::string strNote = first.Read();
    {
        CWriterNote second(Path());
        second.Leave();
    }
    EXPECT_EQ(strNote, first.Read());
}

TEST_F(WriterNote, WhatIsNoNoteIsNeitherWrittenNorRead) {
    m_folder.Write("precious", "text");
    fs::create_symlink(m_folder.Path("precious"), Path() + "-writer");
    CWriterNote writer(Path());
    writer.Leave();
    EXPECT_EQ("text", m_folder.Read("precious"));
    EXPECT_EQ("", writer.Read());
    fs::remove(Path() + "-writer");
    m_folder.MakeFolder("settings.db-writer");
    writer.Leave();
    EXPECT_EQ("", writer.Read());
    fs::remove(Path() + "-writer");
    for (const char* pText : {"important\n", "process", "important", "process 1\x1b"}) {
        m_folder.Write("settings.db-writer", pText);
        writer.Leave();
        EXPECT_EQ("", writer.Read());
        writer.Remove();
        EXPECT_EQ(pText, m_folder.Read("settings.db-writer"));
    }
    m_folder.Write("settings.db-writer", "");
    fs::create_hard_link(Path() + "-writer", m_folder.Path("other"));
    writer.Leave();
    writer.Remove();
    EXPECT_EQ("", m_folder.Read("other"));
    CWriterNote nowhere("/proc/none/settings.db");
    nowhere.Leave();
    EXPECT_EQ("", nowhere.Read());
}

TEST_F(WriterNote, NoteThatForgesAMessageIsNotShown) {
    CWriterNote writer(Path());
    writer.Leave();
    m_folder.Write("settings.db-writer", "process 1\x1b[2J");  // the same file, which stays locked
    EXPECT_EQ("", writer.Read());
    m_folder.Write("settings.db-writer", "");
    EXPECT_EQ("", writer.Read());
}

}  // namespace
