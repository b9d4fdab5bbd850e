// Two threads that write one Variable: nobody waits, somebody loses, nothing tears.
#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVarStrategy.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <thread>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

class LockableStrategy : public ExplicitDataVarStrategy
{
public:
    using ExplicitDataVarStrategy::ExplicitDataVarStrategy;
    using ExplicitDataVarStrategy::mutex;
};

TEST(PushContention, DropsDataWhileAnotherThreadHoldsTheMutex)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    LockableStrategy strategy(&variable);
    std::promise<void> held;
    std::promise<void> done;
    std::thread worker([&] {
        const std::lock_guard<std::recursive_mutex> working(strategy.mutex());
        held.set_value();
        done.get_future().wait();
    });
    held.get_future().wait();
    EXPECT_EQ(&strategy.UpdateData(MakeVector<double>({2}), IsCellArrayTrue), &variable);
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_EQ(ToDoubles(variable.GetData(&flag)), (Doubles{1}));
    EXPECT_EQ(flag, IsCellArrayFalse);
    done.set_value();
    worker.join();

    strategy.UpdateData(MakeVector<double>({3}), IsCellArrayFalse);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{3}));
}

// A value of a host's own type whose end takes time: it is replaced within a push of the other thread.
struct SlowToEnd
{
    std::shared_ptr<void> end;

    bool operator==(const SlowToEnd& other) const { return end == other.end; }
};

TEST(PushContention, DropsAnUpdateBesideThePushOfAnotherThread)
{
    std::promise<void> inPush;
    std::promise<void> goOn;
    const auto waitInPush = [&](void*) {
        inPush.set_value();
        goOn.get_future().wait();
    };
    Variable variable(QStringLiteral("x"));
    variable.UpdateData(BVariant::runTime(SlowToEnd{std::shared_ptr<void>(nullptr, waitInPush)}));

    std::thread worker([&] { variable.UpdateData(MakeVector<double>({1})); });
    inPush.get_future().wait();
    variable.UpdateData(MakeVector<double>({2}));
    goOn.set_value();
    worker.join();
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(PushContention, LeavesOneWholeArrayOfTheTwo)
{
    Variable variable(QStringLiteral("x"));
    constexpr int rounds = 2000;
    const auto write = [&variable](double mark) {
        const BVariant data(std::vector<double>(64, mark));
        for (int i = 0; i < rounds; ++i)
            variable.UpdateData(data, true, mark > 0 ? IsCellArrayTrue : IsCellArrayFalse);
    };
    std::thread other(write, 1.0);
    write(-1.0);
    other.join();

    IsCellArray flag = IsCellArrayFalse;
    const Doubles data = ToDoubles(variable.GetData(&flag));
    ASSERT_EQ(data.size(), 64u);
    EXPECT_EQ(std::count(data.begin(), data.end(), data.front()), 64);
    EXPECT_EQ(flag, data.front() > 0 ? IsCellArrayTrue : IsCellArrayFalse);
}

TEST(PushContention, LeavesVariablesOfTheirOwnThreadsAlone)
{
    const auto work = [](double mark) {
        Variable variable(QStringLiteral("x"));
        for (int i = 0; i < 200; ++i) {
            variable.UpdateData(BVariant(mark + i));
            const Variable copy(variable);
            BVariant out;
            if (copy.GetValueAt(&out, 0) < 0 || ToDoubles(out) != Doubles{mark + i})
                return false;
        }
        return true;
    };
    auto other = std::async(std::launch::async, work, 1000.0);
    EXPECT_TRUE(work(2000.0));
    EXPECT_TRUE(other.get());
}

} // namespace
} // namespace Orrery
