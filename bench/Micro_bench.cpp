// The pieces that an import or export is made of, one by one: per run the bytes or items that went through.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/CScratchStore.h"
#include "bench/PolicyGenerator.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/CXMLTree.hpp"
#include "platform/xml/CXMLWriter.h"
#include "platform/xml/XMLGate.hpp"
#include "templates/MatchRule.h"
#include "templates/PatternMatcher.h"
#include "templates/SPreparedTemplate.h"

namespace {

constexpr int ITEMS = 500;
constexpr std::size_t ROWS = 1000;

const std::string& Policy() {
    static const std::string s_strPolicy = PolicyGenerator::Make(ITEMS);
    return s_strPolicy;
}

/** The policy's length in text beyond ASCII: two bytes a character. */
std::string Greek() {
    std::string strText;
    while (strText.size() < Policy().size()) {
        strText += "\xCE\xB1";
    }
    return strText;
}

void CountBytes(benchmark::State& state, std::size_t iBytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * iBytes));
}

void Utf8ToWide(benchmark::State& state, bool bAscii) {
    const std::string strText = bAscii ? Policy() : Greek();
    for (auto _ : state) {
        benchmark::DoNotOptimize(OS::WideText(strText));
    }
    CountBytes(state, strText.size());
}

void WideToUtf8(benchmark::State& state, bool bAscii) {
    const std::string strText = bAscii ? Policy() : Greek();
    const OS::x_wstring strWide = OS::WideText(strText);
    for (auto _ : state) {
        benchmark::DoNotOptimize(OS::Utf8Loose(strWide));
    }
    CountBytes(state, strText.size());
}

void CheckUtf8(benchmark::State& state, bool bAscii) {
    const std::string strText = bAscii ? Policy() : Greek();
    for (auto _ : state) {
        benchmark::DoNotOptimize(OS::FindInvalidUtf8(strText));
    }
    CountBytes(state, strText.size());
}

/** A comment is what the quick look proves nothing about: it reads all before, and then the strict engine is asked. */
void Gate(benchmark::State& state, bool bProven) {
    const std::string strText = bProven ? Policy() : Policy() + "<!-- end -->";
    for (auto _ : state) {
        benchmark::DoNotOptimize(CheckXml(strText).bWellFormed);
    }
    CountBytes(state, strText.size());
}

void GateOfShortTexts(benchmark::State& state, bool bProven) {
    const std::string strText =
        std::string("<template name=\"t\"><matchRule><buildingBlock sourceName=\"n\"/></matchRule></template>") +
        (bProven ? "" : "<!---->");
    for (auto _ : state) {
        benchmark::DoNotOptimize(CheckXml(strText).bWellFormed);
    }
    CountBytes(state, strText.size());
}

void GateAndTree(benchmark::State& state) {
    for (auto _ : state) {
        CXMLParser document;
        benchmark::DoNotOptimize(document.LoadUtf8(Policy()));
    }
    CountBytes(state, Policy().size());
}

void Tree(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(CXMLTree::Parse(Policy()));
    }
    CountBytes(state, Policy().size());
}

void WriteTree(benchmark::State& state) {
    CXMLParser document;
    document.LoadUtf8(Policy());
    for (auto _ : state) {
        std::string strOut;
        document.SaveUtf8(strOut);
        benchmark::DoNotOptimize(strOut);
    }
    CountBytes(state, Policy().size());
}

/** The keywords of a stored list, copied from its text or read into a tree and written from there. */
void WriteKeywords(benchmark::State& state, bool bCopied) {
    std::string strText = "<dictionary>";
    for (int i = 0; i < 20; ++i) {
        strText +=
            "<keyword description=\"\" score=\"1\" caseSensitive=\"false\">keyword " + std::to_string(i) + "</keyword>";
    }
    strText += "</dictionary>";
    for (auto _ : state) {
        std::string strOut;
        CXMLWriter writer(strOut);
        writer.StartElement("dictionary");
        if (!bCopied || !writer.Content(strText, "dictionary", "keyword")) {
            CXMLParser document;
            document.LoadUtf8(strText);
            for (CXMLView node = document.RootView().FirstChild(); node; node = node.NextSibling()) {
                writer.Node(node);
            }
        }
        writer.EndElement();
        benchmark::DoNotOptimize(strOut);
    }
    CountBytes(state, strText.size());
}

void ParseRules(benchmark::State& state) {
    const std::wstring strRule = L"P:Card number(2)\tAND\tK:Card words\tOR\tP:Account number(1)\tEXCEPT\tK:Test data";
    for (auto _ : state) {
        benchmark::DoNotOptimize(ParseMatchRule(strRule, L"OR"));
    }
    state.SetItemsProcessed(state.iterations());
}

/** A stored template as an export reads it: gate, tree, rules and what they refer to, markup. */
void PrepareTemplate(benchmark::State& state) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::DISPLAY_NAME, "Cards");
    row.SetText(TemplateColumn::ELEMENT,
                "<template name=\"cards\"><matchRule operation=\"OR\"><buildingBlock sourceType=\"ENTITY\" "
                "entityHits=\"2\" sourceName=\"card\"/><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\" "
                "operation=\"AND\"/></matchRule></template>");
    CAssetNames names;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SPreparedTemplate::Make(row, names));
    }
    state.SetItemsProcessed(state.iterations());
}

void MatchPattern(benchmark::State& state) {
    const CPattern pattern(L"{(AND)|(OR)|(EXCEPT)}");
    std::wstring strText(10000, L'A');
    strText += L"AND";
    for (auto _ : state) {
        CPatternMatcher matcher(pattern, strText);
        benchmark::DoNotOptimize(matcher.Search(0));
    }
    CountBytes(state, strText.size());
}

CSettingsRow MakeRow(std::size_t i, char c = 'x') {
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(AssetColumn::SUBJECT, "subject " + std::to_string(i));
    row.SetText(AssetColumn::NAME, "name " + std::to_string(i));
    row.SetText(ExpressionColumn::PATTERN, std::string(200, c));
    return row;
}

/** One unit of work, as an import: each record is looked up first. */
void SaveAll(char c) {
    CSettingsTransaction unit;
    for (std::size_t i = 0; i < ROWS; ++i) {
        const CSettingsRow row = MakeRow(i, c);
        const auto pFound = CSettingsStore::Current().FindOne(ESettingsKind::EXPRESSION, AssetColumn::SUBJECT,
                                                              row.GetText(AssetColumn::SUBJECT));
        if (pFound == nullptr || *pFound != row) {
            CSettingsStore::Current().Save(row);
        }
    }
    unit.Commit();
}

void InsertRows(benchmark::State& state, bool bOnDisk) {
    CScratchStore store(bOnDisk);
    for (auto _ : state) {
        state.PauseTiming();
        store.OpenEmpty();
        state.ResumeTiming();
        SaveAll('x');
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * ROWS));
}

/** @param bChanged whether each record that is saved differs from the one that is there */
void SaveRowsAgain(benchmark::State& state, bool bOnDisk, bool bChanged) {
    CScratchStore store(bOnDisk);
    store.OpenEmpty();
    SaveAll('x');
    char c = 'x';
    for (auto _ : state) {
        c = bChanged && c == 'x' ? 'y' : 'x';
        SaveAll(c);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * ROWS));
}

void FindRows(benchmark::State& state, bool bOnDisk) {
    CScratchStore store(bOnDisk);
    store.OpenEmpty();
    std::vector<std::string> vecNames;
    {
        CSettingsTransaction unit;
        for (std::size_t i = 0; i < ROWS; ++i) {
            CSettingsStore::Current().Save(MakeRow(i));
            vecNames.push_back("name " + std::to_string(i));
        }
        unit.Commit();
    }
    for (auto _ : state) {
        const CSettingsTransaction unit(EUnitOfWork::READ);
        std::vector<std::unique_ptr<CSettingsRow>> vecRows;
        CSettingsStore::Current().Find(ESettingsKind::EXPRESSION, AssetColumn::NAME, vecNames, vecRows);
        benchmark::DoNotOptimize(vecRows);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * ROWS));
}

BENCHMARK_CAPTURE(Utf8ToWide, ascii, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Utf8ToWide, greek, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(WideToUtf8, ascii, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(WideToUtf8, greek, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(CheckUtf8, ascii, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(CheckUtf8, greek, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Gate, proven, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Gate, strict, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(GateOfShortTexts, proven, true);
BENCHMARK_CAPTURE(GateOfShortTexts, strict, false);
BENCHMARK(GateAndTree)->Unit(benchmark::kMicrosecond);
BENCHMARK(Tree)->Unit(benchmark::kMicrosecond);
BENCHMARK(WriteTree)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(WriteKeywords, copied, true);
BENCHMARK_CAPTURE(WriteKeywords, read, false);
BENCHMARK(ParseRules);
BENCHMARK(PrepareTemplate);
BENCHMARK(MatchPattern)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(InsertRows, memory, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(InsertRows, sqlite, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SaveRowsAgain, memory_updated, false, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SaveRowsAgain, sqlite_updated, true, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SaveRowsAgain, memory_unchanged, false, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SaveRowsAgain, sqlite_unchanged, true, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FindRows, memory, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FindRows, sqlite, true)->Unit(benchmark::kMicrosecond);

}  // namespace
