// What the operations of a Variable do with its notifier and its dirty tracker.

#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "tests/support/CaseName.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tracking/DataObserver.h"
#include "tracking/Notifier.h"
#include "variables/ExplicitDataVar.h"
#include "variables/ExplicitDataVarStrategy.h"

#include <QPointer>
#include <gtest/gtest.h>

namespace Orrery {
namespace {

using VariableTracker = DirtyTracker<Variable, Variable*>;

// --- construction

TEST(VariableChange, StartsWithANotifierAndACleanTracker)
{
    const Variable unnamed;
    const Variable named(QStringLiteral("x"));
    for (const Variable* variable : {&unnamed, &named}) {
        ASSERT_NE(variable->getNotifier(), nullptr);
        ASSERT_NE(variable->getDirtyTracker(), nullptr);
        EXPECT_TRUE(variable->getDirtyTracker()->isClean());
        EXPECT_EQ(variable->getDirtyTracker()->getUpdateCount(), 0);
        EXPECT_EQ(variable->getNotifier()->getDirtyTracker()->getUpdateCount(), 0);
        EXPECT_EQ(variable->getObserver(), nullptr);
    }
    EXPECT_NE(unnamed.getNotifier(), named.getNotifier());
    EXPECT_NE(unnamed.getDirtyTracker(), named.getDirtyTracker());
}

TEST(VariableChange, StartsDirtyAndAnnouncedWithData)
{
    const Variable variable(QStringLiteral("x"), numbers({1, 2}));
    EXPECT_TRUE(variable.getDirtyTracker()->isDirty());
    EXPECT_EQ(variable.getNotifier()->getDirtyTracker()->getUpdateCount(), 1);
    EXPECT_TRUE(variable.getNotifier()->getDirtyTracker()->isClean());
    EXPECT_EQ(variable.GetMaxIndepOffset(), 2u);
    EXPECT_TRUE(variable.getDirtyTracker()->isClean());
}

TEST(VariableChange, ShowsItsTrackerThroughTheStrategy)
{
    const Variable variable(QStringLiteral("x"));
    const auto strategy = variable.GetStrategyPtr().lock();
    const std::shared_ptr<AbstractDirtyTracker> tracker = strategy->getDirtyTracker();
    EXPECT_EQ(tracker, variable.getDirtyTracker());
}

// --- updates and reads

TEST(VariableChange, AnnouncesAnUpdateUnlessToldNotTo)
{
    Variable variable(QStringLiteral("x"));
    const SignalSpies spies(variable);
    variable.UpdateData(numbers({1}));
    EXPECT_EQ(spies.modified.count(), 1);
    variable.UpdateData(numbers({2}), /*notify=*/false);
    EXPECT_EQ(spies.modified.count(), 1);
    variable.UpdateDataAsCellArrayFromBVariant(numbers({3}));
    EXPECT_EQ(spies.modified.count(), 2);
    EXPECT_EQ(spies.count(), 2);
}

TEST(VariableChange, AnnouncesManyQuietUpdatesByOneCall)
{
    Variable variable(QStringLiteral("x"));
    const SignalSpies spies(variable);
    for (int i = 0; i < 10; ++i)
        variable.UpdateData(numbers({double(i)}), /*notify=*/false);
    EXPECT_EQ(spies.count(), 0);
    EXPECT_EQ(&variable.UpdateData(), &variable);
    EXPECT_EQ(spies.modified.count(), 1);
    EXPECT_EQ(spies.count(), 1);
}

TEST(VariableChange, MarksTheNotifierWhenDataAreStored)
{
    Variable variable(QStringLiteral("x"));
    variable.UpdateData(numbers({1}), /*notify=*/false);
    EXPECT_TRUE(variable.getNotifier()->getDirtyTracker()->isDirty());
    EXPECT_EQ(variable.getNotifier()->getDirtyTracker()->getUpdateCount(), 0);
    variable.UpdateData();
    EXPECT_TRUE(variable.getNotifier()->getDirtyTracker()->isClean());
    EXPECT_EQ(variable.getNotifier()->getDirtyTracker()->getUpdateCount(), 1);
}

TEST(VariableChange, ShowsTheNewDataToTheHandlersOfAnUpdate)
{
    Variable variable(QStringLiteral("x"), numbers({1}));
    ConnectedClient client(variable);
    std::uint64_t seen = 0;
    bool wasDirty = false;
    client.onUpdate = [&] {
        wasDirty = variable.getDirtyTracker()->isDirty();
        seen = variable.GetMaxIndepOffset();
    };
    variable.UpdateData(numbers({1, 2, 3}));
    EXPECT_TRUE(wasDirty);
    EXPECT_EQ(seen, 3u);
}

TEST(VariableChange, MarksWhatObservesTheVariableOnEveryUpdate)
{
    Variable variable(QStringLiteral("x"));
    const Variable observer(QStringLiteral("y"));
    AbstractDirtyTracker::bind(variable.getDirtyTracker(), observer.getDirtyTracker());
    variable.UpdateData(numbers({1}), /*notify=*/false);
    EXPECT_TRUE(variable.getDirtyTracker()->isDirty());
    EXPECT_TRUE(observer.getDirtyTracker()->isDirty());
}

TEST(VariableChange, LeavesATrackerAloneThatIsUpdating)
{
    Variable variable(QStringLiteral("x"), numbers({1}));
    const auto tracker = variable.getDirtyTracker();
    tracker->updateIfDirty([&] {
        variable.UpdateData(numbers({1, 2}));
        EXPECT_TRUE(tracker->isUpdating());
        EXPECT_EQ(variable.GetMaxIndepOffset(), 2u);
        EXPECT_TRUE(tracker->isUpdating());
    });
    EXPECT_TRUE(tracker->isClean());
    EXPECT_EQ(tracker->getUpdateCount(), 1);
}

struct Reader
{
    const char* name;
    std::function<void(const Variable&)> read;
};

class VariableRead : public testing::TestWithParam<Reader>
{
};

INSTANTIATE_TEST_SUITE_P(
    Operations, VariableRead,
    testing::Values(Reader{"GetData", [](const Variable& v) { v.GetData(); }},
                    Reader{"GetMaxIndepOffset", [](const Variable& v) { v.GetMaxIndepOffset(); }},
                    Reader{"GetElementDimCount", [](const Variable& v) { v.GetElementDimCount(); }},
                    Reader{"GetElementShape",
                           [](const Variable& v) {
                               std::vector<std::uint64_t> shape;
                               v.GetElementShape(&shape);
                           }},
                    Reader{"GetValueAt",
                           [](const Variable& v) {
                               BVariant out;
                               v.GetValueAt(&out, 0);
                           }},
                    Reader{"GetValueRange",
                           [](const Variable& v) {
                               BVariant out;
                               v.GetValueRange(&out, 0, 0);
                           }}),
    TestSupport::CaseName{});

TEST_P(VariableRead, CleansAnExplicitVariableOnce)
{
    Variable variable(QStringLiteral("x"));
    const auto tracker = variable.getDirtyTracker();
    GetParam().read(variable);
    EXPECT_EQ(tracker->getUpdateCount(), 0);
    variable.UpdateData(numbers({1, 2}));
    EXPECT_TRUE(tracker->isDirty());
    GetParam().read(variable);
    EXPECT_EQ(tracker->getUpdateCount(), 1);
    EXPECT_TRUE(tracker->isClean());
    GetParam().read(variable);
    EXPECT_EQ(tracker->getUpdateCount(), 1);
    EXPECT_TRUE(tracker->isClean());
}

TEST_P(VariableRead, SendsNoSignal)
{
    const Variable variable(QStringLiteral("x"), numbers({1, 2}));
    const SignalSpies spies(variable);
    GetParam().read(variable);
    EXPECT_EQ(spies.count(), 0);
}

TEST(VariableChange, IsCleanedByANewExplicitStrategyThatReads)
{
    Variable variable(QStringLiteral("x"), numbers({1, 2}));
    const ExplicitDataVarStrategy strategy(&variable);
    EXPECT_TRUE(variable.getDirtyTracker()->isClean());
    EXPECT_EQ(variable.getDirtyTracker()->getUpdateCount(), 1);
}

// --- names and places

TEST(VariableChange, AnnouncesANewNameAndANewPlace)
{
    PropertyObject top(QStringLiteral("top"));
    auto* folder = insertFolder(top, QStringLiteral("folder"));
    auto owned = std::make_unique<Variable>(QStringLiteral("x"));
    Variable* variable = owned.get();
    const SignalSpies spies(*variable);

    ASSERT_GE(variable->SetName(QStringLiteral("y")), 0);
    EXPECT_EQ(spies.renamed.count(), 1);
    ASSERT_NE(insert(*folder, std::move(owned)), nullptr);
    EXPECT_EQ(spies.renamed.count(), 2);
    ASSERT_GE(folder->SetName(QStringLiteral("other")), 0);
    EXPECT_EQ(spies.renamed.count(), 3);
    ASSERT_GE(folder->RemoveProperty(QStringLiteral("y")), 0);
    EXPECT_EQ(spies.renamed.count(), 4);
    EXPECT_EQ(spies.count(), 4);
    delete variable;
}

TEST(VariableChange, StandsAHandlerThatDestroysTheVariable)
{
    PropertyObject folder;
    Client client;
    const auto destroy = [&] { EXPECT_GE(folder.DeleteProperty(QStringLiteral("x")), 0); };
    client.onUpdate = destroy;
    client.onRenamed = destroy;

    client.ConnectTo(*insertVariable(folder, QStringLiteral("x")), Qt::DirectConnection);
    static_cast<Variable*>(folder.GetPropertyPtr(QStringLiteral("x")))->UpdateData(numbers({1}));
    EXPECT_EQ(client.updates, 1);
    EXPECT_EQ(folder.GetPropertyCount(), 0);

    client.ConnectTo(*insertVariable(folder, QStringLiteral("w")), Qt::DirectConnection);
    EXPECT_GE(folder.GetPropertyPtr(QStringLiteral("w"))->SetName(QStringLiteral("x")), 0);
    EXPECT_EQ(client.renamings, 1);
    EXPECT_EQ(folder.GetPropertyCount(), 0);

    // The removal was within the guard of the signal that led to it.
    EXPECT_EQ(client.removals, 0);
}

// --- destruction

TEST(VariableRemoval, IsAnnouncedOnceByAPlainVariableAndTwiceByASubclass)
{
    auto plain = std::make_unique<Variable>(QStringLiteral("x"));
    const ConnectedClient ofPlain(*plain);
    plain.reset();
    EXPECT_EQ(ofPlain.removals, 1);

    auto subclass = std::make_unique<ExplicitDataVar>(QStringLiteral("x"));
    const ConnectedClient ofSubclass(*subclass);
    subclass.reset();
    EXPECT_EQ(ofSubclass.removals, 2);
    EXPECT_EQ(ofSubclass.renamings, 0);
}

TEST(VariableRemoval, IsAnnouncedWhenTheFolderAboveGoes)
{
    auto top = std::make_unique<PropertyObject>();
    auto* folder = insertFolder(*top, QStringLiteral("folder"));
    const ConnectedClient client(*insertVariable(*folder, QStringLiteral("x")));
    top.reset();
    EXPECT_EQ(client.removals, 1);
    EXPECT_EQ(client.renamings, 0);
}

TEST(VariableRemoval, FindsNameAndDataStillThere)
{
    auto variable = std::make_unique<Variable>(QStringLiteral("x"), numbers({1, 2}));
    Variable* raw = variable.get();
    ConnectedClient client(*raw);
    QString name;
    std::uint64_t offsets = 0;
    client.onRemoved = [&] {
        name = raw->GetName();
        offsets = raw->GetMaxIndepOffset();
    };
    variable.reset();
    EXPECT_EQ(name, QStringLiteral("x"));
    EXPECT_EQ(offsets, 2u);
}

TEST(VariableRemoval, ReleasesNotifierTrackerAndStrategy)
{
    auto variable = std::make_unique<Variable>(QStringLiteral("x"));
    const std::weak_ptr<VariableTracker> tracker = variable->getDirtyTracker();
    const std::weak_ptr<IVariableStrategy> strategy = variable->GetStrategyPtr();
    const QPointer<Variable::Notifier> notifier = variable->getNotifier();
    variable.reset();
    EXPECT_TRUE(tracker.expired());
    EXPECT_TRUE(strategy.expired());
    EXPECT_TRUE(notifier.isNull());
}

TEST(VariableRemoval, IsNotAnnouncedByAMovedFromVariable)
{
    auto source = std::make_unique<Variable>(QStringLiteral("x"));
    const ConnectedClient client(*source);
    const Variable target(std::move(*source));
    source.reset();
    EXPECT_EQ(client.removals, 0);
}

// --- copies

void expectFreshTracking(const Variable& copy, const Variable& source)
{
    ASSERT_NE(copy.getNotifier(), nullptr);
    EXPECT_NE(copy.getNotifier(), source.getNotifier());
    ASSERT_NE(copy.getDirtyTracker(), nullptr);
    EXPECT_NE(copy.getDirtyTracker(), source.getDirtyTracker());
    EXPECT_TRUE(copy.getDirtyTracker()->isClean());
    EXPECT_EQ(copy.getDirtyTracker()->getUpdateCount(), 0);
    EXPECT_TRUE(copy.getDirtyTracker()->getObservers().nodes().empty());
    EXPECT_TRUE(copy.getDirtyTracker()->getSources().nodes().empty());
}

TEST(VariableCopyTracking, IsNewForACopyConstructionAndAClone)
{
    const Variable source(QStringLiteral("x"), numbers({1}));
    const ConnectedClient client(source);
    ASSERT_TRUE(source.getDirtyTracker()->isDirty());

    const Variable copy(source);
    expectFreshTracking(copy, source);
    const std::unique_ptr<Variable> clone(static_cast<Variable*>(source.Clone()));
    expectFreshTracking(*clone, source);
    const ExplicitDataVar typed;
    const ExplicitDataVar typedCopy(typed);
    expectFreshTracking(typedCopy, typed);

    copy.getNotifier()->Modify();
    EXPECT_EQ(client.updates, 0);
    EXPECT_TRUE(source.getDirtyTracker()->isDirty());
}

TEST(VariableCopyTracking, KeepsTheNotifierAndRenewsTheTrackerInAnAssignment)
{
    const Variable source(QStringLiteral("x"), numbers({1, 2}));
    Variable target(QStringLiteral("y"), numbers({3}));
    const Variable observer(QStringLiteral("z"));
    const ConnectedClient client(target);
    const Variable::Notifier* notifier = target.getNotifier();
    const auto former = target.getDirtyTracker();
    AbstractDirtyTracker::bind(former, observer.getDirtyTracker());
    ASSERT_TRUE(former->isDirty());

    target = source;

    EXPECT_EQ(target.getNotifier(), notifier);
    EXPECT_NE(target.getDirtyTracker(), former);
    expectFreshTracking(target, source);
    EXPECT_EQ(client.updates + client.removals + client.renamings, 0);
    target.UpdateData(numbers({4}));
    EXPECT_EQ(client.updates, 1);
}

TEST(VariableCopyTracking, IsUntouchedByAnAssignmentToItself)
{
    Variable variable(QStringLiteral("x"), numbers({1}));
    const auto tracker = variable.getDirtyTracker();
    const Variable& alias = variable;
    variable = alias;
    EXPECT_EQ(variable.getDirtyTracker(), tracker);
    EXPECT_TRUE(tracker->isDirty());
}

TEST(VariableMoveTracking, HandsNotifierAndTrackerOn)
{
    for (const bool byConstruction : {true, false}) {
        SCOPED_TRACE(byConstruction);
        Variable source(QStringLiteral("x"), numbers({1}));
        const Variable::Notifier* notifier = source.getNotifier();
        const auto tracker = source.getDirtyTracker();
        const ConnectedClient client(source);

        std::unique_ptr<Variable> target;
        if (byConstruction) {
            target = std::make_unique<Variable>(std::move(source));
        } else {
            target = std::make_unique<Variable>(QStringLiteral("y"));
            *target = std::move(source);
        }

        EXPECT_EQ(target->getNotifier(), notifier);
        EXPECT_EQ(target->getDirtyTracker(), tracker);
        EXPECT_TRUE(tracker->isDirty());
        EXPECT_EQ(source.getNotifier(), nullptr);
        EXPECT_EQ(source.getDirtyTracker(), nullptr);
        EXPECT_EQ(source.getObserver(), nullptr);
        EXPECT_EQ(client.updates + client.removals + client.renamings, 0);
        target.reset();
        EXPECT_EQ(client.removals, 1);
    }
}

TEST(VariableMoveTracking, ReleasesItsOwnNotifierWithoutASignal)
{
    Variable source(QStringLiteral("x"));
    Variable target(QStringLiteral("y"));
    const QPointer<Variable::Notifier> former = target.getNotifier();
    const std::weak_ptr<VariableTracker> formerTracker = target.getDirtyTracker();
    const ConnectedClient client(target);
    target = std::move(source);
    EXPECT_TRUE(former.isNull());
    EXPECT_TRUE(formerTracker.expired());
    EXPECT_EQ(client.removals, 0);
}

// Taking the source out of its folder tells it of a change of place: it still needs its notifier then.
TEST(VariableMoveTracking, HasANotifierOnBothSidesWhileThePlaceIsTakenOver)
{
    PropertyObject folder;
    const std::unique_ptr<Variable> source(insertVariable(folder, QStringLiteral("x")));
    Variable* target = std::make_unique<Variable>(QStringLiteral("y")).release();
    ConnectedClient client(*source);
    int withNotifier = 0;
    client.onRenamed = [&] {
        withNotifier += source->getNotifier() && source->getNotifier() == target->getNotifier();
    };
    *target = std::move(*source);
    EXPECT_EQ(client.renamings, 2); // the source out, the target in
    EXPECT_EQ(withNotifier, 2);
    EXPECT_EQ(target->GetParent(), &folder);
}

TEST(VariableMoveTracking, LeavesAVariableThatIsMovedToItselfWithout)
{
    Variable variable(QStringLiteral("x"));
    Variable& alias = variable;
    variable = std::move(alias);
    EXPECT_EQ(variable.getNotifier(), nullptr);
    EXPECT_EQ(variable.getDirtyTracker(), nullptr);
    variable.UpdateData(numbers({1}));
    variable.UpdateData();
    EXPECT_GE(variable.SetName(QStringLiteral("y")), 0);
    EXPECT_EQ(variable.GetName(), QStringLiteral("y"));
}

TEST(VariableMoveTracking, TellsOfBothStepsOfAMoveToItself)
{
    PropertyObject folder;
    auto* const variable = new Variable(QStringLiteral("x"));
    ASSERT_GE(folder.InsertProperty(variable), 0);
    int renamings = 0;
    QObject::connect(variable->getNotifier(), &Variable::Notifier::Renamed, [&] { ++renamings; });
    Variable& alias = *variable;
    *variable = std::move(alias);
    EXPECT_EQ(renamings, 2); // out of its place and in again
}

TEST(VariableRemoval, AVariableThatIsMovedAwayAtItsEndIsCopied)
{
    Variable kept(QStringLiteral("kept"));
    {
        ExplicitDataVar going(QStringLiteral("going"));
        going.UpdateData(numbers({1, 2}));
        QObject::connect(going.getNotifier(), &Variable::Notifier::Removed, [&] {
            Variable& source = going;
            kept = std::move(source);
        });
    }
    BVariant value;
    ASSERT_GE(kept.GetValueAt(&value, 1), 0);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(value), 2.0);
    kept.UpdateData(numbers({3}));
    EXPECT_EQ(kept.GetMaxIndepOffset(), 1U);
}

TEST(VariableCopyTracking, GivesANewCleanTrackerAlsoToAVariableThatEnds)
{
    const Variable source(QStringLiteral("source"), numbers({1}));
    bool isNew = false;
    bool isClean = false;
    {
        Variable going(QStringLiteral("going"), numbers({2}));
        QObject::connect(going.getNotifier(), &Variable::Notifier::Removed, [&] {
            const auto former = going.getDirtyTracker();
            going = source;
            isNew = going.getDirtyTracker() != former;
            isClean = going.getDirtyTracker() && going.getDirtyTracker()->isClean();
        });
    }
    EXPECT_TRUE(isNew);
    EXPECT_TRUE(isClean);
}

TEST(VariableCopyTracking, EndsWhenAFormerChildsHandlerDestroysTheTarget)
{
    PropertyObject folder;
    auto* const target = new Variable(QStringLiteral("target"));
    ASSERT_GE(folder.InsertProperty(target), 0);
    auto* const child = new Variable(QStringLiteral("child"));
    ASSERT_GE(target->InsertProperty(child), 0);
    QObject::connect(child->getNotifier(), &Variable::Notifier::Removed,
                     [&] { folder.DeleteProperty(QStringLiteral("target")); });
    const Variable source(QStringLiteral("source"), numbers({1}));
    *target = source;
    EXPECT_FALSE(folder.HasProperty(QStringLiteral("target")));
}

TEST(VariableMovedFromTracking, StandsAPlaceInATreeAndABinding)
{
    PropertyObject folder;
    auto source = std::make_unique<Variable>(QStringLiteral("x"));
    const Variable target(std::move(*source));
    AbstractDirtyTracker::bind(source->getDirtyTracker(), target.getDirtyTracker());
    AbstractDirtyTracker::drop(target.getDirtyTracker(), source->getDirtyTracker());
    source->setObserver(std::make_shared<DataObserver>());
    EXPECT_EQ(source->getObserver(), nullptr);
    EXPECT_TRUE(target.getDirtyTracker()->getSources().nodes().empty());
    EXPECT_NE(insert(folder, std::move(source)), nullptr);
}

TEST(VariableMovedFromTracking, IsMissingAndNotMissedWithANewStrategy)
{
    Variable source(QStringLiteral("x"), numbers({1}));
    const Variable target(std::move(source));
    source.SetStrategy<ExplicitDataVarStrategy>();
    source.UpdateData(numbers({1, 2}));
    EXPECT_EQ(source.GetMaxIndepOffset(), 2u);
    EXPECT_EQ(source.getNotifier(), nullptr);
    EXPECT_EQ(source.GetStrategyPtr().lock()->getDirtyTracker(), nullptr);
}

TEST(VariableMovedFromTracking, IsRenewedByACopyAssignment)
{
    Variable source(QStringLiteral("x"));
    const Variable target(std::move(source));
    const Variable fresh(QStringLiteral("y"));
    source = fresh;
    expectFreshTracking(source, fresh);
    EXPECT_NE(source.getNotifier(), target.getNotifier());
    const SignalSpies spies(source);
    source.UpdateData(numbers({1}));
    EXPECT_EQ(spies.modified.count(), 1);
}

TEST(VariableMoveTracking, AnnouncesAnUpdateThatTheStrategyWritesToTheSource)
{
    Variable source(QStringLiteral("x"), numbers({1}));
    Variable target(std::move(source));
    const SignalSpies spies(target);
    target.GetData();
    target.UpdateData(numbers({1, 2}));
    EXPECT_EQ(spies.modified.count(), 1);
    EXPECT_TRUE(target.getDirtyTracker()->isDirty());
}

// --- reload

TEST(VariableReloadTracking, IsThatOfTheCreator)
{
    Variable variable(QStringLiteral("x"), numbers({1}));
    const Variable::Notifier* notifier = variable.getNotifier();
    const auto tracker = variable.getDirtyTracker();
    const SignalSpies spies(variable);
    variable.OnDeserialization();
    EXPECT_EQ(variable.getNotifier(), notifier);
    EXPECT_EQ(variable.getDirtyTracker(), tracker);
    EXPECT_EQ(spies.count(), 0);
}

} // namespace
} // namespace Orrery
