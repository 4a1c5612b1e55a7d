#include "platform/common/CException.h"

#include <gtest/gtest.h>

using OS::CException;

TEST(Exception, CarriesCodeMessageAndLine) {
    const CException exception(7, L"cannot read \u00FCber.xml", 42);
    EXPECT_EQ(exception.GetErrorCode(), 7);
    EXPECT_EQ(exception.GetErrorMessage(), L"cannot read \u00FCber.xml");
    EXPECT_EQ(exception.GetErrorLine(), 42);
}

TEST(Exception, IsAStandardExceptionWithTheMessageInUtf8) {
    try {
        throw CException(0, L"cannot read \u00FCber.xml", 0);
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(),
                     "cannot read \xC3\xBC"
                     "ber.xml");
    }
}

TEST(Exception, MessageThatUtf8CannotCarryIsReplaced) {
    const CException exception(0, std::wstring(L"a") + static_cast<wchar_t>(0xD800) + L"b", 0);
    EXPECT_STREQ(exception.what(),
                 "a\xEF\xBF\xBD"
                 "b");
}

TEST(Exception, ZeroCharacterDoesNotCutTheMessage) {
    const std::wstring strMessage(L"a\0b", 3);
    const CException exception(0, strMessage, 0);
    EXPECT_EQ(exception.GetErrorMessage(), strMessage);
    EXPECT_STREQ(exception.what(),
                 "a\xEF\xBF\xBD"
                 "b");
}

TEST(Exception, CopyKeepsEverything) {
    const CException copy = CException(7, L"text", 42);
    EXPECT_EQ(copy.GetErrorCode(), 7);
    EXPECT_EQ(copy.GetErrorMessage(), L"text");
    EXPECT_EQ(copy.GetErrorLine(), 42);
    EXPECT_STREQ(copy.what(), "text");
}
