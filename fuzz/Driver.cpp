// Runs a target on its corpus and on seeded changes of it, where there is no libFuzzer: dlp_fuzz TARGET CORPUS RUNS
// SEED What ends the program is left in the file "finding" of the working directory.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fuzz/Targets.h"

namespace {

constexpr std::size_t MOST_CHANGES = 6;
constexpr std::size_t MOST_BYTES = 65536;
constexpr const char FINDING[] = "finding";
/** What a change may put in. */
const std::string PIECES[] = {
    "<",
    ">",
    "&",
    "\"",
    "&#0;",
    "<![CDATA[",
    "]]>",
    "<!--",
    "-->",
    "<?x ?>",
    "<!DOCTYPE a>",
    "xmlns:a=\"b\"",
    "\n",
    "\r",
    "\t",
    "(",
    ")",
    "{",
    "}",
    "*",
    "+?",
    "|",
    "\\q",
    "[^",
    "P:",
    "K:",
    " AND",
    " OR ",
    "(2)",
    "\xFF",
    "\xEF\xBB\xBF",
    std::string(1, '\0'),
    "99999999999",
    "-1",
    "[",
    "]",
    ",",
    "null",
    "true",
    "1e999",
    "\\u0000",
    "\\ud800",
};

std::vector<std::string> ReadCorpus(const std::string& strFolder) {
    std::vector<std::filesystem::path> vecFiles;
    for (const auto& entry : std::filesystem::directory_iterator(strFolder)) {
        vecFiles.push_back(entry.path());
    }
    std::sort(vecFiles.begin(), vecFiles.end());
    std::vector<std::string> vecTexts;
    for (const auto& file : vecFiles) {
        std::ifstream stream(file, std::ios::binary);
        vecTexts.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    return vecTexts;
}

/** Makes texts from those of a corpus. */
class CMutator {
  public:
    CMutator(const std::vector<std::string>& vecCorpus, unsigned iSeed) : m_vecCorpus(vecCorpus), m_random(iSeed) {}

    std::string Make() {
        std::string strText = m_vecCorpus[Below(m_vecCorpus.size())];
        for (std::size_t i = 1 + Below(MOST_CHANGES); i > 0; --i) {
            Change(strText);
        }
        strText.resize(std::min(strText.size(), MOST_BYTES));
        return strText;
    }

  private:
    std::size_t Below(std::size_t iEnd) { return m_random() % iEnd; }

    void Change(std::string& strText) {
        const std::size_t iPlace = Below(strText.size() + 1);
        const std::size_t iCount = 1 + Below(16);
        switch (strText.empty() ? 0 : Below(6)) {
            case 0:
                strText.insert(iPlace, PIECES[Below(std::size(PIECES))]);
                break;
            case 1:
                strText.erase(iPlace, iCount);
                break;
            case 2:
                strText.insert(iPlace, strText.substr(Below(strText.size()), iCount * iCount));
                break;
            case 3:
                strText[Below(strText.size())] ^= static_cast<char>(1U << Below(8));
                break;
            case 4:
                strText[Below(strText.size())] = static_cast<char>(m_random());
                break;
            default:
                Splice(strText, iPlace);
                break;
        }
    }

    void Splice(std::string& strText, std::size_t iPlace) {
        const std::string& strOther = m_vecCorpus[Below(m_vecCorpus.size())];
        strText = strText.substr(0, iPlace) + strOther.substr(Below(strOther.size() + 1));
    }

    const std::vector<std::string>& m_vecCorpus;
    std::mt19937 m_random;
};

/** What is tried lies in a file, so that it is there when it ends the program. */
void Try(const Fuzz::STarget& target, const std::string& strText) {
    std::ofstream(FINDING, std::ios::binary | std::ios::trunc) << strText << std::flush;
    target.fnRun(strText);
}

}  // namespace

int main(int iArguments, char** apArguments) {
    const Fuzz::STarget* const pTarget = iArguments == 5 ? Fuzz::FindTarget(apArguments[1]) : nullptr;
    if (pTarget == nullptr) {
        std::cerr << "dlp_fuzz TARGET CORPUS RUNS SEED, where TARGET is one of:";
        for (const Fuzz::STarget& target : Fuzz::TARGETS) {
            std::cerr << ' ' << target.pName;
        }
        std::cerr << '\n';
        return 3;
    }
    const std::vector<std::string> vecCorpus = ReadCorpus(apArguments[2]);
    if (vecCorpus.empty()) {
        std::cerr << "the corpus is empty\n";
        return 3;
    }
    const long iRuns = std::atol(apArguments[3]);
    for (const std::string& strText : vecCorpus) {
        Try(*pTarget, strText);
    }
    CMutator mutator(vecCorpus, static_cast<unsigned>(std::atol(apArguments[4])));
    for (long i = 0; i < iRuns; ++i) {
        Try(*pTarget, mutator.Make());
    }
    std::filesystem::remove(FINDING);
    std::cout << pTarget->pName << ": " << vecCorpus.size() << " texts of the corpus, " << iRuns << " changed ones\n";
    return 0;
}
