// What the library has done by the time a host's own initialisers run. Each of these tests is a process in which
// nothing else has been called when it is run by itself.
#include "foundations/property/PropertyObjectFactory.h"
#include "tests/units/UnitTables.h"
#include "units/Units.h"

#include <gtest/gtest.h>

#include <memory>

namespace Orrery::UnitsTest {
namespace {

// Read before main().
const bool s_unitsWereKnown = PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("Units"));
const bool s_functionWasKnown = PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("Function"));
const QString s_siUnitsName = Units::SIUnits;
const QString s_displayUnitName = Units::DisplayUnit;
const QString s_conversionFunctionName = Units::ConversionFunction;
const QString s_firstTypeName = UnitType::length.GetName();
const QList<UnitType> s_perSecondTypes = UnitType::FindCompatibleTypes(UnitType::frequency.GetDimensions());
const Units s_plain;
const Units s_velocity = Units::FromSIString(QStringLiteral("km/ms"));
const Units s_inch(UnitType::length, QStringLiteral("in"), 0.0254, 0.0, 0.0);

TEST(UnitsLoadTime, RegistersTheTypesForLoadingBeforeMain)
{
    EXPECT_TRUE(s_unitsWereKnown);
    EXPECT_TRUE(s_functionWasKnown);
}

TEST(UnitsLoadTime, HasTheNamesOfTheChildrenReadyBeforeMain)
{
    EXPECT_EQ(s_siUnitsName, QStringLiteral("SIUnits"));
    EXPECT_EQ(s_displayUnitName, QStringLiteral("DisplayUnit"));
    EXPECT_EQ(s_conversionFunctionName, QStringLiteral("Function"));
}

TEST(UnitsLoadTime, HasTheTypesReadyBeforeMain)
{
    EXPECT_EQ(s_firstTypeName, QStringLiteral("length"));
    ASSERT_EQ(s_perSecondTypes.size(), 2);
    EXPECT_EQ(s_perSecondTypes[0].GetName(), QStringLiteral("frequency"));
    EXPECT_EQ(s_perSecondTypes[1].GetName(), QStringLiteral("radioactivity"));
    EXPECT_TRUE(s_plain.GetUnitType() == UnitType::dimensionless);
    EXPECT_EQ(s_plain.GetUnitType().GetName(), QStringLiteral("scalar"));
}

TEST(UnitsLoadTime, ParsesAndMakesUnitsBeforeMain)
{
    EXPECT_TRUE(s_velocity.IsValid());
    EXPECT_TRUE(s_velocity.GetUnitType() == UnitType::velocity);
    EXPECT_EQ(s_velocity.GetScale(), 1000.0 / 0.001);
    EXPECT_TRUE(s_inch.IsValid());
    EXPECT_TRUE(s_inch.HasProperty(QStringLiteral("Function")));
}

TEST(UnitsLoadTime, LetsTheFactoryMakeAUnit)
{
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("Units")));
    const auto* const units = dynamic_cast<const Units*>(made.get());
    ASSERT_NE(units, nullptr);
    EXPECT_EQ(units->PropertyObjType(), QStringLiteral("Units"));
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetPropertyCount(), 0);
}

} // namespace
} // namespace Orrery::UnitsTest
