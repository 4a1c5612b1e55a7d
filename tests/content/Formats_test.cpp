// The documents shown in docs/formats.md.

#include <gtest/gtest.h>

#include "tests/content/PolicyContent.h"

using namespace Content;

TEST(FormatsContent, DocumentsShownAreWellFormed) {
    const std::string strOpening = "```xml\n";
    const std::string strText = Read("docs/formats.md");
    int iDocuments = 0;
    for (std::size_t iStart = strText.find(strOpening); iStart != std::string::npos;
         iStart = strText.find(strOpening, iStart + 1)) {
        const std::size_t iBegin = iStart + strOpening.size();
        const std::string strDocument = strText.substr(iBegin, strText.find("```", iBegin) - iBegin);
        CXMLParser document;
        EXPECT_TRUE(document.LoadUtf8(strDocument)) << strDocument << document.GetLoadError().strMessage;
        ++iDocuments;
    }
    EXPECT_EQ(iDocuments, 8);
}
