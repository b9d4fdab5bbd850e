// The conversion of single numbers, real and complex.

#include "units/Units.h"

#include "tests/support/RandomSeed.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/PlainConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using Pair = std::complex<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double sentinel = 123.25;

double converted(const Units& source, const Units& target, double value)
{
    double result = sentinel;
    EXPECT_EQ(source.ConvertTo(target, value, &result), ER_SUCCESS);
    return result;
}

double converted(const char* source, const char* target, double value)
{
    return converted(catalogueUnit(source), catalogueUnit(target), value);
}

Pair converted(const Units& source, const Units& target, Pair value)
{
    Pair result(sentinel, sentinel);
    EXPECT_EQ(source.ConvertTo(target, value, &result), ER_SUCCESS);
    return result;
}

Units numbers(double scale, double offset, double logScale)
{
    return Units(UnitType::length, QStringLiteral("made up"), scale, offset, logScale);
}

/// What a host's subclass may call.
class OpenUnits : public Units
{
public:
    explicit OpenUnits(const Units& units)
        : Units(units)
    {
    }
    using Units::ConvertValueToUnit;
};

TEST(ConvertTo, RefusesANullResultOfCommensurableUnits)
{
    const Units inch = catalogueUnit("in");
    EXPECT_EQ(inch.ConvertTo(unitOf("m"), 1.0, static_cast<double*>(nullptr)), ER_INVALID_ARGUMENT);
    EXPECT_EQ(inch.ConvertTo(unitOf("m"), Pair(1.0, 1.0), static_cast<Pair*>(nullptr)), ER_INVALID_ARGUMENT);
}

TEST(ConvertTo, RefusesUnitsOfDifferentDimensionsAndLeavesTheResult)
{
    double result = sentinel;
    EXPECT_EQ(unitOf("m").ConvertTo(unitOf("s"), 1.0, &result), ER_INVALID_ARGUMENT);
    EXPECT_EQ(result, sentinel);
    Pair pair(sentinel, -sentinel);
    EXPECT_EQ(unitOf("m").ConvertTo(unitOf("s"), Pair(1.0, 2.0), &pair), ER_INVALID_ARGUMENT);
    EXPECT_EQ(pair, Pair(sentinel, -sentinel));
}

TEST(ConvertTo, TurnsOneInchIntoMetres)
{
    EXPECT_EQ(converted("in", "m", 1.0), 0.0254);
}

TEST(ConvertTo, GivesMinus3000ForNoPowerOrNegativePowerInDBm)
{
    EXPECT_EQ(converted("W", "dBm", 0.0), -3000.0);
    EXPECT_EQ(converted("W", "dBm", -0.0), -3000.0);
    EXPECT_EQ(converted("W", "dBm", -1.0), -3000.0);
    EXPECT_EQ(converted("W", "dBm", -infinity), -3000.0);
}

TEST(ConvertTo, ClampsByTheFactorOfTheTarget)
{
    EXPECT_EQ(converted("V", "dBV", 0.0), -6000.0);
    EXPECT_EQ(converted("", "log", 0.0), -300.0);
    EXPECT_EQ(converted("", "log", -5.0), -300.0);
}

TEST(ConvertTo, ClampsFromBelow1eMinus300AndOnlyThere)
{
    const double clamp = 1e-300;
    EXPECT_EQ(converted("", "log", clamp), -300.0);
    EXPECT_EQ(converted("", "log", std::nextafter(clamp, 0.0)), -300.0);
    EXPECT_EQ(converted("", "log", 1e-310), -300.0);
    EXPECT_EQ(converted("", "log", 1e-299), -299.0);
    EXPECT_EQ(converted("", "log", 1e300), 300.0);
    EXPECT_EQ(converted("", "log", infinity), infinity);
}

TEST(ConvertTo, KeepsNaNBeforeALogarithm)
{
    EXPECT_TRUE(std::isnan(converted("W", "dBm", notANumber)));
    EXPECT_TRUE(std::isnan(converted("dBm", "W", notANumber)));
    EXPECT_TRUE(std::isnan(converted("°C", "°F", notANumber)));
}

TEST(ConvertTo, DoesNotClampALogarithmicSource)
{
    EXPECT_TRUE(sameBits(std::pow(10.0, -300.0) * 0.001, converted("dBm", "W", -3000.0)));
    EXPECT_GT(converted("dBm", "W", -3000.0), 0.0);
    EXPECT_EQ(converted("dBm", "W", -infinity), 0.0);
    EXPECT_EQ(converted("dBm", "W", 4000.0), infinity);
}

TEST(ConvertTo, ReadsPercentHundredsAndThousands)
{
    EXPECT_EQ(converted("%", "", 50.0), 0.5);
    EXPECT_EQ(converted("hundreds", "thousands", 30.0), 3.0);
    EXPECT_EQ(converted("millions", "thousands", 2.0), 2000.0);
}

TEST(ConvertTo, TakesDB20ToAPlainNumber)
{
    EXPECT_EQ(converted(catalogueUnit("dB20"), unitOf("1"), 20.0), 10.0);
    EXPECT_EQ(converted(unitOf("1"), catalogueUnit("dB20"), 10.0), 20.0);
}

TEST(ConvertTo, TakesDecibelsToTheirLinearUnitButNotToOthers)
{
    const Units power = unitOf("dB(W)");
    double result = sentinel;
    EXPECT_FALSE(power.IsCommensurable(unitOf("dB(V)")));
    EXPECT_EQ(power.ConvertTo(unitOf("dB(V)"), 1.0, &result), ER_INVALID_ARGUMENT);
    EXPECT_EQ(result, sentinel);
    EXPECT_TRUE(power.IsCommensurable(unitOf("W")));
    EXPECT_EQ(converted(power, unitOf("W"), 20.0), 100.0);
}

TEST(ConvertTo, TakesPowerAndVoltageToDecibels)
{
    EXPECT_EQ(converted("W", "dBm", 1.0), 30.0);
    EXPECT_EQ(converted("dBm", "W", 20.0), 0.1);
    EXPECT_NEAR(converted("V", "dBV", 0.5), -6.0206, 0.00005);
}

TEST(ConvertTo, RoundsATemperatureWhereTheStepsRoundIt)
{
    const double fahrenheit = (373.15 - 255.37222222222223) / 0.5555555555555556;
    EXPECT_TRUE(sameBits(fahrenheit, converted("°C", "°F", 100.0)));
    EXPECT_NEAR(fahrenheit, 212.0, 1e-9);
    EXPECT_EQ(converted("°C", "K", 100.0), 373.15);
}

TEST(ConvertTo, GivesPositiveZeroForNegativeZero)
{
    // the offset of 0 is added even where there is none to speak of, and -0.0 + 0.0 is 0.0
    EXPECT_TRUE(sameBits(0.0, converted("m", "km", -0.0)));
    EXPECT_TRUE(sameBits(0.0, converted("m", "m", -0.0)));
    EXPECT_TRUE(sameBits(Pair(0.0, 0.0), converted(unitOf("m"), unitOf("m"), Pair(-0.0, -0.0))));
}

TEST(ConvertTo, DoesNotSkipUnitsOfTheSameNumbers)
{
    const Units decibel = catalogueUnit("dB10");
    const double there = std::log10(std::pow(10.0, 3081.0 / 10.0)) * 10.0;
    EXPECT_TRUE(sameBits(there, converted(decibel, decibel, 3081.0)));
    EXPECT_EQ(converted(decibel, decibel, 3090.0), infinity); // the power overflows on the way
    EXPECT_EQ(converted(decibel, decibel, -3100.0), -3000.0); // and is clamped here
    bool lossy = false;
    for (int i = 0; i < 1000; ++i)
        lossy = lossy || converted(decibel, decibel, 0.1 * i) != 0.1 * i;
    EXPECT_TRUE(lossy);
}

TEST(ConvertTo, NeverTestsTheScale)
{
    EXPECT_EQ(converted(unitOf("m"), numbers(0.0, 0.0, 0.0), 1.0), infinity);
    EXPECT_EQ(converted(unitOf("m"), numbers(0.0, 0.0, 0.0), -1.0), -infinity);
    EXPECT_TRUE(std::isnan(converted(unitOf("m"), numbers(0.0, 0.0, 0.0), 0.0)));
    EXPECT_EQ(converted(numbers(0.0, 7.0, 0.0), unitOf("m"), 5.0), 7.0);
}

TEST(ConvertTo, TakesNaNForALogarithmicFactor)
{
    EXPECT_TRUE(std::isnan(converted(numbers(1.0, 0.0, notANumber), unitOf("m"), 1.0)));
    EXPECT_TRUE(std::isnan(converted(unitOf("m"), numbers(1.0, 0.0, notANumber), 1.0)));
}

TEST(ConvertTo, AddsTheOffsetOfALogarithmicUnitInSIUnits)
{
    EXPECT_EQ(converted(numbers(2.0, 5.0, 10.0), unitOf("m"), 20.0), 205.0);
    EXPECT_EQ(converted(unitOf("m"), numbers(2.0, 5.0, 10.0), 205.0), 20.0);
}

TEST(ConvertTo, DoesNotAskWhetherTheUnitsAreValid)
{
    const Units failed = unitOf("km/x"); // scale 1000, still a plain number
    ASSERT_FALSE(failed.IsValid());
    EXPECT_EQ(converted(failed, Units(), 2.0), 2000.0);
    EXPECT_EQ(converted(Units(), catalogueUnit("%"), 0.5), 50.0);
    double result = sentinel;
    EXPECT_EQ(Units().ConvertTo(unitOf("m"), 1.0, &result), ER_INVALID_ARGUMENT);
}

TEST(ConvertTo, GoesByTheDimensionsAndNotByTheNameOfTheType)
{
    EXPECT_EQ(converted(unitOf("kBq"), unitOf("Hz"), 2.0), 2000.0);
    double result = sentinel;
    EXPECT_EQ(unitOf("rad").ConvertTo(unitOf("1"), 1.0, &result), ER_INVALID_ARGUMENT);
}

TEST(ConvertTo, ChangesNeitherUnit)
{
    const Units source = catalogueUnit("°C");
    const Units target = catalogueUnit("°F");
    converted(source, target, 1.0);
    converted(source, target, Pair(1.0, 2.0));
    EXPECT_EQ(source, catalogueUnit("°C"));
    EXPECT_EQ(target, catalogueUnit("°F"));
    EXPECT_EQ(source.GetSIUnits(), QStringLiteral("K"));
}

TEST(ConvertTo, ConvertsToTheUnitItself)
{
    const Units metre = unitOf("m");
    EXPECT_EQ(converted(metre, metre, 2.5), 2.5);
    double value = 4.0;
    EXPECT_EQ(unitOf("km").ConvertTo(metre, value, &value), ER_SUCCESS);
    EXPECT_EQ(value, 4000.0);
}

TEST(ConvertToComplex, AddsTheOffsetToBothParts)
{
    EXPECT_EQ(converted(catalogueUnit("°C"), catalogueUnit("K"), Pair(1.0, 1.0)), Pair(274.15, 274.15));
}

TEST(ConvertToComplex, TakesTheLogarithmOfEachPart)
{
    EXPECT_EQ(converted(unitOf("W"), catalogueUnit("dBm"), Pair(1.0, 0.0)), Pair(30.0, -3000.0));
    EXPECT_EQ(converted(unitOf("W"), catalogueUnit("dBm"), Pair(-1.0, 1.0)), Pair(-3000.0, 30.0));
    EXPECT_EQ(converted(catalogueUnit("dBW"), unitOf("W"), Pair(10.0, 0.0)), Pair(10.0, 1.0));
}

TEST(ConvertToComplex, KeepsNaNAndInfinityToTheirPart)
{
    const Pair result = converted(unitOf("km"), unitOf("m"), Pair(notANumber, 2.0));
    EXPECT_TRUE(std::isnan(result.real()));
    EXPECT_EQ(result.imag(), 2000.0);
    EXPECT_EQ(converted(unitOf("km"), unitOf("m"), Pair(-1.0, infinity)), Pair(-1000.0, infinity));
}

TEST(ConvertValueToUnit, MakesNoTestAtAll)
{
    EXPECT_EQ(OpenUnits(unitOf("km")).ConvertValueToUnit(3.0, unitOf("s")), 3000.0);
    EXPECT_EQ(OpenUnits(catalogueUnit("dBm")).ConvertValueToUnit(30.0, unitOf("m")), 1.0);
}

TEST(ConversionOrder, HoldsToTheLastBitForEveryPairOfTheCatalogue)
{
    const TestSupport::RandomSeed seed{20241121};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    EXPECT_EQ(commensurablePairs().size(), 791u);
    for (const UnitPair& pair : commensurablePairs()) {
        const OpenUnits open(pair.source);
        for (const double value : conversionValues(random, 300)) {
            const double expected = plainConversion(pair.source, pair.target, value);
            ASSERT_TRUE(sameBits(expected, converted(pair.source, pair.target, value)))
                << pair.name << ": " << std::hexfloat << value;
            ASSERT_TRUE(sameBits(expected, open.ConvertValueToUnit(value, pair.target))) << pair.name;
        }
    }
}

TEST(ConversionOrder, HoldsToTheLastBitForBothPartsOfComplexNumbers)
{
    const TestSupport::RandomSeed seed{77001};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (const UnitPair& pair : commensurablePairs()) {
        const std::vector<double> values = conversionValues(random, 100);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Pair value(values[i], values[(i + 7) % values.size()]);
            ASSERT_TRUE(sameBits(plainConversion(pair.source, pair.target, value),
                                 converted(pair.source, pair.target, value)))
                << pair.name << ": " << std::hexfloat << value;
        }
    }
}

TEST(ConversionOrder, HoldsToTheLastBitForUnitsOfAnyNumbers)
{
    const TestSupport::RandomSeed seed{5};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    const std::vector<double> odd = {0.0,   -0.0,     1.0,       -1.0,   0.1,       3.0,         1e-300,
                                     1e300, 2.54e-05, -273.15,   5e-324, infinity,  -infinity,   notANumber,
                                     10.0,  1e16,     1.0 / 3.0, 1e-16,  0x1p-1074, 0x1.fp+1023, 20.0};
    const auto any = [&] { return odd[TestSupport::randomBelow(random, odd.size())]; };
    for (int round = 0; round < 1500; ++round) {
        const Units source = numbers(any(), any(), any());
        const Units target = numbers(any(), any(), any());
        for (const double value : conversionValues(random, 12))
            ASSERT_TRUE(sameBits(plainConversion(source, target, value), converted(source, target, value)))
                << std::hexfloat << value << " from " << source.GetScale() << ", " << source.GetOffset()
                << ", " << source.GetLogScale() << " to " << target.GetScale() << ", " << target.GetOffset()
                << ", " << target.GetLogScale();
    }
}
} // namespace
} // namespace Orrery
