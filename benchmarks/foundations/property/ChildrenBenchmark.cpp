#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"

#include <benchmark/benchmark.h>

#include <QMap>
#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

// A folder beside the bare map that it can't be faster than, with the same names and the same kind of nodes. The
// nodes are made outside the measured time; destroying them is inside, for both.

namespace {

using Orrery::AbstractProperty;
using Orrery::PropertyObject;
using Orrery::SimpleProperty;
using BareMap = QMap<QString, AbstractProperty*>;

/// In the order of a host that doesn't sort its names, the same in each run.
const QStringList& names(std::int64_t count)
{
    static QStringList s_names;
    if (s_names.size() != count) {
        std::vector<QString> shuffled;
        for (std::int64_t i = 0; i < count; ++i)
            shuffled.push_back(QStringLiteral("signal%1").arg(i));
        std::mt19937_64 random(20);
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        s_names.clear();
        for (const QString& name : shuffled)
            s_names.append(name);
    }
    return s_names;
}

std::vector<AbstractProperty*> makeNodes(std::int64_t count)
{
    std::vector<AbstractProperty*> nodes;
    nodes.reserve(static_cast<std::size_t>(count));
    for (const QString& name : names(count))
        nodes.push_back(new SimpleProperty(name));
    return nodes;
}

void insertAll(PropertyObject& folder, const std::vector<AbstractProperty*>& nodes)
{
    for (AbstractProperty* node : nodes) {
        if (folder.InsertProperty(node) < 0)
            std::abort();
    }
}

void insertAll(BareMap& map, const std::vector<AbstractProperty*>& nodes)
{
    for (AbstractProperty* node : nodes)
        map.insert(node->GetName(), node);
}

void BM_FolderInsert(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<AbstractProperty*> nodes = makeNodes(state.range(0));
        auto* folder = new PropertyObject;
        state.ResumeTiming();
        insertAll(*folder, nodes);
        state.PauseTiming();
        delete folder;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_BareMapInsert(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<AbstractProperty*> nodes = makeNodes(state.range(0));
        auto* map = new BareMap;
        state.ResumeTiming();
        insertAll(*map, nodes);
        state.PauseTiming();
        qDeleteAll(*map);
        delete map;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_FolderFind(benchmark::State& state)
{
    PropertyObject folder;
    insertAll(folder, makeNodes(state.range(0)));
    for (auto _ : state) {
        for (const QString& name : names(state.range(0))) {
            AbstractProperty* found = folder.GetPropertyPtr(name);
            if (!found)
                std::abort();
            benchmark::DoNotOptimize(found);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_BareMapFind(benchmark::State& state)
{
    BareMap map;
    insertAll(map, makeNodes(state.range(0)));
    for (auto _ : state) {
        for (const QString& name : names(state.range(0))) {
            AbstractProperty* found = map.value(name, nullptr);
            if (!found)
                std::abort();
            benchmark::DoNotOptimize(found);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    qDeleteAll(map);
}

void BM_FolderDeleteEach(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        PropertyObject folder;
        insertAll(folder, makeNodes(state.range(0)));
        state.ResumeTiming();
        for (const QString& name : names(state.range(0))) {
            if (folder.DeleteProperty(name) < 0)
                std::abort();
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_BareMapDeleteEach(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        BareMap map;
        insertAll(map, makeNodes(state.range(0)));
        state.ResumeTiming();
        for (const QString& name : names(state.range(0)))
            delete map.take(name);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

double threadSeconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void insertFindDelete(PropertyObject& folder, const std::vector<AbstractProperty*>& nodes,
                      const QStringList& keys)
{
    insertAll(folder, nodes);
    for (const QString& name : keys)
        benchmark::DoNotOptimize(folder.GetPropertyPtr(name));
    for (const QString& name : keys)
        folder.DeleteProperty(name);
}

void insertFindDelete(BareMap& map, const std::vector<AbstractProperty*>& nodes, const QStringList& keys)
{
    insertAll(map, nodes);
    for (const QString& name : keys)
        benchmark::DoNotOptimize(map.value(name, nullptr));
    for (const QString& name : keys)
        delete map.take(name);
}

template <class Container>
double secondsFor(std::int64_t count)
{
    const std::vector<AbstractProperty*> nodes = makeNodes(count);
    Container container;
    const double start = threadSeconds();
    insertFindDelete(container, nodes, names(count));
    return threadSeconds() - start;
}

/// Both in turn within each iteration and by the time of this thread alone, so that a busy machine slows both.
void BM_InsertFindDeleteRatio(benchmark::State& state)
{
    double ofFolder = 0.0;
    double ofMap = 0.0;
    for (auto _ : state) {
        const double folder = secondsFor<PropertyObject>(state.range(0));
        ofFolder += folder;
        ofMap += secondsFor<BareMap>(state.range(0));
        state.SetIterationTime(folder);
    }
    state.counters["folder_to_map"] = ofFolder / ofMap;
}

BENCHMARK(BM_InsertFindDeleteRatio)
    ->Arg(100000)
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FolderInsert)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareMapInsert)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FolderFind)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareMapFind)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FolderDeleteEach)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareMapDeleteEach)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
