// Products, quotients and powers of units.
#include "tests/support/CaseName.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <climits>

namespace Orrery::UnitsTest {
namespace {

void expectBaseUnitOf(const Units& units, const UnitType& type)
{
    EXPECT_TRUE(units.GetUnitType() == type) << units.GetUnitType().GetName().toStdString();
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(numbersOf(units), (std::vector<double>{1.0, 0.0, 0.0}));
    EXPECT_EQ(units.GetSIUnits(), type.GetReferenceSIString());
    EXPECT_EQ(childText(units, Units::DisplayUnit), type.GetReferenceSIString());
    EXPECT_EQ(childNames(units), (QStringList{"DisplayUnit", "Function", "SIUnits"}));
}

TEST(UnitsProduct, DropsTheScalesOfItsOperands)
{
    expectBaseUnitOf(parse("km") * parse("km"), UnitType::area);
    EXPECT_EQ((parse("km") * parse("km")).GetUnitsLabel(), QStringLiteral("m^2"));
}

TEST(UnitsProduct, HasNoLogarithmInIt)
{
    const Units dBm(UnitType::power, QStringLiteral("dBm"), 0.001, 0.0, 10.0);
    expectBaseUnitOf(dBm * parse("s"), UnitType::energy);
    EXPECT_FALSE((dBm * parse("s")).IsLogarithmic());
}

TEST(UnitsProduct, OfInvalidUnitsIsValid)
{
    const Units bad = parse("no unit");
    ASSERT_FALSE(bad.IsValid());
    expectBaseUnitOf(bad * bad, UnitType::dimensionless);
    expectBaseUnitOf(bad / bad, UnitType::dimensionless);
    expectBaseUnitOf(bad ^ 3, UnitType::dimensionless);
}

TEST(UnitsProduct, NamesANewTypeByBothLabels)
{
    Units a = parse("km^5");
    const Units b = parse("mK^2");
    a.SetUnitsLabel(QStringLiteral("long"));
    const Dimensions dimensions(5, 0, 0, 0, 2, 0, 0, 0, 0);
    ASSERT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
    const Units product = a * b;
    EXPECT_EQ(product.GetUnitType().GetName(), QStringLiteral("(long)*mK^2"));
    EXPECT_EQ(product.GetUnitType().GetReferenceSIString(), QStringLiteral("m^5*K^2"));
    EXPECT_EQ(product.GetUnitType().GetDimensions(), dimensions);
    EXPECT_EQ(product.GetUnitsLabel(), QStringLiteral("m^5*K^2"));
    EXPECT_EQ((b * a).GetUnitType().GetName(), QStringLiteral("(long)*mK^2"));
    EXPECT_EQ(UnitType::FindCompatibleTypes(dimensions).size(), 1);
}

TEST(UnitsQuotient, NamesANewTypeByBothLabels)
{
    const Units quotient = parse("km^6") / parse("mol^2");
    EXPECT_EQ(quotient.GetUnitType().GetName(), QStringLiteral("km^6/(mol^2)"));
    EXPECT_EQ(quotient.GetUnitsLabel(), QStringLiteral("m^6/mol^2"));
    const Units inverse = Units() / parse("cd^3");
    EXPECT_EQ(inverse.GetUnitType().GetName(), QStringLiteral("/(cd^3)")) << "a plain number has no label";
    EXPECT_EQ(inverse.GetUnitsLabel(), QStringLiteral("1/cd^3"));
}

TEST(UnitsPower, NamesANewTypeByLabelAndNumber)
{
    const Units power = parse("kA") ^ -3;
    EXPECT_EQ(power.GetUnitType().GetName(), QStringLiteral("(kA)^-3"));
    EXPECT_EQ(power.GetUnitsLabel(), QStringLiteral("1/A^3"));
    EXPECT_EQ(power.GetUnitType().GetDimensions(), Dimensions(0, 0, 0, -3, 0, 0, 0, 0, 0));
}

TEST(UnitsQuotient, OfAUnitByItselfIsANumberLabelledOne)
{
    const Units one = parse("m") / parse("m");
    expectBaseUnitOf(one, UnitType::dimensionless);
    EXPECT_TRUE(Dimensionless(one));
    EXPECT_EQ(one.GetUnitsLabel(), QStringLiteral("1"));
}

TEST(UnitsQuotient, FindsTheTypeByTheLabelsOfItsOperands)
{
    // Both kinds of events per second have these dimensions: the text of the labels decides.
    expectBaseUnitOf(parse("1") / parse("s"), UnitType::frequency);
    Units decays = parse("1");
    decays.SetUnitsLabel(QStringLiteral("Bq*s"));
    expectBaseUnitOf(decays / parse("s"), UnitType::radioactivity);
    expectBaseUnitOf(parse("Sv") * parse("1"), UnitType::equivalentDose);
    expectBaseUnitOf(parse("J") / parse("kg"), UnitType::absorbedDose);
    expectBaseUnitOf(parse("kBq") ^ 1, UnitType::radioactivity);
}

struct CombineCase
{
    const char* name;
    const char* left;
    const char* right;
    const UnitType* product;
    const UnitType* quotient;
};

class UnitsCombination : public ::testing::TestWithParam<CombineCase>
{
};

TEST_P(UnitsCombination, IsTheBaseUnitOfTheTypeThatIsThere)
{
    const CombineCase& c = GetParam();
    if (c.product)
        expectBaseUnitOf(parse(c.left) * parse(c.right), *c.product);
    if (c.quotient)
        expectBaseUnitOf(parse(c.left) / parse(c.right), *c.quotient);
}

INSTANTIATE_TEST_SUITE_P(
    Types, UnitsCombination,
    ::testing::Values(CombineCase{"Ohm", "mV", "kA", &UnitType::power, &UnitType::electricResistance},
                      CombineCase{"Speed", "km", "ms", nullptr, &UnitType::velocity},
                      CombineCase{"Charge", "A", "s", &UnitType::electricCharge, nullptr},
                      CombineCase{"Flux", "V", "s", &UnitType::magneticFlux, nullptr},
                      CombineCase{"Light", "cd", "sr", &UnitType::luminousFlux, nullptr},
                      CombineCase{"Lux", "lm", "m^2", nullptr, &UnitType::illuminance},
                      CombineCase{"Pressure", "N", "cm^2", nullptr, &UnitType::pressure},
                      CombineCase{"Catalysis", "mol", "s", nullptr, &UnitType::catalyticActivity},
                      CombineCase{"NumberLeft", "1", "deg", &UnitType::planeAngle, nullptr}),
    TestSupport::CaseName());

TEST(UnitsPower, FollowsTheExponent)
{
    expectBaseUnitOf(parse("km") ^ 2, UnitType::area);
    expectBaseUnitOf(parse("cm") ^ 3, UnitType::volume);
    expectBaseUnitOf(parse("ms") ^ -1, UnitType::frequency);
    expectBaseUnitOf(parse("kV") ^ 1, UnitType::electricPotential);
    expectBaseUnitOf(parse("kV") ^ 0, UnitType::dimensionless);
}

TEST(UnitsPower, WrapsAroundWithoutHarm)
{
    const Units base = parse("N"); // m*kg/s^2
    EXPECT_EQ((base ^ INT_MAX).GetUnitType().GetDimensions(),
              Dimensions(INT_MAX, INT_MAX, 2, 0, 0, 0, 0, 0, 0));
    const Units smallest = base ^ INT_MIN;
    EXPECT_EQ(smallest.GetUnitType().GetDimensions(), Dimensions(INT_MIN, INT_MIN, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(smallest.GetUnitType().GetName(), QStringLiteral("(N)^-2147483648"));
    EXPECT_EQ((smallest * smallest).GetUnitType().GetDimensions(), Dimensions());
    EXPECT_EQ((smallest / base).GetUnitType().GetDimensions(),
              Dimensions(INT_MAX, INT_MAX, 2, 0, 0, 0, 0, 0, 0));
}

} // namespace
} // namespace Orrery::UnitsTest
