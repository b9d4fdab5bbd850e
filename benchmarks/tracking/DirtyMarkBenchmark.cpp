// What a dirty mark costs per edge, beside two peers that mark the same graph: a bare walk over the edges in
// one flat vector, and plain recursion over the same sets of weak pointers.

#include "tracking/DirtyTracker.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Edge = std::pair<std::size_t, std::size_t>; // source, observer

/// The edges of a graph whose node 0 reaches all others.
struct Shape
{
    std::size_t nodeCount = 0;
    std::vector<Edge> edges;
};

Shape chain(std::size_t edgeCount)
{
    Shape shape{edgeCount + 1, {}};
    for (std::size_t i = 0; i < edgeCount; ++i)
        shape.edges.emplace_back(i, i + 1);
    return shape;
}

Shape fan(std::size_t edgeCount)
{
    Shape shape{edgeCount + 1, {}};
    for (std::size_t i = 0; i < edgeCount; ++i)
        shape.edges.emplace_back(0, i + 1);
    return shape;
}

Shape lattice(std::size_t side)
{
    Shape shape{side * side, {}};
    for (std::size_t row = 0; row < side; ++row) {
        for (std::size_t column = 0; column < side; ++column) {
            const std::size_t node = row * side + column;
            if (column + 1 < side)
                shape.edges.emplace_back(node, node + 1);
            if (row + 1 < side)
                shape.edges.emplace_back(node, node + side);
        }
    }
    return shape;
}

struct Owner;
using Tracker = Orrery::DirtyTracker<Owner, Owner*>;

struct Owner
{
    static void clean(Tracker& tracker) { tracker.setClean(); }
};

/// The graph as the library keeps it.
class TrackerGraph
{
public:
    explicit TrackerGraph(const Shape& shape)
    {
        m_nodes.reserve(shape.nodeCount);
        for (std::size_t i = 0; i < shape.nodeCount; ++i)
            m_nodes.push_back(std::make_shared<Tracker>(nullptr));
        for (const auto& [source, observer] : shape.edges)
            Orrery::AbstractDirtyTracker::bind(m_nodes[source], m_nodes[observer]);
    }

    void mark() { m_nodes.front()->markDirty(); }
    bool isMarked() const { return m_nodes.back()->isDirty(); }
    void clean()
    {
        for (const auto& node : m_nodes)
            Owner::clean(*node);
    }

private:
    std::vector<std::shared_ptr<Tracker>> m_nodes;
};

/// The same sets, marked by recursion.
class RecursiveGraph
{
public:
    explicit RecursiveGraph(const Shape& shape)
    {
        m_nodes.reserve(shape.nodeCount);
        for (std::size_t i = 0; i < shape.nodeCount; ++i)
            m_nodes.push_back(std::make_shared<Node>());
        for (const auto& [source, observer] : shape.edges) {
            m_nodes[source]->observers.insert(m_nodes[observer]);
            m_nodes[observer]->sources.insert(m_nodes[source]);
        }
    }

    void mark() { m_nodes.front()->mark(); }
    bool isMarked() const { return m_nodes.back()->state == -1; }
    void clean()
    {
        for (const auto& node : m_nodes)
            node->state = 0;
    }

private:
    struct Node
    {
        using Set = std::set<std::weak_ptr<Node>, std::owner_less<std::weak_ptr<Node>>>;

        virtual ~Node() = default;

        void mark()
        {
            state = -1;
            for (const auto& entry : observers) {
                const auto observer = entry.lock();
                if (observer && observer->state != -1)
                    observer->mark();
            }
        }

        Set observers;
        Set sources;
        std::atomic<std::int32_t> state{0};
        std::atomic<std::int32_t> updateCount{0};
        void* owner = nullptr;
    };

    std::vector<std::shared_ptr<Node>> m_nodes;
};

/// The same edges in one flat vector, walked in the same order: those of node i begin at m_first[i].
class FlatGraph
{
public:
    explicit FlatGraph(const Shape& shape)
        : m_state(shape.nodeCount, 0)
        , m_first(shape.nodeCount + 1, 0)
    {
        for (const auto& edge : shape.edges)
            ++m_first[edge.first + 1];
        for (std::size_t i = 0; i < shape.nodeCount; ++i)
            m_first[i + 1] += m_first[i];
        auto next = m_first;
        m_observers.resize(shape.edges.size());
        for (const auto& [source, observer] : shape.edges)
            m_observers[next[source]++] = static_cast<std::uint32_t>(observer);
    }

    void mark()
    {
        m_state.front() = -1;
        std::uint32_t next = m_first[0];
        std::uint32_t end = m_first[1];
        for (;;) {
            if (next == end) {
                if (m_unfinished.empty())
                    return;
                std::tie(next, end) = m_unfinished.back();
                m_unfinished.pop_back();
                continue;
            }
            const std::uint32_t observer = m_observers[next++];
            if (m_state[observer] == -1)
                continue;
            m_state[observer] = -1;
            if (next != end)
                m_unfinished.emplace_back(next, end);
            next = m_first[observer];
            end = m_first[observer + 1];
        }
    }

    bool isMarked() const { return m_state.back() == -1; }
    void clean() { m_state.assign(m_state.size(), 0); }

private:
    std::vector<std::int32_t> m_state;
    std::vector<std::uint32_t> m_first;
    std::vector<std::uint32_t> m_observers;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_unfinished;
};

/// Times mark() alone: cleaning the graph between two marks stays outside.
template <class Graph>
void markFromClean(benchmark::State& state, const Shape& shape)
{
    Graph graph(shape);
    for (auto _ : state) {
        graph.clean();
        const auto start = std::chrono::steady_clock::now();
        graph.mark();
        const auto stop = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
        if (!graph.isMarked())
            state.SkipWithError("the mark didn't reach the last node");
    }
    const auto edges = static_cast<double>(shape.edges.size());
    state.counters["per_edge"] = benchmark::Counter(edges, benchmark::Counter::kIsIterationInvariantRate |
                                                               benchmark::Counter::kInvert);
}

template <class Graph>
void BM_MarkChain(benchmark::State& state)
{
    markFromClean<Graph>(state, chain(static_cast<std::size_t>(state.range(0))));
}

template <class Graph>
void BM_MarkFan(benchmark::State& state)
{
    markFromClean<Graph>(state, fan(static_cast<std::size_t>(state.range(0))));
}

template <class Graph>
void BM_MarkLattice(benchmark::State& state)
{
    markFromClean<Graph>(state, lattice(static_cast<std::size_t>(state.range(0))));
}

/// A mark on a graph that is dirty all over looks at the observers of the one node and goes no further.
void markAgain(benchmark::State& state, const Shape& shape)
{
    TrackerGraph graph(shape);
    graph.mark();
    for (auto _ : state) {
        graph.mark();
        benchmark::ClobberMemory();
    }
}

void BM_MarkAgainChain(benchmark::State& state)
{
    markAgain(state, chain(static_cast<std::size_t>(state.range(0))));
}

void BM_MarkAgainFan(benchmark::State& state)
{
    markAgain(state, fan(static_cast<std::size_t>(state.range(0))));
}

} // namespace

BENCHMARK_TEMPLATE(BM_MarkChain, FlatGraph)->Arg(1000)->Arg(100000)->Arg(1000000)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkChain, TrackerGraph)->Arg(1000)->Arg(100000)->Arg(1000000)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkChain, RecursiveGraph)->Arg(1000)->UseManualTime(); // a longer one ends the stack
BENCHMARK_TEMPLATE(BM_MarkFan, FlatGraph)->Arg(100000)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkFan, TrackerGraph)->Arg(100000)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkFan, RecursiveGraph)->Arg(100000)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkLattice, FlatGraph)->Arg(300)->UseManualTime();
BENCHMARK_TEMPLATE(BM_MarkLattice, TrackerGraph)->Arg(300)->UseManualTime();
BENCHMARK(BM_MarkAgainChain)->Arg(1000000);
BENCHMARK(BM_MarkAgainFan)->Arg(100000);
