#include "units/Dimensions.h"

#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"
#include "tests/units/PlainParser.h"
#include "tests/units/UnitTables.h"

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>

namespace Orrery::UnitsTest {
namespace {

TEST(Dimensions, AreAPlainValueWithoutVirtualOperations)
{
    EXPECT_TRUE(std::is_trivially_copyable_v<Dimensions>);
    EXPECT_FALSE(std::is_polymorphic_v<Dimensions>);
    EXPECT_EQ(sizeof(Dimensions), 9 * sizeof(int));
}

TEST(Dimensions, AreAllZeroByDefaultAndWrittenAsOne)
{
    EXPECT_EQ(Dimensions(), Dimensions(0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(Dimensions().SIUnitsString(), QStringLiteral("1"));
    EXPECT_EQ(UnitType::dimensionless.GetReferenceSIString(), QStringLiteral("1"));
}

TEST(Dimensions, DifferWhenAnyOneExponentDoes)
{
    const Exponents base{1, -2, 3, -4, 5, -6, 7, -8, 9};
    EXPECT_TRUE(toDimensions(base) == toDimensions(base));
    EXPECT_FALSE(toDimensions(base) != toDimensions(base));
    for (std::size_t i = 0; i < base.size(); ++i) {
        Exponents other = base;
        ++other[i];
        EXPECT_FALSE(toDimensions(base) == toDimensions(other)) << i;
        EXPECT_TRUE(toDimensions(base) != toDimensions(other)) << i;
    }
}

TEST(Dimensions, TakeAllNineExponentsOver)
{
    const Dimensions source(1, 2, 3, 4, 5, 6, 7, 8, 9);
    Dimensions copied;
    copied = source;
    EXPECT_EQ(copied, source);
    Dimensions moved;
    moved = Dimensions(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(moved, source);
}

TEST(Dimensions, AddInAProductSubtractInAQuotientAndMultiplyInAPower)
{
    Dimensions a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    const Dimensions b(10, -20, 30, -40, 50, -60, 70, -80, 90);
    EXPECT_EQ(a * b, Dimensions(11, -18, 33, -36, 55, -54, 77, -72, 99));
    EXPECT_EQ(a / b, Dimensions(-9, 22, -27, 44, -45, 66, -63, 88, -81));
    EXPECT_EQ(a ^ -3, Dimensions(-3, -6, -9, -12, -15, -18, -21, -24, -27));
    EXPECT_EQ(a ^ 0, Dimensions());
    EXPECT_EQ(a, Dimensions(1, 2, 3, 4, 5, 6, 7, 8, 9)) << "a power leaves its base as it is";
}

TEST(Dimensions, WrapAroundInEveryOperation)
{
    const Dimensions large(INT_MAX, INT_MIN, 0, INT_MAX, 0, 0, 0, 0, INT_MIN);
    const Dimensions one(1, -1, 0, 1, 0, 0, 0, 0, -1);
    EXPECT_EQ(large * one, Dimensions(INT_MIN, INT_MAX, 0, INT_MIN, 0, 0, 0, 0, INT_MAX));
    EXPECT_EQ(Dimensions() / large, Dimensions(-INT_MAX, INT_MIN, 0, -INT_MAX, 0, 0, 0, 0, INT_MIN));
    Dimensions base = large;
    EXPECT_EQ(base ^ 2, Dimensions(-2, 0, 0, -2, 0, 0, 0, 0, 0));
    EXPECT_EQ(base ^ -1, Dimensions(-INT_MAX, INT_MIN, 0, -INT_MAX, 0, 0, 0, 0, INT_MIN));
    EXPECT_EQ(base ^ INT_MIN, Dimensions(INT_MIN, 0, 0, INT_MIN, 0, 0, 0, 0, 0));
}

struct SIUnitsStringCase
{
    const char* name;
    Exponents exponents;
    const char* text;
};

class SIUnitsString : public ::testing::TestWithParam<SIUnitsStringCase>
{
};

TEST_P(SIUnitsString, IsWrittenInTheOrderOfTheBaseQuantities)
{
    EXPECT_EQ(toDimensions(GetParam().exponents).SIUnitsString(), QString::fromLatin1(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, SIUnitsString,
    ::testing::Values(
        SIUnitsStringCase{"AllSymbols", {1, 1, 1, 1, 1, 1, 1, 1, 1}, "m*kg*s*A*K*mol*cd*rad*sr"},
        SIUnitsStringCase{
            "AllSymbolsBelow", {-1, -1, -1, -1, -1, -1, -1, -1, -1}, "1/(m*kg*s*A*K*mol*cd*rad*sr)"},
        SIUnitsStringCase{"Resistance", {2, 1, -3, -2, 0, 0, 0, 0, 0}, "m^2*kg/(s^3*A^2)"},
        SIUnitsStringCase{"Frequency", {0, 0, -1, 0, 0, 0, 0, 0, 0}, "1/s"},
        SIUnitsStringCase{"Illuminance", {-2, 0, 0, 0, 0, 0, 1, 0, 1}, "cd*sr/m^2"},
        SIUnitsStringCase{"MinusOneWritesNoExponent", {1, 0, -1, 0, 0, 0, 0, 0, 0}, "m/s"},
        SIUnitsStringCase{"TwoBelowStandInParentheses", {-1, 0, -1, 0, 0, 0, 0, 0, 0}, "1/(m*s)"},
        SIUnitsStringCase{"OneBelowWithExponentHasNone", {0, 0, 0, 0, 0, 0, 0, 0, -7}, "1/sr^7"},
        SIUnitsStringCase{"NumeratorBehindDenominator", {-1, 0, 0, 0, 0, 0, 0, 0, 2}, "sr^2/m"},
        SIUnitsStringCase{
            "Largest", {2147483647, 0, 0, 0, 0, 0, 0, 0, -2147483647}, "m^2147483647/sr^2147483647"},
        SIUnitsStringCase{"Smallest", {INT_MIN, 0, 0, 0, 0, 0, 0, 0, 0}, "1/m^2147483648"}),
    TestSupport::CaseName());

TEST(SIUnitsStringProperty, IsReadBackAsTheSameDimensions)
{
    const TestSupport::RandomSeed seed{2101};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int round = 0; round < 2000; ++round) {
        Exponents exponents{};
        for (int& exponent : exponents) {
            if (TestSupport::randomBelow(random, 3) != 0)
                exponent = static_cast<int>(TestSupport::randomBelow(random, round % 2 == 0 ? 7 : 2001)) -
                           (round % 2 == 0 ? 3 : 1000);
        }
        const QString text = toDimensions(exponents).SIUnitsString();
        const PlainResult read = parsePlainly(text);
        ASSERT_TRUE(read.accepted) << text.toStdString();
        ASSERT_EQ(read.exponents, exponents) << text.toStdString();
        ASSERT_EQ(read.scale, 1.0) << text.toStdString();
    }
}

} // namespace
} // namespace Orrery::UnitsTest
