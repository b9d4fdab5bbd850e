#include "tracking/DataObserver.h"
#include "tracking/Notifier.h"

#include "tests/tracking/ChangeTestSupport.h"

#include <gtest/gtest.h>

#include <new>

namespace Orrery {
namespace {

using SharedNodes = std::set<std::shared_ptr<AbstractDirtyTracker>>;

void clean(const Variable& variable)
{
    variable.getDirtyTracker()->updateIfDirty([] {});
}

TEST(DataObserver, StartsWithoutAVariable)
{
    const DataObserver observer;
    EXPECT_EQ(observer.getVariable(), nullptr);
    EXPECT_EQ(observer.livingVariable(), nullptr);
    EXPECT_EQ(observer.getVariableName(), QString());
    EXPECT_EQ(observer.getVariablePath(), QString());
    EXPECT_EQ(observer.locator(QStringLiteral("path"), QStringLiteral("name")), nullptr);
    EXPECT_EQ(observer.locator(QString(), QString()), nullptr);
    observer.getNotifier()(nullptr); // does nothing
    ASSERT_NE(observer.getDirtyTracker(), nullptr);
    EXPECT_TRUE(observer.getDirtyTracker()->isClean());
    EXPECT_TRUE(observer.getDirtyTracker()->getSources().nodes().empty());
}

TEST(DataObserver, HoldsWhatAHostPutsIn)
{
    Variable variable(QStringLiteral("x"));
    Variable* told = nullptr;
    DataObserver observer;
    EXPECT_EQ(&observer.setLocator([&](const QString& path, const QString& name) {
        return path == QStringLiteral("/a") && name == QStringLiteral("x") ? &variable : nullptr;
    }),
              &observer);
    EXPECT_EQ(&observer.setNotifier([&](Variable* which) { told = which; }), &observer);
    EXPECT_EQ(&observer.setVariable(&variable), &observer);
    observer.variablePath = "/a/\xc2\xb5";
    observer.variableName = "\xc3\xa4";

    EXPECT_EQ(observer.locator(QStringLiteral("/a"), QStringLiteral("x")), &variable);
    EXPECT_EQ(observer.locator(QStringLiteral("/b"), QStringLiteral("x")), nullptr);
    observer.getNotifier()(&variable);
    EXPECT_EQ(told, &variable);
    EXPECT_EQ(observer.getVariablePath(), QString(QStringLiteral("/a/") + QChar(0xb5)));
    EXPECT_EQ(observer.getVariableName(), QString(QChar(0xe4)));
    EXPECT_EQ(observer.getVariable(), &variable);
    EXPECT_EQ(observer.livingVariable(), &variable);
}

TEST(DataObserver, KeepsTheTextsThroughAChangeOfVariable)
{
    Variable variable(QStringLiteral("x"));
    DataObserver observer;
    observer.variablePath = "/a";
    observer.variableName = "b";
    observer.setVariable(&variable).setVariable(nullptr);
    EXPECT_EQ(observer.getVariablePath(), QStringLiteral("/a"));
    EXPECT_EQ(observer.getVariableName(), QStringLiteral("b"));
}

TEST(DataObserver, IsBoundOnceToAVariableThatIsSetTwice)
{
    Variable variable(QStringLiteral("x"));
    DataObserver observer;
    observer.setVariable(&variable);
    observer.setVariable(&variable);
    EXPECT_EQ(variable.getDirtyTracker()->getObservers()(), SharedNodes{observer.getDirtyTracker()});
    EXPECT_EQ(observer.getDirtyTracker()->getSources()(), SharedNodes{variable.getDirtyTracker()});

    // The second call does nothing at all.
    AbstractDirtyTracker::drop(variable.getDirtyTracker(), observer.getDirtyTracker());
    observer.setVariable(&variable);
    EXPECT_TRUE(variable.getDirtyTracker()->getObservers().nodes().empty());
}

TEST(DataObserver, LeavesTheFormerVariableForTheNewOne)
{
    Variable a(QStringLiteral("a"));
    Variable b(QStringLiteral("b"));
    DataObserver observer;
    observer.setVariable(&a);
    observer.setVariable(&b);
    EXPECT_TRUE(a.getDirtyTracker()->getObservers().nodes().empty());
    EXPECT_EQ(observer.getDirtyTracker()->getSources()(), SharedNodes{b.getDirtyTracker()});

    a.UpdateData(numbers({1}));
    EXPECT_TRUE(observer.getDirtyTracker()->isClean());
    b.UpdateData(numbers({1}));
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());

    observer.setVariable(nullptr);
    EXPECT_TRUE(b.getDirtyTracker()->getObservers().nodes().empty());
    EXPECT_TRUE(observer.getDirtyTracker()->getSources().nodes().empty());
    EXPECT_EQ(observer.getVariable(), nullptr);
}

TEST(DataObserver, IsDirtyAtOnceForADirtyVariableAndStaysAsItWasForACleanOne)
{
    Variable dirty(QStringLiteral("a"), numbers({1}));
    Variable clean(QStringLiteral("b"));
    DataObserver observer;
    observer.setVariable(&clean);
    EXPECT_TRUE(observer.getDirtyTracker()->isClean());
    observer.setVariable(&dirty);
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());
    observer.setVariable(&clean);
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());
}

TEST(DataObserver, SharesTheTrackerWithItsCopies)
{
    Variable variable(QStringLiteral("x"));
    DataObserver origin;
    int told = 0;
    origin.setVariable(&variable).setNotifier([&](Variable*) { ++told; });
    origin.setLocator([&](const QString&, const QString&) { return &variable; });
    origin.variablePath = "/p";
    origin.variableName = "n";

    const DataObserver copy(origin);
    DataObserver assigned;
    assigned = origin;

    for (const DataObserver* observer : {&copy, static_cast<const DataObserver*>(&assigned)}) {
        EXPECT_EQ(observer->getDirtyTracker(), origin.getDirtyTracker());
        EXPECT_EQ(observer->getVariable(), &variable);
        EXPECT_EQ(observer->livingVariable(), &variable);
        EXPECT_EQ(observer->getVariablePath(), QStringLiteral("/p"));
        EXPECT_EQ(observer->getVariableName(), QStringLiteral("n"));
        EXPECT_EQ(observer->locator(QString(), QString()), &variable);
        observer->getNotifier()(nullptr);
    }
    EXPECT_EQ(told, 2);
    EXPECT_EQ(variable.getDirtyTracker()->getObservers().nodes().size(), 1u);
}

TEST(DataObserver, LeavesAnExpiredEntryBehind)
{
    const Variable variable(QStringLiteral("x"));
    {
        DataObserver observer;
        observer.setVariable(const_cast<Variable*>(&variable));
    }
    EXPECT_EQ(variable.getDirtyTracker()->getObservers().nodes().size(), 1u);
    EXPECT_TRUE(variable.getDirtyTracker()->getObservers()().empty());
}

TEST(DataObserver, AnswersADestroyedVariableButKnowsBetter)
{
    auto variable = std::make_unique<Variable>(QStringLiteral("x"));
    Variable* const address = variable.get();
    DataObserver observer;
    observer.setVariable(address);
    variable.reset();
    EXPECT_EQ(observer.getVariable(), address);
    EXPECT_EQ(observer.livingVariable(), nullptr);

    Variable next(QStringLiteral("y"));
    observer.setVariable(&next);
    EXPECT_EQ(observer.livingVariable(), &next);
    next.UpdateData(numbers({1}));
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());
}

TEST(DataObserver, IsBoundAnewToAVariableInThePlaceOfADestroyedOne)
{
    alignas(Variable) unsigned char place[sizeof(Variable)];
    auto* first = new (place) Variable(QStringLiteral("x"));
    DataObserver observer;
    observer.setVariable(first);
    first->~Variable();
    auto* second = new (place) Variable(QStringLiteral("y"));

    observer.setVariable(second);
    EXPECT_EQ(observer.livingVariable(), second);
    second->UpdateData(numbers({1}));
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());
    second->~Variable();
}

TEST(DataObserver, KnowsNoVariableWhoseRemovalIsAnnounced)
{
    auto variable = std::make_unique<Variable>(QStringLiteral("x"));
    const auto observer = ensureObserver(variable.get());
    ConnectedClient client(*variable);
    client.onRemoved = [&] { EXPECT_EQ(observer->livingVariable(), nullptr); };
    variable.reset();
    EXPECT_EQ(client.removals, 1);
}

TEST(DataObserver, StandsAMovedFromVariable)
{
    Variable source(QStringLiteral("x"));
    const Variable target(std::move(source));
    Variable other(QStringLiteral("y"));
    DataObserver observer;
    observer.setVariable(&source);
    EXPECT_EQ(observer.getVariable(), &source);
    EXPECT_TRUE(observer.getDirtyTracker()->getSources().nodes().empty());
    observer.setVariable(&other);
    EXPECT_EQ(observer.getDirtyTracker()->getSources().nodes().size(), 1u);
}

// --- ensureObserver

TEST(EnsureObserver, MakesOneThatTheVariableHolds)
{
    Variable variable(QStringLiteral("x"));
    const auto observer = ensureObserver(&variable);
    ASSERT_NE(observer, nullptr);
    EXPECT_EQ(observer->getVariable(), &variable);
    EXPECT_EQ(variable.getObserver(), observer);
    EXPECT_EQ(variable.getNotifier()->getObserver(), observer);
    EXPECT_EQ(variable.getDirtyTracker()->getObservers()(), SharedNodes{observer->getDirtyTracker()});
}

TEST(EnsureObserver, FindsTheOneThatIsThere)
{
    Variable variable(QStringLiteral("x"));
    const auto observer = ensureObserver(&variable);
    EXPECT_EQ(ensureObserver(&variable), observer);

    Variable other(QStringLiteral("y"));
    const auto own = std::make_shared<DataObserver>();
    other.setObserver(own);
    EXPECT_EQ(ensureObserver(&other), own);
    EXPECT_EQ(own->getVariable(), nullptr); // a host's own is left as it is
}

TEST(EnsureObserver, GivesNothingForNothing)
{
    EXPECT_EQ(ensureObserver(nullptr), nullptr);
    Variable source(QStringLiteral("x"));
    const Variable target(std::move(source));
    EXPECT_EQ(ensureObserver(&source), nullptr);
}

// --- what copies and moves of a Variable do with its observer

TEST(VariableObserver, IsNewInACopyOfAVariableThatHasOne)
{
    Variable source(QStringLiteral("x"));
    const auto observer = ensureObserver(&source);

    const Variable copy(source);
    ASSERT_NE(copy.getObserver(), nullptr);
    EXPECT_NE(copy.getObserver(), observer);
    EXPECT_EQ(copy.getObserver()->getVariable(), &copy);

    const std::unique_ptr<Variable> clone(static_cast<Variable*>(source.Clone()));
    ASSERT_NE(clone->getObserver(), nullptr);
    EXPECT_EQ(clone->getObserver()->getVariable(), clone.get());
    EXPECT_EQ(observer->getVariable(), &source);
}

TEST(VariableObserver, IsMissingInACopyOfAVariableWithout)
{
    const Variable source(QStringLiteral("x"));
    const Variable copy(source);
    EXPECT_EQ(copy.getObserver(), nullptr);
}

TEST(VariableObserver, IsMadeByAnAssignmentOnlyWhereNoneIsAndTheSourceHasOne)
{
    Variable with(QStringLiteral("a"));
    const auto observer = ensureObserver(&with);
    Variable without(QStringLiteral("b"));

    with = without;
    EXPECT_EQ(with.getObserver(), observer);
    EXPECT_EQ(observer->getVariable(), &with);

    Variable other(QStringLiteral("c"));
    const auto othersObserver = ensureObserver(&other);
    with = other;
    EXPECT_EQ(with.getObserver(), observer);
    EXPECT_EQ(othersObserver->getVariable(), &other);

    without = other;
    ASSERT_NE(without.getObserver(), nullptr);
    EXPECT_NE(without.getObserver(), othersObserver);
    EXPECT_EQ(without.getObserver()->getVariable(), &without);
}

TEST(VariableObserver, IsMadeByAnAssignmentFromAVariableThatGoesWithTheFormerChildren)
{
    Variable target(QStringLiteral("x"));
    Variable* below = insertVariable(target, QStringLiteral("below"));
    ensureObserver(below);
    target = *below;
    EXPECT_NE(target.getObserver(), nullptr);
}

TEST(VariableObserver, GoesAlongWithAMoveAndPointsToTheNewObject)
{
    Variable source(QStringLiteral("x"), numbers({1}));
    clean(source);
    const auto observer = ensureObserver(&source);
    Variable target(std::move(source));
    EXPECT_EQ(target.getObserver(), observer);
    EXPECT_EQ(observer->getVariable(), &target);
    EXPECT_EQ(observer->livingVariable(), &target);
    EXPECT_EQ(source.getObserver(), nullptr);
    EXPECT_EQ(target.getDirtyTracker()->getObservers()(), SharedNodes{observer->getDirtyTracker()});
    EXPECT_TRUE(observer->getDirtyTracker()->isClean());
    target.UpdateData(numbers({2}));
    EXPECT_TRUE(observer->getDirtyTracker()->isDirty());
}

TEST(VariableObserver, PointsToTheNewObjectBeforeAnyHandlerRuns)
{
    PropertyObject folder;
    const std::unique_ptr<Variable> source(insertVariable(folder, QStringLiteral("x")));
    const auto observer = ensureObserver(source.get());
    auto* target = new Variable(QStringLiteral("y"));
    ConnectedClient client(*source);
    client.onRenamed = [&] { EXPECT_EQ(observer->getVariable(), target); };
    *target = std::move(*source);
    EXPECT_EQ(client.renamings, 2);
    EXPECT_EQ(observer->getVariable(), target);
}

TEST(VariableObserver, OfTheTargetOfAMoveStaysWithIt)
{
    Variable source(QStringLiteral("x"));
    Variable target(QStringLiteral("y"));
    const auto observer = ensureObserver(&target);
    target = std::move(source);
    EXPECT_EQ(target.getObserver(), nullptr); // the notifier is the source's, which has none
    EXPECT_EQ(observer->getVariable(), &target);
}

TEST(VariableObserver, ThatIsRePointedLeavesAlsoATrackerThatItsVariableGotLater)
{
    Variable first(QStringLiteral("first"));
    Variable next(QStringLiteral("next"));
    DataObserver observer;
    observer.setVariable(&first);
    first = Variable(next);
    first = next; // a new tracker
    AbstractDirtyTracker::bind(first.getDirtyTracker(), observer.getDirtyTracker());
    observer.setVariable(&next);
    EXPECT_EQ(first.getDirtyTracker()->getObservers()().size(), 0U);
}

TEST(VariableObserver, ThatIsRePointedWhenItsVariableEndsLeavesItsTracker)
{
    Variable next(QStringLiteral("next"));
    DataObserver observer;
    std::shared_ptr<AbstractDirtyTracker> former;
    {
        Variable going(QStringLiteral("going"));
        former = going.getDirtyTracker();
        observer.setVariable(&going);
        QObject::connect(going.getNotifier(), &Variable::Notifier::Removed,
                         [&] { observer.setVariable(&next); });
    }
    EXPECT_EQ(former->getObservers()().size(), 0U);
    EXPECT_EQ(observer.getDirtyTracker()->getSources()().size(), 1U);
}

} // namespace
} // namespace Orrery
