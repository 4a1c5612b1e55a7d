#include "platform/system/InstallPath.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "platform/common/TextConversion.h"
#include "tests/support/TempDir.h"

TEST(InstallPath, SetPathWinsOverTheEnvironment) {
    ::setenv("DLP_INSTALL_PATH", "/from/environment", 1);
    SYS::SetInstallPath(L"/set");
    EXPECT_EQ(SYS::GetInstallPath(), L"/set");
}

TEST(InstallPath, EnvironmentWinsOverTheOwnPlace) {
    ::setenv("DLP_INSTALL_PATH", "/from/\xC3\xBC", 1);
    EXPECT_EQ(SYS::GetInstallPath(), L"/from/\u00FC");
}

TEST(InstallPath, EmptySetPathGoesBackToTheEnvironment) {
    ::setenv("DLP_INSTALL_PATH", "/from/environment", 1);
    SYS::SetInstallPath(L"/set");
    SYS::SetInstallPath(L"");
    EXPECT_EQ(SYS::GetInstallPath(), L"/from/environment");
}

TEST(InstallPath, ProgramOfABuildFindsTheSourceTree) {
    ::unsetenv("DLP_INSTALL_PATH");
    EXPECT_EQ(SYS::GetInstallPath(), OS::WideText(DLP_SOURCE_DIR));
    ::setenv("DLP_INSTALL_PATH", "", 1);
    EXPECT_EQ(SYS::GetInstallPath(), OS::WideText(DLP_SOURCE_DIR));
}

TEST(InstallPath, OwnPlaceIsFoundFromAnyCurrentDirectory) {
    ::unsetenv("DLP_INSTALL_PATH");
    std::filesystem::current_path("/");
    EXPECT_EQ(SYS::GetInstallPath(), OS::WideText(DLP_SOURCE_DIR));
}

TEST(FindInstallPath, InstallationIsFoundFromItsProgramsAndLibraries) {
    const CTempDir prefix;
    const std::string strShare = prefix.Path("share/dlpparser");
    prefix.MakeFolder("share/dlpparser/config");
    EXPECT_EQ(SYS::Detail::FindInstallPath(prefix.Path("bin/dlpctl")), strShare);
    EXPECT_EQ(SYS::Detail::FindInstallPath(prefix.Path("lib/libdlpplatform.so.0")), strShare);
    EXPECT_EQ(SYS::Detail::FindInstallPath(prefix.Path("lib/x86_64-linux-gnu/libdlpplatform.so.0")), strShare);
}

TEST(FindInstallPath, FolderWithoutConfigIsNoInstallation) {
    const CTempDir prefix;
    prefix.Write("share/dlpparser/settings.db", "");
    EXPECT_EQ(SYS::Detail::FindInstallPath(prefix.Path("bin/dlpctl")), SYS::Detail::FindInstallPath(""));
}

TEST(FindInstallPath, BuildFindsTheSourceTree) {
    EXPECT_EQ(SYS::Detail::FindInstallPath(DLP_BINARY_DIR "/lib/libdlpplatform.so.0"), DLP_SOURCE_DIR);
    EXPECT_EQ(SYS::Detail::FindInstallPath(DLP_BINARY_DIR "/deep/below/program"), DLP_SOURCE_DIR);
}

TEST(FindInstallPath, ElsewhereTheCompiledDirectoryHolds) {
    const CTempDir prefix;
    const std::string strCompiled = SYS::Detail::FindInstallPath("");
    EXPECT_EQ(strCompiled.substr(strCompiled.size() - 9), "dlpparser");
    EXPECT_NE(strCompiled, DLP_SOURCE_DIR);
    EXPECT_EQ(SYS::Detail::FindInstallPath(prefix.Path("bin/dlpctl")), strCompiled);
    EXPECT_EQ(SYS::Detail::FindInstallPath("/dlpctl"), strCompiled);
    EXPECT_EQ(SYS::Detail::FindInstallPath(DLP_BINARY_DIR "-other/bin/dlpctl"), strCompiled);
}
