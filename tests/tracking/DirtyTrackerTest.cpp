#include "tracking/DirtyTracker.h"

#include "tests/tracking/TrackerTestSupport.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

using Orrery::AbstractDirtyTracker;
using namespace TestSupport;

namespace {
enum State
{
    Dirty = -1,
    Clean = 0,
    Updating = 1
};

std::shared_ptr<TrackerNode> makeNodeIn(State state)
{
    return state == Clean ? makeNode() : state == Dirty ? makeDirtyNode() : makeUpdatingNode();
}

using SharedSet = std::set<std::shared_ptr<AbstractDirtyTracker>>;

std::string stateName(const testing::TestParamInfo<State>& info)
{
    return info.param == Clean ? "Clean" : info.param == Dirty ? "Dirty" : "Updating";
}
} // namespace

TEST(DirtyTracker, StartsCleanWithoutEdgesAndUpdates)
{
    const auto node = makeNode();
    EXPECT_TRUE(node->isClean());
    EXPECT_FALSE(node->isDirty());
    EXPECT_FALSE(node->isUpdating());
    EXPECT_EQ(node->getDirtyState(), 0);
    EXPECT_EQ(node->getUpdateCount(), 0);
    EXPECT_TRUE(node->getObservers().nodes().empty());
    EXPECT_TRUE(node->getSources().nodes().empty());
}

TEST(DirtyTracker, HasTheDestructorAsItsOnlyVirtualOperation)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<AbstractDirtyTracker>);
    EXPECT_EQ(sizeof(AbstractDirtyTracker),
              sizeof(void*) + 2 * sizeof(AbstractDirtyTracker::Nodes) + 2 * sizeof(std::int32_t));
    EXPECT_EQ(sizeof(AbstractDirtyTracker::Nodes), sizeof(AbstractDirtyTracker::Nodes::WeakSet));
}

TEST(DirtyTracker, TellsItsThreeStatesByNumberAndTest)
{
    const auto dirty = makeDirtyNode();
    EXPECT_EQ(dirty->getDirtyState(), -1);
    EXPECT_TRUE(dirty->isDirty());
    EXPECT_FALSE(dirty->isClean());
    EXPECT_FALSE(dirty->isUpdating());

    const auto updating = makeUpdatingNode();
    EXPECT_EQ(updating->getDirtyState(), 1);
    EXPECT_TRUE(updating->isUpdating());
    EXPECT_FALSE(updating->isClean());
    EXPECT_FALSE(updating->isDirty());
}

// --- each state against each event

class DirtyTrackerInEachState : public testing::TestWithParam<State>
{
};

INSTANTIATE_TEST_SUITE_P(States, DirtyTrackerInEachState, testing::Values(Clean, Updating, Dirty), stateName);

TEST_P(DirtyTrackerInEachState, IsDirtyAfterSetDirty)
{
    const auto node = makeNodeIn(GetParam());
    TrackerOwner::setDirty(*node);
    EXPECT_TRUE(node->isDirty());
}

TEST_P(DirtyTrackerInEachState, IsCleanAfterSetCleanAndTellsNoNeighbour)
{
    const auto source = makeDirtyNode();
    const auto node = makeNode();
    const auto observer = makeNode();
    bindEdge(node, observer);
    bindEdge(source, node); // dirty all the way
    if (GetParam() != Dirty)
        TrackerOwner::setClean(*node);
    if (GetParam() == Updating) {
        node->markDirty();
        TrackerOwner::setUpdating(*node);
    }
    ASSERT_EQ(node->getDirtyState(), GetParam());

    TrackerOwner::setClean(*node);

    EXPECT_TRUE(node->isClean());
    EXPECT_TRUE(source->isDirty());
    EXPECT_TRUE(observer->isDirty());
}

TEST_P(DirtyTrackerInEachState, GoesToUpdatingFromDirtyOnly)
{
    const auto node = makeNodeIn(GetParam());
    const int countBefore = node->getUpdateCount();

    const bool went = TrackerOwner::setUpdating(*node);

    EXPECT_EQ(went, GetParam() == Dirty);
    EXPECT_EQ(node->getDirtyState(), GetParam() == Clean ? Clean : Updating);
    EXPECT_EQ(node->getUpdateCount(), countBefore + (GetParam() == Dirty ? 1 : 0));
}

TEST_P(DirtyTrackerInEachState, IsMarkedUnlessUpdating)
{
    const auto node = makeNodeIn(GetParam());
    const auto observer = makeNode();
    bindEdge(node, observer);
    TrackerOwner::setClean(*observer);

    EXPECT_EQ(node->markDirty(), GetParam() != Updating);

    EXPECT_EQ(node->getDirtyState(), GetParam() == Updating ? Updating : Dirty);
    EXPECT_EQ(observer->isDirty(), GetParam() != Updating);
}

TEST_P(DirtyTrackerInEachState, IsDirtyAfterAMarkOfItsSource)
{
    const auto source = makeNode();
    const auto node = makeNodeIn(GetParam());
    bindEdge(source, node);
    ASSERT_EQ(node->getDirtyState(), GetParam());
    source->markDirty();
    EXPECT_TRUE(node->isDirty());
}

TEST_P(DirtyTrackerInEachState, RunsAnUpdateFromDirtyOnly)
{
    const auto node = makeNodeIn(GetParam());
    const int countBefore = node->getUpdateCount();
    int runs = 0;

    const bool ran = node->updateIfDirty([&] {
        ++runs;
        EXPECT_TRUE(node->isUpdating());
    });

    EXPECT_EQ(ran, GetParam() == Dirty);
    EXPECT_EQ(runs, GetParam() == Dirty ? 1 : 0);
    EXPECT_EQ(node->getUpdateCount(), countBefore + runs);
    EXPECT_EQ(node->getDirtyState(), GetParam() == Updating ? Updating : Clean);
}

TEST_P(DirtyTrackerInEachState, ComesOutOfAResetCleanWithoutSources)
{
    const auto node = makeNodeIn(GetParam());
    node->resetStateFromSourceStates();
    EXPECT_TRUE(node->isClean());
}

TEST_P(DirtyTrackerInEachState, OfASourceDecidesAResetAndOnlyCleanCounts)
{
    const auto source = makeNode();
    const auto node = makeNode();
    const auto observer = makeNode();
    bindEdge(source, node);
    bindEdge(node, observer);
    if (GetParam() != Clean)
        source->markDirty();
    if (GetParam() == Updating)
        TrackerOwner::setUpdating(*source);
    TrackerOwner::setClean(*node);
    TrackerOwner::setClean(*observer);

    node->resetStateFromSourceStates();

    EXPECT_EQ(node->getDirtyState(), GetParam() == Clean ? Clean : Dirty);
    EXPECT_EQ(observer->getDirtyState(), GetParam() == Clean ? Clean : Dirty);
}

TEST_P(DirtyTrackerInEachState, OfASourceIsBoundIntoItsObserverOnlyWhenDirty)
{
    const auto source = makeNodeIn(GetParam());
    const auto observer = makeNode();
    bindEdge(source, observer);
    EXPECT_EQ(observer->isDirty(), GetParam() == Dirty);
    EXPECT_EQ(observer->isClean(), GetParam() != Dirty);
}

// --- bind and drop

TEST(DirtyTrackerBind, MakesAnEdgeThatBothEndsKnow)
{
    const auto source = makeNode();
    const auto observer = makeNode();
    bindEdge(source, observer);
    EXPECT_EQ(source->getObservers()(), SharedSet{observer});
    EXPECT_EQ(observer->getSources()(), SharedSet{source});
    EXPECT_TRUE(source->getSources().nodes().empty());
    EXPECT_TRUE(observer->getObservers().nodes().empty());
}

TEST(DirtyTrackerBind, MakesOneEdgeOfTwoCalls)
{
    const auto source = makeNode();
    const auto observer = makeNode();
    bindEdge(source, observer);
    bindEdge(source, observer);
    EXPECT_EQ(source->getObservers().nodes().size(), 1u);
    EXPECT_EQ(observer->getSources().nodes().size(), 1u);
}

TEST(DirtyTrackerBind, LeavesADirtyObserverOfACleanSourceDirty)
{
    const auto source = makeNode();
    const auto observer = makeDirtyNode();
    bindEdge(source, observer);
    EXPECT_TRUE(observer->isDirty());
    EXPECT_TRUE(source->isClean());
}

TEST(DirtyTrackerBind, OfADirtySourceMarksTheObserverAndAllBelow)
{
    const auto source = makeDirtyNode();
    const auto nodes = makeNodes(3);
    bindEdge(nodes[0], nodes[1]);
    bindEdge(nodes[1], nodes[2]);
    bindEdge(source, nodes[0]);
    for (const auto& node : nodes)
        EXPECT_TRUE(node->isDirty());
}

TEST(DirtyTrackerBind, OfADirtySourceMarksBelowAnObserverThatIsDirtyAlready)
{
    const auto source = makeDirtyNode();
    const auto observer = makeDirtyNode();
    const auto below = makeNode();
    bindEdge(observer, below);
    TrackerOwner::setClean(*below);
    bindEdge(source, observer);
    EXPECT_TRUE(below->isDirty());
}

TEST(DirtyTrackerBind, OfADirtySourceReachesAnUpdatingObserver)
{
    const auto source = makeDirtyNode();
    const auto observer = makeUpdatingNode();
    bindEdge(source, observer);
    EXPECT_TRUE(observer->isDirty());
}

TEST(DirtyTrackerBind, OfANodeToItselfEnds)
{
    const auto node = makeNode();
    bindEdge(node, node);
    EXPECT_TRUE(node->markDirty());
    EXPECT_TRUE(node->isDirty());
    EXPECT_EQ(node->getSources()(), SharedSet{node});
}

TEST(DirtyTrackerBind, OfNothingDoesNothing)
{
    const auto node = makeDirtyNode();
    bindEdge(nullptr, node);
    bindEdge(node, nullptr);
    dropEdge(nullptr, node);
    dropEdge(node, nullptr);
    EXPECT_TRUE(node->getObservers().nodes().empty());
    EXPECT_TRUE(node->getSources().nodes().empty());
}

TEST(DirtyTrackerDrop, RemovesTheEdgeAtBothEndsAndLeavesTheStates)
{
    const auto source = makeDirtyNode();
    const auto observer = makeNode();
    const auto other = makeNode();
    bindEdge(source, observer);
    bindEdge(source, other);

    dropEdge(source, observer);

    EXPECT_TRUE(source->isDirty());
    EXPECT_TRUE(observer->isDirty());
    EXPECT_EQ(source->getObservers()(), SharedSet{other});
    EXPECT_TRUE(observer->getSources().nodes().empty());
}

TEST(DirtyTrackerDrop, OfAnAbsentEdgeChangesNothing)
{
    const auto source = makeNode();
    const auto observer = makeNode();
    bindEdge(source, observer);
    dropEdge(observer, source);
    EXPECT_EQ(source->getObservers()(), SharedSet{observer});
    EXPECT_EQ(observer->getSources()(), SharedSet{source});
}

TEST(DirtyTracker, AddsToOneSideOnly)
{
    const auto node = makeNode();
    const auto other = makeNode();
    TrackerOwner::addObserver(*node, other);
    EXPECT_EQ(node->getObservers()(), SharedSet{other});
    EXPECT_TRUE(other->getSources().nodes().empty());
    TrackerOwner::addSource(*node, other);
    EXPECT_EQ(node->getSources()(), SharedSet{other});
    EXPECT_TRUE(other->getObservers().nodes().empty());
}

// --- marks

TEST(DirtyMark, ReturnsFromACycleAndCountsNoUpdate)
{
    const auto a = makeNode();
    const auto b = makeNode();
    bindEdge(a, b);
    bindEdge(b, a);
    TrackerOwner::setDirty(*a);
    EXPECT_TRUE(a->isDirty());
    EXPECT_TRUE(b->isDirty());
    EXPECT_EQ(a->getUpdateCount(), 0);
    EXPECT_EQ(b->getUpdateCount(), 0);
}

TEST(DirtyMark, ReachesEveryNodeOfADiamondAndLeavesTheSources)
{
    const auto nodes = makeNodes(5);
    bindEdge(nodes[0], nodes[1]);
    bindEdge(nodes[1], nodes[2]);
    bindEdge(nodes[1], nodes[3]);
    bindEdge(nodes[2], nodes[4]);
    bindEdge(nodes[3], nodes[4]);
    nodes[1]->markDirty();
    EXPECT_TRUE(nodes[0]->isClean());
    for (std::size_t i = 1; i < nodes.size(); ++i)
        EXPECT_TRUE(nodes[i]->isDirty()) << i;
}

TEST(DirtyMark, DoesNotFollowAnObserverThatIsDirtyAlready)
{
    const auto nodes = makeNodes(3);
    bindEdge(nodes[0], nodes[1]);
    bindEdge(nodes[1], nodes[2]);
    nodes[1]->markDirty();
    TrackerOwner::setClean(*nodes[2]);
    nodes[0]->markDirty();
    EXPECT_TRUE(nodes[2]->isClean());
}

TEST(DirtyMark, FollowsTheObserversOfAnUpdatingNode)
{
    const auto source = makeNode();
    const auto updating = makeUpdatingNode();
    const auto below = makeNode();
    bindEdge(updating, below);
    bindEdge(source, updating);
    source->markDirty();
    EXPECT_TRUE(updating->isDirty());
    EXPECT_TRUE(below->isDirty());
}

TEST(DirtyMark, PassesOverADestroyedObserverAndReachesTheOthers)
{
    const auto source = makeNode();
    auto observers = makeNodes(5);
    for (const auto& observer : observers)
        bindEdge(source, observer);
    observers[1].reset();
    observers[3].reset();
    source->markDirty();
    EXPECT_TRUE(observers[0]->isDirty());
    EXPECT_TRUE(observers[2]->isDirty());
    EXPECT_TRUE(observers[4]->isDirty());
    EXPECT_EQ(source->getObservers().nodes().size(), 5u);
}

// --- updateIfDirty

TEST(DirtyUpdate, SwallowsAMarkOfTheSameNode)
{
    const auto node = makeDirtyNode();
    const auto observer = makeNode();
    bindEdge(node, observer);
    TrackerOwner::setClean(*observer);

    node->updateIfDirty([&] {
        EXPECT_FALSE(node->markDirty());
        EXPECT_TRUE(node->isUpdating());
    });

    EXPECT_TRUE(observer->isClean());
    EXPECT_TRUE(node->isClean());
}

TEST(DirtyUpdate, EndsCleanEvenWhenASourceHasMarkedItMeanwhile)
{
    const auto source = makeNode();
    const auto node = makeDirtyNode();
    bindEdge(source, node);

    EXPECT_TRUE(node->updateIfDirty([&] {
        source->markDirty();
        EXPECT_EQ(node->getDirtyState(), -1);
    }));

    EXPECT_TRUE(node->isClean());
    EXPECT_EQ(node->getUpdateCount(), 1);
}

TEST(DirtyUpdate, RunsNestedWhenASourceHasMarkedItMeanwhile)
{
    const auto source = makeNode();
    const auto node = makeDirtyNode();
    bindEdge(source, node);
    int nested = 0;

    node->updateIfDirty([&] {
        EXPECT_FALSE(node->updateIfDirty([&] { ++nested; }));
        source->markDirty();
        EXPECT_TRUE(node->updateIfDirty([&] { ++nested; }));
    });

    EXPECT_EQ(nested, 1);
    EXPECT_EQ(node->getUpdateCount(), 2);
    EXPECT_TRUE(node->isClean());
}

TEST(DirtyUpdate, LeavesTheNodeUpdatingWhenTheFunctionThrows)
{
    const auto node = makeDirtyNode();
    EXPECT_THROW(node->updateIfDirty([] { throw std::out_of_range("no such row"); }), std::out_of_range);
    EXPECT_TRUE(node->isUpdating());
    EXPECT_EQ(node->getUpdateCount(), 1);
    EXPECT_FALSE(node->markDirty());
    EXPECT_FALSE(node->updateIfDirty([] {}));
}

TEST(DirtyUpdate, FailsWithoutAFunctionOnADirtyNodeOnly)
{
    const auto node = makeDirtyNode();
    EXPECT_THROW(node->updateIfDirty({}), std::bad_function_call);
    EXPECT_TRUE(node->isUpdating());
    EXPECT_EQ(node->getUpdateCount(), 1);

    EXPECT_FALSE(makeNode()->updateIfDirty({}));
}

// --- resetStateFromSourceStates

TEST(DirtyReset, ErasesADestroyedSourceAndComesOutClean)
{
    auto source = makeDirtyNode();
    const auto node = makeNode();
    bindEdge(source, node);
    ASSERT_TRUE(node->isDirty());
    source.reset();
    ASSERT_EQ(node->getSources().nodes().size(), 1u);

    node->resetStateFromSourceStates();

    EXPECT_TRUE(node->getSources().nodes().empty());
    EXPECT_TRUE(node->isClean());
}

TEST(DirtyReset, ErasesOnlyTheDestroyedAmongItsSources)
{
    auto sources = makeNodes(6);
    const auto node = makeNode();
    for (const auto& source : sources)
        bindEdge(source, node);
    for (const std::size_t i : {0u, 2u, 3u, 5u})
        sources[i].reset();

    node->resetStateFromSourceStates();

    EXPECT_TRUE(node->isClean());
    EXPECT_EQ(node->getSources().nodes().size(), 2u);
    EXPECT_EQ(node->getSources()(), (SharedSet{sources[1], sources[4]}));
}

TEST(DirtyReset, IsDirtyWithOneUncleanAmongCleanSources)
{
    const auto sources = makeNodes(3);
    const auto node = makeNode();
    for (const auto& source : sources)
        bindEdge(source, node);
    sources[1]->markDirty();
    TrackerOwner::setClean(*node);
    node->resetStateFromSourceStates();
    EXPECT_TRUE(node->isDirty());
    EXPECT_EQ(node->getUpdateCount(), 0);
}

// --- Nodes

TEST(DirtyTrackerNodes, GivesNothingWhenAllHaveExpiredAndStillReportsThem)
{
    AbstractDirtyTracker::Nodes set;
    for (int i = 0; i < 3; ++i)
        set.add(makeNode());
    EXPECT_TRUE(set().empty());
    EXPECT_EQ(set.nodes().size(), 3u);
}

TEST(DirtyTrackerNodes, HoldsEachOwnerOnce)
{
    AbstractDirtyTracker::Nodes set;
    const auto a = makeNode();
    const auto b = makeNode();
    set.add(a);
    set.add(a);
    set.add(b);
    set.add(nullptr);
    EXPECT_EQ(set(), (SharedSet{a, b}));
    EXPECT_EQ(set.nodes().size(), 2u);
}

TEST(DirtyTrackerNodes, RemovesThePresentAndStandsTheAbsent)
{
    AbstractDirtyTracker::Nodes set;
    const auto a = makeNode();
    const auto b = makeNode();
    set.add(a);
    set.add(b);
    set.remove(a);
    set.remove(a);
    set.remove(makeNode());
    set.remove(nullptr);
    EXPECT_EQ(set(), SharedSet{b});
}

TEST(DirtyTrackerNodes, IsEmptyAfterClear)
{
    AbstractDirtyTracker::Nodes set;
    const auto node = makeNode();
    set.add(node);
    set.clear();
    EXPECT_TRUE(set.nodes().empty());
}

TEST(DirtyTrackerNodes, CopiesAreTheirOwnAndMovesTakeTheEntriesAlong)
{
    const auto a = makeNode();
    const auto b = makeNode();
    AbstractDirtyTracker::Nodes set;
    set.add(a);
    AbstractDirtyTracker::Nodes copy = set;
    copy.add(b);
    EXPECT_EQ(set(), SharedSet{a});
    EXPECT_EQ(copy(), (SharedSet{a, b}));

    AbstractDirtyTracker::Nodes assigned;
    assigned = copy;
    const AbstractDirtyTracker::Nodes moved = std::move(copy);
    EXPECT_EQ(moved(), (SharedSet{a, b}));
    assigned = std::move(set);
    EXPECT_EQ(assigned(), SharedSet{a});
}

TEST(DirtyTrackerNodes, OfANodeAreACopyThatChangesNoEdge)
{
    const auto source = makeNode();
    const auto observer = makeNode();
    bindEdge(source, observer);
    auto observers = source->getObservers();
    observers.clear();
    EXPECT_EQ(source->getObservers()(), SharedSet{observer});
}

// --- lifetime

TEST(DirtyTrackerLifetime, IsNotProlongedByEdges)
{
    auto source = makeNode();
    auto observer = makeNode();
    bindEdge(source, observer);
    bindEdge(observer, source);
    const std::weak_ptr<TrackerNode> sourceWatch = source;
    const std::weak_ptr<TrackerNode> observerWatch = observer;
    source.reset();
    EXPECT_TRUE(sourceWatch.expired());
    EXPECT_EQ(observer->getSources().nodes().size(), 1u);
    EXPECT_EQ(observer->getObservers().nodes().size(), 1u);
    observer.reset();
    EXPECT_TRUE(observerWatch.expired());
}

TEST(DirtyTrackerLifetime, OutlivesItsOwner)
{
    std::shared_ptr<TrackerNode> node;
    {
        TrackerOwner owner;
        node = std::make_shared<TrackerNode>(&owner);
    }
    EXPECT_TRUE(node->markDirty());
    EXPECT_TRUE(node->updateIfDirty([] {}));
    EXPECT_TRUE(node->isClean());
}
