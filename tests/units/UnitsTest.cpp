#include "units/Units.h"

#include "foundations/property/SimpleProperty.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

namespace Orrery::UnitsTest {
namespace {

using TestSupport::ToDoubles;

const QString s_degree = QString(QChar(0x00B0)) + QLatin1Char('C');

/// Reaches the constructor that is for subclasses.
class HostUnits : public Units
{
public:
    explicit HostUnits(const QString& siString)
        : Units(siString)
    {
    }
};

/// A unit with every field and child of its own kind, so that a copy that forgets one is found out.
Units makeRich()
{
    Units units(UnitType::thermodynamicTemperature, s_degree, 2.5, 273.15, 7.0);
    EXPECT_EQ(units.SetName(QStringLiteral("rich")), ER_SUCCESS);
    EXPECT_EQ(units.SetProperty(QStringLiteral("Extra"), QStringLiteral("kept")), ER_SUCCESS);
    return units;
}

void expectRich(const Units& units)
{
    EXPECT_TRUE(units.IsValid());
    EXPECT_TRUE(units.GetUnitType() == UnitType::thermodynamicTemperature);
    EXPECT_EQ(numbersOf(units), (std::vector<double>{2.5, 273.15, 7.0}));
    EXPECT_EQ(units.GetUnitsLabel(), s_degree);
    EXPECT_EQ(childNames(units), (QStringList{"DisplayUnit", "Extra", "Function", "SIUnits"}));
}

std::vector<double> parametersOf(Units& units)
{
    auto* const function = units.GetPtr<PropertyObject>(QStringLiteral("Function"));
    auto* const folder = function ? function->GetPtr<PropertyObject>(QStringLiteral("Parameters")) : nullptr;
    std::vector<double> values;
    for (int i = 0; folder && i < folder->GetPropertyCount(); ++i) {
        const auto* const value = folder->GetPtr<SimpleProperty>(QString::number(i));
        for (const double number : ToDoubles(value ? value->GetValue() : BVariant()))
            values.push_back(number);
    }
    return values;
}

TEST(Units, MadeByDefaultAreAnInvalidPlainNumberWithoutChildren)
{
    const Units units;
    EXPECT_FALSE(units.IsValid());
    EXPECT_EQ(numbersOf(units), (std::vector<double>{1.0, 0.0, 0.0}));
    EXPECT_TRUE(units.GetUnitType() == UnitType::dimensionless);
    EXPECT_EQ(units.GetPropertyCount(), 0);
    EXPECT_EQ(units.GetSIUnits(), QString());
    EXPECT_EQ(units.GetUnitsLabel(), QString());
    EXPECT_EQ(units.PropertyObjType(), QStringLiteral("Units"));
    EXPECT_EQ(&units.PropertyObjType(), &Units::StaticType());
    EXPECT_EQ(units.GetTypeFlags(), static_cast<unsigned>(PropertyTypeFlagObject));
}

TEST(UnitsImpl, StartsAsAnInvalidPlainNumber)
{
    const Units::Impl impl;
    EXPECT_FALSE(impl.valid);
    EXPECT_TRUE(impl.type == UnitType::dimensionless);
    EXPECT_EQ(impl.type.GetReferenceSIString(), QStringLiteral("1"));
    EXPECT_EQ(impl.scale, 1.0);
    EXPECT_EQ(impl.offset, 0.0);
    EXPECT_EQ(impl.logScale, 0.0);
}

TEST(UnitsImpl, LeavesItsValidityToTheCaller)
{
    Units::Impl impl;
    EXPECT_TRUE(impl.ParseSIString(QStringLiteral("km")));
    EXPECT_FALSE(impl.valid);
    impl.valid = true;
    EXPECT_FALSE(impl.ParseSIString(QStringLiteral("nonsense")));
    EXPECT_TRUE(impl.valid);
}

TEST(UnitsFromNumbers, KeepTheReferenceStringWhateverTheScale)
{
    Units inch(UnitType::length, QStringLiteral("in"), 0.0254, 0.0, 0.0);
    EXPECT_TRUE(inch.IsValid());
    EXPECT_EQ(numbersOf(inch), (std::vector<double>{0.0254, 0.0, 0.0}));
    EXPECT_TRUE(inch.GetUnitType() == UnitType::length);
    EXPECT_EQ(inch.GetSIUnits(), QStringLiteral("m"));
    EXPECT_EQ(inch.GetUnitsLabel(), QStringLiteral("in"));
    EXPECT_EQ(childNames(inch), (QStringList{"DisplayUnit", "Function", "SIUnits"}));
}

TEST(UnitsFromNumbers, SaveALinearUnitAsScaleAndOffset)
{
    Units celsius(UnitType::thermodynamicTemperature, s_degree, 1.0, 273.15, 0.0);
    auto* const function = celsius.GetPtr<PropertyObject>(Units::ConversionFunction);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->PropertyObjType(), QStringLiteral("Function"));
    EXPECT_EQ(childText(*function, QStringLiteral("Function")), QStringLiteral("linearscale"));
    EXPECT_EQ(parametersOf(celsius), (std::vector<double>{1.0, 273.15}));
}

TEST(UnitsFromNumbers, SaveALogarithmicUnitAsLogScaleScaleAndOffset)
{
    Units dBm(UnitType::power, QStringLiteral("dBm"), 0.001, 0.5, 10.0);
    EXPECT_TRUE(dBm.IsLogarithmic());
    auto* const function = dBm.GetPtr<PropertyObject>(Units::ConversionFunction);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(childText(*function, QStringLiteral("Function")), QStringLiteral("logarithmicscale"));
    EXPECT_EQ(parametersOf(dBm), (std::vector<double>{10.0, 0.001, 0.5}));
}

TEST(UnitsFromNumbers, TakeANotANumberForLogarithmicAndMinusZeroForLinear)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Units odd(UnitType::power, QStringLiteral("odd"), 1.0, 0.0, nan);
    EXPECT_TRUE(odd.IsLogarithmic());
    EXPECT_TRUE(odd.IsValid());
    EXPECT_EQ(childText(*odd.GetPtr<PropertyObject>(Units::ConversionFunction), QStringLiteral("Function")),
              QStringLiteral("logarithmicscale"));
    EXPECT_EQ(parametersOf(odd).size(), 3U);

    Units zero(UnitType::power, QStringLiteral("zero"), 1.0, 0.0, -0.0);
    EXPECT_FALSE(zero.IsLogarithmic());
    EXPECT_EQ(childText(*zero.GetPtr<PropertyObject>(Units::ConversionFunction), QStringLiteral("Function")),
              QStringLiteral("linearscale"));
}

TEST(UnitsFromNumbers, WriteAnEmptyLabelTooAndThenShowTheSIString)
{
    const Units units(UnitType::force, QString(), 3.0, 0.0, 0.0);
    EXPECT_TRUE(units.HasProperty(Units::DisplayUnit));
    EXPECT_EQ(childText(units, Units::DisplayUnit), QString());
    EXPECT_EQ(units.GetUnitsLabel(), QStringLiteral("N"));
    const Units plain(UnitType::dimensionless, QString(), 0.01, 0.0, 0.0);
    EXPECT_EQ(plain.GetSIUnits(), QStringLiteral("1"));
    EXPECT_EQ(plain.GetUnitsLabel(), QString());
}

TEST(UnitsFromNumbers, OfATypeThatIsNoneHaveItsEmptySIString)
{
    const Units units(UnitType(), QStringLiteral("what"), 1.0, 0.0, 0.0);
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(childText(units, Units::SIUnits), QString());
    EXPECT_FALSE(Dimensionless(units));
    EXPECT_EQ(units.GetUnitsLabel(), QStringLiteral("what"));
}

TEST(UnitsFromSIString, OfNothingAreValidAndDimensionless)
{
    const Units empty = Units::FromSIString(QString());
    EXPECT_TRUE(empty.IsValid());
    EXPECT_TRUE(empty.GetUnitType() == UnitType::dimensionless);
    EXPECT_EQ(empty.GetUnitsLabel(), QString());
    EXPECT_EQ(childText(empty, Units::SIUnits), QString());
    EXPECT_TRUE(empty.HasProperty(Units::SIUnits));
    EXPECT_FALSE(Units().IsValid());
    EXPECT_TRUE(empty == Units());
    EXPECT_FALSE(empty != Units());
}

TEST(UnitsFromSIString, KeepTheTextAsItWasPassed)
{
    const Units units = Units::FromSIString(QStringLiteral("\t km/ \n ms^1"));
    ASSERT_TRUE(units.IsValid());
    EXPECT_EQ(units.GetSIUnits(), QStringLiteral("\t km/ \n ms^1"));
    EXPECT_EQ(childNames(units), QStringList{"SIUnits"});
    EXPECT_EQ(units.GetUnitsLabel(), units.GetSIUnits());
}

TEST(UnitsFromSIString, OfABadTextHaveNoChildrenAndAreNotValid)
{
    const Units units = parse("km/x");
    EXPECT_FALSE(units.IsValid());
    EXPECT_EQ(units.GetPropertyCount(), 0);
    EXPECT_TRUE(units.GetUnitType() == UnitType::dimensionless);
    EXPECT_EQ(numbersOf(units), (std::vector<double>{1000.0, 0.0, 0.0}));
}

TEST(UnitsFromSIString, AreWhatASubclassGetsFromItsConstructor)
{
    const HostUnits good(QStringLiteral("mV"));
    EXPECT_TRUE(good.IsValid());
    EXPECT_EQ(good.GetScale(), 0.001);
    EXPECT_EQ(good.GetSIUnits(), QStringLiteral("mV"));
    const HostUnits bad(QStringLiteral("mv"));
    EXPECT_FALSE(bad.IsValid());
    EXPECT_EQ(bad.GetPropertyCount(), 0);
}

TEST(UnitsLabel, IsTheSIStringUntilThereIsOneAndEmptyForANumber)
{
    Units km = parse("km");
    EXPECT_EQ(km.GetUnitsLabel(), QStringLiteral("km"));
    EXPECT_EQ(parse("1").GetUnitsLabel(), QString());
    EXPECT_EQ(parse("m/m").GetUnitsLabel(), QString());
    EXPECT_EQ(&km.SetUnitsLabel(QStringLiteral("kilometres")), &km);
    EXPECT_EQ(km.GetUnitsLabel(), QStringLiteral("kilometres"));
    EXPECT_EQ(km.GetSIUnits(), QStringLiteral("km"));
    km.SetUnitsLabel(QString());
    EXPECT_EQ(km.GetUnitsLabel(), QStringLiteral("km"));
    Units one = parse("1");
    one.SetUnitsLabel(QStringLiteral("turns"));
    EXPECT_EQ(one.GetUnitsLabel(), QStringLiteral("turns"));
}

TEST(UnitsLabel, ThatCannotBeStoredIsDropped)
{
    Units km = parse("km");
    ASSERT_EQ(km.InsertProperty(new PropertyObject(Units::DisplayUnit)), ER_SUCCESS);
    EXPECT_EQ(&km.SetUnitsLabel(QStringLiteral("label")), &km);
    EXPECT_EQ(km.GetUnitsLabel(), QStringLiteral("km"));
}

TEST(UnitsLabel, OfATypeThatOnlyLooksDimensionlessIsTheSIString)
{
    const UnitType& turns =
        UnitType::CreateType(QStringLiteral("turns"), Dimensions(), QStringLiteral("m/m"));
    const Units units(turns, QString(), 1.0, 0.0, 0.0);
    EXPECT_FALSE(Dimensionless(units));
    EXPECT_EQ(units.GetUnitsLabel(), QStringLiteral("m/m"));
}

TEST(SetSIUnits, TakesAGoodTextAndLeavesTheLabel)
{
    Units units(UnitType::thermodynamicTemperature, s_degree, 1.0, 273.15, 3.0);
    EXPECT_EQ(units.SetSIUnits(QStringLiteral("mK")), ER_SUCCESS);
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(numbersOf(units), (std::vector<double>{0.001, 0.0, 0.0}));
    EXPECT_EQ(units.GetSIUnits(), QStringLiteral("mK"));
    EXPECT_EQ(units.GetUnitsLabel(), s_degree);
    EXPECT_EQ(parametersOf(units), (std::vector<double>{3.0, 1.0, 273.15}));
}

TEST(SetSIUnits, RefusesABadTextAndKeepsTheOldOne)
{
    Units units = parse("km");
    EXPECT_EQ(units.SetSIUnits(QStringLiteral("km/x")), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(units.IsValid());
    EXPECT_EQ(units.GetSIUnits(), QStringLiteral("km"));
    EXPECT_TRUE(units.GetUnitType() == UnitType::length);
    EXPECT_EQ(units.GetScale(), 1000.0);
    EXPECT_EQ(units.SetSIUnits(QStringLiteral("??")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(units.GetScale(), 1.0);
    EXPECT_EQ(units.SetSIUnits(QStringLiteral("mm")), ER_SUCCESS);
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(units.GetSIUnits(), QStringLiteral("mm"));
}

TEST(SetSIUnits, RefusingTextAlsoDropsOffsetAndLogarithm)
{
    Units units(UnitType::power, QStringLiteral("odd"), 4.0, 5.0, 6.0);
    EXPECT_EQ(units.SetSIUnits(QStringLiteral("kW*")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(numbersOf(units), (std::vector<double>{1000.0, 0.0, 0.0}));
    EXPECT_TRUE(units.GetUnitType() == UnitType::power);
}

TEST(UnitsCopy, HasTheSameChildrenAndNumbersAndSharesNothing)
{
    Units source = makeRich();
    Units copy(source);
    expectRich(copy);
    EXPECT_EQ(copy.GetName(), QStringLiteral("rich"));
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_EQ(copy.SetSIUnits(QStringLiteral("km")), ER_SUCCESS);
    copy.SetUnitsLabel(QStringLiteral("changed"));
    expectRich(source);
}

TEST(UnitsCopy, OfAnInvalidUnitStaysInvalid)
{
    const Units bad = parse("km/x");
    const Units copy(bad);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_EQ(copy.GetScale(), 1000.0);
    Units assigned = parse("V");
    assigned = bad;
    EXPECT_FALSE(assigned.IsValid());
    EXPECT_EQ(assigned.GetPropertyCount(), 0);
    EXPECT_EQ(assigned.GetScale(), 1000.0);
}

TEST(UnitsCopy, AssignedReplacesChildrenAndNumbers)
{
    const Units source = makeRich();
    Units target = parse("V");
    ASSERT_EQ(target.SetName(QStringLiteral("target")), ER_SUCCESS);
    EXPECT_EQ(&(target = source), &target);
    expectRich(target);
    expectRich(source);
    EXPECT_EQ(target.GetName(), QStringLiteral("target"));
}

TEST(UnitsCopy, AssignedToItselfChangesNothing)
{
    Units units = makeRich();
    const Units& same = units;
    units = same;
    expectRich(units);
}

TEST(UnitsMove, TakesChildrenAndNumbersAndLetsTheSourceBeDestroyed)
{
    auto source = std::make_unique<Units>(makeRich());
    const Units moved(std::move(*source));
    source.reset();
    expectRich(moved);
}

TEST(UnitsMove, AssignedExchangesTheNumbersAndCopiesTheChildren)
{
    Units source = makeRich();
    Units target = parse("mV");
    EXPECT_EQ(&(target = std::move(source)), &target);
    expectRich(target);
    // What the former numbers of the target have become, and children that have only been copied.
    EXPECT_EQ(numbersOf(source), (std::vector<double>{0.001, 0.0, 0.0})); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(source.GetUnitType() == UnitType::electricPotential);
    EXPECT_EQ(childNames(source), (QStringList{"DisplayUnit", "Extra", "Function", "SIUnits"}));
}

TEST(UnitsClone, IsAUnitWithNameChildrenAndNumbers)
{
    const Units source = makeRich();
    const std::unique_ptr<AbstractProperty> clone(source.Clone());
    const auto* const units = dynamic_cast<const Units*>(clone.get());
    ASSERT_NE(units, nullptr);
    expectRich(*units);
    EXPECT_EQ(units->GetName(), QStringLiteral("rich"));
    EXPECT_EQ(units->GetParent(), nullptr);
}

TEST(UnitsClone, OfAnInvalidUnitKeepsWhatTheRefusedTextLeft)
{
    const Units bad = parse("km/x");
    const std::unique_ptr<AbstractProperty> clone(bad.DoClone());
    const auto* const units = dynamic_cast<const Units*>(clone.get());
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetScale(), 1000.0);
    EXPECT_EQ(units->GetPropertyCount(), 0);
}

TEST(UnitsClone, IsMadeWhenItsFolderIsCopied)
{
    PropertyObject folder;
    auto units = std::make_unique<Units>(makeRich());
    ASSERT_EQ(folder.InsertProperty(units.get()), ER_SUCCESS);
    units.release();
    PropertyObject copy(folder);
    const auto* const copied = copy.GetPtr<Units>(QStringLiteral("rich"));
    ASSERT_NE(copied, nullptr);
    expectRich(*copied);
}

TEST(UnitsComparison, IsOfDimensionsNumbersAndLabelsOnly)
{
    const Units base(UnitType::length, QStringLiteral("in"), 0.0254, 0.5, 0.0);
    EXPECT_TRUE(base == Units(UnitType::length, QStringLiteral("in"), 0.0254, 0.5, 0.0));
    EXPECT_FALSE(base == Units(UnitType::area, QStringLiteral("in"), 0.0254, 0.5, 0.0));
    EXPECT_FALSE(base == Units(UnitType::length, QStringLiteral("in"), 0.0254, 0.25, 0.0));
    EXPECT_FALSE(base ==
                 Units(UnitType::length, QStringLiteral("in"), std::nextafter(0.0254, 1.0), 0.5, 0.0));
    EXPECT_FALSE(base == Units(UnitType::length, QStringLiteral("in"), 0.0254, 0.5, 1.0));
    EXPECT_FALSE(base == Units(UnitType::length, QStringLiteral("inch"), 0.0254, 0.5, 0.0));
    EXPECT_TRUE(base != Units(UnitType::length, QStringLiteral("inch"), 0.0254, 0.5, 0.0));
    EXPECT_FALSE(base != base);
}

TEST(UnitsComparison, LooksAtNeitherNamesOfTypesNorSIStringsNorValidity)
{
    EXPECT_TRUE(Units(UnitType::frequency, QStringLiteral("x"), 1.0, 0.0, 0.0) ==
                Units(UnitType::radioactivity, QStringLiteral("x"), 1.0, 0.0, 0.0));
    Units plain = parse("m/s");
    Units spaced = parse(" m/ s");
    EXPECT_FALSE(plain == spaced) << "the SI string is the label";
    plain.SetUnitsLabel(QStringLiteral("v"));
    spaced.SetUnitsLabel(QStringLiteral("v"));
    EXPECT_TRUE(plain == spaced);
    Units broken = parse("m/s");
    broken.SetUnitsLabel(QStringLiteral("v"));
    EXPECT_EQ(broken.SetSIUnits(QStringLiteral("?")), ER_INVALID_ARGUMENT);
    EXPECT_TRUE(plain == broken);
}

TEST(UnitsComparison, FollowsTheNumbersOfTheMachine)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Units odd(UnitType::length, QStringLiteral("x"), nan, 0.0, 0.0);
    EXPECT_FALSE(odd == odd);
    EXPECT_TRUE(odd != odd);
    EXPECT_TRUE(Units(UnitType::length, QStringLiteral("x"), 0.0, 0.0, 0.0) ==
                Units(UnitType::length, QStringLiteral("x"), -0.0, -0.0, -0.0));
}

TEST(IsCommensurable, ComparesExponentsAndNothingElse)
{
    EXPECT_TRUE(parse("dB(mW)").IsCommensurable(parse("W")));
    EXPECT_TRUE(parse("W").IsCommensurable(parse("V*A")));
    EXPECT_TRUE(parse("Bq").IsCommensurable(parse("Hz")));
    EXPECT_FALSE(parse("rad").IsCommensurable(parse("1")));
    EXPECT_FALSE(parse("sr").IsCommensurable(parse("rad^2")));
    EXPECT_TRUE(Units().IsCommensurable(parse("1")));
    EXPECT_TRUE(parse("no unit").IsCommensurable(Units())) << "validity takes no part";
}

TEST(DimensionlessUnits, AreToldByNameAndExponentsOfTheType)
{
    EXPECT_TRUE(Dimensionless(Units()));
    EXPECT_TRUE(Dimensionless(parse("")));
    EXPECT_TRUE(Dimensionless(parse("m/km")));
    EXPECT_TRUE(Dimensionless(parse("dB(1)")));
    EXPECT_FALSE(Dimensionless(parse("rad")));
    EXPECT_FALSE(Dimensionless(parse("m")));
    EXPECT_FALSE(Dimensionless(Units(UnitType(), QString(), 1.0, 0.0, 0.0)));
}

TEST(UnitsOutput, IsOneLineOfNameSIStringLabelAndScale)
{
    Units units = parse("km");
    ASSERT_EQ(units.SetName(QStringLiteral("distance")), ER_SUCCESS);
    units.SetUnitsLabel(QString(QChar(0x00B5)));
    std::ostringstream out;
    EXPECT_EQ(&(out << units), &out);
    EXPECT_EQ(out.str(), "distance: SI units=km, display label=\xC2\xB5, scale=1000\n");
}

TEST(UnitsOutput, FormatsTheScaleAsTheStreamDoesAndLeavesTheRestOut)
{
    std::ostringstream out;
    out << Units(UnitType::length, QStringLiteral("in"), 1.0 / 3.0, 5.0, 7.0);
    EXPECT_EQ(out.str(), ": SI units=m, display label=in, scale=0.333333\n");
    out.str(std::string());
    out.precision(3);
    out << std::scientific << Units();
    EXPECT_EQ(out.str(), ": SI units=, display label=, scale=1.000e+00\n");
}

/// Counts the flushes that reach it.
class FlushCounter : public std::stringbuf
{
public:
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return 0;
    }
};

TEST(UnitsOutput, EndsWithAFlush)
{
    FlushCounter counter;
    std::ostream out(&counter);
    out << parse("m");
    EXPECT_EQ(counter.flushes, 1);
    EXPECT_EQ(counter.str().back(), '\n');
}

} // namespace
} // namespace Orrery::UnitsTest
