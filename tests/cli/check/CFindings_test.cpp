#include "cli/check/CFindings.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

SDiagnostic Make(ECode eCode, std::size_t iOffset) {
    return {.eCode = eCode,
            .eSeverity = GetCodeRow(eCode).eSeverity,
            .strMessage = {},
            .strAdvice = {},
            .iOffset = iOffset,
            .place = {},
            .excerpt = {},
            .related = {},
            .fix = {}};
}

/** Everything of a diagnostic but its excerpt. */
std::string Show(const SDiagnostic& diagnostic) {
    const auto fnPlace = [](SPlace place) { return std::to_string(place.iLine) + ':' + std::to_string(place.iColumn); };
    std::string strShown = std::string(GetCodeRow(diagnostic.eCode).pName) + ' ' +
                           GetSeverityName(diagnostic.eSeverity) + ' ' + fnPlace(diagnostic.place) + ' ' +
                           diagnostic.strMessage + '|' + diagnostic.strAdvice;
    if (diagnostic.related) {
        strShown += " related " + fnPlace(diagnostic.related->place) + ' ' + diagnostic.related->strMessage;
    }
    if (diagnostic.fix) {
        strShown += " fix " + std::to_string(diagnostic.fix->iOffset) + '+' + std::to_string(diagnostic.fix->iLength) +
                    ' ' + fnPlace(diagnostic.fix->place) + '-' + fnPlace(diagnostic.fix->end) + ' ' +
                    diagnostic.fix->strReplacement + (diagnostic.bFixed ? " made" : "");
    }
    return strShown;
}

std::vector<std::string> ShowAll(const CFindings& findings) {
    std::vector<std::string> vecShown;
    for (const SDiagnostic& diagnostic : findings) {
        vecShown.push_back(Show(diagnostic));
    }
    return vecShown;
}

constexpr std::size_t NOWHERE = std::string::npos;

}  // namespace

TEST(Findings, SentencesAreFilledInWithWhatWasGiven) {
    CFindings findings;
    const CFindings::SBlanks blanks{{"\"x\"", "\"SAPolicy\""}, {"remove it"}};
    findings.Add(Make(ECode::UNKNOWN_ATTRIBUTE, 0), &blanks);
    findings.Add(Make(ECode::UNKNOWN_ATTRIBUTE, 1), &blanks);
    const SCodeRow& row = GetCodeRow(ECode::UNKNOWN_ATTRIBUTE);
    for (const SDiagnostic& diagnostic : findings) {
        EXPECT_EQ(diagnostic.strMessage, FillSentence(row.pWhat, blanks.vecWhat));
        EXPECT_EQ(diagnostic.strAdvice, FillSentence(row.pAdvice, blanks.vecAdvice));
    }
    EXPECT_EQ(findings.size(), 2U);
}

TEST(Findings, WhatIsAddedComesBackInTheOrderOfTheFile) {
    CFindings findings;
    SDiagnostic last = Make(ECode::NOT_XML, 4);
    last.strMessage = "what";
    last.related = {2, "there", {}};
    last.fix = {4, 2, "new", {}, {}};
    findings.Add(last);
    SDiagnostic first = Make(ECode::UNREADABLE, NOWHERE);
    first.strMessage = "whole";
    first.strAdvice = "advice";
    first.place = {7, 8};
    first.related = {NOWHERE, "elsewhere", {9, 10}};
    findings.Add(first);
    SDiagnostic second = Make(ECode::OTHER_SPELLING, 0);
    second.eSeverity = ESeverity::ERROR;
    second.fix = {0, 1, "", {}, {}};
    findings.Add(second);
    findings.Sort();
    findings.Locate("a\nb\nccc");
    EXPECT_EQ(ShowAll(findings), (std::vector<std::string>{
                                     "unreadable error 7:8 whole|advice related 9:10 elsewhere",
                                     "other-spelling error 1:1 | fix 0+1 1:1-1:2 ",
                                     "not-xml error 3:1 what| related 2:1 there fix 4+2 3:1-3:3 new",
                                 }));
    findings.NoteFixed([](std::size_t i) { return i + 1; });
    findings.Locate("xa\nb\nccc");
    EXPECT_EQ(ShowAll(findings)[2], "not-xml error 3:1 what| related 2:1 there fix 5+3 3:1-3:4 new made");
}

TEST(Findings, ThoseOfOneOffsetStayInTheirOrder) {
    CFindings findings;
    for (const std::size_t iOffset : std::vector<std::size_t>{3, 1, 3, 1}) {
        SDiagnostic diagnostic = Make(ECode::NOT_XML, iOffset);
        diagnostic.strMessage = std::to_string(findings.size());
        findings.Add(diagnostic);
    }
    findings.Sort();
    std::string strOrder;
    for (const SDiagnostic& diagnostic : findings) {
        strOrder += diagnostic.strMessage;
    }
    EXPECT_EQ(strOrder, "1302");
}

TEST(Findings, WhatIsAddedAgainDiffersInItsPlaceAlone) {
    CFindings findings;
    SDiagnostic diagnostic = Make(ECode::UNREADABLE, 0);
    diagnostic.strMessage = "what";
    findings.Add(diagnostic);
    findings.AddAgain(2);
    findings.Locate("a\nb");
    EXPECT_EQ(ShowAll(findings),
              (std::vector<std::string>{"unreadable error 1:1 what|", "unreadable error 2:1 what|"}));
}

TEST(Findings, ManyWordingsAreKeptApart) {
    constexpr std::size_t COUNT = 5000;
    CFindings findings;
    for (std::size_t i = 0; i < COUNT; ++i) {
        SDiagnostic diagnostic = Make(ECode::NOT_XML, i);
        diagnostic.strMessage = std::to_string(i % 3000);
        findings.Add(diagnostic);
    }
    for (std::size_t i = 0; i < COUNT; ++i) {
        ASSERT_EQ(findings.Get(i).strMessage, std::to_string(i % 3000));
    }
}

TEST(Findings, NoTextIsKeptForSoFewThatAllHaveExcerpts) {
    CFindings findings;
    for (std::size_t i = 0; i < CFindings::MAX_SHOWN; ++i) {
        findings.Add(Make(ECode::NOT_XML, i));
    }
    const std::string strText(CFindings::MAX_SHOWN, 'x');
    const std::string strOther(CFindings::MAX_SHOWN, 'y');  // kept, it would be seen
    findings.Locate(strText);
    findings.KeepText(strOther);
    EXPECT_EQ(findings.Get(CFindings::MAX_SHOWN - 1).excerpt.strLine, MakeExcerpt(strText, 99).strLine);
    findings.Add(Make(ECode::NOT_XML, 0));
    findings.Locate(strText);
    findings.KeepText(strOther);
    EXPECT_EQ(findings.Get(CFindings::MAX_SHOWN).excerpt.strLine, MakeExcerpt(strOther, 0).strLine);
}

TEST(Findings, TheFirstHaveExcerptsUnlessTheTextIsKept) {
    CFindings findings;
    const std::string strText(2 * CFindings::MAX_SHOWN, 'x');
    for (std::size_t i = 0; i < strText.size(); ++i) {
        findings.Add(Make(ECode::NOT_XML, i));
    }
    findings.Locate(strText);
    const auto fnHas = [](const SDiagnostic& diagnostic) { return !diagnostic.excerpt.strLine.empty(); };
    EXPECT_EQ(std::count_if(findings.begin(), findings.end(), fnHas), CFindings::MAX_SHOWN);
    EXPECT_EQ(findings.Get(CFindings::MAX_SHOWN - 1).excerpt.strLine, MakeExcerpt(strText, 99).strLine);
    findings.KeepText(strText);
    EXPECT_EQ(std::count_if(findings.begin(), findings.end(), fnHas), 2 * CFindings::MAX_SHOWN);
}
