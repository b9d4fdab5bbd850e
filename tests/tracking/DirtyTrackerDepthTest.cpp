// Graphs that would end the stack of a recursive walk.

#include "tests/tracking/TrackerTestSupport.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>

using namespace TestSupport;

namespace {

constexpr std::size_t s_million = 1000000;

void* callFunction(void* function)
{
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
}

/// Run on a thread with 256 KiB of stack, which is less than many platforms give a thread.
void runOnSmallStack(std::function<void()> function)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} * 1024), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, callFunction, &function), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

void bindToChain(const std::vector<std::shared_ptr<TrackerNode>>& nodes)
{
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
        bindEdge(nodes[i], nodes[i + 1]);
}

std::size_t countDirty(const std::vector<std::shared_ptr<TrackerNode>>& nodes)
{
    std::size_t count = 0;
    for (const auto& node : nodes)
        count += node->isDirty();
    return count;
}

} // namespace

TEST(DirtyMarkDepth, AMillionNodesInAChainAreMarkedAndDestroyed)
{
    runOnSmallStack([] {
        auto nodes = makeNodes(s_million);
        bindToChain(nodes);
        nodes.front()->markDirty();
        EXPECT_EQ(countDirty(nodes), s_million);
        nodes.clear(); // from the first source on
    });
}

TEST(DirtyMarkDepth, AMillionNodesInACycleAreMarkedAndDestroyedFromTheEnd)
{
    runOnSmallStack([] {
        auto nodes = makeNodes(s_million);
        bindToChain(nodes);
        bindEdge(nodes.back(), nodes.front());
        nodes[s_million / 2]->markDirty();
        EXPECT_EQ(countDirty(nodes), s_million);
        while (!nodes.empty())
            nodes.pop_back();
    });
}

TEST(DirtyMarkDepth, AChainWhoseNodesHaveASecondObserverEach)
{
    // Whichever of the two comes first in a set, half of the walk leaves an edge behind to come back to.
    runOnSmallStack([] {
        const auto spine = makeNodes(200000);
        const auto leaves = makeNodes(spine.size());
        const auto below = makeNode();
        for (std::size_t i = 0; i < spine.size(); ++i) {
            bindEdge(spine[i], leaves[i]);
            bindEdge(leaves[i], below);
        }
        bindToChain(spine);
        spine.front()->markDirty();
        EXPECT_EQ(countDirty(spine), spine.size());
        EXPECT_EQ(countDirty(leaves), leaves.size());
        EXPECT_TRUE(below->isDirty());
    });
}

TEST(DirtyMarkDepth, ALatticeHasMorePathsThanAnyWalkCouldFollow)
{
    runOnSmallStack([] {
        constexpr std::size_t side = 300;
        const auto nodes = makeNodes(side * side);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if ((i + 1) % side != 0)
                bindEdge(nodes[i], nodes[i + 1]);
            if (i + side < nodes.size())
                bindEdge(nodes[i], nodes[i + side]);
        }
        nodes.front()->markDirty();
        EXPECT_EQ(countDirty(nodes), nodes.size());
    });
}

TEST(DirtyMarkDepth, AFanOfAHundredThousandObserversWithOneBelow)
{
    runOnSmallStack([] {
        const auto source = makeNode();
        const auto below = makeNode();
        const auto observers = makeNodes(100000);
        for (const auto& observer : observers) {
            bindEdge(source, observer);
            bindEdge(observer, below);
        }
        source->markDirty();
        EXPECT_EQ(countDirty(observers), observers.size());
        EXPECT_TRUE(below->isDirty());
    });
}

TEST(DirtyMarkDepth, ADirtySourceAndAResetMarkALongChainToo)
{
    runOnSmallStack([] {
        const auto nodes = makeNodes(100000);
        bindToChain(nodes);
        const auto source = makeDirtyNode();
        bindEdge(source, nodes.front());
        EXPECT_EQ(countDirty(nodes), nodes.size());
        for (const auto& node : nodes)
            TrackerOwner::setClean(*node);
        nodes.front()->resetStateFromSourceStates();
        EXPECT_EQ(countDirty(nodes), nodes.size());
    });
}
