#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

// Members "0", "1", ... are added each under the next number and listed in the order of their numbers. The time
// must be linear in their count: the complexity is printed.

namespace {

using Orrery::AbstractProperty;
using Orrery::PropertyObject;
using Orrery::SimpleProperty;

void addMember(PropertyObject& folder)
{
    QString name;
    if (folder.nextNumberedChildName(&name) < 0 || folder.InsertProperty(new SimpleProperty(name)) < 0)
        std::abort();
}

void BM_NumberedMembersAdd(benchmark::State& state)
{
    for (auto _ : state) {
        auto* folder = new PropertyObject;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            addMember(*folder);
        state.PauseTiming();
        delete folder;
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_NumberedMembersList(benchmark::State& state)
{
    PropertyObject folder;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        addMember(folder);
    QList<AbstractProperty*> list;
    for (auto _ : state) {
        folder.GetPrefixedChildrenProperties(&list, QString());
        if (list.size() != state.range(0))
            std::abort();
        benchmark::DoNotOptimize(list.first());
    }
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Ten times the members: 1 is linear. By the time of this thread alone.
void BM_NumberedMembersLinearity(benchmark::State& state)
{
    const auto secondsToAdd = [](std::int64_t count) {
        PropertyObject folder;
        const auto now = [] {
            timespec time;
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
            return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
        };
        const double start = now();
        for (std::int64_t i = 0; i < count; ++i)
            addMember(folder);
        return now() - start;
    };
    double few = 0.0;
    double many = 0.0;
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i)
            few += secondsToAdd(state.range(0) / 10);
        const double seconds = secondsToAdd(state.range(0));
        many += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["to_linear"] = many / few;
}

/// The cost of one more member in a folder that has many already.
void BM_NumberedMembersNextName(benchmark::State& state)
{
    PropertyObject folder;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        addMember(folder);
    for (auto _ : state) {
        QString name;
        folder.nextNumberedChildName(&name);
        benchmark::DoNotOptimize(name);
    }
}

BENCHMARK(BM_NumberedMembersAdd)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_NumberedMembersLinearity)
    ->Arg(100000)
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NumberedMembersList)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_NumberedMembersNextName)->Arg(10000)->Arg(100000);

} // namespace
