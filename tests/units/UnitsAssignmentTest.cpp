// Units that are assigned to each other while one stands in the other, or while a host's code takes part.

#include "units/Units.h"

#include "Core/FunctionProperty.h"
#include "Core/PolynomialMeasurement.h"
#include "foundations/property/PropertyHandle.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

namespace Orrery::UnitsTest {
namespace {

Units makeHours()
{
    return Units(UnitType::time, QStringLiteral("h"), 3600.0, 1.0, 10.0);
}

void expectHours(const Units& units)
{
    EXPECT_EQ(numbersOf(units), (std::vector<double>{3600.0, 1.0, 10.0}));
    EXPECT_TRUE(units.GetUnitType() == UnitType::time);
    EXPECT_EQ(units.GetUnitsLabel(), QStringLiteral("h"));
    EXPECT_EQ(childNames(units), (QStringList{"DisplayUnit", "Function", "SIUnits"}));
}

/// A child of the folder, with hours in it.
Units* insertHours(PropertyObject& folder, const char* name)
{
    auto hours = std::make_unique<Units>(makeHours());
    hours->SetName(QLatin1String(name));
    EXPECT_EQ(folder.InsertProperty(hours.get()), ER_SUCCESS);
    return hours.release();
}

/// Runs `onEnd` when it is destroyed.
class Mortal : public PropertyObject
{
public:
    Mortal(const QString& name, std::function<void()> onEnd)
        : PropertyObject(name)
        , m_onEnd(std::move(onEnd))
    {
    }
    ~Mortal() override { m_onEnd(); }

private:
    std::function<void()> m_onEnd;
};

/// A measurement whose clone() does what a host likes.
class HostMeasurement : public PolynomialMeasurement<1>
{
public:
    explicit HostMeasurement(const std::function<void()>* onClone)
        : m_onClone(onClone)
    {
    }
    Measurement<Variable>* clone() const override
    {
        (*m_onClone)();
        return new HostMeasurement(m_onClone);
    }

private:
    const std::function<void()>* m_onClone;
};

TEST(UnitsAssignment, MovesFromAChildThatGoesByIt)
{
    Units units = parse("km");
    Units* const child = insertHours(units, "child");
    const PropertyHandle handle(child);
    units = std::move(*child);
    EXPECT_TRUE(handle.IsExpired());
    expectHours(units);
}

TEST(UnitsAssignment, MovesFromADescendantFarBelow)
{
    Units units = parse("km");
    auto* const folder = new PropertyObject(QStringLiteral("folder"));
    ASSERT_EQ(units.InsertProperty(folder), ER_SUCCESS);
    units = std::move(*insertHours(*folder, "below"));
    expectHours(units);
}

TEST(UnitsAssignment, CopiesFromAChildThatGoesByIt)
{
    Units units = parse("km");
    units = *insertHours(units, "child");
    expectHours(units);
}

TEST(UnitsAssignment, MovesFromTheUnitThatItStandsIn)
{
    Units units = makeHours();
    auto* const child = new Units(parse("km"));
    child->SetName(QStringLiteral("child"));
    ASSERT_EQ(units.InsertProperty(child), ER_SUCCESS);
    *child = std::move(units);
    EXPECT_EQ(numbersOf(*child), (std::vector<double>{3600.0, 1.0, 10.0}));
    EXPECT_EQ(numbersOf(units), (std::vector<double>{1000.0, 0.0, 0.0}));
    EXPECT_EQ(childNames(*child), (QStringList{"DisplayUnit", "Function", "SIUnits", "child"}));
}

TEST(UnitsAssignment, MovedToItselfChangesNothing)
{
    Units units = makeHours();
    Units& same = units;
    units = std::move(same);
    expectHours(units);
}

TEST(UnitsAssignment, GoesOnWithAUnitThatWasMovedFrom)
{
    Units source = makeHours();
    Units units(std::move(source));
    source = std::move(units); // NOLINT(bugprone-use-after-move): as an algorithm that swaps does it
    expectHours(source);
}

TEST(UnitsAssignment, BearsAFormerChildWhoseEndDestroysTheTarget)
{
    for (const bool moves : {false, true}) {
        SCOPED_TRACE(moves);
        auto* const units = new Units(parse("km"));
        const PropertyHandle handle(units);
        ASSERT_EQ(units->InsertProperty(new Mortal(QStringLiteral("last"), [units] { delete units; })),
                  ER_SUCCESS);
        Units hours = makeHours();
        if (moves)
            *units = std::move(hours);
        else
            *units = hours;
        EXPECT_TRUE(handle.IsExpired());
        expectHours(hours); // NOLINT(bugprone-use-after-move): nobody has taken the numbers
    }
}

TEST(UnitsAssignment, BearsAFormerChildWhoseEndDestroysTheSource)
{
    Units units = parse("km");
    auto* const source = new Units(makeHours());
    ASSERT_EQ(units.InsertProperty(new Mortal(QStringLiteral("last"), [source] { delete source; })),
              ER_SUCCESS);
    units = std::move(*source);
    expectHours(units);
}

TEST(UnitsCopyWithAMeasurement, LeavesOutWhatTheCloneOfTheMeasurementDestroys)
{
    Units units = makeHours();
    auto* const function = units.GetPtr<Function>(Units::ConversionFunction);
    ASSERT_NE(function, nullptr);
    std::function<void()> onClone = [] {};
    ASSERT_EQ(function->SetMeasurement(HostMeasurement(&onClone)), ER_SUCCESS); // by a clone
    onClone = [&units] { units.DeleteProperty(Units::SIUnits); };
    const Units copy(units);
    EXPECT_EQ(childNames(copy), (QStringList{"DisplayUnit", "Function"}));
    EXPECT_EQ(numbersOf(copy), (std::vector<double>{3600.0, 1.0, 10.0}));
}

} // namespace
} // namespace Orrery::UnitsTest
