// Clones of one registered measurement run on several threads at once.
#include "Core/PolynomialMeasurement.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Orrery {
namespace {

/// Clones `pattern` and runs the clone on data of its own, time and again. How often that gave the data back.
int runClones(const Measurement<Variable>& pattern, double number, int rounds)
{
    int right = 0;
    for (int round = 0; round < rounds; ++round) {
        const BVariant data(std::vector<double>{number, double(round)});
        Variable input(QStringLiteral("x"), data);
        Variable output(QStringLiteral("y"));
        const std::unique_ptr<Measurement<Variable>> clone(pattern.clone());
        clone->push(&input)->set_output(&output)->set_parameter_values(doubles({number, number}));
        const std::unique_ptr<AbstractProbe> probe(clone->make_probe());
        if (probe->run(nullptr) == &output && exactlyEqual(output.GetData(), data))
            ++right;
    }
    return right;
}

TEST(MeasurementThreads, RunClonesOfOneMeasurementAtOnce)
{
    constexpr int threadCount = 4;
    constexpr int rounds = 200;
    const Measurement<Variable>* const pattern =
        Manager::Instance()->FindMeasurement(QStringLiteral("polynomial-1"));
    ASSERT_NE(pattern, nullptr);
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&right, pattern, i] { right += runClones(*pattern, i, rounds); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right.load(), threadCount * rounds);
}

TEST(MeasurementThreads, LookUpOneNameAtOnce)
{
    constexpr int threadCount = 4;
    std::atomic<int> found{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&found] {
            for (int round = 0; round < 200; ++round) {
                Manager& manager = *Manager::Instance();
                const auto* one = manager.FindMeasurement(QStringLiteral("polynomial-3"));
                const auto* same =
                    manager.GetMeasurement(QStringLiteral("Math"), QStringLiteral("polynomial-3"));
                if (one && one == same &&
                    manager.GetMeasurements(QStringLiteral("Math"))
                        .contains(const_cast<Measurement<Variable>*>(one)))
                    ++found;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(found.load(), threadCount * 200);
}

} // namespace
} // namespace Orrery
