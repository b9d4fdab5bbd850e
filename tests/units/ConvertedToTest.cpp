// The conversion of a variant into a new one.

#include "units/Units.h"

#include "tests/support/HostPayload.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/Variants.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/PlainConversion.h"
#include "tests/units/VariantConversionSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using TestSupport::Doubles;
using TestSupport::HostPayload;
using TestSupport::MakeVector;
using TestSupport::Sizes;
using TestSupport::ToDimensions;
using TestSupport::ToElements;
using Strings = std::vector<std::string>;
using ComplexDoubles = std::vector<std::complex<double>>;

struct Colour
{
    int red;
    friend bool operator==(const Colour& a, const Colour& b) { return a.red == b.red; }
};

BVariant converted(const Units& source, const Units& target, const BVariant& data)
{
    BVariant result("not written");
    EXPECT_EQ(source.ConvertedTo(target, data, &result), ER_SUCCESS) << TestSupport::Describe(data);
    return result;
}

BVariant inMetres(const BVariant& kilometres)
{
    return converted(unitOf("km"), unitOf("m"), kilometres);
}

void expectRefused(const Units& source, const Units& target, const BVariant& data)
{
    BVariant result = MakeVector<double>({1.0, 2.0});
    const Snapshot before(result);
    const Snapshot dataBefore(data);
    ERESULT code = ER_SUCCESS;
    EXPECT_NO_THROW(code = source.ConvertedTo(target, data, &result));
    EXPECT_EQ(code, ER_INVALID_ARGUMENT) << TestSupport::Describe(data);
    EXPECT_TRUE(before == Snapshot(result)) << TestSupport::Describe(result);
    EXPECT_TRUE(dataBefore == Snapshot(data));
}

void expectRefused(const BVariant& kilometres)
{
    expectRefused(unitOf("km"), unitOf("m"), kilometres);
}

template <class Number>
std::vector<Number> plainly(const Units& source, const Units& target, const std::vector<Number>& values)
{
    std::vector<Number> results;
    for (const Number& value : values)
        results.push_back(plainConversion(source, target, value));
    return results;
}

TEST(ConvertedTo, ReallyConvertsBetweenUnitsOfOneSIString)
{
    const Units inch = catalogueUnit("in");
    const Units mil = catalogueUnit("mil");
    ASSERT_EQ(inch.GetSIUnits(), mil.GetSIUnits());
    const Doubles inches{1.0, 2.0, -0.5};
    const BVariant mils = converted(inch, mil, BVariant(inches));
    EXPECT_TRUE(sameBits(plainly(inch, mil, inches), ToElements<double>(mils)));
    EXPECT_NEAR(ToElements<double>(mils)[0], 1000.0, 1e-9);
    EXPECT_EQ(
        ToElements<double>(converted(catalogueUnit("°C"), catalogueUnit("K"), MakeVector<double>({100.0}))),
        Doubles{373.15});
}

TEST(ConvertedTo, RefusesUnitsOfDifferentDimensions)
{
    for (const BVariant& data : {BVariant(1.0), MakeVector<double>({1.0, 2.0}), BVariant()})
        expectRefused(unitOf("m"), unitOf("s"), data);
}

TEST(ConvertedTo, RefusesUnitsOfDifferentDimensionsEvenWithOneSIString)
{
    Units time = unitOf("s");
    ASSERT_EQ(time.SetProperty(Units::SIUnits, QStringLiteral("m")), ER_SUCCESS);
    expectRefused(time, unitOf("m"), BVariant(1.0));
}

TEST(ConvertedTo, RefusesANullResult)
{
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), BVariant(1.0), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("s"), BVariant(1.0), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), BVariant(), nullptr), ER_INVALID_ARGUMENT);
}

TEST(ConvertedTo, RefusesDataThatAreNoNumbers)
{
    expectRefused(BVariant());
    expectRefused(BVariant("seven"));
    expectRefused(BVariant(Strings{"1", "2,5"}));
    expectRefused(BVariant::runTime(Colour{3}));
}

TEST(ConvertedTo, RefusesThemBetweenEqualUnitsToo)
{
    expectRefused(unitOf("m"), unitOf("m"), BVariant());
    expectRefused(unitOf("m"), unitOf("m"), BVariant("seven"));
    expectRefused(Units(), Units(), BVariant("seven"));
}

TEST(ConvertedTo, ReadsTextThatIsANumberThroughout)
{
    EXPECT_EQ(ToElements<double>(inMetres(BVariant("2.5"))), Doubles{2500.0});
    EXPECT_EQ(ToElements<double>(inMetres(BVariant(Strings{"1", "-2.5e1"}))), (Doubles{1000.0, -25000.0}));
}

TEST(ConvertedTo, RefusesDataThatCannotBeFetched)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant data = HostPayload::make(&log, {1.0, 2.0}, {2});
    BVariant result("kept");
    ERESULT code = ER_SUCCESS;
    EXPECT_NO_THROW(code = unitOf("km").ConvertedTo(unitOf("m"), data, &result));
    EXPECT_EQ(code, ER_INVALID_ARGUMENT);
    EXPECT_EQ(TestSupport::ToTexts(result), Strings{"kept"});
}

TEST(ConvertedTo, ConvertsAHostsPayload)
{
    HostPayload::Log log;
    const BVariant data = HostPayload::make(&log, {1.0, 2.0, 3.0, 4.0}, {2, 2});
    const BVariant result = inMetres(data);
    EXPECT_EQ(ToElements<double>(result), (Doubles{1000.0, 2000.0, 3000.0, 4000.0}));
    EXPECT_EQ(ToDimensions(result), (Sizes{2, 2}));
    EXPECT_EQ(log.destroyed, 0);
}

TEST(ConvertedTo, GivesAScalarItsOneElement)
{
    const BVariant real = inMetres(BVariant(2.5));
    EXPECT_EQ(Brindle::Quay::getScalar<double>(real), 2500.0);
    EXPECT_EQ(ToDimensions(real), Sizes{1});
    const BVariant pair = inMetres(BVariant(std::complex<double>(1.0, -2.0)));
    EXPECT_EQ(ToElements<std::complex<double>>(pair), (ComplexDoubles{{1000.0, -2000.0}}));
    const BVariant columnMajor = inMetres(BVariant::scalar(2.5, DataOrdering::ColumnMajor));
    EXPECT_EQ(columnMajor.getDataOrdering(), DataOrdering::ColumnMajor);
    EXPECT_EQ(ToDimensions(inMetres(BVariant(Doubles{2.5}, {1, 1, 1}))), (Sizes{1, 1, 1}));
}

TEST(ConvertedTo, KeepsTheDimensionsOfEmptyArrays)
{
    for (const Sizes& sizes : {Sizes{0}, Sizes{3, 0}, Sizes{0, 5, 2}, Sizes{2, 2, 2, 0}})
        for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
            const BVariant real = inMetres(BVariant(std::vector<std::int16_t>{}, sizes, ordering));
            EXPECT_EQ(real.getWellKnownType().code(), 0x0001);
            EXPECT_EQ(ToDimensions(real), sizes);
            EXPECT_EQ(real.getDataOrdering(), ordering);
            const BVariant pairs = inMetres(BVariant(std::vector<std::complex<float>>{}, sizes, ordering));
            EXPECT_EQ(pairs.getWellKnownType().code(), 0x8001);
            EXPECT_EQ(ToDimensions(pairs), sizes);
        }
}

TEST(ConvertedTo, KeepsShapeAndOrderOfStorageUpToFourDimensions)
{
    const Units source = catalogueUnit("°F");
    const Units target = catalogueUnit("°C");
    for (const Sizes& sizes :
         {Sizes{24}, Sizes{4, 6}, Sizes{2, 3, 4}, Sizes{2, 3, 2, 2}, Sizes{1, 24}, Sizes{24, 1}})
        for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
            const BVariant data = TestSupport::MakeCounting(sizes, ordering);
            const BVariant result = converted(source, target, data);
            EXPECT_EQ(ToDimensions(result), sizes);
            EXPECT_EQ(result.getDataOrdering(), ordering);
            EXPECT_TRUE(
                sameBits(plainly(source, target, ToElements<double>(data)), ToElements<double>(result)));
            Sizes last = sizes;
            for (std::uint64_t& index : last)
                --index;
            last[0] = 0; // a place that the two orderings lay at different positions
            EXPECT_TRUE(sameBits(
                plainConversion(source, target,
                                Brindle::Quay::getScalar<double>(Brindle::Quay::elementAt(data, last))),
                Brindle::Quay::getScalar<double>(Brindle::Quay::elementAt(result, last))));
        }
}

TEST(ConvertedTo, ConvertsArraysOfEveryLength)
{
    const Units units[][2] = {{catalogueUnit("°F"), catalogueUnit("°C")},
                              {catalogueUnit("dBm"), catalogueUnit("W")},
                              {catalogueUnit("W"), catalogueUnit("dBm")}};
    const TestSupport::RandomSeed seed{31};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (const auto& [source, target] : units)
        for (std::size_t length = 1; length <= 70; ++length) {
            Doubles values = conversionValues(random, 70);
            values.erase(values.begin(), values.end() - static_cast<std::ptrdiff_t>(length));
            EXPECT_TRUE(sameBits(plainly(source, target, values),
                                 ToElements<double>(converted(source, target, BVariant(values)))))
                << length;
        }
}

TEST(ConvertedTo, ConvertsLongArrays)
{
    const Units source = catalogueUnit("°F");
    const Units target = catalogueUnit("°C");
    const TestSupport::RandomSeed seed{41};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    const Doubles values = conversionValues(random, 300'000);
    EXPECT_TRUE(sameBits(plainly(source, target, values),
                         ToElements<double>(converted(source, target, BVariant(values)))));
}

TEST(ConvertedTo, AgreesToTheLastBitForEveryPairOfTheCatalogue)
{
    const TestSupport::RandomSeed seed{90210};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (const UnitPair& pair : commensurablePairs()) {
        const Doubles values = conversionValues(random, 200);
        ASSERT_TRUE(sameBits(plainly(pair.source, pair.target, values),
                             ToElements<double>(converted(pair.source, pair.target, BVariant(values)))))
            << pair.name;

        ComplexDoubles pairs;
        for (std::size_t i = 0; i < values.size(); ++i)
            pairs.emplace_back(values[i], values[(i + 11) % values.size()]);
        ASSERT_TRUE(
            sameBits(plainly(pair.source, pair.target, pairs),
                     ToElements<std::complex<double>>(converted(pair.source, pair.target, BVariant(pairs)))))
            << pair.name;
    }
}

TEST(ConvertedTo, AgreesToTheLastBitForUnitsOfAnyNumbers)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const Doubles odd = {0.0,   -0.0,     1.0,     -1.0,   0.1,      1e-300,
                         1e300, 2.54e-05, -273.15, 5e-324, infinity, notANumber};
    const TestSupport::RandomSeed seed{6};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    const auto any = [&] {
        const double values[3] = {odd[TestSupport::randomBelow(random, odd.size())],
                                  odd[TestSupport::randomBelow(random, odd.size())],
                                  odd[TestSupport::randomBelow(random, odd.size())]};
        return Units(UnitType::length, QStringLiteral("made up"), values[0], values[1], values[2]);
    };
    for (int round = 0; round < 500; ++round) {
        const Units source = any();
        const Units target = any();
        const Doubles values = conversionValues(random, 12);
        ASSERT_TRUE(sameBits(plainly(source, target, values),
                             ToElements<double>(converted(source, target, BVariant(values)))))
            << source.GetScale() << ", " << source.GetOffset() << ", " << source.GetLogScale() << " to "
            << target.GetScale() << ", " << target.GetOffset() << ", " << target.GetLogScale();
    }
}

TEST(ConvertedTo, WritesOverItsOwnSource)
{
    BVariant data = MakeVector<double>({1.0, 2.0});
    const BVariant old = data;
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), data, &data), ER_SUCCESS);
    EXPECT_EQ(ToElements<double>(data), (Doubles{1000.0, 2000.0}));
    EXPECT_EQ(ToElements<double>(old), (Doubles{1.0, 2.0}));

    BVariant scalar(2.0);
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), scalar, &scalar), ER_SUCCESS);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(scalar), 2000.0);

    BVariant integers = MakeVector<std::int32_t>({3, 4});
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), integers, &integers), ER_SUCCESS);
    EXPECT_EQ(ToElements<double>(integers), (Doubles{3000.0, 4000.0}));
}

TEST(ConvertedTo, LeavesItsOwnSourceAloneWhenItFails)
{
    BVariant data(Strings{"1", "two"});
    const Snapshot before(data);
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), data, &data), ER_INVALID_ARGUMENT);
    EXPECT_TRUE(before == Snapshot(data));
}

TEST(ConvertedTo, SharesNothingWithItsSource)
{
    const BVariant data = MakeVector<double>({1.0, 2.0});
    for (const char* unit : {"km", "m"}) {
        BVariant result = converted(unitOf(unit), unitOf("m"), data);
        EXPECT_NE(result.constData(), data.constData());
        static_cast<double*>(result.mutableData())[0] = 99.0;
        EXPECT_EQ(ToElements<double>(data), (Doubles{1.0, 2.0}));
    }
}

TEST(ConvertedTo, ReplacesAResultThatIsSharedWithoutTouchingTheOther)
{
    BVariant result = MakeVector<double>({7.0, 8.0});
    const BVariant other = result;
    EXPECT_EQ(unitOf("km").ConvertedTo(unitOf("m"), MakeVector<double>({1.0, 2.0}), &result), ER_SUCCESS);
    EXPECT_EQ(ToElements<double>(other), (Doubles{7.0, 8.0}));
    EXPECT_EQ(ToElements<double>(result), (Doubles{1000.0, 2000.0}));
}

TEST(ConvertedTo, RunsOverToInfinityAndClampsLikeASingleNumber)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ToElements<double>(inMetres(MakeVector<double>({1e308, -1e308, infinity, 1e-320}))),
              (Doubles{infinity, -infinity, infinity, 1e-320 * 1000.0}));
    EXPECT_EQ(ToElements<double>(
                  converted(unitOf("W"), catalogueUnit("dBm"), MakeVector<double>({0.0, -1.0, 1.0}))),
              (Doubles{-3000.0, -3000.0, 30.0}));
}

TEST(ConvertedTo, RoundsLargeIntegersToDoublesFirst)
{
    const std::uint64_t large = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(ToElements<double>(inMetres(MakeVector<std::uint64_t>({large, (std::uint64_t{1} << 53) + 1}))),
              (Doubles{18446744073709551616.0 * 1000.0, 9007199254740992.0 * 1000.0}));
}

TEST(ConvertedTo, GivesAnArrayOfDoublesBetweenEqualUnitsToo)
{
    const BVariant result = converted(unitOf("m"), unitOf("m"), MakeVector<std::int8_t>({-1, 2}));
    EXPECT_EQ(ToElements<double>(result), (Doubles{-1.0, 2.0}));
}

TEST(ConvertedTo, DoesNotAskWhetherTheUnitsAreValid)
{
    EXPECT_EQ(ToElements<double>(converted(unitOf("km/x"), Units(), MakeVector<double>({2.0}))),
              Doubles{2000.0});
}

template <class T>
class ConvertedToOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(ConvertedToOf, TestSupport::ElementTypes, TestSupport::ElementTypeName);

TYPED_TEST(ConvertedToOf, WidensNumbersAndConvertsThem)
{
    const Units source = catalogueUnit("°F");
    const Units target = catalogueUnit("°C");
    if constexpr (isNumber<TypeParam>) {
        const auto elements = TestSupport::sampleElements<TypeParam>(24);
        std::vector<Widened<TypeParam>> expected;
        for (const TypeParam element : elements)
            expected.push_back(plainConversion(source, target, widened(element)));

        for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
            const BVariant result = converted(source, target, BVariant(elements, {4, 3, 2}, ordering));
            EXPECT_EQ(result.getWellKnownType().code(), isComplex<TypeParam> ? 0x8001 : 0x0001);
            EXPECT_TRUE(sameBits(expected, ToElements<Widened<TypeParam>>(result)));
            EXPECT_EQ(ToDimensions(result), (Sizes{4, 3, 2}));
            EXPECT_EQ(result.getDataOrdering(), ordering);
        }
        const BVariant scalar = converted(source, target, BVariant(TypeParam(elements[1])));
        EXPECT_TRUE(sameBits(expected[1], ToElements<Widened<TypeParam>>(scalar).at(0)));
    } else {
        expectRefused(source, target, BVariant(TestSupport::sampleElements<TypeParam>(24), {4, 3, 2}));
        expectRefused(source, target, BVariant(TestSupport::Samples<TypeParam>::first()));
    }
}
} // namespace
} // namespace Orrery
