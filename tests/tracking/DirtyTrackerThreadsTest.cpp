// What two threads may do to one graph at once: mark, read and update; edges stay as they are.

#include "tests/tracking/TrackerTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace TestSupport;

namespace {

/// Lets threads go at once.
class StartingLine
{
public:
    explicit StartingLine(int threads)
        : m_missing(threads)
    {
    }

    void wait()
    {
        --m_missing;
        while (m_missing > 0)
            std::this_thread::yield();
    }

private:
    std::atomic<int> m_missing;
};

template <class First, class Second>
void runTogether(First first, Second second)
{
    StartingLine line(2);
    std::thread other([&] {
        line.wait();
        second();
    });
    line.wait();
    first();
    other.join();
}

} // namespace

TEST(DirtyTrackerThreads, OneOfTwoUpdatesOfADirtyNodeRuns)
{
    for (int round = 0; round < 500; ++round) {
        const auto node = makeDirtyNode();
        std::atomic<int> runs{0};
        std::atomic<int> wins{0};
        const auto update = [&] { wins += node->updateIfDirty([&] { ++runs; }); };
        runTogether(update, update);
        ASSERT_EQ(runs, 1) << "round " << round;
        ASSERT_EQ(wins, 1) << "round " << round;
        ASSERT_EQ(node->getUpdateCount(), 1);
        ASSERT_TRUE(node->isClean());
    }
}

TEST(DirtyTrackerThreads, UpdatesOfTwoThreadsAreAllCountedWhileMarksComeIn)
{
    const auto source = makeNode();
    const auto node = makeNode();
    bindEdge(source, node);
    std::atomic<int> runs{0};
    const auto markAndUpdate = [&] {
        for (int i = 0; i < 2000; ++i) {
            node->markDirty();
            node->updateIfDirty([&] { ++runs; });
        }
    };
    runTogether(markAndUpdate, markAndUpdate);
    EXPECT_EQ(node->getUpdateCount(), runs);
    EXPECT_GT(runs, 0);
    EXPECT_TRUE(node->isClean() || node->isDirty());
}

TEST(DirtyTrackerThreads, TwoMarksOfOneGraphLeaveAllOfItDirty)
{
    const auto nodes = makeNodes(200);
    for (std::size_t i = 0; i + 7 < nodes.size(); ++i) {
        bindEdge(nodes[i], nodes[i + 1]);
        bindEdge(nodes[i], nodes[i + 7]);
    }
    const auto last = nodes.size() - 7;
    for (int round = 0; round < 100; ++round) {
        for (const auto& node : nodes)
            TrackerOwner::setClean(*node);
        const auto mark = [&] { nodes[0]->markDirty(); };
        runTogether(mark, mark);
        for (std::size_t i = 0; i <= last; ++i)
            ASSERT_TRUE(nodes[i]->isDirty()) << "round " << round << ", node " << i;
    }
}

TEST(DirtyTrackerThreads, AReaderSeesStatesWhileAnotherThreadMarks)
{
    const auto nodes = makeNodes(50);
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
        bindEdge(nodes[i], nodes[i + 1]);
    std::atomic<bool> done{false};
    std::size_t others = 0;
    runTogether(
        [&] {
            for (int round = 0; round < 200; ++round) {
                nodes.front()->markDirty();
                for (const auto& node : nodes)
                    node->updateIfDirty([] {});
            }
            done = true;
        },
        [&] {
            while (!done) {
                for (const auto& node : nodes) {
                    const int state = node->getDirtyState();
                    others += state < -1 || state > 1 || node->getUpdateCount() > 200;
                }
            }
        });
    EXPECT_EQ(others, 0u);
    EXPECT_EQ(nodes.back()->getUpdateCount(), 200);
}

TEST(DirtyTrackerThreads, AMarkPassesOverANodeThatAnotherThreadDestroys)
{
    for (int round = 0; round < 200; ++round) {
        const auto source = makeNode();
        auto middle = makeNode();
        const auto observer = makeNode();
        bindEdge(source, middle);
        bindEdge(middle, observer);
        runTogether([&] { source->markDirty(); }, [&] { middle.reset(); });
        ASSERT_TRUE(source->isDirty());
        ASSERT_TRUE(observer->isDirty() || observer->isClean());
        observer->resetStateFromSourceStates();
        ASSERT_TRUE(observer->isClean());
        ASSERT_TRUE(observer->getSources().nodes().empty());
    }
}
