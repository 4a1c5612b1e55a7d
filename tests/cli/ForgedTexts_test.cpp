#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/edit/DelimitedText.h"
#include "platform/common/TextConversion.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/MisleadingCharacters.h"
#include "tests/support/Sanitized.h"

// Every text that would be something else where it is shown, as name, text and file name, through every output.

namespace {

using Json = nlohmann::ordered_json;

constexpr const char MARK[] = "FORGED";

/** U+2400 stands for the byte 0, which no store takes either. */
constexpr const char ZERO[] = "a\u2400FORGED";

struct SForgery {
    const char* pWhat;
    const char* pText;
    bool bInXml = true;     ///< whether a document can carry it
    bool bFileName = true;  ///< whether a file can be named so
};

const SForgery FORGERIES[] = {
    {"NewLine", "a\nFORGED"},
    {"CarriageReturn", "a\rFORGED"},
    {"LineOfTheLog", "a\r\n2026-01-01T00:00:00.000Z error 0x1 FORGED:1 FORGED"},
    {"NextLine", "a\u0085FORGED"},
    {"LineSeparator", "a\u2028FORGED"},
    {"ParagraphSeparator", "a\u2029FORGED"},
    {"VerticalTab", "a\vFORGED", false},
    {"FormFeed", "a\fFORGED", false},
    {"Colour", "a\x1b[31mFORGED", false},
    {"Title", "a\x1b]0;FORGED\x07", false},
    {"ColourOfOneByte", "a\u009b31mFORGED"},
    {"TitleOfOneByte", "a\u009d0;FORGED\u009c"},
    {"Backspace", "a\bFORGED", false},
    {"Delete",
     "a\x7f"
     "FORGED"},
    {"Zero", ZERO, false, false},
    {"LeftToRightEmbedding", "a\u202aFORGED"},
    {"RightToLeftEmbedding", "a\u202bFORGED"},
    {"PopDirection", "a\u202cFORGED"},
    {"LeftToRightOverride", "a\u202dFORGED"},
    {"RightToLeftOverride", "a\u202eFORGED"},
    {"LeftToRightIsolate", "a\u2066FORGED"},
    {"RightToLeftIsolate", "a\u2067FORGED"},
    {"FirstStrongIsolate", "a\u2068FORGED"},
    {"PopIsolate", "a\u2069FORGED"},
    {"LeftToRightMark", "a\u200eFORGED"},
    {"RightToLeftMark", "a\u200fFORGED"},
    {"ArabicLetterMark", "a\u061cFORGED"},
    {"NoWidth", "a\u200bFORGED"},
    {"Tag", "a\U000E0041FORGED"},
    {"NobodySees", "a\u00ad\u034f\u17b4\u180b\u200c\u200d\u2060\u206f\ufeff\ufff0FORGED"},
    {"Fillers", "a\u115f\u1160\u3164\uffa0FORGED"},
    {"Variations", "a\ufe0f\U0001bca0\U0001d173\U000e0fffFORGED"},
    {"FormulaEquals", "=FORGED()"},
    {"FormulaPlus", "+FORGED()"},
    {"FormulaMinus", "-FORGED()"},
    {"FormulaAt", "@FORGED()"},
    {"FormulaWideEquals", "\uff1dFORGED()"},
    {"FormulaWideAt", "'\uff20FORGED()"},
    {"FormulaTab", "\t=FORGED()"},
    {"FormulaDisarmed", "'=FORGED()"},
    {"FormulaInANewCell", "a\",=FORGED(),\"", true},
    {"FormulaInANewTabbedCell", "a\t=FORGED()"},
    {"Statement", "a'; DROP TABLE expressions; --FORGED"},
    {"Alternative", "x' OR '1'='1FORGED"},
    {"Placeholder", "%s%n%FORGED_?{}"},
    {"Path", "../../FORGED", true, false},
    {"Markup", "a\"/><FORGED>]]><!--"},
    {"CommandOfTheRunner", "a\n::error file=FORGED::FORGED"},
    {"EscapeOfTheRunner", "a%0A::error::FORGED"},
    {"NodeOfAGraph", "a\"]; FORGED [label=\""},
    {"MemberOfAnObject", "a\",\"FORGED\":\"\\"},
};

enum class EForm { TEXT, JSON, TABLE, GRAPH, RUNNER, MARKUP };

struct SShown {
    std::vector<std::string> vecWords;  ///< NAME, FILE and RAW stand for the forged name and the two documents
    EForm eForm = EForm::TEXT;
};

const SShown SHOWN[] = {
    {{"list", "expressions"}},
    {{"list", "keywords"}},
    {{"list", "templates"}},
    {{"show", "expression", "NAME"}},
    {{"show", "keyword", "NAME"}},
    {{"show", "template", "NAME"}},
    {{"show", "template", "NAMEx"}},
    {{"expression", "show", "NAME"}},
    {{"keywords", "show", "NAME"}},
    {{"template", "show", "NAME"}},
    {{"refs"}},
    {{"refs", "FILE"}},
    {{"refs", "--template", "NAMEx"}},
    {{"refs", "--dot"}, EForm::GRAPH},
    {{"refs", "FILE", "--dot"}, EForm::GRAPH},
    {{"diff", "FILE", "memory:"}},
    {{"diff", "store", "FILE"}},
    {{"diff", "FILE", "NAME"}},
    {{"check", "FILE"}},
    {{"check", "RAW"}},
    {{"check", "NAME"}},
    {{"check", "--format", "json", "FILE", "RAW"}, EForm::JSON},
    {{"check", "--format", "sarif", "FILE", "RAW"}, EForm::JSON},
    {{"check", "--format", "junit", "FILE", "RAW"}, EForm::MARKUP},
    {{"check", "--format", "github", "FILE", "RAW"}, EForm::RUNNER},
    {{"check", "--fix", "--dry-run", "--no-store", "FILE"}},
    {{"import", "--dry-run", "FILE"}},
    {{"import", "FILE"}},
    {{"import", "RAW"}},
    {{"import", "NAME"}},
    {{"assets", "import", "FILE"}},
    {{"import", "--report", "-", "--report-format", "text", "FILE", "RAW"}},
    {{"import", "--report", "-", "--report-format", "json", "FILE", "RAW"}, EForm::JSON},
    {{"import", "--report", "-", "--report-format", "sarif", "FILE", "RAW"}, EForm::JSON},
    {{"import", "--report", "-", "--report-format", "junit", "FILE", "RAW"}, EForm::MARKUP},
    {{"import", "--report", "-", "--report-format", "github", "FILE", "RAW"}, EForm::RUNNER},
    {{"--log", "-", "--log-level", "all", "import", "FILE"}},
    {{"-v", "import", "RAW"}},
    {{"keywords", "export", "NAME"}, EForm::TABLE},
    {{"keywords", "export", "--format", "tsv", "NAME"}, EForm::TABLE},
    {{"keywords", "import", "NAME", "RAW"}},
    {{"store", "dump"}, EForm::JSON},
    {{"store", "load", "RAW"}},
    {{"store", "check"}},
    {{"export", "NAMEx"}},
    {{"export", "NAME", "-o", "NAME/x"}},
    {{"rename", "expression", "NAME", "NAMEx", "--dry-run"}},
    {{"delete", "expression", "NAME"}},
    {{"template", "new", "NAMEx", "NAME"}},
    {{"expression", "new", "NAMEx", "--pattern", "(NAME", "--dry-run"}},
    {{"fmt", "--check", "RAW"}},
    {{"convert", "--check", "RAW"}},
    {{"explain", "NAME"}},
    {{"metadata", "NAME"}},
    {{"help", "NAME"}},
    {{"NAME"}},
    {{"list", "NAME"}},
    {{"--xNAME"}},
    {{"--store", "NAME", "list", "templates"}},
    {{"--store", "sqlite:FILE", "list", "templates"}},
    {{"--home", "NAME", "list", "templates"}},
    {{"--language", "NAME", "list", "templates"}},
    {{"--scope", "NAME", "config"}},
    {{"--log-level", "NAME", "list", "templates"}},
};

void ReplaceAll(std::string& strText, const std::string& strFrom, const std::string& strTo) {
    for (std::size_t i = strText.find(strFrom); i != std::string::npos; i = strText.find(strFrom, i + strTo.size())) {
        strText.replace(i, strFrom.size(), strTo);
    }
}

std::string References(const std::string& strText) {
    std::string strXml;
    for (const wchar_t c : OS::WideText(strText)) {
        strXml += "&#" + std::to_string(static_cast<unsigned>(c)) + ';';
    }
    return strXml;
}

std::string MakeDocument(const std::string& strName) {
    const std::string strMore = "description=\"" + strName + "\" validator=\"" + strName + '"';
    std::string strDictionary = Documents::Dictionary(strName, strMore);
    ReplaceAll(strDictionary, "\"second\"", '"' + strName + '"');
    ReplaceAll(strDictionary, ">two<", '>' + strName + '<');
    return Documents::Policy(
        Documents::Entity(strName, strMore) + strDictionary,
        Documents::Template(strName, strName, strName) + Documents::Template(strName + "2", "no" + strName, strName),
        "<industries><industry name=\"" + strName + "\"><template_id>" + strName +
            "</template_id></industry></industries>");
}

/** Ends of lines are the tool's own. */
bool IsForbidden(wchar_t c) {
    return IsMisleading(c) && c != L'\n';
}

/** @return what is raw in a text, "" when nothing is */
std::string FindRaw(const std::string& strText) {
    const std::wstring strWide = OS::WideText(strText);
    const auto it = std::find_if(strWide.begin(), strWide.end(), IsForbidden);
    if (it != strWide.end()) {
        return "U+" + std::to_string(static_cast<unsigned>(*it)) + " stands there";
    }
    std::istringstream lines(strText);
    for (std::string strLine; std::getline(lines, strLine);) {
        if (strLine.rfind(MARK, 0) == 0 || strLine.rfind("2026-01-01", 0) == 0 ||
            strLine.rfind("::error file=F", 0) == 0) {
            return "a line of its own";
        }
    }
    return "";
}

std::string FindInJson(const std::string& strText) {
    std::istringstream lines(strText);
    std::string strLine;
    if (Json::accept(strText)) {
        return Json::parse(strText).contains(MARK) ? "a member of its own" : "";
    }
    while (std::getline(lines, strLine)) {
        if (!Json::accept(strLine)) {
            return "no JSON: " + strLine;
        }
    }
    return "";
}

/** A table carries the texts themselves: no cell is a formula, and there are no cells but its own. */
std::string FindInTable(const std::string& strText, char cSeparator) {
    std::string strFault;
    DelimitedText::Read(strText, 0, cSeparator, 9, [&](const DelimitedText::SRow& row) {
        for (const DelimitedText::SCell& cell : row.vecCells) {
            if (std::wstring(L"=+-@\uff1d\uff0b\uff0d\uff20\t\r\n").find(OS::WideText(cell.strText)[0]) !=
                std::wstring::npos) {
                strFault = "a formula";
            }
        }
        strFault = row.iCells == 4 ? strFault : "cells of its own";
    });
    return strFault;
}

/** Outside of quotation marks nothing of it may stand. */
std::string FindInGraph(std::string strText) {
    ReplaceAll(strText, "\\\\", "");
    ReplaceAll(strText, "\\\"", "");
    std::istringstream parts(strText);
    bool bQuoted = false;
    for (std::string strPart; std::getline(parts, strPart, '"'); bQuoted = !bQuoted) {
        if (!bQuoted && strPart.find(MARK) != std::string::npos) {
            return "outside of quotation marks";
        }
    }
    return "";
}

std::string FindInRunner(const std::string& strText) {
    std::istringstream lines(strText);
    for (std::string strLine; std::getline(lines, strLine);) {
        const std::set<std::string> COMMANDS{"::error ", "::warnin", "::notice"};
        if (COMMANDS.count(strLine.substr(0, 8)) == 0 || strLine.find("file=/") == std::string::npos) {
            return "no line of ours: " + strLine;
        }
    }
    return "";
}

std::string FindFault(EForm eForm, const std::string& strText, char cSeparator) {
    if (eForm == EForm::TABLE) {
        return FindInTable(strText, cSeparator);
    }
    const std::string strRaw = FindRaw(strText);
    if (!strRaw.empty() || strText.empty()) {
        return strRaw;
    }
    switch (eForm) {
        case EForm::JSON:
            return FindInJson(strText);
        case EForm::GRAPH:
            return FindInGraph(strText);
        case EForm::RUNNER:
            return FindInRunner(strText);
        case EForm::MARKUP:
            return strText.find(std::string("<") + MARK) == std::string::npos ? "" : "an element";
        default:
            return "";
    }
}

class ForgedTexts : public CToolTest, public ::testing::WithParamInterface<SForgery> {
  protected:
    ForgedTexts() : m_strName(GetParam().pText) {
        ReplaceAll(m_strName, "\u2400", std::string(1, '\0'));
        const std::string strFile = GetParam().bFileName ? m_strName : MARK;
        m_strFile = m_dir.Write("in/" + strFile, MakeDocument(References(m_strName)));
        m_strRaw = m_dir.Write("in/raw" + strFile, MakeDocument(m_strName));
        Fill();
    }

    bool IsStorable() const { return m_strName.find('\0') == std::string::npos; }

    /** What no document can carry a program may have stored, as a dump is loaded. */
    void Fill() const {
        const std::string strPlain = m_dir.Write("plain.xml", MakeDocument("PLAIN"));
        Run({"import", GetParam().bInXml ? m_strFile : strPlain});
        if (IsStorable() && !GetParam().bInXml) {
            Json dump = Json::parse(Dump());
            dump["keyword_lists"] = dump["templates"] = Json::array();
            for (const char* pField : {"name", "display_name", "description", "validator"}) {
                dump["expressions"][0][pField] = m_strName;
            }
            const SToolRun run = Run({"store", "load", "-"}, dump.dump());
            EXPECT_EQ(run.iCode, 0) << run.strErr;
        }
    }

    void Show(const SShown& shown, bool bJson) const {
        std::vector<std::string> vecWords = shown.vecWords;
        for (std::string& strWord : vecWords) {
            ReplaceAll(strWord, "FILE", m_strFile);
            ReplaceAll(strWord, "RAW", m_strRaw);
            ReplaceAll(strWord, "NAME", m_strName);
        }
        if (bJson) {
            vecWords.insert(vecWords.begin(), "--json");
        }
        const bool bTabs = std::count(vecWords.begin(), vecWords.end(), "tsv") != 0;
        const SToolRun run = Run(vecWords);
        const EForm eForm = bJson ? EForm::JSON : shown.eForm;
        const std::string strWhat = (bJson ? "--json " : "") + ::testing::PrintToString(shown.vecWords);
        EXPECT_EQ(FindFault(eForm, run.strOut, bTabs ? '\t' : ','), "") << strWhat << '\n' << run.strOut;
        EXPECT_EQ(FindFault(EForm::TEXT, run.strErr, ','), "") << strWhat << '\n' << run.strErr;
        EXPECT_NE(run.strOut + run.strErr, "") << strWhat;
    }

    std::string m_strName;
    std::string m_strFile;
    std::string m_strRaw;
};

}  // namespace

TEST_P(ForgedTexts, NothingOfThemPassesRaw) {
    const Json stored = Json::parse(Dump());
    ASSERT_EQ(stored["expressions"].size(), 1U);
    ASSERT_EQ(stored["expressions"][0]["name"] == m_strName, IsStorable());
    for (const SShown& shown : SHOWN) {
        Show(shown, false);
        // A table or a document has the standard output for itself.
        if (shown.eForm == EForm::TEXT) {
            Show(shown, true);
        }
    }
}

/** Each goes through every command. */
std::vector<SForgery> ChosenForgeries() {
    std::vector<SForgery> vecChosen;
    for (std::size_t i = 0; i < std::size(FORGERIES); i += SANITIZED ? 5 : 1) {
        vecChosen.push_back(FORGERIES[i]);
    }
    return vecChosen;
}

INSTANTIATE_TEST_SUITE_P(Each, ForgedTexts, ::testing::ValuesIn(ChosenForgeries()),
                         [](const auto& forgery) { return std::string(forgery.param.pWhat); });
