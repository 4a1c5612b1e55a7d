#include <gmock/gmock.h>

#include <cstring>

#include "api/DLPMetaDataLoaderImpl.h"
#include "platform/common/TextConversion.h"
#include "platform/system/InstallPath.h"
#include "platform/xml/CXMLNode.h"
#include "platform/xml/FaultPoint.h"
#include "tests/faults/AllocationFaults.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"

using testing::ElementsAre;

namespace {

class MetaDataFaults : public testing::Test {
  protected:
    MetaDataFaults() {
        XmlFaults::FailAt(0);
        XmlFaults::FindNothingAt(0);
        m_dir.Write("config/PredefinedDLPPolicy.xml",
                    "<SAPolicy><validators><v name='a' display_name='A'/></validators><regions/></SAPolicy>");
        SYS::SetInstallPath(OS::WideText(m_dir.Path()));
    }
    ~MetaDataFaults() override { SYS::SetInstallPath(L""); }

    /** Asks for the validators and looks that a failure empties both vectors. */
    static bool HasValidators(DLPMetaDataLoaderImpl& loader) {
        std::vector<OS::x_wstring> vecNames{L"old"};
        std::vector<OS::x_wstring> vecDisplayNames{L"old"};
        const bool bDone = loader.GetValidators(vecNames, vecDisplayNames);
        EXPECT_EQ(vecNames, bDone ? std::vector<OS::x_wstring>{L"a"} : std::vector<OS::x_wstring>());
        EXPECT_EQ(vecDisplayNames, bDone ? std::vector<OS::x_wstring>{L"A"} : std::vector<OS::x_wstring>());
        return bDone;
    }

    CTempDir m_dir;
};

}  // namespace

TEST_F(MetaDataFaults, LoadThatFailsAnywhereLeavesItNotLoaded) {
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        DLPMetaDataLoaderImpl loader;
        if (XmlFaults::GetCount() < i) {
            EXPECT_EQ(i, 9);  // the file, five sections, the markup of two
            break;
        }
        EXPECT_THAT(log.Lines(), ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load()",
                                             "0x1003 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load() failed: "
                                             "injected fault"));
        EXPECT_FALSE(HasValidators(loader));
    }
}

TEST_F(MetaDataFaults, FailedLoadKeepsTheSectionsReadBeforeInTheirOrder) {
    m_dir.Write("config/PredefinedDLPPolicy.xml",
                "<SAPolicy><regions/><industries/><dictionary_types/><entity_types/><validators/></SAPolicy>");
    const struct {
        const char* pMarkup;
        bool (DLPMetaDataLoaderImpl::*fnGet)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);
    } SECTIONS[] = {
        {"<validators/>", &DLPMetaDataLoaderImpl::GetValidators},
        {"<entity_types/>", &DLPMetaDataLoaderImpl::GetExpressionTypes},
        {"<dictionary_types/>", &DLPMetaDataLoaderImpl::GetKeywordConditions},
        {"<industries/>", &DLPMetaDataLoaderImpl::GetIndustries},
        {"<regions/>", &DLPMetaDataLoaderImpl::GetRegions},
    };
    for (int iRead = 0; iRead < 5; ++iRead) {
        XmlFaults::FailAt(2 + 2 * iRead);  // the file is the first step, each section takes two
        DLPMetaDataLoaderImpl loader;
        for (int i = 0; i < 5; ++i) {
            CLogRecorder log;
            std::vector<OS::x_wstring> vecNames;
            std::vector<OS::x_wstring> vecDisplayNames;
            EXPECT_FALSE((loader.*SECTIONS[i].fnGet)(vecNames, vecDisplayNames));
            const std::size_t iLength = i < iRead ? std::strlen(SECTIONS[i].pMarkup) : 0;
            EXPECT_THAT(log.Messages(DBG::LEVEL_ENTER),
                        ElementsAre(testing::HasSubstr("(xmllength=" + std::to_string(iLength) + ", ")));
        }
    }
}

TEST_F(MetaDataFaults, ListThatFailsAnywhereIsEmptyAndMayBeAskedForAgain) {
    DLPMetaDataLoaderImpl loader;
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        const bool bDone = HasValidators(loader);
        if (XmlFaults::GetCount() < i) {
            EXPECT_TRUE(bDone);
            EXPECT_EQ(i, 3);
            break;
        }
        EXPECT_FALSE(bDone);
        EXPECT_THAT(log.Messages(DBG::LEVEL_ERROR),
                    ElementsAre("DLPMetaDataLoaderImpl::MakeDOMNode() failed: injected fault"));
        EXPECT_THAT(log.Messages(DBG::LEVEL_LEAVE), testing::IsEmpty());
    }
}

TEST_F(MetaDataFaults, LookupThatFindsNothingLeavesTheOtherSections) {
    for (int i = 1; i <= 6; ++i) {
        XmlFaults::FindNothingAt(i);
        CLogRecorder log;
        DLPMetaDataLoaderImpl loader;
        EXPECT_EQ(XmlFaults::GetLookupCount(), i == 1 ? 1 : 6);  // the root, five sections
        EXPECT_THAT(log.Messages(DBG::LEVEL_LEAVE), ElementsAre("DLPMetaDataLoaderImpl::Load(), loaded = 1"));
        EXPECT_EQ(HasValidators(loader), i > 2) << i;
    }
}

TEST_F(MetaDataFaults, ListWhoseNodeIsNotFoundIsFalse) {
    DLPMetaDataLoaderImpl loader;
    XmlFaults::FindNothingAt(1);
    CLogRecorder log;
    EXPECT_FALSE(HasValidators(loader));
    EXPECT_THAT(log.Lines(),
                ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode(xmllength=55, "
                            "rootNodeName='/validators')",
                            "0x111 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode() return (nil)"));
    EXPECT_EQ(XmlFaults::GetLookupCount(), 1);
    EXPECT_TRUE(HasValidators(loader));
}

TEST_F(MetaDataFaults, LackOfMemoryIsAnUnknownExceptionAndLeavesItNotLoaded) {
    int iFailed = 0;
    for (int i = 1;; ++i) {
        CLogRecorder log;
        AllocationFaults::FailAt(i);
        DLPMetaDataLoaderImpl loader;
        const bool bReached = AllocationFaults::Disarm();
        if (!bReached) {
            break;
        }
        // Short of memory while it writes a log line, the line is lost and nothing else.
        const std::vector<std::string> vecErrors = log.Messages(DBG::LEVEL_ERROR);
        if (!vecErrors.empty()) {
            EXPECT_THAT(vecErrors, ElementsAre("DLPMetaDataLoaderImpl::Load() unknown exception"));
            EXPECT_FALSE(HasValidators(loader));
            ++iFailed;
        } else {
            EXPECT_TRUE(HasValidators(loader));
        }
    }
    EXPECT_GT(iFailed, 0);
}
