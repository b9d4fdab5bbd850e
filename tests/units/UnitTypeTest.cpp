#include "tests/units/UnitTables.h"
#include "units/Units.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Orrery::UnitsTest {
namespace {

QStringList namesOf(const QList<UnitType>& types)
{
    QStringList names;
    for (const UnitType& type : types)
        names.append(type.GetName());
    return names;
}

const Dimensions s_perSecond(0, 0, -1, 0, 0, 0, 0, 0, 0);
const Dimensions s_dose(2, 0, -2, 0, 0, 0, 0, 0, 0);

class StaticUnitType : public ::testing::TestWithParam<TypeRow>
{
};

TEST_P(StaticUnitType, HasItsNameReferenceAndExponents)
{
    const TypeRow& row = GetParam();
    EXPECT_EQ(row.type->GetName(), QString::fromLatin1(row.name));
    EXPECT_EQ(row.type->GetReferenceSIString(), QString::fromUtf8(row.reference));
    EXPECT_EQ(row.type->GetDimensions(), toDimensions(row.exponents));
}

TEST_P(StaticUnitType, StandsInTheRegistryInTheOrderOfTheTable)
{
    QStringList expected;
    for (const TypeRow& other : typeRows()) {
        if (other.exponents == GetParam().exponents)
            expected.append(QString::fromLatin1(other.name));
    }
    // A host's types, which other tests of this process may have added, come behind.
    const QStringList found = namesOf(UnitType::FindCompatibleTypes(toDimensions(GetParam().exponents)));
    EXPECT_EQ(found.mid(0, expected.size()), expected);
}

TEST_P(StaticUnitType, IsFoundByItsReferenceAndElseTheEarlierOneIs)
{
    const TypeRow& row = GetParam();
    const Dimensions dimensions = toDimensions(row.exponents);
    EXPECT_TRUE(UnitType::FindUnitType(dimensions, QString::fromUtf8(row.reference)) == *row.type);
    const TypeRow* earliest = nullptr;
    for (const TypeRow& other : typeRows()) {
        if (!earliest && other.exponents == row.exponents)
            earliest = &other;
    }
    ASSERT_NE(earliest, nullptr);
    EXPECT_TRUE(UnitType::FindUnitType(dimensions, QStringLiteral("no reference at all")) == *earliest->type);
    EXPECT_TRUE(UnitType::FindUnitType(dimensions, QString()) == *earliest->type);
}

TEST_P(StaticUnitType, HasABaseUnitOfItsReferenceString)
{
    const TypeRow& row = GetParam();
    const Units base = row.type->GetBaseMKSUnits();
    EXPECT_TRUE(base.IsValid());
    EXPECT_TRUE(base.GetUnitType() == *row.type);
    EXPECT_EQ(base.GetScale(), 1.0);
    EXPECT_EQ(base.GetOffset(), 0.0);
    EXPECT_EQ(base.GetLogScale(), 0.0);
    EXPECT_EQ(base.GetSIUnits(), QString::fromUtf8(row.reference));
    EXPECT_FALSE(base.HasProperty(Units::DisplayUnit));
    EXPECT_FALSE(base.HasProperty(Units::ConversionFunction));
}

TEST_P(StaticUnitType, IsAFieldOnlyForVoltsAndAmperes)
{
    const bool field =
        GetParam().type == &UnitType::electricPotential || GetParam().type == &UnitType::electricCurrent;
    EXPECT_EQ(UnitType::GetDBType(*GetParam().type), field ? UnitType::fieldDecibel : UnitType::powerDecibel);
}

INSTANTIATE_TEST_SUITE_P(All, StaticUnitType, ::testing::ValuesIn(typeRows()),
                         [](const auto& test) { return std::string(test.param.member); });

TEST(UnitType, ThereAreThirtyThreeWithTwoPairsOfEqualDimensions)
{
    ASSERT_EQ(typeRows().size(), 33U);
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(s_perSecond)),
              (QStringList{"frequency", "radioactivity"}));
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(s_dose)),
              (QStringList{"absorbed dose of radiation", "equivalent dose of radiation"}));
}

TEST(UnitType, HasNoVirtualOperationsAndIsMadeByTheRegistryOnly)
{
    EXPECT_FALSE(std::is_polymorphic_v<UnitType>);
    EXPECT_TRUE(std::is_copy_constructible_v<UnitType>);
    EXPECT_TRUE(std::is_copy_assignable_v<UnitType>);
    EXPECT_FALSE((std::is_constructible_v<UnitType, QString, QString, Dimensions>));
}

TEST(UnitType, NumbersTheKindsOfDecibels)
{
    EXPECT_EQ(static_cast<int>(UnitType::powerDecibel), 0);
    EXPECT_EQ(static_cast<int>(UnitType::fieldDecibel), 1);
}

TEST(UnitType, MadeByDefaultIsNoneAndNotDimensionless)
{
    const UnitType none;
    EXPECT_EQ(none.GetName(), QStringLiteral("none"));
    EXPECT_EQ(none.GetReferenceSIString(), QString());
    EXPECT_EQ(none.GetDimensions(), Dimensions());
    EXPECT_FALSE(none == UnitType::dimensionless);
    EXPECT_FALSE(UnitType::dimensionless == none);
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(Dimensions())), QStringList{"scalar"});
}

TEST(UnitType, IsComparedByNameAndExponentsOnly)
{
    const Dimensions dimensions(3, 0, 0, 0, 0, 0, 0, 0, 7);
    const UnitType& first =
        UnitType::CreateType(QStringLiteral("same"), dimensions, QStringLiteral("one text"));
    const UnitType& second =
        UnitType::CreateType(QStringLiteral("same"), dimensions, QStringLiteral("another"));
    const UnitType& renamed =
        UnitType::CreateType(QStringLiteral("Same"), dimensions, QStringLiteral("one text"));
    const UnitType& elsewhere = UnitType::CreateType(
        QStringLiteral("same"), Dimensions(3, 0, 0, 0, 0, 0, 0, 0, 8), QStringLiteral("one text"));
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first == renamed);
    EXPECT_FALSE(first == elsewhere);
}

TEST(UnitType, IsCopiedWithAllItsFields)
{
    const UnitType copy = UnitType::electricResistance;
    UnitType assigned;
    assigned = copy;
    EXPECT_EQ(assigned.GetName(), QStringLiteral("electric resistance"));
    EXPECT_EQ(assigned.GetReferenceSIString(), QString(QChar(0x03A9)));
    EXPECT_EQ(assigned.GetDimensions(), UnitType::electricResistance.GetDimensions());
}

TEST(UnitTypeRegistry, TakesATypeHoweverManyAreLikeIt)
{
    const Dimensions dimensions(0, 7, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
    const UnitType& first = UnitType::CreateType(QStringLiteral("twin"), dimensions, QStringLiteral("x"));
    const UnitType& second = UnitType::CreateType(QStringLiteral("twin"), dimensions, QStringLiteral("y"));
    EXPECT_NE(&first, &second);
    const QList<UnitType> types = UnitType::FindCompatibleTypes(dimensions);
    ASSERT_EQ(types.size(), 2);
    EXPECT_EQ(types[0].GetReferenceSIString(), QStringLiteral("x"));
    EXPECT_EQ(types[1].GetReferenceSIString(), QStringLiteral("y"));
}

TEST(UnitTypeRegistry, ComputesAnEmptyReferenceString)
{
    const Dimensions dimensions(0, 6, -2, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(UnitType::CreateType(QStringLiteral("odd"), dimensions, QString()).GetReferenceSIString(),
              QStringLiteral("kg^6/s^2"));
    EXPECT_EQ(UnitType::CreateType(QString(), dimensions, QStringLiteral("given")).GetReferenceSIString(),
              QStringLiteral("given"));
}

TEST(UnitTypeRegistry, KeepsItsEntriesWhereTheyAre)
{
    const UnitType& made =
        UnitType::CreateType(QStringLiteral("lasting"), Dimensions(0, 0, 11, 0, 0, 0, 0, 0, 0), QString());
    const UnitType* const force = &UnitType::force;
    for (int i = 0; i < 5000; ++i)
        UnitType::CreateType(QString::number(i), Dimensions(0, 0, 0, 0, 0, 0, 100 + i, 0, 0), QString());
    EXPECT_EQ(made.GetName(), QStringLiteral("lasting"));
    EXPECT_EQ(made.GetReferenceSIString(), QStringLiteral("s^11"));
    EXPECT_EQ(force->GetName(), QStringLiteral("force"));
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(Dimensions(0, 0, 0, 0, 0, 0, 5099, 0, 0))),
              QStringList{"4999"});
}

TEST(FindUnitType, TellsRadioactivityFromFrequencyByItsText)
{
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("Bq")) == UnitType::radioactivity);
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("kBq")) == UnitType::radioactivity);
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("Hz")) == UnitType::frequency);
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("1/s")) == UnitType::frequency);
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("bq")) == UnitType::frequency);
    EXPECT_TRUE(UnitType::FindUnitType(s_perSecond, QStringLiteral("Bq Hz")) == UnitType::frequency)
        << "types are tried in their order, not in that of the text";
}

TEST(FindUnitType, TellsEquivalentFromAbsorbedDoseByItsText)
{
    EXPECT_TRUE(UnitType::FindUnitType(s_dose, QStringLiteral("Sv")) == UnitType::equivalentDose);
    EXPECT_TRUE(UnitType::FindUnitType(s_dose, QStringLiteral("m^2/s^2")) == UnitType::absorbedDose);
}

TEST(FindUnitType, NamesANewTypeByTheTextThatFirstNeedsIt)
{
    const Dimensions dimensions(1, 0, 0, 0, 1, 0, 0, 0, 0);
    ASSERT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
    const UnitType first = UnitType::FindUnitType(dimensions, QStringLiteral("m*K"));
    EXPECT_EQ(first.GetName(), QStringLiteral("m*K"));
    EXPECT_EQ(first.GetReferenceSIString(), QStringLiteral("m*K"));
    EXPECT_EQ(first.GetDimensions(), dimensions);
    const UnitType second = UnitType::FindUnitType(dimensions, QStringLiteral("K*m"));
    EXPECT_TRUE(second == first);
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(dimensions)), QStringList{"m*K"});
}

TEST(FindUnitType, TakesAnEmptyTextForANameToo)
{
    const Dimensions dimensions(0, 0, 0, 0, 0, 0, 0, 3, -1);
    const UnitType made = UnitType::FindUnitType(dimensions, QString());
    EXPECT_EQ(made.GetName(), QString());
    EXPECT_EQ(made.GetReferenceSIString(), QStringLiteral("rad^3/sr"));
    EXPECT_EQ(namesOf(UnitType::FindCompatibleTypes(dimensions)), QStringList{QString()});
}

TEST(FindUnitType, SearchesTheTypesThatAHostHasAddedToo)
{
    const Dimensions dimensions(0, 0, 0, 0, 9, 0, 0, 0, 0);
    UnitType::CreateType(QStringLiteral("first"), dimensions, QStringLiteral("abc"));
    UnitType::CreateType(QStringLiteral("second"), dimensions, QStringLiteral("b"));
    UnitType::CreateType(QStringLiteral("third"), dimensions, QStringLiteral("b"));
    EXPECT_EQ(UnitType::FindUnitType(dimensions, QStringLiteral("xbx")).GetName(), QStringLiteral("second"));
    EXPECT_EQ(UnitType::FindUnitType(dimensions, QStringLiteral("xabcx")).GetName(), QStringLiteral("first"));
    EXPECT_EQ(UnitType::FindUnitType(dimensions, QStringLiteral("B")).GetName(), QStringLiteral("first"));
}

TEST(FindUnitType, SteersTheTypeOfAParsedUnit)
{
    const Dimensions dimensions(1, 0, 0, 0, 0, 1, 0, 0, 0);
    UnitType::CreateType(QStringLiteral("moles first"), dimensions, QStringLiteral("mol*m"));
    UnitType::CreateType(QStringLiteral("metres first"), dimensions, QStringLiteral("m*mol"));
    EXPECT_EQ(Units::FromSIString(QStringLiteral("m*mol")).GetUnitType().GetName(),
              QStringLiteral("metres first"));
    EXPECT_EQ(Units::FromSIString(QStringLiteral("mol*m")).GetUnitType().GetName(),
              QStringLiteral("moles first"));
    EXPECT_EQ(Units::FromSIString(QStringLiteral("mm*kmol")).GetUnitType().GetName(),
              QStringLiteral("moles first"));
}

TEST(GetDBType, LooksAtExponentsAndNotAtNames)
{
    const UnitType& renamed = UnitType::CreateType(QStringLiteral("voltage"),
                                                   UnitType::electricPotential.GetDimensions(), QString());
    EXPECT_EQ(UnitType::GetDBType(renamed), UnitType::fieldDecibel);
    EXPECT_EQ(UnitType::GetDBType(UnitType::electricResistance), UnitType::powerDecibel);
    EXPECT_EQ(UnitType::GetDBType(UnitType()), UnitType::powerDecibel);
}

} // namespace
} // namespace Orrery::UnitsTest
