// One thread computes a function variable while others read it, write it and change it.
#include "tests/variables/FunctionVarTestSupport.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

/// A measurement that stops in the middle of its run until it is told to go on.
class StoppedRun : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    FunctionVar* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    Variable* x = insert(top, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
    std::promise<void> entered;
    std::promise<void> goOn;

    /// What a run does behind the stop.
    HostMeasurement::Body afterwards = &storeTotal;

    RegisteredMeasurement stopping{[this](HostMeasurement& run) {
        entered.set_value();
        goOn.get_future().wait();
        return afterwards(run);
    }};

    void SetUp() override
    {
        f->UpdateData(numbers({7}));
        ASSERT_EQ(ToDoubles(f->GetData()), Doubles{7}); // nothing to compute with yet
        stopping.giveTo(*f);
        ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    }

    /// Begins to compute on a thread of its own; returns once that stands in the run.
    std::future<Doubles> beginRead()
    {
        auto result = std::async(std::launch::async, [this] { return ToDoubles(f->GetData()); });
        entered.get_future().wait();
        return result;
    }
};

TEST_F(StoppedRun, LetsAReaderHaveTheStoredValueAtOnce)
{
    auto computed = beginRead();
    EXPECT_TRUE(isUpdating(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{7});
    EXPECT_EQ(f->GetMaxIndepOffset(), 1u);
    BVariant out;
    EXPECT_EQ(f->GetValueAt(&out, 0), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(out), Doubles{7});
    EXPECT_EQ(f->GetValueRange(&out, 0, 0), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(out), Doubles{7});
    EXPECT_EQ(f->GetFunction()->GetName(), QStringLiteral("Function"));
    QList<AbstractProperty*> arguments;
    EXPECT_EQ(f->GetArguments(&arguments), ER_SUCCESS);
    EXPECT_EQ(arguments.size(), 1);

    goOn.set_value();
    EXPECT_EQ(computed.get(), Doubles{1});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(stopping.runs(), 1);
}

TEST_F(StoppedRun, DropsDataThatAnotherThreadWritesMeanwhile)
{
    auto computed = beginRead();
    EXPECT_EQ(&f->UpdateData(numbers({99})), f);
    EXPECT_EQ(stored(*f), Doubles{7});
    EXPECT_TRUE(isUpdating(*f)); // no mark gets through either
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{7});

    goOn.set_value();
    EXPECT_EQ(computed.get(), Doubles{1});
    EXPECT_TRUE(isClean(*f));
    f->UpdateData(numbers({99}));
    EXPECT_EQ(stored(*f), Doubles{99});
}

TEST_F(StoppedRun, LeavesAMarkOfAnArgumentOnAnotherThreadToBeOverwritten)
{
    auto computed = beginRead();
    x->getDirtyTracker()->markDirty();
    EXPECT_TRUE(isDirty(*f));
    goOn.set_value();
    EXPECT_EQ(computed.get(), Doubles{1});
    EXPECT_TRUE(isClean(*f));
}

// The lock is free again when the run has ended, however it ended.
TEST_F(StoppedRun, FreesTheLockAfterAnExceptionOfAnotherKind)
{
    afterwards = [](HostMeasurement&) -> Variable* { throw 42; };
    auto computed = beginRead();
    goOn.set_value();
    EXPECT_THROW(computed.get(), int);
    f->UpdateData(numbers({99}));
    EXPECT_EQ(stored(*f), Doubles{99});
}

TEST_F(StoppedRun, FreesTheLockAfterAStandardException)
{
    afterwards = [](HostMeasurement&) -> Variable* { throw std::runtime_error("boom"); };
    auto computed = beginRead();
    goOn.set_value();
    EXPECT_EQ(computed.get(), Doubles{7});
    f->UpdateData(numbers({99}));
    EXPECT_EQ(stored(*f), Doubles{99});
}

TEST(FunctionVarLock, IsFreedAfterAnArgumentThatCannotBeResolved)
{
    const RegisteredMeasurement total(&storeTotal);
    PropertyObject top;
    auto* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    total.giveTo(*f);
    f->AddArgumentRef(insertVariable(top, QStringLiteral("x")));
    top.DeleteProperty(QStringLiteral("x"));
    std::thread([f] { EXPECT_THROW(f->GetData(), std::logic_error); }).join();
    f->UpdateData(numbers({99}));
    EXPECT_EQ(stored(*f), Doubles{99});
}

// --- operations that wait for the run

struct WaitingCase
{
    const char* name;
    void (*change)(FunctionVar& f, Variable& x, const RegisteredMeasurement& next);
};

class Waiting : public StoppedRun, public testing::WithParamInterface<WaitingCase>
{
};

TEST_P(Waiting, UntilTheRunHasEnded)
{
    const RegisteredMeasurement next(&storeTotal);
    std::promise<void> begun;
    int argumentsInRun = -1;
    Function* const function = f->GetFunction();
    bool functionInRun = false;
    afterwards = [&](HostMeasurement&) -> Variable* {
        begun.get_future().wait();
        for (int i = 0; i < 100; ++i)
            std::this_thread::yield(); // time enough for one that doesn't wait
        QList<AbstractProperty*> arguments;
        f->GetArguments(&arguments);
        argumentsInRun = arguments.size();
        functionInRun = f->GetFunction() == function;
        throw 42; // so that the computing thread leaves the tree alone from then on
    };
    auto computed = beginRead();
    std::thread changing([&] {
        begun.set_value();
        GetParam().change(*f, *x, next);
    });
    goOn.set_value();
    EXPECT_THROW(computed.get(), int);
    changing.join();
    EXPECT_EQ(argumentsInRun, 1);
    EXPECT_TRUE(functionInRun);

    // And it was done then.
    QList<AbstractProperty*> arguments;
    f->GetArguments(&arguments);
    EXPECT_TRUE(arguments.size() != 1 || f->GetFunction()->GetFunctionName() == next.name());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, Waiting,
    testing::Values(WaitingCase{"AddArgumentRef",
                                [](FunctionVar& f, Variable& x, const RegisteredMeasurement&) {
                                    const MessageCapture log; // of the duplicate
                                    f.AddArgumentRef(&x);
                                }},
                    WaitingCase{"DeleteArguments", [](FunctionVar& f, Variable&,
                                                      const RegisteredMeasurement&) { f.DeleteArguments(); }},
                    WaitingCase{"SetFunction", [](FunctionVar& f, Variable&,
                                                  const RegisteredMeasurement& next) { next.giveTo(f); }}),
    [](const auto& test) { return std::string(test.param.name); });

// --- readers that come at once

TEST(FunctionVarReaders, OfADirtyOneComputeItOnceBetweenThem)
{
    const RegisteredMeasurement idle([](HostMeasurement& run) { return run.target(); });
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(numbers({7}));
    idle.giveTo(f);
    constexpr int rounds = 200;
    constexpr int readers = 3;
    for (int round = 1; round <= rounds; ++round) {
        f.getDirtyTracker()->markDirty();
        std::promise<void> begin;
        const std::shared_future<void> begun(begin.get_future());
        std::vector<std::future<Doubles>> results;
        for (int i = 0; i < readers; ++i) {
            results.push_back(std::async(std::launch::async, [&f, begun] {
                begun.wait();
                return ToDoubles(f.GetData());
            }));
        }
        begin.set_value();
        for (auto& result : results)
            ASSERT_EQ(result.get(), Doubles{7});
        ASSERT_EQ(idle.runs(), round);
        ASSERT_TRUE(isClean(f));
    }
}

// --- variables of their own threads

TEST(FunctionVarThreads, LeaveVariablesOfTheirOwnThreadsAlone)
{
    const RegisteredMeasurement total(&storeTotal);
    const auto work = [&total](double mark) {
        PropertyObject top;
        auto* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
        auto* x = insertVariable(top, QStringLiteral("x"));
        total.giveTo(*f);
        f->AddArgumentRef(x);
        for (int i = 0; i < 200; ++i) {
            x->UpdateData(BVariant(mark + i));
            if (ToDoubles(f->GetData()) != Doubles{mark + i})
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
