#include "api/DLPMetaDataLoaderImpl.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "metadata/ProcessMetaData.h"
#include "platform/common/TextConversion.h"
#include "platform/system/InstallPath.h"
#include "platform/xml/CXMLNode.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace {

constexpr char POLICY_FILE[] = "config/PredefinedDLPPolicy.xml";

using ListOperation = bool (DLPMetaDataLoaderImpl::*)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);

struct SListRow {
    const char* pSection;
    ListOperation fnGet;
    bool bSorted;
};

constexpr SListRow LISTS[] = {
    {"validators", &DLPMetaDataLoaderImpl::GetValidators, true},
    {"entity_types", &DLPMetaDataLoaderImpl::GetExpressionTypes, false},
    {"dictionary_types", &DLPMetaDataLoaderImpl::GetKeywordConditions, false},
    {"industries", &DLPMetaDataLoaderImpl::GetIndustries, false},
    {"regions", &DLPMetaDataLoaderImpl::GetRegions, false},
};

/** @return the list as "true name=display name=display", what was in the vectors before does not show */
std::string List(DLPMetaDataLoaderImpl& loader, ListOperation fnGet) {
    std::vector<OS::x_wstring> vecNames{L"old"};
    std::vector<OS::x_wstring> vecDisplayNames{L"old", L"older"};
    std::string strList = (loader.*fnGet)(vecNames, vecDisplayNames) ? "true" : "false";
    EXPECT_EQ(vecNames.size(), vecDisplayNames.size());
    for (std::size_t i = 0; i < vecNames.size() && i < vecDisplayNames.size(); ++i) {
        strList += ' ' + OS::Utf8Lenient(vecNames[i]) + '=' + OS::Utf8Lenient(vecDisplayNames[i]);
    }
    return strList;
}

std::string Section(const std::string& strName, const std::string& strContent) {
    return '<' + strName + '>' + strContent + "</" + strName + '>';
}

std::string Item(const std::string& strName, const std::string& strDisplayName) {
    return "<item name=\"" + strName + "\" display_name=\"" + strDisplayName + "\"/>";
}

class MetaData : public testing::Test {
  protected:
    MetaData() { SYS::SetInstallPath(OS::WideText(m_dir.Path())); }
    ~MetaData() override { SYS::SetInstallPath(L""); }

    DLPMetaDataLoaderImpl Load(const std::string& strPolicy) {
        m_dir.Write(POLICY_FILE, strPolicy);
        return {};
    }
    /** A policy with every section, each holding one item named after it. */
    static std::string WholePolicy() {
        std::string strSections;
        for (const SListRow& row : LISTS) {
            strSections += Section(row.pSection, Item(row.pSection, "Display"));
        }
        return Section("SAPolicy", strSections);
    }

    CTempDir m_dir;
};

}  // namespace

TEST_F(MetaData, EveryListComesFromItsOwnSection) {
    DLPMetaDataLoaderImpl loader = Load(WholePolicy());
    for (const SListRow& row : LISTS) {
        EXPECT_EQ(List(loader, row.fnGet), std::string("true ") + row.pSection + "=Display");
    }
}

TEST_F(MetaData, SectionsStandInAnyOrderAmongOtherContent) {
    DLPMetaDataLoaderImpl loader = Load(
        "<?xml version=\"1.0\"?><!-- c --><SAPolicy><digitalAssets/><regions> <r name=\"a\" display_name=\"A\"/> <!-- "
        "c "
        "--> <other name=\"b\" display_name=\"B\"/> text </regions><validators/></SAPolicy>");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetRegions), "true a=A b=B");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetValidators), "true");
}

TEST_F(MetaData, OnlyTheFirstOfTwoSectionsIsRead) {
    DLPMetaDataLoaderImpl loader =
        Load(Section("SAPolicy", Section("regions", Item("a", "A")) + Section("regions", Item("b", "B"))));
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetRegions), "true a=A");
}

TEST_F(MetaData, NamesOfSectionsAndRootAreCaseSensitive) {
    DLPMetaDataLoaderImpl otherSection = Load(Section("SAPolicy", Section("Regions", Item("a", "A"))));
    EXPECT_EQ(List(otherSection, &DLPMetaDataLoaderImpl::GetRegions), "false");
    DLPMetaDataLoaderImpl otherRoot = Load(Section("sapolicy", Section("regions", Item("a", "A"))));
    EXPECT_EQ(List(otherRoot, &DLPMetaDataLoaderImpl::GetRegions), "false");
}

TEST_F(MetaData, ValidatorsAreSortedByDisplayNameAndTheOthersAreNot) {
    const std::string strItems = Item("1", "b") + Item("2", "A") + Item("3", "a");
    std::string strSections;
    for (const SListRow& row : LISTS) {
        strSections += Section(row.pSection, strItems);
    }
    DLPMetaDataLoaderImpl loader = Load(Section("SAPolicy", strSections));
    for (const SListRow& row : LISTS) {
        EXPECT_EQ(List(loader, row.fnGet), row.bSorted ? "true 2=A 3=a 1=b" : "true 1=b 2=A 3=a") << row.pSection;
    }
}

TEST_F(MetaData, ValidatorsWithEqualDisplayNamesAreAllKept) {
    std::string strItems;
    for (int i = 0; i < 300; ++i) {
        strItems += Item(std::to_string(i), "same");
    }
    DLPMetaDataLoaderImpl loader = Load(Section("SAPolicy", Section("validators", strItems)));
    std::vector<OS::x_wstring> vecNames;
    std::vector<OS::x_wstring> vecDisplayNames;
    ASSERT_TRUE(loader.GetValidators(vecNames, vecDisplayNames));
    EXPECT_EQ(std::set<std::wstring>(vecNames.begin(), vecNames.end()).size(), 300u);
    EXPECT_EQ(vecDisplayNames, std::vector<OS::x_wstring>(300, L"same"));
}

TEST_F(MetaData, NamesAreEscapedBeforeTheyAreSorted) {
    DLPMetaDataLoaderImpl loader = Load(
        Section("SAPolicy", Section("validators", Item("one", "1") + Item("a&amp;b", "&lt;x&gt; &quot;&apos;&quot;"))));
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetValidators), "true a&amp;b=&lt;x&gt; &quot;&apos;&quot; one=1");
}

TEST_F(MetaData, ItemWithoutAttributesGivesEmptyEntries) {
    DLPMetaDataLoaderImpl loader =
        Load("<SAPolicy><regions><r display_name=\"A\"/><r name=\"b\"/><r/></regions></SAPolicy>");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetRegions), "true =A b= =");
}

TEST_F(MetaData, ListAskedForTwiceIsNotDoubled) {
    DLPMetaDataLoaderImpl loader = Load(WholePolicy());
    for (const SListRow& row : LISTS) {
        std::vector<OS::x_wstring> vecNames;
        std::vector<OS::x_wstring> vecDisplayNames;
        EXPECT_TRUE((loader.*row.fnGet)(vecNames, vecDisplayNames));
        EXPECT_TRUE((loader.*row.fnGet)(vecNames, vecDisplayNames));
        EXPECT_EQ(vecNames.size(), 1u);
        EXPECT_EQ(vecDisplayNames.size(), 1u);
    }
}

TEST_F(MetaData, MissingSectionLeavesTheOthers) {
    DLPMetaDataLoaderImpl loader =
        Load(Section("SAPolicy", Section("regions", "") + Section("industries", Item("a", "A"))));
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetRegions), "true");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetIndustries), "true a=A");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetValidators), "false");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetExpressionTypes), "false");
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetKeywordConditions), "false");
}

TEST_F(MetaData, LoadAndListAreLoggedStepByStep) {
    const std::string strRegions = Section("regions", Item("a", "A"));
    m_dir.Write(POLICY_FILE, Section("SAPolicy", strRegions));
    CLogRecorder log;
    DLPMetaDataLoaderImpl loader;
    EXPECT_THAT(log.Lines(), ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load()",
                                         "0x111 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load(), loaded = 1"));
    log.Clear();
    List(loader, &DLPMetaDataLoaderImpl::GetRegions);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode(xmllength=" +
                        std::to_string(strRegions.size()) + ", rootNodeName='/regions')",
                    StartsWith("0x111 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode() return ")));
    EXPECT_EQ(log.Records().at(0).strSource, ".\\util_ParseDLPTemplate.cpp");
}

TEST_F(MetaData, ListOfAMissingSectionIsLoggedAtItsStartOnly) {
    DLPMetaDataLoaderImpl loader = Load("<SAPolicy/>");
    CLogRecorder log;
    List(loader, &DLPMetaDataLoaderImpl::GetValidators);
    EXPECT_THAT(log.Lines(), ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode("
                                         "xmllength=0, rootNodeName='/validators')"));
}

TEST_F(MetaData, EveryListNamesItsXPath) {
    DLPMetaDataLoaderImpl loader = Load(WholePolicy());
    for (const SListRow& row : LISTS) {
        CLogRecorder log;
        List(loader, row.fnGet);
        EXPECT_THAT(log.Messages(DBG::LEVEL_ENTER),
                    ElementsAre(testing::EndsWith(std::string("rootNodeName='/") + row.pSection + "')")));
    }
}

TEST_F(MetaData, FileWithoutRootIsLoadedAndEmpty) {
    for (const char* const pContent : {"", "  \n", "<?xml version=\"1.0\"?>", "<!-- nothing -->"}) {
        m_dir.Write(POLICY_FILE, pContent);
        CLogRecorder log;
        DLPMetaDataLoaderImpl loader;
        EXPECT_THAT(log.Messages(DBG::LEVEL_LEAVE), ElementsAre("DLPMetaDataLoaderImpl::Load(), loaded = 1"))
            << pContent;
        for (const SListRow& row : LISTS) {
            EXPECT_EQ(List(loader, row.fnGet), "false");
        }
    }
}

TEST_F(MetaData, UnreadableFileLeavesItNotLoaded) {
    for (const char* const pContent :
         {"<SAPolicy>", "<a/><b/>", "no markup", "<!DOCTYPE a><SAPolicy/>", "<a>\xff</a>"}) {
        m_dir.Write(POLICY_FILE, pContent);
        CLogRecorder log;
        DLPMetaDataLoaderImpl loader;
        EXPECT_THAT(log.Lines(),
                    ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load()",
                                StartsWith("0x1003 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load() failed: ")))
            << pContent;
        for (const SListRow& row : LISTS) {
            EXPECT_EQ(List(loader, row.fnGet), "false");
        }
    }
}

TEST_F(MetaData, MissingFileLeavesItNotLoadedForGood) {
    CLogRecorder log;
    DLPMetaDataLoaderImpl loader;
    EXPECT_THAT(log.Messages(DBG::LEVEL_ERROR), ElementsAre(StartsWith("DLPMetaDataLoaderImpl::Load() failed: ")));
    m_dir.Write(POLICY_FILE, WholePolicy());
    log.Clear();
    EXPECT_EQ(List(loader, &DLPMetaDataLoaderImpl::GetRegions), "false");
    EXPECT_THAT(log.Lines(), ElementsAre("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode("
                                         "xmllength=0, rootNodeName='/regions')"));
}

TEST_F(MetaData, CopiesHoldTheListsThemselves) {
    DLPMetaDataLoaderImpl loader = Load(WholePolicy());
    m_dir.Write(POLICY_FILE, "<SAPolicy/>");
    CLogRecorder log;
    DLPMetaDataLoaderImpl copy(loader);
    EXPECT_TRUE(log.Lines().empty());
    DLPMetaDataLoaderImpl assigned;
    EXPECT_EQ(List(assigned, &DLPMetaDataLoaderImpl::GetRegions), "false");
    assigned = copy;
    for (const SListRow& row : LISTS) {
        EXPECT_EQ(List(copy, row.fnGet), std::string("true ") + row.pSection + "=Display");
        EXPECT_EQ(List(assigned, row.fnGet), std::string("true ") + row.pSection + "=Display");
    }
}

TEST_F(MetaData, CopiesOfOneThatIsNotLoadedAreNotLoaded) {
    const DLPMetaDataLoaderImpl loader;
    DLPMetaDataLoaderImpl assigned = Load(WholePolicy());
    DLPMetaDataLoaderImpl copy(loader);
    assigned = loader;
    for (const SListRow& row : LISTS) {
        EXPECT_EQ(List(copy, row.fnGet), "false");
        EXPECT_EQ(List(assigned, row.fnGet), "false");
    }
}

TEST_F(MetaData, ProcessHasOneLoadedOnce) {
    m_dir.Write(POLICY_FILE, WholePolicy());
    CLogRecorder log;
    std::vector<DLPMetaDataLoaderImpl*> vecSeen(8);
    std::vector<std::thread> vecThreads;
    for (DLPMetaDataLoaderImpl*& pSeen : vecSeen) {
        vecThreads.emplace_back([&pSeen] { pSeen = &GetProcessMetaData(); });
    }
    for (std::thread& thread : vecThreads) {
        thread.join();
    }
    EXPECT_EQ(vecSeen, std::vector<DLPMetaDataLoaderImpl*>(8, &GetProcessMetaData()));
    EXPECT_EQ(List(GetProcessMetaData(), &DLPMetaDataLoaderImpl::GetIndustries), "true industries=Display");
    EXPECT_THAT(log.Messages(DBG::LEVEL_ENTER), ElementsAre("DLPMetaDataLoaderImpl::Load()", testing::_));
}

namespace {

// What only the class itself may call, lent to one test by an explicit instantiation, where access is not checked.
using LoadOperation = bool (DLPMetaDataLoaderImpl::*)();
LoadOperation GetLoad();
template <LoadOperation fnLoad>
struct SLend {
    friend LoadOperation GetLoad() { return fnLoad; }
};
template struct SLend<&DLPMetaDataLoaderImpl::Load>;

}  // namespace

TEST_F(MetaData, SecondLoadDoesNothing) {
    DLPMetaDataLoaderImpl loader = Load(WholePolicy());
    CLogRecorder log;
    EXPECT_TRUE((loader.*GetLoad())());
    EXPECT_TRUE(log.Lines().empty());
}
