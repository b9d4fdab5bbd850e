#include "tracking/Notifier.h"

#include "tests/support/CaseName.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tracking/DataObserver.h"

#include <QMetaMethod>
#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery {
namespace {

using Notifier = Variable::Notifier;
using Slot = void (Notifier::*)();

struct GuardedSlot
{
    const char* name;
    Slot slot;
    Slot signal;
};

class NotifierSlot : public testing::TestWithParam<GuardedSlot>
{
};

INSTANTIATE_TEST_SUITE_P(Slots, NotifierSlot,
                         testing::Values(GuardedSlot{"Modify", &Notifier::Modify, &Notifier::Modified},
                                         GuardedSlot{"Remove", &Notifier::Remove, &Notifier::Removed},
                                         GuardedSlot{"PathChanged", &Notifier::PathChanged,
                                                     &Notifier::Renamed}),
                         TestSupport::CaseName{});

TEST(Notifier, HasTheMetaObjectThatClientsConnectBy)
{
    struct Method
    {
        const char* signature;
        QMetaMethod::MethodType type;
    };
    const Method methods[] = {{"Modified()", QMetaMethod::Signal}, {"Removed()", QMetaMethod::Signal},
                              {"Renamed()", QMetaMethod::Signal},  {"Modify()", QMetaMethod::Slot},
                              {"Remove()", QMetaMethod::Slot},     {"PathChanged()", QMetaMethod::Slot}};
    const QMetaObject& meta = Notifier::staticMetaObject;
    EXPECT_STREQ(meta.className(), "Orrery::Variable::Notifier");
    EXPECT_STREQ(meta.superClass()->className(), "QObject");
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 6);
    for (int i = 0; i < 6; ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        EXPECT_STREQ(method.methodSignature().constData(), methods[i].signature);
        EXPECT_EQ(method.methodType(), methods[i].type) << i;
        EXPECT_EQ(method.access(), QMetaMethod::Public) << i;
        EXPECT_EQ(method.returnType(), int(QMetaType::Void)) << i;
    }
}

TEST(Notifier, StartsCleanAndWithoutAnObserver)
{
    const Notifier notifier;
    ASSERT_NE(notifier.getDirtyTracker(), nullptr);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 0);
    EXPECT_EQ(notifier.getObserver(), nullptr);
}

TEST(Notifier, HoldsTheObserverThatItIsGiven)
{
    Notifier notifier;
    const auto first = std::make_shared<DataObserver>();
    const auto second = std::make_shared<DataObserver>();
    notifier.setObserver(first);
    EXPECT_EQ(notifier.getObserver(), first);
    notifier.setObserver(second);
    EXPECT_EQ(notifier.getObserver(), second);
    EXPECT_EQ(first.use_count(), 1);
    notifier.setObserver(nullptr);
    EXPECT_EQ(notifier.getObserver(), nullptr);
}

TEST_P(NotifierSlot, EmitsItsSignalAndNoOther)
{
    Notifier notifier;
    QSignalSpy modified(&notifier, &Notifier::Modified);
    QSignalSpy removed(&notifier, &Notifier::Removed);
    QSignalSpy renamed(&notifier, &Notifier::Renamed);
    QSignalSpy expected(&notifier, GetParam().signal);
    (notifier.*GetParam().slot)();
    EXPECT_EQ(expected.count(), 1);
    EXPECT_EQ(modified.count() + removed.count() + renamed.count(), 1);
}

TEST_P(NotifierSlot, EmitsEachTimeAndCountsAndEndsClean)
{
    Notifier notifier;
    QSignalSpy spy(&notifier, GetParam().signal);
    (notifier.*GetParam().slot)();
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 1);
    (notifier.*GetParam().slot)();
    EXPECT_EQ(spy.count(), 2);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 2);
}

TEST_P(NotifierSlot, EmitsWhenTheTrackerIsDirtyAlready)
{
    Notifier notifier;
    QSignalSpy spy(&notifier, GetParam().signal);
    notifier.getDirtyTracker()->markDirty();
    (notifier.*GetParam().slot)();
    EXPECT_EQ(spy.count(), 1);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
}

TEST_P(NotifierSlot, SwallowsEverySlotThatAHandlerCalls)
{
    Notifier notifier;
    int handled = 0;
    const auto handler = [&] {
        ++handled;
        EXPECT_TRUE(notifier.getDirtyTracker()->isUpdating());
        notifier.Modify();
        notifier.Remove();
        notifier.PathChanged();
        EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 1);
    };
    for (const Slot signal : {&Notifier::Modified, &Notifier::Removed, &Notifier::Renamed})
        QObject::connect(&notifier, signal, &notifier, handler, Qt::DirectConnection);
    (notifier.*GetParam().slot)();
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 1);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
}

TEST_P(NotifierSlot, EmitsAgainFromAHandlerAfterADirtyMarkOfASource)
{
    Notifier notifier;
    const auto source = std::make_shared<Notifier::Tracker>(nullptr);
    AbstractDirtyTracker::bind(source, notifier.getDirtyTracker());
    int handled = 0;
    QObject::connect(&notifier, GetParam().signal, &notifier, [&] {
        if (++handled < 3) {
            source->markDirty(); // the guard is the state, and a source sets it from updating to dirty
            (notifier.*GetParam().slot)();
            source->updateIfDirty([] {});
        }
    });
    (notifier.*GetParam().slot)();
    EXPECT_EQ(handled, 3);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
}

TEST_P(NotifierSlot, MarksWhatObservesTheNotifier)
{
    Notifier notifier;
    const auto observer = std::make_shared<Notifier::Tracker>(nullptr);
    AbstractDirtyTracker::bind(notifier.getDirtyTracker(), observer);
    (notifier.*GetParam().slot)();
    EXPECT_TRUE(observer->isDirty());
}

TEST_P(NotifierSlot, IsSilentAfterAnExceptionOutOfAHandler)
{
    Notifier notifier;
    QSignalSpy spy(&notifier, GetParam().signal);
    const auto connection = QObject::connect(&notifier, GetParam().signal, &notifier,
                                             [] { throw std::runtime_error("the plot is gone"); });
    EXPECT_THROW((notifier.*GetParam().slot)(), std::runtime_error);
    EXPECT_TRUE(notifier.getDirtyTracker()->isUpdating());
    QObject::disconnect(connection);
    ASSERT_EQ(spy.count(), 1);

    notifier.Modify();
    notifier.Remove();
    notifier.PathChanged();
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 1);
}

TEST_P(NotifierSlot, IsPassedByADirectCallOfItsSignal)
{
    Notifier notifier;
    QSignalSpy spy(&notifier, GetParam().signal);
    (notifier.*GetParam().signal)();
    EXPECT_EQ(spy.count(), 1);
    EXPECT_TRUE(notifier.getDirtyTracker()->isClean());
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 0);

    // Even within the guard.
    QObject::connect(&notifier, GetParam().signal, &notifier, [&] {
        if (spy.count() < 4)
            (notifier.*GetParam().signal)();
    });
    (notifier.*GetParam().slot)();
    EXPECT_EQ(spy.count(), 4);
    EXPECT_EQ(notifier.getDirtyTracker()->getUpdateCount(), 1);
}

TEST_P(NotifierSlot, LetsAHandlerDestroyTheNotifier)
{
    auto notifier = std::make_unique<Notifier>();
    const auto tracker = notifier->getDirtyTracker();
    QObject receiver;
    QObject::connect(notifier.get(), GetParam().signal, &receiver, [&] { notifier.reset(); });
    (notifier.get()->*GetParam().slot)();
    EXPECT_EQ(notifier, nullptr);
    EXPECT_TRUE(tracker->isClean());
}

TEST(Notifier, CanBeConnectedToTheSlotsOfAnother)
{
    Notifier first;
    Notifier second;
    ASSERT_TRUE(QObject::connect(&first, SIGNAL(Removed()), &second, SLOT(Remove()), Qt::UniqueConnection));
    EXPECT_FALSE(QObject::connect(&first, SIGNAL(Removed()), &second, SLOT(Remove()), Qt::UniqueConnection));
    QSignalSpy spy(&second, &Notifier::Removed);
    first.Remove();
    EXPECT_EQ(spy.count(), 1);
}

} // namespace
} // namespace Orrery
