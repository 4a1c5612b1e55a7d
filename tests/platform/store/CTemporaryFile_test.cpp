#include "platform/store/CTemporaryFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/store/StoreError.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/TempDir.h"

namespace fs = std::filesystem;

namespace {

TEST(TemporaryFile, FileWhoseNoteHasNoTextIsNobodysToRemove) {
    struct {
        const char* pName;
        std::string strNote;
        bool bLeft;
    } const FILES[] = {
        {"a.db.new-laptop", "", true},
        {"a.db.new-zeroes", std::string(50, '\0'), true},
        {"a.db.new-others", "important\n", true},
        {"a.db.new-killed", "process 1 on host-a, since 2026-03-01T08:00:00Z", false},
    };
    const CTempDir folder;
    for (const auto& file : FILES) {
        folder.Write(file.pName, "text");
        folder.Write(file.pName + std::string("-maker"), file.strNote);
    }
    folder.Write("a.db.new-noteless", "text");
    const CTemporaryFile made(folder.Path("a.db"), StoreDoing::BACKING_UP);
    for (const auto& file : FILES) {
        EXPECT_EQ(file.bLeft ? "text" : "", folder.Read(file.pName)) << file.pName;
        EXPECT_EQ(file.bLeft, fs::exists(folder.Path(file.pName) + "-maker")) << file.pName;
        EXPECT_EQ(file.bLeft ? file.strNote : "", folder.Read(file.pName + std::string("-maker"))) << file.pName;
    }
    EXPECT_EQ("text", folder.Read("a.db.new-noteless"));
}

TEST(TemporaryFile, IsMadeAlsoWhereNoNoteCanBeLeft) {
    const CTempDir folder;
    const std::string strTarget = folder.Path(std::string(240, 'a'));  // with the note's ending it would be too long
    {
        const CTemporaryFile made(strTarget, StoreDoing::BACKING_UP);
        EXPECT_TRUE(fs::exists(made.GetPath()));
        EXPECT_EQ(1, std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()));
    }
    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(TemporaryFile, WhatOthersPutInItsPlaceIsNeitherGivenAwayNorTaken) {
    const CTempDir folder;
    const std::string strTarget = folder.Write("a.db", "former");
    const std::string strVictim = folder.Write("victim", "secret");
    ::chmod(strTarget.c_str(), 0666);
    ::chmod(strVictim.c_str(), 0600);
    if (::geteuid() == 0) {
        ASSERT_EQ(0, ::chown(strTarget.c_str(), 65534, 65534));
    }
    for (const bool bLink : {true, false}) {
        CTemporaryFile made(strTarget, StoreDoing::RESTORING);
        fs::rename(made.GetPath(), folder.Path("kept"));
        bLink ? fs::create_symlink("victim", made.GetPath()) : fs::rename(strVictim, made.GetPath());
        made.TakeOwner(strTarget);
        struct stat status {};
        ASSERT_EQ(0, ::stat(made.GetPath().c_str(), &status));
        EXPECT_EQ(::geteuid(), status.st_uid);
        EXPECT_EQ(0600u, status.st_mode & 07777);
        EXPECT_EQ("settings store sqlite:" + strTarget +
                      ", restoring it: somebody has removed or replaced the file that was to come into its place, " +
                      made.GetPath() + "; nothing was written",
                  ExceptionText([&] { made.Become(strTarget); }));
        EXPECT_EQ("former", folder.Read("a.db"));
    }
}

TEST(TemporaryFile, BecomesWhatIsNotThereOnlyWhereNothingIs) {
    const CTempDir folder;
    const std::string strTarget = folder.Write("a.db", "precious");
    CTemporaryFile made(strTarget, StoreDoing::BACKING_UP);
    EXPECT_FALSE(made.Become(strTarget, false));
    EXPECT_EQ("precious", folder.Read("a.db"));
    fs::remove(strTarget);
    EXPECT_TRUE(made.Become(strTarget, false));
    EXPECT_EQ("", folder.Read("a.db"));
}

}  // namespace
