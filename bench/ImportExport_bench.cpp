// Import and export of generated documents, through the exported classes: time per item (one expression, one list and
// one template make three items) and the peak of resident memory.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "api/CDLPTemplateParse.h"
#include "bench/CScratchStore.h"
#include "bench/PolicyGenerator.h"
#include "platform/common/TextConversion.h"

namespace {

constexpr int KINDS = 3;

/** Starts a new peak; Linux keeps one per process. What earlier cases have freed goes back first. */
void ResetPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

double PeakBytes() {
    std::ifstream status("/proc/self/status");
    std::string strLine;
    while (std::getline(status, strLine)) {
        if (strLine.rfind("VmHWM:", 0) == 0) {
            return 1024.0 * std::strtod(strLine.c_str() + 6, nullptr);
        }
    }
    return 0;
}

bool Import(const OS::x_wstring& strDocument) {
    CDLPTemplateParse parse{OS::x_wstring()};
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecAssets;
    return parse.DoTemplateImport(L"", strDocument, vecImported, vecSkipped, vecAssets) == 0 && vecSkipped.empty();
}

void Report(benchmark::State& state, double dPeak, double dSize) {
    const double dItems = static_cast<double>(state.range(0)) * KINDS;
    state.counters["per_item"] =
        benchmark::Counter(dItems, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["peak_bytes"] = dPeak;
    state.counters["peak_per_byte"] = dPeak / dSize;
}

void ImportIntoEmptyStore(benchmark::State& state, bool bOnDisk) {
    const std::string strUtf8 = PolicyGenerator::Make(static_cast<int>(state.range(0)));
    const OS::x_wstring strDocument = OS::WideText(strUtf8);
    CScratchStore store(bOnDisk);
    ResetPeak();
    for (auto _ : state) {
        state.PauseTiming();
        store.OpenEmpty();
        state.ResumeTiming();
        if (!Import(strDocument)) {
            state.SkipWithError("import failed");
            break;
        }
    }
    Report(state, PeakBytes(), static_cast<double>(strUtf8.size()));
}

void ExportWholeStore(benchmark::State& state, bool bOnDisk) {
    const int iItems = static_cast<int>(state.range(0));
    const std::string strUtf8 = PolicyGenerator::Make(iItems);
    CScratchStore store(bOnDisk);
    store.OpenEmpty();
    if (!Import(OS::WideText(strUtf8))) {
        state.SkipWithError("import failed");
        return;
    }
    std::vector<OS::x_wstring> vecNames;
    for (int i = 0; i < iItems; ++i) {
        vecNames.push_back(L"template " + std::to_wstring(i));
    }
    ResetPeak();
    for (auto _ : state) {
        CDLPTemplateParse parse{OS::x_wstring()};
        OS::x_wstring strOut;
        parse.DoTemplateExport(L"", vecNames, strOut);
        if (strOut.empty()) {
            state.SkipWithError("export failed");
            break;
        }
    }
    Report(state, PeakBytes(), static_cast<double>(strUtf8.size()));
}

BENCHMARK_CAPTURE(ImportIntoEmptyStore, memory, false)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ImportIntoEmptyStore, sqlite, true)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ExportWholeStore, memory, false)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ExportWholeStore, sqlite, true)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
