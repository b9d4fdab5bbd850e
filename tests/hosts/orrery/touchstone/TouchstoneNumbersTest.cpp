#include "hosts/orrery/touchstone/TouchstoneNumbers.h"

#include "hosts/orrery/touchstone/TouchstoneFile.h"
#include "hosts/orrery/touchstone/TouchstoneImporter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Orrery::Host {

TEST(TouchstoneScale, RoundsOnce)
{
    double value = 0.0;
    ASSERT_TRUE(parseScaled("0.3", 9, &value));
    EXPECT_EQ(value, 3e8);
    ASSERT_TRUE(parseScaled("4.35", 6, &value));
    EXPECT_EQ(value, 4.35e6);
    ASSERT_TRUE(parseScaled("+77.77E+1", 3, &value));
    EXPECT_EQ(value, 777700.0);
    ASSERT_TRUE(parseScaled("1e-9", 9, &value));
    EXPECT_EQ(value, 1.0);
    ASSERT_TRUE(parseScaled("inf", 9, &value));
    EXPECT_EQ(value, std::numeric_limits<double>::infinity());
}

TEST(TouchstoneScale, RefusesWhatNoDoubleHolds)
{
    double value = 7.0;
    for (const char* const text : {"", "x", "1e308", "1.0D+01", "0e99999999999", "1 2", "0x10"})
        EXPECT_FALSE(parseScaled(text, 9, &value)) << text;
    EXPECT_EQ(value, 7.0);
}

TEST(TouchstonePolar, IsExactAtQuarterTurns)
{
    using Value = std::complex<double>;
    EXPECT_EQ(fromPolar(3, 0), Value(3, 0));
    EXPECT_EQ(fromPolar(3, 90), Value(0, 3));
    EXPECT_EQ(fromPolar(3, -270), Value(0, 3));
    EXPECT_EQ(fromPolar(3, 180), Value(-3, 0));
    EXPECT_EQ(fromPolar(3, -180), Value(-3, 0));
    EXPECT_EQ(fromPolar(3, 270), Value(0, -3));
    EXPECT_EQ(fromPolar(3, -90), Value(0, -3));
    EXPECT_EQ(fromPolar(3, 36000090), Value(0, 3));
    const Value eighth = fromPolar(1, 45);
    EXPECT_NEAR(eighth.real(), std::sqrt(0.5), 2e-16);
    EXPECT_NEAR(eighth.imag(), std::sqrt(0.5), 2e-16);
}

TEST(TouchstonePolar, HasTheMagnitudeOfADecibel)
{
    EXPECT_EQ(magnitudeOf(0), 1.0);
    EXPECT_EQ(magnitudeOf(20), 10.0);
    EXPECT_EQ(magnitudeOf(-std::numeric_limits<double>::infinity()), 0.0);
}

struct NameCase
{
    const char* path;
    std::optional<std::size_t> ports;
};

class TouchstoneNames : public ::testing::TestWithParam<NameCase>
{
};

TEST_P(TouchstoneNames, TellTheNumberOfPorts)
{
    EXPECT_EQ(portsOfName(GetParam().path), GetParam().ports) << GetParam().path;
}

INSTANTIATE_TEST_SUITE_P(Paths, TouchstoneNames,
                         ::testing::Values(NameCase{"x.s2p", 2}, NameCase{"a/b.c/X.S12P", 12},
                                           NameCase{"x.s99p", 99}, NameCase{"x.s100p", {}},
                                           NameCase{"x.s0p", {}}, NameCase{"x.sp", {}},
                                           NameCase{"x.s-1p", {}}, NameCase{"x.s2", {}}, NameCase{"s2p", {}},
                                           NameCase{"x.ts", {}}, NameCase{"", {}}));

TEST(TouchstoneElements, AreParted)
{
    EXPECT_EQ(elementName('S', 2, 1, 9), QStringLiteral("S21"));
    EXPECT_EQ(elementName('Z', 10, 2, 10), QStringLiteral("Z10_2"));
    EXPECT_EQ(elementName('S', 1, 1, 10), QStringLiteral("S1_1"));
}

} // namespace Orrery::Host
