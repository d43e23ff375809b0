// Symbol libraries at scale: the registry and group operations over n
// symbols filed in a fixed tree of 100 groups, saving and loading a library
// of 100,000 markers in both file forms, and appending a stream of 20,000
// groups beside loading it.
//
// The log keeps every record the operations write (one "EDd003" for each
// group searched without the ID), as it does in use.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "LqStream.h"
#include "LqToolkit.h"
#include "MarkerSymbolLib.h"
#include "VtSymbolGroup.h"

namespace {

using LqExample::MarkerShape;
using LqExample::MarkerSymbol;
using LqExample::MarkerSymbolLib;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

// The root, 9 children and 10 grandchildren under each: 100 groups.
std::vector<VtSymbolGroup*> MakeTree(VTC::VtSymbolLib& lib)
{
    std::vector<VtSymbolGroup*> groups{lib.GetRootGroup()};
    for (int i = 0; i < 9; ++i) {
        VtSymbolGroup* child = lib.GetRootGroup()->CreateChildGroup(ZedaUnicodeString::FromUtf8("c" + std::to_string(i)));
        groups.push_back(child);
        for (int j = 0; j < 10; ++j)
            groups.push_back(child->CreateChildGroup(ZedaUnicodeString::FromUtf8("g" + std::to_string(j))));
    }
    return groups;
}

MarkerSymbol* NewMarker(int i)
{
    return new MarkerSymbol(-1, ZedaUnicodeString::FromUtf8("m" + std::to_string(i)),
                            static_cast<MarkerShape>(i % LqExample::markerShapeCount), 8 + i % 32,
                            ZEDARGB(i % 256, 40, 200), i % 360);
}

// n markers with IDs 1..n, symbol i filed in group i % 100.
struct FilledLibrary {
    explicit FilledLibrary(int n) : groups(MakeTree(lib))
    {
        for (int i = 0; i < n; ++i)
            lib.AddSymbol(NewMarker(i), groups[static_cast<std::size_t>(i) % groups.size()]);
    }
    MarkerSymbolLib lib;
    std::vector<VtSymbolGroup*> groups;
};

// Every tenth symbol, spread over the whole library.
std::vector<int> TenthOfTheIds(int n)
{
    std::vector<int> ids;
    for (int id = 1; id <= n; id += 10)
        ids.push_back(id);
    return ids;
}

void SetCounters(benchmark::State& state, int operations)
{
    state.counters["ops"] = operations;
    state.counters["per_op"] = benchmark::Counter(operations, benchmark::Counter::kIsIterationInvariantRate |
                                                                  benchmark::Counter::kInvert);
}

void BM_AddSymbols(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto lib = std::make_unique<MarkerSymbolLib>();
        const std::vector<VtSymbolGroup*> groups = MakeTree(*lib);
        std::vector<MarkerSymbol*> markers;
        for (int i = 0; i < n; ++i)
            markers.push_back(NewMarker(i));
        state.ResumeTiming();
        for (int i = 0; i < n; ++i)
            lib->AddSymbol(markers[static_cast<std::size_t>(i)], groups[static_cast<std::size_t>(i) % groups.size()]);
        state.PauseTiming();
        lib.reset();
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
        state.ResumeTiming();
    }
    SetCounters(state, n);
}

// Each symbol's position from its ID.
void BM_FindPositions(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    FilledLibrary filled(n);
    for (auto _ : state) {
        for (int id = 1; id <= n; ++id)
            benchmark::DoNotOptimize(filled.lib.FindID(id));
    }
    SetCounters(state, n);
}

// The symbol at each position (the ordered map of symbols by ID).
void BM_SymbolsByPosition(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    FilledLibrary filled(n);
    for (auto _ : state) {
        for (int position = 0; position < n; ++position)
            benchmark::DoNotOptimize(filled.lib.GetSymbolAt(position));
    }
    SetCounters(state, n);
}

// Times `operation` on every tenth symbol of a library of n, filled afresh for each run.
template <typename Operation>
void OnATenthOfTheSymbols(benchmark::State& state, Operation operation)
{
    const int n = static_cast<int>(state.range(0));
    const std::vector<int> ids = TenthOfTheIds(n);
    for (auto _ : state) {
        state.PauseTiming();
        auto filled = std::make_unique<FilledLibrary>(n);
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
        state.ResumeTiming();
        for (const int id : ids)
            operation(*filled, id);
        state.PauseTiming();
        filled.reset();
        state.ResumeTiming();
    }
    SetCounters(state, static_cast<int>(ids.size()));
}

// The group holding the symbol is found from the root, and the symbol moved to another group.
void BM_MoveSymbols(benchmark::State& state)
{
    OnATenthOfTheSymbols(state, [](FilledLibrary& filled, int id) {
        VtSymbolGroup* holder = filled.lib.GetRootGroup()->FindChildGroupWithID(id);
        holder->MoveItemTo(id, filled.groups[static_cast<std::size_t>(id * 7) % filled.groups.size()]);
    });
}

// The symbol removed through the root: from the tree and from the library.
void BM_RemoveSymbols(benchmark::State& state)
{
    OnATenthOfTheSymbols(state, [](FilledLibrary& filled, int id) { filled.lib.GetRootGroup()->RemoveSymbol(id); });
}

constexpr int fileMarkers = 100000;
constexpr unsigned int streamForm = 20200101;

std::string BenchFile(unsigned int form)
{
    return (std::filesystem::temp_directory_path() /
            (form == MarkerSymbolLib::containerVersion ? "lq-bench-markers.lqc" : "lq-bench-markers.lqs"))
        .string();
}

void BM_SaveMarkers(benchmark::State& state)
{
    const auto form = static_cast<unsigned int>(state.range(0));
    FilledLibrary filled(fileMarkers);
    const std::string path = BenchFile(form);
    for (auto _ : state) {
        if (filled.lib.SaveToFile(ZedaUnicodeString::FromUtf8(path), form) != 1)
            state.SkipWithError("save failed");
    }
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(path));
}

void BM_LoadMarkers(benchmark::State& state)
{
    const auto form = static_cast<unsigned int>(state.range(0));
    const std::string path = BenchFile(form);
    {
        FilledLibrary filled(fileMarkers);
        filled.lib.SaveToFile(ZedaUnicodeString::FromUtf8(path), form);
    }
    for (auto _ : state) {
        MarkerSymbolLib lib;
        if (lib.LoadFromFile(ZedaUnicodeString::FromUtf8(path)) != 1 || lib.GetSymbolCount() != fileMarkers)
            state.SkipWithError("load failed");
        state.PauseTiming();
        lib.RemoveAll();
        state.ResumeTiming();
    }
    std::filesystem::remove(path);
}

constexpr int streamGroups = 20000;
enum GroupShape { deepChains, flatSiblings };
enum AppendHost { emptyHost, sameLibraryHost };

// 20,000 groups, a marker in each: 20 chains 1,000 deep, or all under the root.
std::vector<unsigned char> GroupStream(GroupShape shape)
{
    MarkerSymbolLib lib;
    constexpr int depth = 1000;
    VtSymbolGroup* group = nullptr;
    for (int i = 0; i < streamGroups; ++i) {
        const ZedaUnicodeString name = ZedaUnicodeString::FromUtf8("g" + std::to_string(i));
        const bool chainStarts = shape == flatSiblings || i % depth == 0;
        group = (chainStarts ? lib.GetRootGroup() : group)->CreateChildGroup(name);
        lib.AddSymbol(NewMarker(i), group);
    }
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.SaveToStream(stream, streamForm, 1);
    return std::vector<unsigned char>(stream.GetData(), stream.GetData() + stream.GetLength());
}

// Appended into an empty library, or into one that holds the same groups and
// IDs already (every group matched by name, every symbol given a new ID).
void BM_AppendGroupStream(benchmark::State& state)
{
    const std::vector<unsigned char> bytes = GroupStream(static_cast<GroupShape>(state.range(0)));
    const auto host = static_cast<AppendHost>(state.range(1));
    for (auto _ : state) {
        state.PauseTiming();
        auto lib = std::make_unique<MarkerSymbolLib>();
        if (host == sameLibraryHost) {
            VTC::VtMemoryStream first;
            first.Open(bytes.data(), static_cast<long long>(bytes.size()));
            lib->LoadFromStream(first, 1);
        }
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
        VTC::VtMemoryStream stream;
        stream.Open(bytes.data(), static_cast<long long>(bytes.size()));
        state.ResumeTiming();
        if (lib->AppendFromStream(stream, 1) != 1 ||
            lib->GetSymbolCount() != (host == sameLibraryHost ? 2 : 1) * streamGroups)
            state.SkipWithError("append failed");
        state.PauseTiming();
        lib.reset();
        state.ResumeTiming();
    }
    state.counters["stream_bytes"] = static_cast<double>(bytes.size());
}

// The peer: the same stream loaded into an empty library.
void BM_LoadGroupStream(benchmark::State& state)
{
    const std::vector<unsigned char> bytes = GroupStream(static_cast<GroupShape>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto lib = std::make_unique<MarkerSymbolLib>();
        VTC::VtMemoryStream stream;
        stream.Open(bytes.data(), static_cast<long long>(bytes.size()));
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
        state.ResumeTiming();
        if (lib->LoadFromStream(stream, 1) != 1 || lib->GetSymbolCount() != streamGroups)
            state.SkipWithError("load failed");
        state.PauseTiming();
        lib.reset();
        state.ResumeTiming();
    }
    state.counters["stream_bytes"] = static_cast<double>(bytes.size());
}

void SymbolCounts(benchmark::internal::Benchmark* benchmark)
{
    for (const int n : {10000, 20000, 40000, 100000})
        benchmark->Arg(n);
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(BM_AddSymbols)->Apply(SymbolCounts);
BENCHMARK(BM_FindPositions)->Apply(SymbolCounts);
BENCHMARK(BM_SymbolsByPosition)->Apply(SymbolCounts);
BENCHMARK(BM_MoveSymbols)->Apply(SymbolCounts);
BENCHMARK(BM_RemoveSymbols)->Apply(SymbolCounts);
BENCHMARK(BM_SaveMarkers)->Arg(streamForm)->Arg(MarkerSymbolLib::containerVersion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadMarkers)->Arg(streamForm)->Arg(MarkerSymbolLib::containerVersion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AppendGroupStream)
    ->ArgsProduct({{deepChains, flatSiblings}, {emptyHost, sameLibraryHost}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_LoadGroupStream)->Arg(deepChains)->Arg(flatSiblings)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
