#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/support/TempDir.h"
#include "tests/support/XmlText.h"

// Documents of the W3C XML conformance suite, read from files as a policy file is.

namespace {

struct SRow {
    std::string strFile;
    std::string strExpected;
    std::string strWhy;
};

std::vector<SRow> ReadManifest(const std::string& strPath) {
    std::ifstream file(strPath);
    std::vector<SRow> vecRows;
    std::string strLine;
    std::getline(file, strLine);
    while (std::getline(file, strLine)) {
        std::istringstream fields(strLine);
        std::vector<std::string> vecFields;
        for (std::string strField; std::getline(fields, strField, '\t');) {
            vecFields.push_back(strField);
        }
        vecRows.push_back({vecFields.at(0), vecFields.at(1), vecFields.at(8)});
    }
    return vecRows;
}

bool IsAccepted(const std::string& strPath) {
    try {
        const CXMLParser document(OS::WideText(strPath).c_str());
        return document.GetRootElement() != nullptr;
    } catch (const CXMLCOMException<OS::CException>&) {
        return false;
    }
}

class XmlConformance : public testing::Test {
  protected:
    void SetUp() override {
        const char* pCorpora = std::getenv("DLP_TEST_CORPORA");
        if (pCorpora == nullptr) {
            GTEST_SKIP() << "DLP_TEST_CORPORA is not set; it names the folder that holds xmlconf";
        }
        m_strFolder = std::string(pCorpora) + "/xmlconf/";
    }

    std::string m_strFolder;
};

}  // namespace

TEST_F(XmlConformance, DocumentsWithoutDoctypeAreJudgedAsTheSuiteDoes) {
    int iAccepted = 0;
    int iRefused = 0;
    for (const SRow& row : ReadManifest(m_strFolder + "manifest.tsv")) {
        const bool bAccepted = IsAccepted(m_strFolder + row.strFile);
        if (row.strExpected == "reject") {
            EXPECT_FALSE(bAccepted) << row.strFile << ": " << row.strWhy;
            ++iRefused;
        } else if (row.strExpected == "accept") {
            // The fifth edition of XML 1.0 allows more names than the fourth, which is read here.
            const bool bFifthEdition = row.strWhy.find("fifth-edition names") != std::string::npos;
            EXPECT_EQ(!bFifthEdition, bAccepted) << row.strFile << ": " << row.strWhy;
            iAccepted += bAccepted ? 1 : 0;
        }
    }
    EXPECT_EQ(65, iAccepted);
    EXPECT_EQ(138, iRefused);
}

TEST_F(XmlConformance, EveryDocumentWithADoctypeIsRefused) {
    const CTempDir folder;
    const std::string strUnpack = "tar -xzf '" + m_strFolder + "dtd-documents.tar.gz' -C '" + folder.Path() + "'";
    ASSERT_EQ(0, std::system(strUnpack.c_str()));
    int iRefused = 0;
    for (const SRow& row : ReadManifest(m_strFolder + "manifest-dtd.tsv")) {
        EXPECT_FALSE(IsAccepted(folder.Path(row.strFile))) << row.strFile << ": " << row.strWhy;
        ++iRefused;
    }
    EXPECT_EQ(1908, iRefused);
}
