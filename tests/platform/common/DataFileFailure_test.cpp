#include "platform/common/DataFileFailure.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(DataFileFailure, TheFirstIsKeptUntilItIsTaken) {
    OS::NoteDataFileFailure(EACCES, "first");
    OS::NoteDataFileFailure(EIO, "second");
    EXPECT_EQ(OS::TakeDataFileFailure(), "first");
    EXPECT_EQ(OS::TakeDataFileFailure(), "");
}

TEST(DataFileFailure, AFileThatIsNotThereIsNone) {
    for (const int iError : {0, ENOENT, ENOTDIR, EISDIR}) {
        OS::NoteDataFileFailure(iError, "missing");
        EXPECT_EQ(OS::TakeDataFileFailure(), "") << iError;
    }
}

TEST(DataFileFailure, ALongTextIsCut) {
    OS::NoteDataFileFailure(EIO, std::string(5000, 'x'));
    EXPECT_EQ(OS::TakeDataFileFailure(), std::string(1023, 'x'));
}
