// Ranges, concatenations and sweeps, each beside what they are measured against, in one run.
//
//     GetData of a range of 1e7                    at most 1.1 times a bare loop into fresh memory
//     concatenation, members x length
//         100 x 10,000; 1,000 x 1,000              at most 1.5; 2 times a memcpy of the bytes into fresh memory
//         10,000 x 100; 100,000 x 10               at most 1.5 times NumPy's concatenate
//     GetData of a sweep
//         100 x 10,000; 1,000 x 1,000              at most half of NumPy's repeat
//         10,000 x 100; 100,000 x 10               at most GetData of its concatenation
//
// NumPy is measured by JoinsPeers.py beside this file, which prints the ratios too:
//
//     joins_benchmarks --benchmark_out=joins.json --benchmark_out_format=json
//     /usr/bin/python3 JoinsPeers.py joins.json
#include "foundations/variant/Variant.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"
#include "variables/SweptVariable.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace {
using namespace Orrery;

// Shared pointers and the C library take short cuts until a process has started its first thread; a host has.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

using Block = std::unique_ptr<void, decltype(&std::free)>;

Block freshMemory(std::size_t bytes)
{
    return Block(std::malloc(bytes), &std::free);
}

std::vector<double> countingUp(std::uint64_t first, std::uint64_t count)
{
    std::vector<double> values(count);
    for (std::uint64_t i = 0; i < count; ++i)
        values[i] = static_cast<double>(first + i);
    return values;
}

double elementOf(const BVariant& data, std::uint64_t position)
{
    return static_cast<const double*>(data.constData())[position];
}

/// A folder of members of one length, their concatenation, and a sweep over it.
class Joined
{
public:
    Joined(std::uint64_t members, std::uint64_t length)
        : m_count(members * length)
        , m_concatenation(insert<ConcatVar>("whole"))
        , m_sweep(insert<SweptVariable>("sweep"))
    {
        for (std::uint64_t i = 0; i < members; ++i) {
            auto* const member = insert<ExplicitDataVar>(QStringLiteral("run%1").arg(i));
            member->UpdateData(BVariant(countingUp(i * length, length)));
            m_concatenation->AddVariable(member);
        }
        auto* const parameter = insert<ExplicitDataVar>("parameter");
        parameter->UpdateData(BVariant(countingUp(0, members)));
        m_sweep->SetParameter(parameter);
        m_sweep->SetConcatVar(m_concatenation);
    }

    std::uint64_t count() const { return m_count; }
    const ConcatVar& concatenation() const { return *m_concatenation; }
    const SweptVariable& sweep() const { return *m_sweep; }

private:
    template <class T>
    T* insert(const QString& name)
    {
        auto made = std::make_unique<T>(name);
        m_folder.InsertProperty(made.get());
        return made.release();
    }

    PropertyObject m_folder;
    std::uint64_t m_count;
    ConcatVar* m_concatenation;
    SweptVariable* m_sweep;
};

std::uint64_t argument(const benchmark::State& state, std::size_t position)
{
    return static_cast<std::uint64_t>(state.range(position));
}

void setBytes(benchmark::State& state, std::uint64_t doubles)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(doubles * sizeof(double)));
}

void shapes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({100, 10'000})->Args({1'000, 1'000})->Args({10'000, 100})->Args({100'000, 10});
    benchmark->ArgNames({"members", "length"})->Unit(benchmark::kMicrosecond);
}

void BM_BareLoopIntoFreshMemory(benchmark::State& state)
{
    const std::uint64_t count = argument(state, 0);
    double step = 0.25;
    double start = -3.0;
    benchmark::DoNotOptimize(step);
    benchmark::DoNotOptimize(start);
    for (auto _ : state) {
        const Block fresh = freshMemory(count * sizeof(double));
        auto* const values = static_cast<double*>(fresh.get());
        for (std::uint64_t i = 0; i < count; ++i)
            values[i] = static_cast<double>(i) * step + start;
        benchmark::DoNotOptimize(values);
        benchmark::ClobberMemory();
    }
    setBytes(state, count);
}
BENCHMARK(BM_BareLoopIntoFreshMemory)->Arg(1'000)->Arg(10'000'000);

void BM_RangeGetData(benchmark::State& state)
{
    const std::uint64_t count = argument(state, 0);
    RangeVar range(QStringLiteral("axis"));
    range.SetStart(-3.0);
    range.SetStep(0.25);
    range.SetCount(count);
    for (auto _ : state) {
        const BVariant data = range.GetData();
        if (data.elementCount() != count ||
            elementOf(data, count - 1) != static_cast<double>(count - 1) * 0.25 - 3.0)
            state.SkipWithError("the range isn't read");
        benchmark::ClobberMemory();
    }
    setBytes(state, count);
}
BENCHMARK(BM_RangeGetData)->Arg(1'000)->Arg(10'000'000);

void BM_MemcpyIntoFreshMemory(benchmark::State& state)
{
    const std::uint64_t count = argument(state, 0) * argument(state, 1);
    const std::vector<double> source = countingUp(0, count);
    for (auto _ : state) {
        const Block fresh = freshMemory(count * sizeof(double));
        std::memcpy(fresh.get(), source.data(), count * sizeof(double));
        benchmark::DoNotOptimize(fresh.get());
        benchmark::ClobberMemory();
    }
    setBytes(state, count);
}
BENCHMARK(BM_MemcpyIntoFreshMemory)->Apply(shapes);

void BM_ConcatGetData(benchmark::State& state)
{
    const Joined joined(argument(state, 0), argument(state, 1));
    for (auto _ : state) {
        const BVariant data = joined.concatenation().GetData();
        if (data.elementCount() != joined.count() ||
            elementOf(data, joined.count() - 1) != static_cast<double>(joined.count() - 1))
            state.SkipWithError("the concatenation isn't read");
        benchmark::ClobberMemory();
    }
    setBytes(state, joined.count());
}
BENCHMARK(BM_ConcatGetData)->Apply(shapes);

void BM_ConcatGetValueRange(benchmark::State& state)
{
    const Joined joined(argument(state, 0), argument(state, 1));
    for (auto _ : state) {
        BVariant data;
        joined.concatenation().GetValueRange(&data, 1, joined.count());
        if (data.elementCount() != joined.count() - 1 || elementOf(data, 0) != 1.0)
            state.SkipWithError("the run isn't read");
        benchmark::ClobberMemory();
    }
    setBytes(state, joined.count() - 1);
}
BENCHMARK(BM_ConcatGetValueRange)->Apply(shapes);

void BM_SweptGetData(benchmark::State& state)
{
    const Joined joined(argument(state, 0), argument(state, 1));
    for (auto _ : state) {
        const BVariant data = joined.sweep().GetData();
        if (data.elementCount() != joined.count() ||
            elementOf(data, joined.count() - 1) != static_cast<double>(argument(state, 0) - 1))
            state.SkipWithError("the sweep isn't read");
        benchmark::ClobberMemory();
    }
    setBytes(state, joined.count());
}
BENCHMARK(BM_SweptGetData)->Apply(shapes);

// All of them each time: the time of one must not grow with the number that are there.
void BM_ConcatAddVariable(benchmark::State& state)
{
    PropertyObject folder;
    auto* const member = new ExplicitDataVar(QStringLiteral("run"));
    folder.InsertProperty(member);
    for (auto _ : state) {
        auto* const concatenation = new ConcatVar(QStringLiteral("whole"));
        folder.InsertProperty(concatenation);
        for (std::uint64_t i = 0; i < argument(state, 0); ++i)
            concatenation->AddVariable(member);
        state.PauseTiming();
        folder.DeleteProperty(QStringLiteral("whole"));
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ConcatAddVariable)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

} // namespace
