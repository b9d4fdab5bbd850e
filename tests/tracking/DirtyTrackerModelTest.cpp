// Random graphs against a reference model that knows no pointers: states by fixed point, edges by number.

#include "tests/support/RandomSeed.h"
#include "tests/tracking/TrackerTestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

using namespace TestSupport;

namespace {

/// What the graph should look like. Nodes that were destroyed stay in the edges of their neighbours.
class ReferenceModel
{
public:
    struct Node
    {
        bool alive = true;
        int state = 0;
        int updateCount = 0;
        std::set<std::size_t> observers;
        std::set<std::size_t> sources;
    };

    std::size_t add()
    {
        m_nodes.emplace_back();
        return m_nodes.size() - 1;
    }

    void bind(std::size_t source, std::size_t observer)
    {
        m_nodes[source].observers.insert(observer);
        m_nodes[observer].sources.insert(source);
        if (m_nodes[source].state == -1)
            setDirty(observer);
    }

    void drop(std::size_t source, std::size_t observer)
    {
        m_nodes[source].observers.erase(observer);
        m_nodes[observer].sources.erase(source);
    }

    /// The marked nodes are the smallest set that holds `start` and each living observer of its own that
    /// wasn't dirty before.
    void setDirty(std::size_t start)
    {
        std::set<std::size_t> marked{start};
        for (bool grown = true; grown;) {
            grown = false;
            for (const std::size_t source : std::set<std::size_t>(marked)) {
                for (const std::size_t observer : m_nodes[source].observers) {
                    const Node& node = m_nodes[observer];
                    if (node.alive && node.state != -1 && marked.insert(observer).second)
                        grown = true;
                }
            }
        }
        for (const std::size_t node : marked)
            m_nodes[node].state = -1;
    }

    bool markDirty(std::size_t node)
    {
        if (m_nodes[node].state == 1)
            return false;
        setDirty(node);
        return true;
    }

    bool setUpdating(std::size_t node)
    {
        if (m_nodes[node].state != -1)
            return false;
        m_nodes[node].state = 1;
        ++m_nodes[node].updateCount;
        return true;
    }

    void setClean(std::size_t node) { m_nodes[node].state = 0; }

    void destroy(std::size_t node) { m_nodes[node].alive = false; }

    void reset(std::size_t node)
    {
        auto& sources = m_nodes[node].sources;
        for (const std::size_t source : std::set<std::size_t>(sources)) {
            if (!m_nodes[source].alive)
                sources.erase(source);
        }
        for (const std::size_t source : sources) {
            if (m_nodes[source].state != 0)
                return setDirty(node);
        }
        setClean(node);
    }

    const Node& operator[](std::size_t node) const { return m_nodes[node]; }
    std::size_t size() const { return m_nodes.size(); }

private:
    std::vector<Node> m_nodes;
};

/// The model and the graph side by side: every step is done to both.
class ModelledGraph
{
public:
    ModelledGraph(std::uint64_t seed, std::size_t nodeCount)
        : m_random(RandomSeed{seed}.engine())
    {
        for (std::size_t i = 0; i < nodeCount; ++i)
            add();
    }

    void step()
    {
        const std::size_t a = pick();
        const std::size_t b = pick();
        switch (randomBelow(m_random, 16)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
            m_model.bind(a, b);
            return bindEdge(m_nodes[a], m_nodes[b]);
        case 5:
            return dropOneEdgeOf(a);
        case 6:
        case 7:
            EXPECT_EQ(m_nodes[a]->markDirty(), m_model.markDirty(a));
            return;
        case 8:
        case 9:
            return update(a, b);
        case 10:
            m_model.setDirty(a);
            return TrackerOwner::setDirty(*m_nodes[a]);
        case 11:
            EXPECT_EQ(TrackerOwner::setUpdating(*m_nodes[a]), m_model.setUpdating(a));
            return;
        case 12:
            m_model.setClean(a);
            return TrackerOwner::setClean(*m_nodes[a]);
        case 13:
            destroy(a);
            return add();
        default:
            m_model.reset(a);
            return m_nodes[a]->resetStateFromSourceStates();
        }
    }

    void compare() const
    {
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            if (!m_nodes[i])
                continue;
            ASSERT_EQ(m_nodes[i]->getDirtyState(), m_model[i].state) << "node " << i;
            ASSERT_EQ(m_nodes[i]->getUpdateCount(), m_model[i].updateCount) << "node " << i;
        }
    }

    void compareEdges() const
    {
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            if (!m_nodes[i])
                continue;
            compareSide(m_nodes[i]->getObservers(), m_model[i].observers);
            compareSide(m_nodes[i]->getSources(), m_model[i].sources);
        }
    }

    /// How many nodes are in each state, so that a test can tell that it has seen all of them.
    std::size_t count(int state) const
    {
        std::size_t result = 0;
        for (std::size_t i = 0; i < m_model.size(); ++i)
            result += m_model[i].alive && m_model[i].state == state;
        return result;
    }

private:
    void add()
    {
        m_model.add();
        m_nodes.push_back(makeNode());
        m_alive.push_back(m_nodes.size() - 1);
    }

    void destroy(std::size_t node)
    {
        m_model.destroy(node);
        m_nodes[node].reset();
        for (auto& alive : m_alive) {
            if (alive == node)
                std::swap(alive, m_alive.back());
        }
        m_alive.pop_back();
    }

    void dropOneEdgeOf(std::size_t source)
    {
        const auto& observers = m_model[source].observers;
        std::size_t observer = pick(); // mostly no edge at all
        if (!observers.empty() && m_model[*observers.begin()].alive)
            observer = *observers.begin();
        m_model.drop(source, observer);
        dropEdge(m_nodes[source], m_nodes[observer]);
    }

    /// An update during which another node is marked, which may come back to this one.
    void update(std::size_t node, std::size_t other)
    {
        const bool modelRan = m_model.setUpdating(node);
        if (modelRan) {
            m_model.markDirty(other);
            m_model.setClean(node);
        }
        const bool ran = m_nodes[node]->updateIfDirty([&] { m_nodes[other]->markDirty(); });
        EXPECT_EQ(ran, modelRan);
    }

    void compareSide(const Orrery::AbstractDirtyTracker::Nodes& side,
                     const std::set<std::size_t>& expected) const
    {
        std::set<std::shared_ptr<Orrery::AbstractDirtyTracker>> alive;
        for (const std::size_t node : expected) {
            if (m_nodes[node])
                alive.insert(m_nodes[node]);
        }
        ASSERT_EQ(side(), alive);
        ASSERT_EQ(side.nodes().size(), expected.size());
    }

    std::size_t pick() { return m_alive[randomBelow(m_random, m_alive.size())]; }

    std::mt19937_64 m_random;
    ReferenceModel m_model;
    std::vector<std::shared_ptr<TrackerNode>> m_nodes;
    std::vector<std::size_t> m_alive;
};

} // namespace

class DirtyTrackerModel : public testing::TestWithParam<std::uint64_t>
{
};

INSTANTIATE_TEST_SUITE_P(Seeds, DirtyTrackerModel, testing::Range<std::uint64_t>(1, 41));

TEST_P(DirtyTrackerModel, AgreesWithTheGraphAfterEveryStep)
{
    const RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    const std::size_t nodeCounts[] = {2, 5, 20, 200};
    ModelledGraph graph(seed.value, nodeCounts[seed.value % 4]);
    std::size_t seen[3] = {0, 0, 0};
    for (int step = 0; step < 1500; ++step) {
        SCOPED_TRACE(step);
        graph.step();
        ASSERT_NO_FATAL_FAILURE(graph.compare());
        if (step % 25 == 0) {
            ASSERT_NO_FATAL_FAILURE(graph.compareEdges());
        }
        if (testing::Test::HasFailure())
            return;
        for (const int state : {-1, 0, 1})
            seen[state + 1] += graph.count(state);
    }
    for (const std::size_t nodes : seen)
        EXPECT_GT(nodes, 0u) << "the steps left a state out";
}
