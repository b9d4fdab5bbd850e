#include "Core/Measurement.h"
#include "Core/PolynomialMeasurement.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <stdexcept>

namespace Orrery {
namespace {

using HostProbe = Probe<HostMeasurement, Variable, Variable>;

/// A probe at an address that no other probe has had: entries of a ProbeTable stay for the rest of the process, and
/// the heap gives addresses out again.
HostProbe& freshProbe(HostMeasurement& measurement)
{
    constexpr std::size_t size = 1U << 14U;
    alignas(HostProbe) static unsigned char places[size][sizeof(HostProbe)];
    static std::size_t used = 0;
    if (used == size)
        throw std::length_error("no address left for a probe");
    return *new (places[used++]) HostProbe(&measurement);
}

/// What a table holds for a probe, or null. Asking leaves a null entry behind, which no later value minds.
template <class T>
T* remembered(AbstractProbe* probe)
{
    return ProbeTable<T>::remember(probe, nullptr);
}

class ProbeTest : public ::testing::Test
{
protected:
    HostMeasurement m_measurement;
    Variable m_first{QStringLiteral("first")};
    Variable m_second{QStringLiteral("second")};
};

TEST_F(ProbeTest, StartsWithItsMeasurementAlone)
{
    const HostProbe& probe = freshProbe(m_measurement);
    EXPECT_EQ(probe.measurement, &m_measurement);
    EXPECT_EQ(probe.input, nullptr);
    EXPECT_EQ(probe.output, nullptr);
}

TEST_F(ProbeTest, IsMadeByItsMeasurementAnewEachTime)
{
    const std::unique_ptr<AbstractProbe> one(m_measurement.make_probe());
    const std::unique_ptr<AbstractProbe> other(m_measurement.make_probe());
    EXPECT_NE(one, other);
    const auto* probe = dynamic_cast<const HostProbe*>(one.get());
    ASSERT_NE(probe, nullptr);
    EXPECT_EQ(probe->measurement, &m_measurement);
}

TEST_F(ProbeTest, AppliesToTheFirstOfTheStackOnly)
{
    m_measurement.push(&m_first)->push(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{&m_first}));
    EXPECT_EQ(probe.input, &m_first);
    EXPECT_EQ(m_measurement.get_stack(), (QList<Variable*>{&m_first, &m_second}));
}

TEST_F(ProbeTest, AppliesToNullWithAnEmptyStack)
{
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{nullptr}));
    EXPECT_EQ(probe.input, nullptr);
}

TEST_F(ProbeTest, AppliesToNullThatIsFirstOnTheStack)
{
    m_measurement.push(nullptr)->push(&m_second);
    freshProbe(m_measurement).run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{nullptr}));
}

TEST_F(ProbeTest, PrefersTheInputThatItHas)
{
    m_measurement.push(&m_first);
    HostProbe& probe = freshProbe(m_measurement);
    probe.input = &m_second;
    probe.run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{&m_second}));
    EXPECT_EQ(probe.input, &m_second);
}

TEST_F(ProbeTest, KeepsTheInputOfItsFirstRun)
{
    m_measurement.push(&m_first);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    m_measurement.clear()->push(&m_second);
    probe.run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{&m_first, &m_first}));
}

TEST_F(ProbeTest, PicksUpAnInputThatComesAfterARunWithoutOne)
{
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    m_measurement.push(&m_second);
    probe.run(nullptr);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{nullptr, &m_second}));
}

TEST_F(ProbeTest, IgnoresTheArgumentOfARun)
{
    m_measurement.push(&m_first)->set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    int anything = 0;
    EXPECT_EQ(probe.run(&anything), &m_second);
    EXPECT_EQ(probe.run(), &m_second);
    EXPECT_EQ(m_measurement.applied, (std::vector<Variable*>{&m_first, &m_first}));
    EXPECT_EQ(anything, 0);
}

TEST_F(ProbeTest, AnswersWithTheOutputAndKeepsIt)
{
    m_measurement.set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    AbstractProbe& asCallersSeeIt = probe;
    EXPECT_EQ(asCallersSeeIt.run(nullptr), &m_second);
    EXPECT_EQ(probe.output, &m_second);
    EXPECT_EQ(probe.measurement, &m_measurement);
}

TEST_F(ProbeTest, EntersOutputAndMeasurementInTheTablesOfTheirTypes)
{
    m_measurement.push(&m_first)->set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    EXPECT_EQ(remembered<Variable>(&probe), &m_second);
    EXPECT_EQ(remembered<HostMeasurement>(&probe), &m_measurement);
    EXPECT_EQ(remembered<Measurement<Variable>>(&probe), nullptr);
}

TEST_F(ProbeTest, EntersNothingBeforeItRuns)
{
    m_measurement.push(&m_first)->set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    EXPECT_EQ(remembered<Variable>(&probe), nullptr);
    EXPECT_EQ(remembered<HostMeasurement>(&probe), nullptr);
}

TEST_F(ProbeTest, AnswersNullWhenNothingCameOfTheFirstRun)
{
    HostProbe& probe = freshProbe(m_measurement);
    EXPECT_EQ(probe.run(nullptr), nullptr);
    EXPECT_EQ(probe.output, nullptr);
    EXPECT_EQ(remembered<HostMeasurement>(&probe), &m_measurement);
}

TEST_F(ProbeTest, AnswersWithTheFormerOutputWhenNothingCameOfALaterRun)
{
    m_measurement.set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    m_measurement.set_output(nullptr);
    EXPECT_EQ(probe.run(nullptr), &m_second);
    EXPECT_EQ(probe.output, &m_second);
}

TEST_F(ProbeTest, TakesTheLaterOutputOfTwo)
{
    m_measurement.set_output(&m_first);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    m_measurement.set_output(&m_second);
    EXPECT_EQ(probe.run(nullptr), &m_second);
    EXPECT_EQ(remembered<Variable>(&probe), &m_second);
}

TEST_F(ProbeTest, PassesAnExceptionOnAndEntersNothing)
{
    m_measurement.push(&m_first);
    m_measurement.hooks.onApply = [](Variable*) -> Variable* { throw std::runtime_error("no signal"); };
    HostProbe& probe = freshProbe(m_measurement);
    EXPECT_EQ(failureOf([&] { probe.run(nullptr); }), runtimeError("no signal"));
    EXPECT_EQ(probe.input, &m_first);
    EXPECT_EQ(probe.output, nullptr);
    EXPECT_EQ(probe.measurement, &m_measurement);
    EXPECT_EQ(remembered<Variable>(&probe), nullptr);
    EXPECT_EQ(remembered<HostMeasurement>(&probe), nullptr);
}

TEST_F(ProbeTest, KeepsItsOutputThroughARunThatFails)
{
    m_measurement.set_output(&m_second);
    HostProbe& probe = freshProbe(m_measurement);
    probe.run(nullptr);
    m_measurement.hooks.onApply = [](Variable*) -> Variable* { throw std::out_of_range("gone"); };
    EXPECT_EQ(failureOf([&] { probe.run(nullptr); }), outOfRange("gone"));
    EXPECT_EQ(probe.output, &m_second);
    EXPECT_EQ(remembered<Variable>(&probe), &m_second);
    m_measurement.hooks.onApply = nullptr;
    EXPECT_EQ(probe.run(nullptr), &m_second);
}

TEST_F(ProbeTest, DestroysNothingOfWhatItPointsTo)
{
    ConnectedClient ofInput(m_first);
    ConnectedClient ofOutput(m_second);
    m_measurement.push(&m_first)->set_output(&m_second);
    std::unique_ptr<AbstractProbe> probe(m_measurement.make_probe());
    probe->run(nullptr);
    probe.reset();
    EXPECT_EQ(ofInput.removals, 0);
    EXPECT_EQ(ofOutput.removals, 0);
    EXPECT_EQ(HostMeasurement::live().count(&m_measurement), 1U);
}

// Entries outlive the probe; the next probe at its address inherits them.
TEST_F(ProbeTest, InheritsTheOutputOfAFormerProbeAtItsAddress)
{
    static std::optional<HostProbe> place;
    m_measurement.set_output(&m_second);
    place.emplace(&m_measurement).run(nullptr);
    place.reset();

    HostMeasurement other;
    HostProbe& later = place.emplace(&other);
    EXPECT_EQ(later.output, nullptr);
    EXPECT_EQ(later.run(nullptr), &m_second);
    EXPECT_EQ(later.measurement, &other);
    other.set_output(&m_first);
    EXPECT_EQ(later.run(nullptr), &m_first);
}

TEST_F(ProbeTest, KeepsTheEntriesOfTwoProbesApart)
{
    HostMeasurement other;
    m_measurement.set_output(&m_first);
    other.set_output(&m_second);
    HostProbe& one = freshProbe(m_measurement);
    HostProbe& two = freshProbe(other);
    one.run(nullptr);
    two.run(nullptr);
    EXPECT_EQ(remembered<Variable>(&one), &m_first);
    EXPECT_EQ(remembered<Variable>(&two), &m_second);
}

TEST_F(ProbeTest, KeepsItsFieldsInTheirOrder)
{
    const HostProbe& probe = freshProbe(m_measurement);
    const void* const first = &probe.measurement;
    const void* const second = &probe.input;
    const void* const third = &probe.output;
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
}

// A host's measurement that computes: each run reads the input anew.
TEST_F(ProbeTest, RunsAHostsOwnComputation)
{
    m_first.UpdateData(numbers({1, 2, 3}));
    m_measurement.push(&m_first)->set_output(&m_second);
    m_measurement.hooks.onApply = [this](Variable* input) {
        std::vector<double> values = ToDoubles(input->GetData());
        for (double& value : values)
            value *= 2;
        m_second.UpdateData(BVariant(std::move(values)));
        return &m_second;
    };
    HostProbe& probe = freshProbe(m_measurement);
    EXPECT_EQ(ToDoubles(probe.run(nullptr)->GetData()), (std::vector<double>{2, 4, 6}));
    m_first.UpdateData(numbers({-1}));
    EXPECT_EQ(ToDoubles(probe.run(nullptr)->GetData()), (std::vector<double>{-2}));
}

template <class T>
class ProbeTableTest : public ::testing::Test
{
};

using TableTypes = ::testing::Types<Measurement<Variable>, Variable, PolynomialMeasurement<1>,
                                    PolynomialMeasurement<2>, PolynomialMeasurement<3>, HostMeasurement>;
TYPED_TEST_SUITE(ProbeTableTest, TableTypes);

// Tables only compare addresses: what an entry points to is never looked at.
template <class T>
T* somewhere(int place)
{
    alignas(T) static unsigned char places[3][sizeof(void*) * 8];
    return reinterpret_cast<T*>(places[place]);
}

AbstractProbe* freshKey(HostMeasurement& measurement)
{
    return &freshProbe(measurement);
}

TYPED_TEST(ProbeTableTest, AnswersNullForAProbeWithoutAnEntry)
{
    HostMeasurement measurement;
    EXPECT_EQ(ProbeTable<TypeParam>::remember(freshKey(measurement), nullptr), nullptr);
}

TYPED_TEST(ProbeTableTest, AnswersWithWhatItHasStored)
{
    HostMeasurement measurement;
    AbstractProbe* const key = freshKey(measurement);
    TypeParam* const value = somewhere<TypeParam>(0);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, value), value);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, nullptr), value);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, nullptr), value);
}

TYPED_TEST(ProbeTableTest, LetsTheLaterValueWin)
{
    HostMeasurement measurement;
    AbstractProbe* const key = freshKey(measurement);
    ProbeTable<TypeParam>::remember(key, somewhere<TypeParam>(0));
    TypeParam* const later = somewhere<TypeParam>(1);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, later), later);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, nullptr), later);
}

TYPED_TEST(ProbeTableTest, LetsAValueTakeThePlaceOfANullEntry)
{
    HostMeasurement measurement;
    AbstractProbe* const key = freshKey(measurement);
    ProbeTable<TypeParam>::remember(key, nullptr);
    TypeParam* const value = somewhere<TypeParam>(2);
    EXPECT_EQ(ProbeTable<TypeParam>::remember(key, value), value);
}

TYPED_TEST(ProbeTableTest, KeepsProbesApart)
{
    HostMeasurement measurement;
    AbstractProbe* const one = freshKey(measurement);
    AbstractProbe* const other = freshKey(measurement);
    ProbeTable<TypeParam>::remember(one, somewhere<TypeParam>(0));
    EXPECT_EQ(ProbeTable<TypeParam>::remember(other, nullptr), nullptr);
    ProbeTable<TypeParam>::remember(other, somewhere<TypeParam>(1));
    EXPECT_EQ(ProbeTable<TypeParam>::remember(one, nullptr), somewhere<TypeParam>(0));
}

TEST(ProbeTables, AreOneForEachType)
{
    HostMeasurement measurement;
    AbstractProbe* const key = freshKey(measurement);
    ProbeTable<Variable>::remember(key, somewhere<Variable>(0));
    EXPECT_EQ(ProbeTable<Measurement<Variable>>::remember(key, nullptr), nullptr);
    EXPECT_EQ(ProbeTable<PolynomialMeasurement<1>>::remember(key, nullptr), nullptr);
    ProbeTable<PolynomialMeasurement<2>>::remember(key, somewhere<PolynomialMeasurement<2>>(1));
    EXPECT_EQ(ProbeTable<PolynomialMeasurement<3>>::remember(key, nullptr), nullptr);
    EXPECT_EQ(ProbeTable<Variable>::remember(key, nullptr), somewhere<Variable>(0));
}

} // namespace
} // namespace Orrery
