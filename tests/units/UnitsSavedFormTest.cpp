// Units through a data file and back.
#include "foundations/property/SimpleProperty.h"
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"
#include "tests/support/Failures.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace Orrery::UnitsTest {
namespace {

using StorageTest::AddValue;
using StorageTest::Open;
using StorageTest::Outcome;
using StorageTest::SaveNew;
using StorageTest::ScratchFolder;
using StorageTest::TryOpen;

const QString s_name = QStringLiteral("Unit");
const QString s_linear = QStringLiteral("linearscale");
const QString s_logarithmic = QStringLiteral("logarithmicscale");

using Change = std::function<void(Units&)>;

/// Saves a unit to a file, and what is read from it.
class UnitsSavedForm : public ::testing::Test
{
protected:
    /// A file with a copy of the unit, on which `change` has worked before it is saved.
    QString Saved(const Units& units, const Change& change = {})
    {
        const QString path = m_folder.Path(QStringLiteral("units.h5"));
        SaveNew(path, [&](PropertyObject& root) {
            auto copy = std::make_unique<Units>(units);
            ASSERT_EQ(copy->SetName(s_name), ER_SUCCESS);
            if (change)
                change(*copy);
            ASSERT_EQ(root.InsertProperty(copy.get()), ER_SUCCESS);
            copy.release();
        });
        return path;
    }

    /// What comes back; it lives as long as the test. Null for a failure.
    const Units* Reloaded(const Units& units, const Change& change = {})
    {
        m_file.reset(); // a file is open once at most
        m_file = Open(Saved(units, change));
        return m_file->GetRoot()->GetPtr<Units>(s_name);
    }

    ScratchFolder m_folder;
    std::shared_ptr<DataFile> m_file;
};

PropertyObject& parametersOf(Units& units)
{
    auto* const function = units.GetPtr<PropertyObject>(Units::ConversionFunction);
    auto* const folder = function ? function->GetPtr<PropertyObject>(QStringLiteral("Parameters")) : nullptr;
    if (!folder)
        throw std::runtime_error("the unit has saved no parameters");
    return *folder;
}

void setFunctionName(Units& units, const QString& name)
{
    ASSERT_EQ(units.GetPtr<PropertyObject>(Units::ConversionFunction)
                  ->SetProperty(QStringLiteral("Function"), name),
              ER_SUCCESS);
}

Units makeCelsius()
{
    return Units(UnitType::thermodynamicTemperature, QStringLiteral("degC"), 1.0, 273.15, 0.0);
}

Units makeDBm()
{
    return Units(UnitType::power, QStringLiteral("dBm"), 0.001, 0.25, 10.0);
}

class UnitsSavedFromSIString : public UnitsSavedForm, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(UnitsSavedFromSIString, ComesBackWhole)
{
    const Units original = parse(GetParam());
    ASSERT_TRUE(original.IsValid());
    const Units* const units = Reloaded(original);
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_TRUE(*units == original);
    EXPECT_TRUE(units->GetUnitType() == original.GetUnitType());
    EXPECT_EQ(units->GetSIUnits(), QString::fromUtf8(GetParam()));
    EXPECT_EQ(childNames(*units), QStringList{"SIUnits"});
}

INSTANTIATE_TEST_SUITE_P(Texts, UnitsSavedFromSIString,
                         ::testing::Values("", "1", "km", " km/ ms^2", "kg*m^2/(A*s^3)", "dB(mW)", "dB(V)",
                                           "log(m))", "k\xCE\xA9", "\xC2\xB5m", "kBq", "m^3*K^-7"));

TEST_F(UnitsSavedForm, KeepsTheLabelOfAParsedUnit)
{
    const Units* const units =
        Reloaded(parse("km"), [](Units& made) { made.SetUnitsLabel(QStringLiteral("kilometre")); });
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->GetUnitType() == UnitType::length);
    EXPECT_EQ(units->GetUnitsLabel(), QStringLiteral("kilometre"));
    EXPECT_EQ(childNames(*units), (QStringList{"DisplayUnit", "SIUnits"}));
}

TEST_F(UnitsSavedForm, BringsALinearUnitBackWithItsNumbersAndWithoutDimensions)
{
    const Units* const units = Reloaded(makeCelsius());
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 273.15, 0.0}));
    EXPECT_EQ(units->GetSIUnits(), QStringLiteral("K"));
    EXPECT_EQ(units->GetUnitsLabel(), QStringLiteral("degC"));
    EXPECT_TRUE(units->GetUnitType() == UnitType::dimensionless);
    EXPECT_FALSE(units->IsCommensurable(makeCelsius()));
    EXPECT_TRUE(units->IsCommensurable(parse("1")));
    EXPECT_EQ(childNames(*units), (QStringList{"DisplayUnit", "Function", "SIUnits"}));
}

TEST_F(UnitsSavedForm, BringsALogarithmicUnitBackWithItsNumbersAndWithoutDimensions)
{
    const Units* const units = Reloaded(makeDBm());
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{0.001, 0.25, 10.0}));
    EXPECT_TRUE(units->IsLogarithmic());
    EXPECT_EQ(units->GetSIUnits(), QStringLiteral("W"));
    EXPECT_TRUE(Dimensionless(*units));
}

TEST_F(UnitsSavedForm, BringsAProductBackWithoutDimensionsToo)
{
    const Units* const units = Reloaded(parse("km") * parse("km"));
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(units->GetSIUnits(), QStringLiteral("m^2"));
    EXPECT_TRUE(units->GetUnitType() == UnitType::dimensionless);
}

TEST_F(UnitsSavedForm, OfAnUnlabelledUnitWithoutDimensionsHasNoLabelAnyMore)
{
    const Units original(UnitType::force, QString(), 3.0, 0.0, 0.0);
    ASSERT_EQ(original.GetUnitsLabel(), QStringLiteral("N"));
    const Units* const units = Reloaded(original);
    ASSERT_NE(units, nullptr);
    EXPECT_EQ(units->GetUnitsLabel(), QString()) << "a plain number shows no SI string";
}

TEST_F(UnitsSavedForm, KeepsNumbersToTheLastBit)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const Units* const units =
        Reloaded(Units(UnitType::power, QStringLiteral("odd"), 1.0 / 3.0, -infinity, nan));
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(units->GetScale(), 1.0 / 3.0);
    EXPECT_EQ(units->GetOffset(), -infinity);
    EXPECT_TRUE(std::isnan(units->GetLogScale()));
}

TEST_F(UnitsSavedForm, OfANewSIStringOnExplicitNumbersLosesToTheOldFunction)
{
    const auto change = [](Units& units) {
        ASSERT_EQ(units.SetSIUnits(QStringLiteral("km")), ER_SUCCESS);
        EXPECT_EQ(numbersOf(units), (std::vector<double>{1000.0, 0.0, 0.0}));
        EXPECT_TRUE(units.GetUnitType() == UnitType::length);
    };
    const Units* const units = Reloaded(makeCelsius(), change);
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(units->GetSIUnits(), QStringLiteral("km"));
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 273.15, 0.0}));
    EXPECT_TRUE(units->GetUnitType() == UnitType::dimensionless);
}

TEST_F(UnitsSavedForm, OfARefusedTextComesBackInvalid)
{
    const Units* const units = Reloaded(parse("no unit"));
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetPropertyCount(), 0);
}

TEST_F(UnitsSavedForm, WithABadSIStringIsNotValid)
{
    const Units* const units = Reloaded(parse("km"), [](Units& made) {
        ASSERT_EQ(made.SetProperty(Units::SIUnits, QStringLiteral("km/x")), ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetScale(), 1000.0);
    EXPECT_TRUE(units->GetUnitType() == UnitType::dimensionless);
    EXPECT_EQ(units->GetSIUnits(), QStringLiteral("km/x"));
}

TEST_F(UnitsSavedForm, WithAnSIStringThatIsNoTextIsNotValid)
{
    const Units* const units = Reloaded(parse("km"), [](Units& made) {
        ASSERT_EQ(made.SetProperty(Units::SIUnits, BVariant(2.5)), ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 0.0, 0.0}));
    EXPECT_EQ(units->GetSIUnits(), QString());
}

TEST_F(UnitsSavedForm, WithoutAnSIStringIsNotValidWhateverItsFunction)
{
    const Units* const units =
        Reloaded(makeDBm(), [](Units& made) { ASSERT_EQ(made.DeleteProperty(Units::SIUnits), ER_SUCCESS); });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 0.0, 0.0}));
}

TEST_F(UnitsSavedForm, WithTooFewLinearParametersIsNotValidAndItsSIStringIsNotRead)
{
    const Units* const units = Reloaded(makeCelsius(), [](Units& made) {
        ASSERT_EQ(made.SetProperty(Units::SIUnits, QStringLiteral("km")), ER_SUCCESS);
        ASSERT_EQ(parametersOf(made).DeleteProperty(QStringLiteral("1")), ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 0.0, 0.0}));
    EXPECT_TRUE(units->GetUnitType() == UnitType::dimensionless);
}

TEST_F(UnitsSavedForm, WithTooFewLogarithmicParametersIsNotValidAndItsSIStringIsNotRead)
{
    const Units* const units = Reloaded(makeDBm(), [](Units& made) {
        ASSERT_EQ(made.SetProperty(Units::SIUnits, QStringLiteral("km")), ER_SUCCESS);
        ASSERT_EQ(parametersOf(made).DeleteProperty(QStringLiteral("2")), ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 0.0, 0.0}));
}

TEST_F(UnitsSavedForm, WithoutAnyParametersIsNotValid)
{
    const Units* const units = Reloaded(makeDBm(), [](Units& made) {
        ASSERT_EQ(made.GetPtr<PropertyObject>(Units::ConversionFunction)
                      ->DeleteProperty(QStringLiteral("Parameters")),
                  ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
}

TEST_F(UnitsSavedForm, ReadsTheFirstParametersAndNoFurtherOnes)
{
    const Units* const linear = Reloaded(makeCelsius(), [](Units& made) {
        ASSERT_EQ(parametersOf(made).SetProperty(QStringLiteral("2"), QStringLiteral("no number")),
                  ER_SUCCESS);
    });
    ASSERT_NE(linear, nullptr);
    EXPECT_EQ(numbersOf(*linear), (std::vector<double>{1.0, 273.15, 0.0}));
}

TEST_F(UnitsSavedForm, ReadsALogarithmicUnitOfTwoNamesByTheNameOfItsFunction)
{
    const Units* const units = Reloaded(makeDBm(), [](Units& made) { setFunctionName(made, s_linear); });
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units->IsValid());
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{10.0, 0.001, 0.0}))
        << "scale and offset come first there";
}

TEST_F(UnitsSavedForm, ReadsALinearUnitCalledLogarithmicAsTooShort)
{
    const Units* const units =
        Reloaded(makeCelsius(), [](Units& made) { setFunctionName(made, s_logarithmic); });
    ASSERT_NE(units, nullptr);
    EXPECT_FALSE(units->IsValid());
}

TEST_F(UnitsSavedForm, ReadsWholeNumbersAndOneElementArraysAsParameters)
{
    const Units* const units = Reloaded(makeDBm(), [](Units& made) {
        PropertyObject& parameters = parametersOf(made);
        ASSERT_EQ(parameters.SetProperty(QStringLiteral("0"), BVariant(20)), ER_SUCCESS);
        ASSERT_EQ(parameters.SetProperty(QStringLiteral("1"), BVariant(std::vector<double>{2.5})),
                  ER_SUCCESS);
    });
    ASSERT_NE(units, nullptr);
    EXPECT_EQ(numbersOf(*units), (std::vector<double>{2.5, 0.25, 20.0}));
}

TEST_F(UnitsSavedForm, WithAFunctionOfAnotherNameIsReadFromItsSIString)
{
    for (const char* name : {"polynomial-1", "Linearscale", "linearscale ", ""}) {
        SCOPED_TRACE(name);
        const Units* const units =
            Reloaded(makeCelsius(), [&](Units& made) { setFunctionName(made, QString::fromLatin1(name)); });
        ASSERT_NE(units, nullptr);
        EXPECT_TRUE(units->IsValid());
        EXPECT_TRUE(units->GetUnitType() == UnitType::thermodynamicTemperature);
        EXPECT_EQ(numbersOf(*units), (std::vector<double>{1.0, 0.0, 0.0}));
    }
}

TEST_F(UnitsSavedForm, WithAFunctionChildOfAnotherKindIsReadFromItsSIString)
{
    const auto folder = [](Units& made) {
        auto child = std::make_unique<PropertyObject>(Units::ConversionFunction);
        ASSERT_EQ(child->SetProperty(QStringLiteral("Function"), s_linear), ER_SUCCESS);
        ASSERT_EQ(made.InsertOrReplaceProperty(child.get()), ER_SUCCESS);
        child.release();
    };
    const auto text = [](Units& made) {
        ASSERT_EQ(made.DeleteProperty(Units::ConversionFunction), ER_SUCCESS);
        ASSERT_EQ(made.SetProperty(Units::ConversionFunction, s_linear), ER_SUCCESS);
    };
    for (const Change& change : {Change(folder), Change(text)}) {
        const Units* const units = Reloaded(makeCelsius(), change);
        ASSERT_NE(units, nullptr);
        EXPECT_TRUE(units->IsValid());
        EXPECT_TRUE(units->GetUnitType() == UnitType::thermodynamicTemperature);
    }
}

struct NotANumberCase
{
    const char* name;
    bool logarithmic;
    const char* key;
    BVariant value;
    const char* reason;
};

class UnitsSavedWithoutANumber : public UnitsSavedForm, public ::testing::WithParamInterface<NotANumberCase>
{
};

TEST_P(UnitsSavedWithoutANumber, RefusesToLoad)
{
    const NotANumberCase& c = GetParam();
    const auto change = [&](Units& made) {
        ASSERT_EQ(parametersOf(made).SetProperty(QString::fromLatin1(c.key), c.value), ER_SUCCESS);
    };
    Units units = c.logarithmic ? makeDBm() : makeCelsius();
    const QString path = Saved(units, change);
    change(units);
    EXPECT_EQ(TestSupport::failureOf([&] { units.OnDeserialization(); }),
              TestSupport::runtimeError(c.reason));

    const Outcome opened = TryOpen(path);
    EXPECT_LT(opened.code, 0);
    EXPECT_EQ(opened.file, nullptr);
    EXPECT_TRUE(StorageTest::IsOneLineAbout(opened.why, path)) << opened.why.toStdString();
    EXPECT_TRUE(opened.why.endsWith(QString::fromLatin1(c.reason))) << opened.why.toStdString();
}

const BVariant s_text(std::string("wide"));
const BVariant s_pair(std::vector<double>{1.0, 2.0});
const char* const s_textReason =
    "Cannot convert Brindle::Quay::BVariant of type 'std::string' (size: 1) to 'double'";
const char* const s_pairReason =
    "Cannot convert Brindle::Quay::BVariant of type 'double' (size: 2) to 'double'";

INSTANTIATE_TEST_SUITE_P(
    Parameters, UnitsSavedWithoutANumber,
    ::testing::Values(NotANumberCase{"LinearScale", false, "0", s_text, s_textReason},
                      NotANumberCase{"LinearOffset", false, "1", s_pair, s_pairReason},
                      NotANumberCase{"LinearNull", false, "1", BVariant(), "unknown type"},
                      NotANumberCase{"LogarithmicLogScale", true, "0", s_pair, s_pairReason},
                      NotANumberCase{"LogarithmicScale", true, "1", s_text, s_textReason},
                      NotANumberCase{"LogarithmicOffset", true, "2", s_text, s_textReason}),
    TestSupport::CaseName());

TEST(UnitsOnDeserialization, OfAUnitWithoutChildrenLeavesItAsItIs)
{
    Units units;
    units.OnDeserialization();
    EXPECT_FALSE(units.IsValid());
    EXPECT_EQ(units.GetPropertyCount(), 0);
}

TEST(UnitsOnDeserialization, ReadsAnEmptySIStringAsAPlainNumber)
{
    Units units;
    ASSERT_EQ(units.SetProperty(Units::SIUnits, QString()), ER_SUCCESS);
    units.OnDeserialization();
    EXPECT_TRUE(units.IsValid());
    EXPECT_TRUE(Dimensionless(units));
}

TEST(UnitsOnDeserialization, KeepsTheTypeWhereTheFunctionWins)
{
    Units units = makeDBm();
    units.OnDeserialization();
    EXPECT_TRUE(units.GetUnitType() == UnitType::power) << "only a fresh object has no dimensions yet";
    EXPECT_EQ(numbersOf(units), (std::vector<double>{0.001, 0.25, 10.0}));
}

} // namespace
} // namespace Orrery::UnitsTest
