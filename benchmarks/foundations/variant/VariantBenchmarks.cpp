// What the variant library costs, each beside a peer in the same run: compare the rows of one group.
#include "foundations/variant/Variant.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

// The standard library's shared_ptr counts without locked operations until a process starts a thread; a host has
// long started one.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

BVariant counting(std::uint64_t count)
{
    std::vector<double> elements(count);
    std::iota(elements.begin(), elements.end(), 0.0);
    return BVariant(std::move(elements));
}

struct Freed
{
    void operator()(void* block) const { std::free(block); }
};

// Memory that the process hasn't touched, or that the allocator hands out again: what a new array gets, too.
std::unique_ptr<double[], Freed> freshMemory(std::uint64_t count)
{
    return std::unique_ptr<double[], Freed>(static_cast<double*>(std::malloc(count * sizeof(double))));
}

template <class Value>
void copyAndDrop(benchmark::State& state, const Value& value)
{
    for (auto _ : state) {
        Value copy(value);
        benchmark::DoNotOptimize(copy);
    }
}

// Copies: variants of each kind of content beside a shared pointer.

void CopySharedPtr(benchmark::State& state)
{
    copyAndDrop(state, std::make_shared<std::vector<double>>(1000));
}
BENCHMARK(CopySharedPtr);

void CopyArrayVariant(benchmark::State& state)
{
    copyAndDrop(state, counting(1000));
}
BENCHMARK(CopyArrayVariant);

void CopyNullVariant(benchmark::State& state)
{
    copyAndDrop(state, BVariant());
}
BENCHMARK(CopyNullVariant);

void CopyScalarVariant(benchmark::State& state)
{
    copyAndDrop(state, BVariant(2.5));
}
BENCHMARK(CopyScalarVariant);

void CopyString(benchmark::State& state)
{
    copyAndDrop(state, std::string("short text"));
}
BENCHMARK(CopyString);

void CopyTextVariant(benchmark::State& state)
{
    copyAndDrop(state, BVariant("short text"));
}
BENCHMARK(CopyTextVariant);

// Assignment, as when a reader stores what it got: one owner less, one more.

template <class Value>
void assignInTurn(benchmark::State& state, const Value& a, const Value& b)
{
    Value target(a);
    for (auto _ : state) {
        target = b;
        benchmark::DoNotOptimize(target);
        target = a;
        benchmark::DoNotOptimize(target);
    }
    state.SetItemsProcessed(2 * static_cast<std::int64_t>(state.iterations()));
}

void AssignSharedPtr(benchmark::State& state)
{
    assignInTurn(state, std::make_shared<std::vector<double>>(1000),
                 std::make_shared<std::vector<double>>(1000));
}
BENCHMARK(AssignSharedPtr);

void AssignArrayVariant(benchmark::State& state)
{
    assignInTurn(state, counting(1000), counting(1000));
}
BENCHMARK(AssignArrayVariant);

// One element: the shared pointer's copy stands for "a few dozen instructions" here too.

void ElementAtOfVector(benchmark::State& state)
{
    const BVariant vector = counting(1000);
    std::uint64_t index = 0;
    for (auto _ : state) {
        BVariant element = elementAt(vector, {index});
        benchmark::DoNotOptimize(element);
        index = (index + 7) % 1000;
    }
}
BENCHMARK(ElementAtOfVector);

void ElementAtOfMatrix(benchmark::State& state)
{
    const BVariant matrix = BVariant(std::vector<double>(1000), {10, 100});
    std::uint64_t index = 0;
    for (auto _ : state) {
        BVariant element = elementAt(matrix, {index % 10, index});
        benchmark::DoNotOptimize(element);
        index = (index + 7) % 100;
    }
}
BENCHMARK(ElementAtOfMatrix);

void GetScalarOfDouble(benchmark::State& state)
{
    const BVariant number(2.5);
    for (auto _ : state) {
        double value = Brindle::Quay::getScalar<double>(number);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(GetScalarOfDouble);

void SetElementOfVector(benchmark::State& state)
{
    BVariant vector = counting(1000);
    const BVariant value(2.5);
    std::uint64_t index = 0;
    for (auto _ : state) {
        Brindle::Quay::setElement<double>(vector, {index}, value);
        index = (index + 7) % 1000;
    }
    benchmark::DoNotOptimize(vector);
}
BENCHMARK(SetElementOfVector);

// A run of doubles out of a larger array, beside memcpy into memory as fresh.

void setBytes(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0) *
                            static_cast<std::int64_t>(sizeof(double)));
}

void RunByMemcpy(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant source = counting(count + 2);
    const auto* data = static_cast<const double*>(source.constData());
    for (auto _ : state) {
        const auto target = freshMemory(count);
        std::memcpy(target.get(), data + 1, count * sizeof(double));
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(RunByMemcpy)->Arg(1000)->Arg(10'000'000);

void RunBySlice(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant source = counting(count + 2);
    const Brindle::Quay::ArraySlice run{Brindle::Quay::IndexSet(Brindle::Quay::IndexRange(1, count))};
    for (auto _ : state) {
        BVariant part = slice(source, run);
        benchmark::DoNotOptimize(part.constData());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(RunBySlice)->Arg(1000)->Arg(10'000'000);

void RunBySliceRange(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant source = counting(count + 2);
    for (auto _ : state) {
        BVariant part = sliceRange(source, 1, count);
        benchmark::DoNotOptimize(part.constData());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(RunBySliceRange)->Arg(1000)->Arg(10'000'000);

// Every other element, beside the bare loop.

void StridedByLoop(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant source = counting(2 * count);
    const auto* data = static_cast<const double*>(source.constData());
    for (auto _ : state) {
        const auto target = freshMemory(count);
        for (std::uint64_t i = 0; i < count; ++i)
            target[i] = data[2 * i];
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(StridedByLoop)->Arg(1000)->Arg(1'000'000);

void StridedBySlice(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant source = counting(2 * count);
    const Brindle::Quay::ArraySlice part{
        Brindle::Quay::IndexSet(Brindle::Quay::IndexRange(0, 2 * count - 1, 2))};
    for (auto _ : state) {
        BVariant result = slice(source, part);
        benchmark::DoNotOptimize(result.constData());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(StridedBySlice)->Arg(1000)->Arg(1'000'000);

// Two halves joined, beside memcpy of both into memory as fresh.

void JoinByMemcpy(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0)) / 2;
    const BVariant first = counting(count), second = counting(count);
    for (auto _ : state) {
        const auto target = freshMemory(2 * count);
        std::memcpy(target.get(), first.constData(), count * sizeof(double));
        std::memcpy(target.get() + count, second.constData(), count * sizeof(double));
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(JoinByMemcpy)->Arg(1000)->Arg(10'000'000);

void JoinByAppendValues(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0)) / 2;
    const BVariant first = counting(count), second = counting(count);
    for (auto _ : state) {
        BVariant joined = appendValues(first, second);
        benchmark::DoNotOptimize(joined.constData());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(JoinByAppendValues)->Arg(1000)->Arg(10'000'000);

// int to double, beside the bare loop.

void WidenByLoop(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const std::vector<int> source(count, 3);
    for (auto _ : state) {
        const auto target = freshMemory(count);
        std::copy(source.begin(), source.end(), target.get());
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(WidenByLoop)->Arg(1000)->Arg(10'000'000);

void WidenByConversion(benchmark::State& state)
{
    const BVariant source(std::vector<int>(static_cast<std::size_t>(state.range(0)), 3));
    for (auto _ : state) {
        BVariant converted = convertedTo(source, WellKnownType::of<double>());
        benchmark::DoNotOptimize(converted.constData());
        benchmark::ClobberMemory();
    }
    setBytes(state);
}
BENCHMARK(WidenByConversion)->Arg(1000)->Arg(10'000'000);

// Equality of equal arrays, beside a bare comparison by value.

void EqualByLoop(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant a = counting(count), b = counting(count);
    const auto* first = static_cast<const double*>(a.constData());
    const auto* second = static_cast<const double*>(b.constData());
    for (auto _ : state) {
        bool equal = std::equal(first, first + count, second);
        benchmark::DoNotOptimize(equal);
    }
    setBytes(state);
}
BENCHMARK(EqualByLoop)->Arg(1000)->Arg(1'000'000);

void EqualByVariant(benchmark::State& state)
{
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const BVariant a = counting(count), b = counting(count);
    for (auto _ : state) {
        bool equal = exactlyEqual(a, b);
        benchmark::DoNotOptimize(equal);
    }
    setBytes(state);
}
BENCHMARK(EqualByVariant)->Arg(1000)->Arg(1'000'000);
} // namespace
