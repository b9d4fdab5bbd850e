#include "Core/FunctionProperty.h"
#include "Core/MeasurementManager.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Registration.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <gmock/gmock.h>

#include <cmath>
#include <complex>
#include <limits>
#include <memory>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using ::testing::DoubleEq;
using ::testing::DoubleNear;
using ::testing::ElementsAre;

namespace {

using Complex = std::complex<double>;
using Doubles = std::vector<double>;

const double s_nan = std::numeric_limits<double>::quiet_NaN();
const double s_infinity = std::numeric_limits<double>::infinity();

/// Run a registered measurement on a clone, as a function variable does.
std::unique_ptr<Variable> measured(const char* name, Variable& input,
                                   const std::vector<BVariant>& parameters = {})
{
    registerMeasurements();
    const Measurement<Variable>* const pattern =
        MeasurementManager<Variable>::Instance()->FindMeasurement(name);
    if (!pattern)
        throw std::runtime_error("no such measurement");
    const std::unique_ptr<Measurement<Variable>> working(pattern->clone());
    if (!parameters.empty())
        working->set_parameter_values(parameters);
    working->push(&input);
    const std::unique_ptr<AbstractProbe> probe(working->make_probe());
    return std::unique_ptr<Variable>(probe->run());
}

std::string failureOf(const char* name, Variable& input, const std::vector<BVariant>& parameters = {})
{
    try {
        measured(name, input, parameters);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "none";
}

template <class T = double>
std::vector<T> valuesOf(const Variable& variable)
{
    const Brindle::Quay::IterableContainer<T> values(variable.GetData());
    return {values.begin(), values.end()};
}

std::string labelOf(const Variable& variable)
{
    const std::optional<Units> units = unitsOf(variable);
    return units ? unitsLabel(*units) : "none";
}

ExplicitDataVar variableOf(const BVariant& data, const char* units = nullptr)
{
    ExplicitDataVar variable(QStringLiteral("v"));
    variable.UpdateData(data);
    if (units) {
        EXPECT_GE(variable.SetUnits(parseUnits(units)), 0);
    }
    return variable;
}

Doubles derivativeOf(const Doubles& x, const Doubles& y)
{
    ExplicitDataVar axis = variableOf(BVariant(x));
    ExplicitDataVar values = variableOf(BVariant(y));
    values.AddIndepVariableRef(&axis);
    return valuesOf(*measured("derivative", values));
}

Doubles averageOf(const Doubles& values, double window)
{
    ExplicitDataVar variable = variableOf(BVariant(values));
    return valuesOf(*measured("moving-average", variable, {BVariant(window)}));
}

} // namespace

TEST(Registration, MayBeRepeated)
{
    registerMeasurements();
    auto* const manager = MeasurementManager<Variable>::Instance();
    const int count = manager->GetMeasurements(QStringLiteral("Complex")).size();
    EXPECT_EQ(count, 3);
    registerMeasurements();
    EXPECT_EQ(manager->GetMeasurements(QStringLiteral("Complex")).size(), count);
}

TEST(MagnitudeMeasurement, IsTheAbsoluteValueInTheSameUnits)
{
    ExplicitDataVar z = variableOf(BVariant(std::vector<Complex>{{3, 4}, {0, -2}}), "mV");
    const auto result = measured("magnitude", z);
    EXPECT_THAT(valuesOf(*result), ElementsAre(5, 2));
    EXPECT_EQ(labelOf(*result), "mV");
    ExplicitDataVar integers = variableOf(BVariant(std::vector<int>{-3, 4}, {1, 2}));
    const auto row = measured("magnitude", integers);
    EXPECT_THAT(valuesOf(*row), ElementsAre(3, 4));
    EXPECT_EQ(row->GetData().getDimensions().size(), 2U);
    EXPECT_EQ(labelOf(*row), "none");
}

TEST(PhaseMeasurement, IsInDegrees)
{
    ExplicitDataVar z = variableOf(BVariant(std::vector<Complex>{{1, 1}, {-1, 0}, {0, -2}}), "V");
    const auto result = measured("phase", z);
    EXPECT_THAT(valuesOf(*result), ElementsAre(DoubleEq(45), DoubleEq(180), DoubleEq(-90)));
    EXPECT_EQ(labelOf(*result), "\u00B0");
    ExplicitDataVar real = variableOf(BVariant(Doubles{2, -2}));
    EXPECT_THAT(valuesOf(*measured("phase", real)), ElementsAre(0, DoubleEq(180)));
}

struct DecibelCase
{
    const char* units; // null: none
    double ten;        // decibels of 10
    const char* label;
};

class DecibelMeasurement : public ::testing::TestWithParam<DecibelCase>
{
};

TEST_P(DecibelMeasurement, IsReckonedByTheKindOfUnit)
{
    const DecibelCase& c = GetParam();
    ExplicitDataVar variable = variableOf(BVariant(Doubles{10, -1, 0}), c.units);
    const auto result = measured("decibel", variable);
    EXPECT_THAT(valuesOf(*result), ElementsAre(c.ten, 0, -s_infinity));
    EXPECT_EQ(labelOf(*result), c.label);
}

INSTANTIATE_TEST_SUITE_P(Units, DecibelMeasurement,
                         ::testing::Values(DecibelCase{"V", 20, "dBV"}, DecibelCase{"mV", 20, "dBmV"},
                                           DecibelCase{"A", 20, "dB(A)"}, DecibelCase{"W", 10, "dBW"},
                                           DecibelCase{"mW", 10, "dBm"}, DecibelCase{"Hz", 10, "dB(Hz)"},
                                           DecibelCase{"in", 10, "dB(in)"}, DecibelCase{"", 20, "dB20"},
                                           DecibelCase{nullptr, 20, "none"}),
                         [](const auto& row) { return std::to_string(row.index); });

TEST(DecibelMeasurement, ConvertsBackToWhatWasMeasured)
{
    for (const char* const units : {"V", "mV", "A", "kA", "W", "mW", "in", ""}) {
        ExplicitDataVar variable = variableOf(BVariant(Doubles{10, 0.25}), units);
        const auto result = measured("decibel", variable);
        BVariant back;
        ASSERT_GE(unitsOf(*result)->ConvertedTo(parseUnits(units), result->GetData(), &back), 0) << units;
        const Brindle::Quay::IterableContainer<double> values(back);
        EXPECT_THAT(Doubles(values.begin(), values.end()),
                    ElementsAre(DoubleNear(10, 1e-12), DoubleNear(0.25, 1e-14)))
            << units;
    }
}

TEST(DecibelMeasurement, IsRefusedForUnitsThatHaveNone)
{
    ExplicitDataVar level = variableOf(BVariant(1.0), "dBm");
    EXPECT_EQ(failureOf("decibel", level), "values in dBm have no decibels");
    ExplicitDataVar temperature = variableOf(BVariant(1.0), "degC");
    EXPECT_EQ(failureOf("decibel", temperature), "values in \u00B0C have no decibels");
}

// The parabola through three points of x^2 is x^2 itself, wherever they lie.
TEST(DerivativeMeasurement, IsExactForAParabolaOffTheEnds)
{
    EXPECT_THAT(derivativeOf({0, 1, 3, 7}, {0, 1, 9, 49}), ElementsAre(1, DoubleEq(2), DoubleEq(6), 10));
    EXPECT_THAT(derivativeOf({7, 3, 1, 0}, {49, 9, 1, 0}), ElementsAre(10, DoubleEq(6), DoubleEq(2), 1));
    EXPECT_THAT(derivativeOf({0, 2}, {1, 5}), ElementsAre(2, 2));
}

// As numpy.gradient(y, x) gives it.
TEST(DerivativeMeasurement, AgreesWithOthersOnUnevenAxes)
{
    const Doubles found = derivativeOf({0, 0.5, 0.75, 2, 2.5}, {1, 3, -2, 0.5, 8});
    const Doubles expected = {4, -12, -16.333333333333332, 11.285714285714286, 15};
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], expected[i], 1e-12) << i;
}

TEST(DerivativeMeasurement, NeverReachesAcrossTheRunsOfANestedSweep)
{
    EXPECT_THAT(derivativeOf({0, 1, 2, 0, 1, 2}, {0, 1, 2, 10, 30, 50}), ElementsAre(1, 1, 1, 20, 20, 20));
}

TEST(DerivativeMeasurement, OfAPointThatIsThereTwiceIsNoNumber)
{
    const Doubles found = derivativeOf({0, 0}, {1, 1});
    EXPECT_TRUE(std::isnan(found[0]) && std::isnan(found[1]));
}

TEST(DerivativeMeasurement, TakesComplexValuesOverAnAxisThatIsStoredAsComplex)
{
    ExplicitDataVar axis = variableOf(BVariant(std::vector<Complex>{{1, 0}, {2, 0}, {4, 0}}));
    ExplicitDataVar z = variableOf(BVariant(std::vector<Complex>{{1, 0}, {2, 2}, {4, 6}}));
    z.AddIndepVariableRef(&axis);
    EXPECT_THAT(valuesOf<Complex>(*measured("derivative", z)),
                ElementsAre(Complex(1, 2), Complex(1, 2), Complex(1, 2)));
    axis.UpdateData(BVariant(std::vector<Complex>{{1, 0}, {2, 1}, {4, 0}}));
    EXPECT_EQ(failureOf("derivative", z), "there are imaginary parts");
}

TEST(DerivativeMeasurement, GoesDownTheRowsOfAMatrix)
{
    ExplicitDataVar axis = variableOf(BVariant(Doubles{0, 2, 4}));
    ExplicitDataVar matrix = variableOf(BVariant(Doubles{0, 5, 2, 5, 8, 5}, {3, 2}));
    matrix.AddIndepVariableRef(&axis);
    const auto result = measured("derivative", matrix);
    EXPECT_THAT(valuesOf(*result), ElementsAre(1, 0, 2, 0, 3, 0));
    EXPECT_EQ(result->GetData().getDimensions()[0], 3U);
}

TEST(DerivativeMeasurement, TakesAMatrixOfPointsForOneRun)
{
    ExplicitDataVar axis = variableOf(BVariant(Doubles{0, 1, 2, 0, 1, 2}, {2, 3}));
    ExplicitDataVar matrix = variableOf(BVariant(Doubles{0, 1, 2, 10, 30, 50}, {2, 3}));
    matrix.AddIndepVariableRef(&axis);
    EXPECT_THAT(valuesOf(*measured("derivative", matrix)), ElementsAre(1, 1, 1, 20, 20, 20));
}

struct SlopeUnitsCase
{
    const char* units;
    const char* axisUnits;
    const char* label;
    double scale;
};

class SlopeUnits : public ::testing::TestWithParam<SlopeUnitsCase>
{
};

TEST_P(SlopeUnits, AreTheQuotient)
{
    const SlopeUnitsCase& c = GetParam();
    ExplicitDataVar axis = variableOf(BVariant(Doubles{0, 1}), c.axisUnits);
    ExplicitDataVar values = variableOf(BVariant(Doubles{0, 1}), c.units);
    values.AddIndepVariableRef(&axis);
    const auto result = measured("derivative", values);
    EXPECT_EQ(labelOf(*result), c.label);
    if (unitsOf(*result)) {
        const Units base = parseUnits(c.units) / parseUnits(c.axisUnits);
        EXPECT_TRUE(unitsOf(*result)->IsCommensurable(base));
        EXPECT_DOUBLE_EQ(unitsOf(*result)->GetScale(), c.scale);
        EXPECT_EQ(unitsOf(*result)->GetOffset(), 0.0);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, SlopeUnits,
    ::testing::Values(SlopeUnitsCase{"V", "s", "V/s", 1}, SlopeUnitsCase{"mA", "V", "mA/V", 1e-3},
                      SlopeUnitsCase{"V", "\u00B5s", "V/\u00B5s", 1e6},
                      SlopeUnitsCase{"degC", "s", "\u00B0C/s", 1}, SlopeUnitsCase{"V", "m/s", "V/(m/s)", 1},
                      SlopeUnitsCase{"V", "", "V", 1}, SlopeUnitsCase{"", "Hz", "1/Hz", 1},
                      SlopeUnitsCase{"dBm", "s", "none", 1}, SlopeUnitsCase{"V", "dBm", "none", 1},
                      SlopeUnitsCase{nullptr, "s", "none", 1}, SlopeUnitsCase{"V", nullptr, "none", 1}),
    [](const auto& row) { return std::to_string(row.index); });

TEST(DerivativeMeasurement, TellsWhatIsWrongWithTheAxis)
{
    ExplicitDataVar values = variableOf(BVariant(Doubles{1, 2, 3}));
    EXPECT_EQ(failureOf("derivative", values), "the variable has no axis");
    ExplicitDataVar shorter = variableOf(BVariant(Doubles{1, 2}));
    values.SetIndepVariableRef(&shorter);
    EXPECT_EQ(failureOf("derivative", values), "the axis is not as long as the values");
    ExplicitDataVar words = variableOf(BVariant(std::vector<std::string>{"a", "b", "c"}));
    values.SetIndepVariableRef(&words);
    EXPECT_EQ(failureOf("derivative", values), "values of the type text are no numbers");
    RangeVar huge(QStringLiteral("huge"));
    huge.SetStart(BVariant(0.0));
    huge.SetCount(BVariant(1e11));
    values.SetIndepVariableRef(&huge);
    EXPECT_EQ(failureOf("derivative", values), "the axis is not as long as the values");
    {
        ExplicitDataVar gone = variableOf(BVariant(Doubles{1, 2, 3}));
        values.SetIndepVariableRef(&gone);
    }
    EXPECT_EQ(failureOf("derivative", values), "the axis leads nowhere");
    ExplicitDataVar single = variableOf(BVariant(1.0));
    single.AddIndepVariableRef(&single);
    EXPECT_EQ(failureOf("derivative", single), "a derivative needs at least 2 values");
}

TEST(MovingAverageMeasurement, IsTheMeanOfTheWindowSoFar)
{
    EXPECT_THAT(averageOf({1, 5, 3, 7, 5, 9, 2}, 3), ElementsAre(1, 3, 3, 5, 5, 7, DoubleEq(16.0 / 3)));
    EXPECT_THAT(averageOf({1, 5, 3}, 1), ElementsAre(1, 5, 3));
    EXPECT_THAT(averageOf({1, 5, 3}, 3), ElementsAre(1, 3, 3));
    EXPECT_THAT(averageOf({1, 5, 3}, 1e300), ElementsAre(1, 3, 3));
    EXPECT_THAT(averageOf({4}, 2), ElementsAre(4));
}

TEST(MovingAverageMeasurement, HasTheParameterWindow)
{
    ExplicitDataVar variable = variableOf(BVariant(Doubles{3, 6, 9, 12}), "V");
    const auto result = measured("moving-average", variable); // 3 by default
    EXPECT_THAT(valuesOf(*result), ElementsAre(3, 4.5, 6, 9));
    EXPECT_EQ(labelOf(*result), "V");
    for (const BVariant& window :
         {BVariant(0), BVariant(-1), BVariant(2.5), BVariant(s_nan), BVariant(), BVariant(std::string("x"))})
        EXPECT_EQ(failureOf("moving-average", variable, {window}),
                  "the window must be a whole number from 1");
}

TEST(MovingAverageMeasurement, ForgetsWhatHasLeftTheWindow)
{
    const Doubles found = averageOf({s_nan, 1, s_infinity, 1e300, 1, 2, 3}, 2);
    EXPECT_TRUE(std::isnan(found[0]) && std::isnan(found[1]));
    EXPECT_EQ(found[2], s_infinity);
    EXPECT_EQ(found[3], s_infinity);
    EXPECT_THAT(Doubles(found.begin() + 5, found.end()), ElementsAre(1.5, 2.5));
}

TEST(MovingAverageMeasurement, EqualsThePlainSumForEveryWindow)
{
    Doubles values;
    for (int i = 0; i < 40; ++i)
        values.push_back((i * 37) % 41); // whole numbers: every order of summation gives the same
    for (std::size_t window = 1; window <= 42; ++window) {
        const Doubles found = averageOf(values, double(window));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t first = i + 1 > window ? i + 1 - window : 0;
            double sum = 0.0;
            for (std::size_t k = first; k <= i; ++k)
                sum += values[k];
            EXPECT_EQ(found[i], sum / double(i + 1 - first)) << window << ' ' << i;
        }
    }
}

TEST(MovingAverageMeasurement, GoesDownTheRowsOfAMatrixWhateverItsOrdering)
{
    const Doubles columns = {0, 2, 4, 10, 20, 30};
    ExplicitDataVar matrix = variableOf(BVariant(columns, {3, 2}, Brindle::Quay::DataOrdering::ColumnMajor));
    EXPECT_THAT(valuesOf(*measured("moving-average", matrix, {BVariant(2)})),
                ElementsAre(0, 10, 1, 15, 3, 25));
}

TEST(EachMeasurement, RefusesWhatIsNoNumber)
{
    ExplicitDataVar words = variableOf(BVariant(std::vector<std::string>{"a", "2"}));
    words.AddIndepVariableRef(&words);
    ExplicitDataVar nothing = variableOf(BVariant());
    nothing.AddIndepVariableRef(&nothing);
    for (const char* const name : {"magnitude", "phase", "decibel", "derivative", "moving-average"}) {
        EXPECT_EQ(failureOf(name, words), "values of the type text are no numbers") << name;
        EXPECT_EQ(failureOf(name, nothing), "there are no values") << name;
    }
}

TEST(EachMeasurement, RefusesToRunOnNothing)
{
    registerMeasurements();
    for (const char* const name : {"magnitude", "phase", "decibel", "derivative", "moving-average"}) {
        const std::unique_ptr<Measurement<Variable>> working(
            MeasurementManager<Variable>::Instance()->FindMeasurement(name)->clone());
        const std::unique_ptr<AbstractProbe> probe(working->make_probe());
        EXPECT_THROW(probe->run(), std::invalid_argument) << name;
    }
}

TEST(EachMeasurement, WritesToTheOutputThatItIsGiven)
{
    ExplicitDataVar values = variableOf(BVariant(Doubles{-1, 2}));
    ExplicitDataVar place = variableOf(BVariant(), "V"); // units that don't fit any more
    registerMeasurements();
    const std::unique_ptr<Measurement<Variable>> working(
        MeasurementManager<Variable>::Instance()->FindMeasurement("magnitude")->clone());
    working->push(&values)->set_output(&place);
    const std::unique_ptr<AbstractProbe> probe(working->make_probe());
    EXPECT_EQ(probe->run(), &place);
    EXPECT_THAT(valuesOf(place), ElementsAre(1, 2));
    EXPECT_EQ(labelOf(place), "none");
}

} // namespace Orrery::Host
