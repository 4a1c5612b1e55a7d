#include "cli/check/DiagnosticsPage.h"

#include <string_view>

namespace {

constexpr std::string_view BLANK = "{}";
constexpr const char ELLIPSIS[] = "…";
constexpr std::size_t WIDTH = 100;

constexpr const char PAGE_HEAD[] =
    "# Diagnostics\n"
    "\n"
    "What `dlpctl check` finds, and reports of `dlpctl import` tell.\n"
    "This page is made from the tool's own table (`dlpctl explain --markdown`);\n"
    "`dlpctl explain CODE` shows one entry. Errors are what an import refuses or skips, parts of items included\n"
    "(DLP018). What else it does not keep of an item that it takes, such as an attribute or a second pattern, is\n"
    "warned of. With `--strict` warnings are errors too; `--allow CODE` leaves a code out. An … stands for what is\n"
    "filled in. Examples are whole documents or items of one. Some refer to an expression `card` and a keyword\n"
    "list `words`, which stand in the same document or in the store.\n";

std::string Sentence(const char* pSentence) {
    std::string strSentence = WithBlanks(pSentence);
    if (strSentence[0] >= 'a' && strSentence[0] <= 'z') {
        strSentence[0] = static_cast<char>(strSentence[0] - 'a' + 'A');
    }
    return strSentence + '.';
}

/** An advice that is filled in whole says nothing here. */
std::string Advice(const SCodeRow& row) {
    return row.pAdvice == BLANK ? std::string() : Sentence(row.pAdvice);
}

std::string Wrapped(std::string_view strText) {
    std::string strWrapped;
    while (strText.size() > WIDTH) {
        const std::size_t iEnd = strText.rfind(' ', WIDTH);
        strWrapped.append(strText.substr(0, iEnd)) += '\n';
        strText.remove_prefix(iEnd + 1);
    }
    return strWrapped.append(strText) += '\n';
}

std::string Indented(std::string_view strText) {
    std::string strIndented = "  ";
    for (const char c : strText) {
        strIndented += c;
        strIndented += c == '\n' ? "  " : "";
    }
    return strIndented + '\n';
}

std::string MakeExample(const char* pHead, const std::string& strExample) {
    const bool bMarkup = strExample.front() == '<';
    return std::string("\n") + pHead + ":\n\n" +
           (bMarkup ? "```xml\n" + strExample + "\n```\n" : strExample.substr(1, strExample.size() - 2) + '\n');
}

struct SAssumed {
    const char* pName;
    const char* pCalled;
};

constexpr SAssumed ASSUMED[] = {{"card", "expression"}, {"words", "keyword list"}};

/** @return a line for what both examples refer to and neither holds */
std::string TellAssumed(const SCodeRow& row) {
    const std::string strExamples = std::string(row.pBad) + row.pGood;
    std::string strTold;
    for (const SAssumed& assumed : ASSUMED) {
        const std::string strNamed = "ame=\"" + std::string(assumed.pName) + '"';
        if (strExamples.find("sourceN" + strNamed) != std::string::npos &&
            strExamples.find(" n" + strNamed) == std::string::npos) {
            strTold +=
                (strTold.empty() ? "the " : " and the ") + std::string(assumed.pCalled) + " \"" + assumed.pName + '"';
        }
    }
    return strTold.empty() ? strTold
                           : '\n' + Wrapped("The examples refer to " + strTold + " of the document or the store.");
}

}  // namespace

std::string WithBlanks(const char* pSentence) {
    std::string strText = pSentence;
    // What may follow the last word is no part of the sentence as it stands.
    if (strText.ends_with(BLANK) && strText.size() > BLANK.size() &&
        strText[strText.size() - BLANK.size() - 1] != ' ') {
        strText.resize(strText.size() - BLANK.size());
    }
    for (std::size_t i = strText.find(BLANK); i != std::string::npos; i = strText.find(BLANK, i)) {
        strText.replace(i, BLANK.size(), ELLIPSIS);
    }
    return strText;
}

std::string MakeExplanation(const SCodeRow& row) {
    const std::string strAdvice = Advice(row);
    return std::string(row.pCode) + ' ' + row.pName + " (" + GetSeverityName(row.eSeverity) + ")\n\n" +
           Wrapped(Sentence(row.pWhat)) + '\n' + Wrapped(row.pMore) +
           (strAdvice.empty() ? "" : '\n' + Wrapped("What to do: " + strAdvice)) + "\nWrong:\n\n" + Indented(row.pBad) +
           "\nRight:\n\n" + Indented(row.pGood) + TellAssumed(row);
}

std::string MakeDiagnosticsPage() {
    std::string strPage = PAGE_HEAD;
    for (const SCodeRow& row : GetCodeTable()) {
        const std::string strAdvice = Advice(row);
        strPage += std::string("\n## ") + row.pCode + ' ' + row.pName + "\n\n" + '*' + GetSeverityName(row.eSeverity) +
                   "*: " + Sentence(row.pWhat) + "\n\n" + Wrapped(row.pMore) +
                   (strAdvice.empty() ? "" : '\n' + Wrapped(strAdvice)) + MakeExample("Wrong", row.pBad) +
                   MakeExample("Right", row.pGood);
    }
    return strPage;
}
