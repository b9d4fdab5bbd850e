// One large array: a save beside a plain write and sync of the same bytes, open and first read beside a plain read.
//
// Compare the rows of one size. The files are in the page cache when they are read.
#include "benchmarks/foundations/storage/BenchmarkFiles.h"
#include "benchmarks/foundations/storage/ProcessMemory.h"
#include "foundations/property/SimpleProperty.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <vector>

namespace {

using namespace Orrery;
using namespace Orrery::StorageBenchmark;
using Brindle::Quay::BVariant;

constexpr std::int64_t s_megabyte = 1024 * 1024;

std::vector<double> Numbers(std::int64_t megabytes)
{
    std::vector<double> numbers(static_cast<std::size_t>(megabytes * s_megabyte) / sizeof(double));
    std::iota(numbers.begin(), numbers.end(), 0.5);
    return numbers;
}

void Report(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0) * s_megabyte);
}

void SaveArray(benchmark::State& state)
{
    const Folder folder;
    const auto file = Open(folder.Path(QStringLiteral("array.h5")), DataFile::Create);
    AddValue(*file->GetRoot(), QStringLiteral("Data"), BVariant(Numbers(state.range(0))));
    Save(*file); // a file is there from now on, as for the peer
    for (auto _ : state)
        Save(*file);
    Report(state);
}

void PlainWriteAndSync(benchmark::State& state)
{
    const Folder folder;
    const std::vector<double> numbers = Numbers(state.range(0));
    const auto save = [&] {
        PlainSave(folder.Path(QStringLiteral("new")), folder.Path(QStringLiteral("array")), numbers.data(),
                  numbers.size() * sizeof(double));
    };
    save();
    for (auto _ : state)
        save();
    Report(state);
}

void ReadArray(benchmark::State& state)
{
    const Folder folder;
    const QString path = folder.Path(QStringLiteral("array.h5"));
    {
        const auto file = Open(path, DataFile::Create);
        AddValue(*file->GetRoot(), QStringLiteral("Data"), BVariant(Numbers(state.range(0))));
        Save(*file);
    }
    ForgetPeak();
    const std::uint64_t before = ResidentBytes();
    for (auto _ : state) {
        const auto file = Open(path, DataFile::ReadOnly);
        const auto* const data =
            static_cast<const SimpleProperty*>(file->GetRoot()->GetPropertyConstPtr("Data"));
        benchmark::DoNotOptimize(data->GetValueRef().constData());
    }
    const auto bytes = static_cast<double>(state.range(0) * s_megabyte);
    state.counters["peak_ratio"] = static_cast<double>(PeakBytes() - before) / bytes;
    Report(state);
}

void PlainRead(benchmark::State& state)
{
    const Folder folder;
    const QString path = folder.Path(QStringLiteral("array"));
    const auto bytes = static_cast<std::size_t>(state.range(0) * s_megabyte);
    PlainSave(folder.Path(QStringLiteral("new")), path, Numbers(state.range(0)).data(), bytes);
    for (auto _ : state)
        PlainLoad(path, bytes);
    Report(state);
}

// What waits for the disk doesn't count as processor time.
void InMegabytes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("MB")->Arg(8)->Arg(256)->UseRealTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(SaveArray)->Apply(InMegabytes);
BENCHMARK(PlainWriteAndSync)->Apply(InMegabytes);
BENCHMARK(ReadArray)->Apply(InMegabytes)->Arg(800);
BENCHMARK(PlainRead)->Apply(InMegabytes)->Arg(800);

} // namespace
