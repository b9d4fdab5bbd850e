#include "hosts/orrery/RawUnits.h"

#include "hosts/orrery/UnitText.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

struct RawUnitsCase
{
    const char* type;
    const char* label;
};

class RawUnits : public ::testing::TestWithParam<RawUnitsCase>
{
};

TEST_P(RawUnits, AreThoseThatTheTypeNames)
{
    const std::optional<Units> units = unitsOfRawType(GetParam().type);
    ASSERT_TRUE(units) << GetParam().type;
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(unitsLabel(*units), GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(
    Types, RawUnits,
    ::testing::Values(RawUnitsCase{"voltage", "V"}, RawUnitsCase{"current", "A"}, RawUnitsCase{"time", "s"},
                      RawUnitsCase{"frequency", "Hz"}, RawUnitsCase{"power", "W"},
                      RawUnitsCase{"charge", "C"}, RawUnitsCase{"capacitance", "F"},
                      RawUnitsCase{"inductance", "H"}, RawUnitsCase{"impedance", "\u03A9"},
                      RawUnitsCase{"res-sweep", "\u03A9"}, RawUnitsCase{"admittance", "S"},
                      RawUnitsCase{"conductance", "S"}, RawUnitsCase{"temperature", "\u00B0C"},
                      RawUnitsCase{"temp-sweep", "\u00B0C"}, RawUnitsCase{"degrees", "\u00B0"},
                      RawUnitsCase{"degree", "\u00B0"}, RawUnitsCase{"radian", "rad"},
                      RawUnitsCase{"radians", "rad"}, RawUnitsCase{"decibel", "dB20"},
                      RawUnitsCase{"device_current", "A"}, RawUnitsCase{"subckt_current", "A"},
                      RawUnitsCase{"voltage^2-density", "V^2/Hz"},
                      RawUnitsCase{"current^2-density", "A^2/Hz"}, RawUnitsCase{" Voltage ", "V"}),
    [](const auto& row) { return std::to_string(row.index); });

TEST(RawUnits, AreNoneOfATypeThatNamesNone)
{
    for (const char* const type : {"", "notype", "phase", "voltage-density", "current-density", "pole",
                                   "zero", "s-param", "volt", "V"})
        EXPECT_FALSE(unitsOfRawType(type)) << type;
}

} // namespace Orrery::Host
