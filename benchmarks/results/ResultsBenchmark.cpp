// What a sweep and a comparison cost, each beside what it is measured against, in one run.
//
//     first request for a joined variable, members with one independent each
//         per member (perMember)               under 5 microseconds
//         beside a tenth of the members (x)    linear: about 1
//     a later request                          one look-up among the children, whatever is joined
//     comparison of two trees of 1e5 nodes     "Walk" over both beside it: the ratio (x)
//
// "perMember" is the time for each member, and "x" the ratio of two times of this run: for FirstRequest that of a
// member here to that of a member among a tenth of them, for Comparison to the walk.
#include "foundations/property/SimpleProperty.h"
#include "results/ParameterizedResultData.h"
#include "results/PropertyObjectComparator.h"
#include "variables/ExplicitDataVar.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <limits>
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

const QString I = QStringLiteral("I");
const QString V = QStringLiteral("V");
const QString T = QStringLiteral("T");

template <class T>
T* insert(PropertyObject& folder, std::unique_ptr<T> node)
{
    return folder.InsertProperty(node.get()) < 0 ? nullptr : node.release();
}

Variable* addData(PropertyObject& folder, const QString& name, std::vector<double> values)
{
    auto variable = std::make_unique<ExplicitDataVar>(name);
    variable->UpdateData(BVariant(std::move(values)));
    return insert(folder, std::move(variable));
}

/// A sweep over runs of which each has one variable against one axis.
class Sweep
{
public:
    explicit Sweep(int members)
        : m_sweep(insert(m_top, std::make_unique<ParameterizedResultData>(QStringLiteral("sweep"))))
        , m_members(members)
    {
        PropertyObject* const runs = insert(m_top, std::make_unique<PropertyObject>(QStringLiteral("runs")));
        for (int i = 0; i < members; ++i) {
            auto* const run = insert(*runs, std::make_unique<ResultData>(QStringLiteral("run%1").arg(i)));
            addData(*run, I, {1.0 * i})->AddIndepVariableRef(addData(*run, V, {2.0 * i}));
            m_sweep->AddResultDataRef(run);
        }
        m_sweep->SetParameterRef(
            addData(m_top, T, std::vector<double>(static_cast<std::size_t>(members), 1.0)));
    }

    Variable* request() { return m_sweep->FindOrCreateResultVar(I); }

    /// As before the first request.
    void forget()
    {
        m_sweep->DeleteProperty(I);
        m_sweep->DeleteProperty(I + QStringLiteral("_Indeps"));
    }

    bool isJoined() const
    {
        const auto* joined = m_sweep->GetPtr<Variable>(I);
        return joined && joined->GetIndepCount() == 2 &&
               joined->GetMaxIndepOffset() == static_cast<std::uint64_t>(m_members);
    }

private:
    PropertyObject m_top;
    ParameterizedResultData* m_sweep;
    int m_members;
};

/// The processor's time, so that what else runs on the machine counts as little as can be.
template <class Operation>
double secondsOf(Operation operation)
{
    std::timespec start{};
    std::timespec end{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
    operation();
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    return static_cast<double>(end.tv_sec - start.tv_sec) +
           1e-9 * static_cast<double>(end.tv_nsec - start.tv_nsec);
}

double secondsOfOneRequest(Sweep& sweep)
{
    return secondsOf([&] { benchmark::DoNotOptimize(sweep.request()); });
}

/// The best of several times, as the machines are noisy. What is set against each other is timed in turn.
class BestOf
{
public:
    void add(double seconds) { m_best = std::min(m_best, seconds); }
    double seconds() const { return m_best; }

private:
    double m_best = std::numeric_limits<double>::infinity();
};

void BM_FirstRequest(benchmark::State& state)
{
    const int members = static_cast<int>(state.range(0));
    const int fewer = members / 10;
    Sweep sweep(members);
    Sweep tenth(fewer);
    BestOf whole;
    BestOf part;
    for (auto _ : state) {
        const double seconds = secondsOfOneRequest(sweep);
        whole.add(seconds);
        state.SetIterationTime(seconds);
        if (!sweep.isJoined())
            state.SkipWithError("not joined");
        sweep.forget();
        for (int i = 0; i < 10; ++i) { // as many members
            part.add(secondsOfOneRequest(tenth));
            tenth.forget();
        }
    }
    state.counters["perMember"] = whole.seconds() / members;
    state.counters["x"] = whole.seconds() / members / (part.seconds() / fewer);
}
BENCHMARK(BM_FirstRequest)->Arg(10)->Arg(1000)->UseManualTime();
BENCHMARK(BM_FirstRequest)->Arg(100000)->UseManualTime()->Iterations(5);

void BM_LaterRequest(benchmark::State& state)
{
    Sweep sweep(static_cast<int>(state.range(0)));
    sweep.request();
    for (auto _ : state)
        benchmark::DoNotOptimize(sweep.request());
    if (!sweep.isJoined())
        state.SkipWithError("not joined");
}
BENCHMARK(BM_LaterRequest)->Arg(10)->Arg(1000)->Arg(100000);

/// A tree of 100,101 nodes: folders of ten folders, each of which holds values.
std::unique_ptr<PropertyObject> makeTree()
{
    auto top = std::make_unique<PropertyObject>(QStringLiteral("top"));
    for (int i = 0; i < 100; ++i) {
        auto* const folder =
            insert(*top, std::make_unique<PropertyObject>(QStringLiteral("folder%1").arg(i)));
        for (int j = 0; j < 10; ++j) {
            auto* const inner =
                insert(*folder, std::make_unique<PropertyObject>(QStringLiteral("inner%1").arg(j)));
            for (int k = 0; k < 99; ++k)
                inner->SetProperty(QStringLiteral("value%1").arg(k), BVariant(1.0 * k));
        }
    }
    return top;
}

/// Visit every node by the lists of its folder's children, and do nothing there.
std::size_t walk(const PropertyObject& folder)
{
    std::size_t nodes = 1;
    const QList<AbstractProperty*> children = folder.GetPropertyListSorted();
    for (const AbstractProperty* child : children)
        nodes += child->IsPropertyObject() ? walk(static_cast<const PropertyObject&>(*child)) : 1;
    return nodes;
}

void BM_Comparison(benchmark::State& state)
{
    const auto first = makeTree();
    const auto second = makeTree();
    BestOf comparison;
    BestOf bare;
    for (auto _ : state) {
        bool same = false;
        const double seconds = secondsOf([&] { same = *first == *second; });
        if (!same)
            state.SkipWithError("not the same");
        comparison.add(seconds);
        state.SetIterationTime(seconds);

        std::size_t nodes = 0;
        bare.add(secondsOf([&] { nodes = walk(*first) + walk(*second); }));
        if (nodes != 2 * 100101)
            state.SkipWithError("other trees");
    }
    state.counters["walk"] = bare.seconds();
    state.counters["x"] = comparison.seconds() / bare.seconds();
}
BENCHMARK(BM_Comparison)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace
