#include "units/SystemOfUnits.h"

#include "tests/units/CatalogueRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

SystemOfUnits& catalogue()
{
    return SystemOfUnits::instance();
}

/// The catalogue is one per process: what a test changes is as it was afterwards, also when the test fails.
class ChangedCatalogue
{
public:
    ChangedCatalogue() = default;
    ChangedCatalogue(const ChangedCatalogue&) = delete;
    ChangedCatalogue& operator=(const ChangedCatalogue&) = delete;
    ~ChangedCatalogue()
    {
        for (const QString& name : m_inserted)
            catalogue().RemoveUnits(name);
        for (const auto& [name, units] : m_removed)
            catalogue().InsertUnits(name, units);
    }

    ERESULT insert(const QString& name, const Units& units)
    {
        const ERESULT result = catalogue().InsertUnits(name, units);
        noteInserted(result, name);
        return result;
    }
    ERESULT insert(const Units& units)
    {
        const ERESULT result = catalogue().InsertUnits(units);
        noteInserted(result, units.GetUnitsLabel());
        return result;
    }
    ERESULT remove(const QString& name)
    {
        Units old;
        const bool known = catalogue().GetUnitsByName(name, &old) == ER_SUCCESS;
        const ERESULT result = catalogue().RemoveUnits(name);
        if (known && result == ER_SUCCESS)
            m_removed.emplace_back(name, old);
        return result;
    }

private:
    void noteInserted(ERESULT result, const QString& name)
    {
        if (result == ER_SUCCESS)
            m_inserted.push_back(name);
    }

    std::vector<QString> m_inserted;
    std::vector<std::pair<QString, Units>> m_removed;
};

bool isNamed(const char* key)
{
    Units found;
    return catalogue().GetUnitsByName(QString::fromUtf8(key), &found) == ER_SUCCESS;
}

Units lookUp(const char* text)
{
    return catalogue().GetUnitsFromString(QString::fromUtf8(text));
}

std::string siUnitsOf(const Units& units)
{
    return units.GetSIUnits().toStdString();
}

void expectSameUnit(const Units& actual, const Units& expected)
{
    EXPECT_EQ(actual, expected);
    EXPECT_TRUE(actual.GetUnitType() == expected.GetUnitType());
    EXPECT_EQ(siUnitsOf(actual), siUnitsOf(expected));
    EXPECT_EQ(actual.IsValid(), expected.IsValid());
}

void expectRow(const Units& units, const CatalogueRow& row)
{
    EXPECT_TRUE(units.IsValid());
    EXPECT_TRUE(units.GetUnitType() == *row.type) << units.GetUnitType().GetName().toStdString();
    EXPECT_EQ(labelOf(units), row.label.toStdString());
    EXPECT_EQ(units.GetScale(), row.scale);
    EXPECT_EQ(units.GetOffset(), row.offset);
    EXPECT_EQ(units.GetLogScale(), row.logScale);
    EXPECT_EQ(siUnitsOf(units), row.siUnits.toStdString());
    EXPECT_TRUE(units.HasProperty(Units::SIUnits));
    EXPECT_EQ(units.HasProperty(Units::DisplayUnit),
              row.origin == Origin::Labelled || row.origin == Origin::Numbers);
    EXPECT_EQ(units.HasProperty(Units::ConversionFunction), row.origin == Origin::Numbers);
}

/// The units of one type as the written-out rows have them: in key order, equal ones once.
Texts distinctLabels(const UnitType* type)
{
    using Numbers = std::tuple<const UnitType*, std::string, double, double, double>;
    std::set<Numbers> taken;
    Texts labels;
    for (const CatalogueRow& row : catalogueRowsInKeyOrder())
        if ((!type || *row.type == *type) &&
            taken.insert({row.type, row.label.toStdString(), row.scale, row.offset, row.logScale}).second)
            labels.push_back(row.label.toStdString());
    return labels;
}

TEST(Catalogue, HasEveryRowWithItsTypeLabelNumbersAndSIString)
{
    ASSERT_EQ(catalogueRows().size(), 125u);
    for (const CatalogueRow& row : catalogueRows()) {
        SCOPED_TRACE(row.key.toStdString());
        Units units;
        ASSERT_EQ(catalogue().GetUnitsByName(row.key, &units), ER_SUCCESS);
        expectRow(units, row);
    }
}

TEST(Catalogue, FindsEveryRowByTheForgivingLookUpToo)
{
    for (const CatalogueRow& row : catalogueRows()) {
        SCOPED_TRACE(row.key.toStdString());
        expectRow(catalogue().GetUnitsFromString(row.key), row);
    }
}

TEST(Catalogue, HasNoOtherNames)
{
    std::size_t names = 0;
    std::set<const UnitType*> types;
    for (const CatalogueRow& row : catalogueRows())
        if (types.insert(row.type).second)
            names += static_cast<std::size_t>(catalogue().GetUnitNames(*row.type).size());
    EXPECT_EQ(names, 125u);
    EXPECT_EQ(labelsOf(catalogue().GetAllUnits()), distinctLabels(nullptr)); // no unit of yet another type
}

TEST(Catalogue, HasOneHundredAndSeventeenDifferentUnitsInKeyOrder)
{
    const QList<Units> all = catalogue().GetAllUnits();
    EXPECT_EQ(all.size(), 117);
    EXPECT_EQ(labelsOf(all), distinctLabels(nullptr));
    for (int i = 0; i < all.size(); ++i)
        for (int j = 0; j < i; ++j)
            EXPECT_NE(all[i], all[j]);
}

TEST(Catalogue, IsOrderedByCodeUnitsFromTheEmptyKeyToOmega)
{
    const Texts labels = labelsOf(catalogue().GetAllUnits());
    ASSERT_EQ(labels.size(), 117u);
    // "Celsius" and "Fahrenheit" stand for the two temperatures, since their keys come first
    EXPECT_THAT(Texts(labels.begin(), labels.begin() + 8),
                ElementsAre("", "%", "A", "Abs", "C", "°C", "F", "°F"));
    EXPECT_THAT(Texts(labels.end() - 4, labels.end()), ElementsAre("µg", "µm", "µs", "Ω"));
}

TEST(Catalogue, IsOnePerProcess)
{
    EXPECT_EQ(&SystemOfUnits::instance(), &SystemOfUnits::instance());
}

TEST(Catalogue, HandsOutCopies)
{
    Units inch = catalogueUnit("in");
    inch.SetUnitsLabel(QStringLiteral("mine"));
    Units looked = lookUp("in");
    looked.SetUnitsLabel(QStringLiteral("mine too"));
    for (Units& unit : catalogue().GetUnits(UnitType::length))
        unit.SetUnitsLabel(QStringLiteral("and mine"));
    EXPECT_EQ(labelOf(catalogueUnit("in")), "in");
}

TEST(Catalogue, KeepsACopyOfWhatIsInserted)
{
    ChangedCatalogue changed;
    Units furlong(UnitType::length, QStringLiteral("furlong"), 201.168, 0.0, 0.0);
    ASSERT_EQ(changed.insert(furlong), ER_SUCCESS);
    furlong.SetUnitsLabel(QStringLiteral("other"));
    EXPECT_EQ(labelOf(catalogueUnit("furlong")), "furlong");
}

TEST(Catalogue, HasNoUnitOfPressure)
{
    EXPECT_TRUE(catalogue().GetUnits(UnitType::pressure).isEmpty());
    EXPECT_TRUE(catalogue().GetUnitNames(UnitType::pressure).isEmpty());
    for (const char* name : {"P", "kP", "Pa", "kPa"})
        EXPECT_FALSE(isNamed(name)) << name;
}

TEST(Catalogue, HasThePlainNumberUnderTheEmptyKey)
{
    // the two texts that don't parse would have gone there, had they been accepted
    const Units plain = catalogueUnit("");
    EXPECT_TRUE(plain.IsValid());
    EXPECT_TRUE(Dimensionless(plain));
    EXPECT_EQ(plain.GetScale(), 1.0);
    EXPECT_TRUE(plain.HasProperty(Units::SIUnits));
    EXPECT_EQ(siUnitsOf(plain), "");
}

// ---- GetUnitsFromString

TEST(UnitsFromString, OfTheEmptyStringIsThePlainNumber)
{
    const Units units = lookUp("");
    EXPECT_TRUE(units.IsValid());
    EXPECT_TRUE(Dimensionless(units));
    EXPECT_FALSE(units.IsLogarithmic());
    EXPECT_EQ(units, catalogueUnit(""));
}

TEST(UnitsFromString, LeavesTheThreeNamesWithAUAlone)
{
    expectSameUnit(lookUp("Celsius"), catalogueUnit("°C"));
    expectSameUnit(lookUp("hundreds"), catalogueUnit("hundreds"));
    expectSameUnit(lookUp("thousands"), catalogueUnit("thousands"));
    EXPECT_EQ(lookUp("hundreds").GetScale(), 100.0);
    EXPECT_EQ(lookUp("thousands").GetScale(), 1000.0);
}

TEST(UnitsFromString, FindsMillionsWhichHasNoU)
{
    expectSameUnit(lookUp("millions"), catalogueUnit("millions"));
    EXPECT_EQ(lookUp("millions").GetScale(), 1e6);
}

TEST(UnitsFromString, ExemptsExactlyTheseThreeTexts)
{
    for (const char* text :
         {"celsius", "Celsius ", " hundreds", "Hundreds", "hundred", "thousand", "thousandss"})
        EXPECT_FALSE(lookUp(text).IsValid()) << text;
}

struct RepairCase
{
    const char* text;
    const char* key;
};

TEST(UnitsFromString, RepairsOhmAndU)
{
    const RepairCase cases[] = {
        {"uV", "µV"},   {"dBuV", "dBµV"}, {"uF", "µF"}, {"kOhm", "kΩ"}, {"Ohm", "Ω"}, {"MOhm", "MΩ"},
        {"mOhm", "mΩ"}, {"dBu", "dBµ"},   {"um", "µm"}, {"ug", "µg"},   {"us", "µs"}, {"uJ", "µJ"},
        {"uW", "µW"},   {"uA", "µA"},     {"uC", "µC"}, {"uS", "µS"},   {"uH", "µH"}, {"GOhm", "GΩ"},
    };
    for (const RepairCase& c : cases) {
        SCOPED_TRACE(c.text);
        expectSameUnit(lookUp(c.text), catalogueUnit(c.key));
    }
}

TEST(UnitsFromString, RepairsEveryOccurrence)
{
    const Units units = lookUp("uV*uA/Ohm");
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(siUnitsOf(units), "µV*µA/Ω");
    EXPECT_DOUBLE_EQ(units.GetScale(), 1e-12);
    EXPECT_EQ(siUnitsOf(lookUp("Ohm*Ohm")), "Ω*Ω");
}

TEST(UnitsFromString, RepairsNothingElse)
{
    for (const char* text : {"ohm", "OHM", "Ohms", "Um", "hours"})
        EXPECT_FALSE(lookUp(text).IsValid()) << text;
    EXPECT_FALSE(lookUp("\xCE\xBCV").IsValid());     // the Greek letter mu
    EXPECT_FALSE(lookUp("k\xE2\x84\xA6").IsValid()); // the ohm sign
}

TEST(UnitsFromString, ParsesTheRepairedTextThatHasNoKey)
{
    const Units units = lookUp("um/s");
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(siUnitsOf(units), "µm/s");
    EXPECT_EQ(labelOf(units), "µm/s");
    EXPECT_TRUE(units.GetUnitType() == UnitType::velocity);
    EXPECT_EQ(units.GetScale(), 1e-6);

    const Units perMetre = lookUp("kOhm/m");
    EXPECT_TRUE(perMetre.IsValid());
    EXPECT_EQ(siUnitsOf(perMetre), "kΩ/m");
    EXPECT_EQ(perMetre.GetScale(), 1000.0);
}

TEST(UnitsFromString, ReachesTheParserForGoodTextsWithoutAKey)
{
    for (const char* text : {"Pa", "kPa", "l", "dB(kW)", "1", "umol"}) {
        EXPECT_FALSE(isNamed(text)) << text;
        EXPECT_TRUE(lookUp(text).IsValid()) << text;
    }
    EXPECT_TRUE(lookUp("kPa").GetUnitType() == UnitType::pressure);
    EXPECT_EQ(lookUp("kPa").GetScale(), 1000.0);
    EXPECT_EQ(lookUp("l").GetScale(), 0.001);
    EXPECT_EQ(lookUp("dB(kW)").GetScale(), 1000.0);
    EXPECT_EQ(lookUp("dB(kW)").GetLogScale(), 10.0);
}

TEST(UnitsFromString, IsInvalidForTextsThatAreNeither)
{
    for (const char* text : {"P", "kP", "dBmW", "ft", " ", "in "}) {
        const Units units = lookUp(text);
        EXPECT_FALSE(units.IsValid()) << text;
        EXPECT_FALSE(units.HasProperty(Units::SIUnits)) << text;
        EXPECT_EQ(labelOf(units), "") << text;
    }
}

TEST(UnitsFromString, PrefersTheCatalogueToTheParser)
{
    EXPECT_EQ(labelOf(lookUp("deg")), "°");
    EXPECT_EQ(siUnitsOf(lookUp("deg")), "rad"); // a parse would have kept "deg"
    EXPECT_EQ(labelOf(lookUp("min")), "min");
}

TEST(UnitsFromString, FindsDBUnderItsOtherLabel)
{
    EXPECT_EQ(labelOf(lookUp("dB")), "dB10");
    EXPECT_EQ(labelOf(catalogueUnit("dB")), "dB10");
    EXPECT_EQ(lookUp("dB").GetLogScale(), 10.0);
}

TEST(UnitsFromString, ChangesNoUnitOfTheCatalogueEvenWhenItParses)
{
    const QList<Units> before = catalogue().GetAllUnits();
    ASSERT_EQ(before.size(), 117);
    for (const char* text : {"kOhm/m", "kPa", "um/s", "km^5*K", "ft", "", "dB(km^7)", "uF"})
        lookUp(text);
    Units found;
    catalogue().GetUnitsByName(QStringLiteral("kPa"), &found);
    EXPECT_EQ(catalogue().GetAllUnits(), before);
    EXPECT_EQ(siUnitsOf(lookUp("km^5*K")), "km^5*K"); // so it did parse
}

TEST(UnitsFromString, FindsWhatAHostInsertsUnderTheRepairedName)
{
    ChangedCatalogue changed;
    const Units furlong(UnitType::length, QStringLiteral("furlong"), 201.168, 0.0, 0.0);
    ASSERT_EQ(changed.insert(furlong), ER_SUCCESS);
    EXPECT_FALSE(lookUp("furlong").IsValid()); // no text but the three is protected from the repair
    EXPECT_TRUE(isNamed("furlong"));
    ASSERT_EQ(changed.insert(QStringLiteral("fµrlong"), furlong), ER_SUCCESS);
    expectSameUnit(lookUp("furlong"), furlong);
}

TEST(UnitsFromString, GivesAHostsRowPrecedenceOverTheParser)
{
    ChangedCatalogue changed;
    ASSERT_EQ(changed.insert(QStringLiteral("kPa"),
                             Units(UnitType::pressure, QStringLiteral("kilo"), 5.0, 0.0, 0.0)),
              ER_SUCCESS);
    EXPECT_EQ(labelOf(lookUp("kPa")), "kilo");
}

// ---- GetUnitsByName

TEST(UnitsByName, MakesNoRepair)
{
    Units found;
    EXPECT_EQ(catalogue().GetUnitsByName(QStringLiteral("uF"), &found), ER_NOT_FOUND);
    expectSameUnit(lookUp("uF"), catalogueUnit("µF"));
}

TEST(UnitsByName, HasNoFallbackAndLeavesTheResultAlone)
{
    Units found = unitOf("km");
    for (const char* name : {"Pa", "l", "dB(W)", "IN", "In", " in", "in ", "kOhm"}) {
        EXPECT_EQ(catalogue().GetUnitsByName(QString::fromUtf8(name), &found), ER_NOT_FOUND) << name;
        expectSameUnit(found, unitOf("km"));
    }
}

TEST(UnitsByName, RefusesANullResultBeforeItLooks)
{
    EXPECT_EQ(catalogue().GetUnitsByName(QStringLiteral("in"), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(catalogue().GetUnitsByName(QStringLiteral("no such unit"), nullptr), ER_INVALID_ARGUMENT);
}

// ---- GetUnits, GetUnitNames, GetAllUnits

TEST(UnitsOfAType, AreTheDifferentOnesInKeyOrderForEveryType)
{
    std::set<const UnitType*> types;
    for (const CatalogueRow& row : catalogueRows())
        types.insert(row.type);
    EXPECT_EQ(types.size(), 24u);
    for (const UnitType* type : types) {
        SCOPED_TRACE(type->GetName().toStdString());
        EXPECT_EQ(labelsOf(catalogue().GetUnits(*type)), distinctLabels(type));
    }
}

TEST(UnitsOfAType, HaveTheirNamesUncollapsedForEveryType)
{
    std::map<const UnitType*, Texts> names;
    for (const CatalogueRow& row : catalogueRowsInKeyOrder())
        names[row.type].push_back(row.key.toStdString());
    for (const auto& [type, expected] : names)
        EXPECT_EQ(textsOf(catalogue().GetUnitNames(*type)), expected);
}

TEST(UnitsOfAType, CollapseTheAliasesOfTemperatures)
{
    EXPECT_THAT(labelsOf(catalogue().GetUnits(UnitType::thermodynamicTemperature)),
                ElementsAre("°C", "°F", "K"));
    EXPECT_THAT(textsOf(catalogue().GetUnitNames(UnitType::thermodynamicTemperature)),
                ElementsAre("Celsius", "Fahrenheit", "K", "degC", "degF", "°C", "°F"));
}

TEST(UnitsOfAType, CollapseTheAliasesOfAngles)
{
    EXPECT_THAT(labelsOf(catalogue().GetUnits(UnitType::planeAngle)), ElementsAre("°", "rad"));
    EXPECT_THAT(textsOf(catalogue().GetUnitNames(UnitType::planeAngle)),
                ElementsAre("deg", "degrees", "rad", "radians", "°"));
}

TEST(UnitsOfAType, AreNoneForATypeOfTheSameDimensionsAndAnotherName)
{
    EXPECT_THAT(labelsOf(catalogue().GetUnits(UnitType::frequency)),
                ElementsAre("GHz", "Hz", "MHz", "THz", "kHz"));
    EXPECT_TRUE(catalogue().GetUnits(UnitType::radioactivity).isEmpty());
    EXPECT_TRUE(catalogue().GetUnitNames(UnitType::radioactivity).isEmpty());
    EXPECT_TRUE(catalogue().GetUnits(UnitType()).isEmpty()); // has the dimensions of the plain number
}

TEST(UnitsOfAType, LeaveOutInsertedOnesOfAnotherTypeName)
{
    ChangedCatalogue changed;
    ASSERT_EQ(changed.insert(unitOf("kBq")), ER_SUCCESS);
    EXPECT_EQ(catalogue().GetUnits(UnitType::frequency).size(), 5);
    EXPECT_THAT(labelsOf(catalogue().GetUnits(UnitType::radioactivity)), ElementsAre("kBq"));
    EXPECT_EQ(catalogue().GetAllUnits().size(), 118);
}

TEST(UnitsOfAType, IncludeAnInsertedUnitAtThePlaceOfItsKey)
{
    ChangedCatalogue changed;
    ASSERT_EQ(changed.insert(QStringLiteral("lap"),
                             Units(UnitType::length, QStringLiteral("round"), 400.0, 0.0, 0.0)),
              ER_SUCCESS);
    EXPECT_THAT(labelsOf(catalogue().GetUnits(UnitType::length)),
                ElementsAre("cm", "in", "km", "round", "m", "mil", "mm", "nm", "µm"));
    EXPECT_EQ(catalogue().GetUnitNames(UnitType::length)[3], QStringLiteral("lap"));
}

// ---- GetCompatibleUnits

TEST(CompatibleUnits, StartWithTheUnitItselfAndLeaveItOutAfterwards)
{
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(catalogueUnit("km"))),
                ElementsAre("km", "cm", "in", "m", "mil", "mm", "nm", "µm"));
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(unitOf("km"))),
                ElementsAre("km", "cm", "in", "m", "mil", "mm", "nm", "µm"));
}

TEST(CompatibleUnits, StartWithAUnitThatTheCatalogueDoesNotHave)
{
    const Units crawl = unitOf("mm/s");
    const QList<Units> units = catalogue().GetCompatibleUnits(crawl);
    EXPECT_THAT(labelsOf(units), ElementsAre("mm/s", "km/h", "km/s", "m/s", "miles/h"));
    ASSERT_FALSE(units.isEmpty());
    expectSameUnit(units.front(), crawl);
}

TEST(CompatibleUnits, OfARunTimeTypeAreThatUnitAlone)
{
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(unitOf("km^3*cd^2"))), ElementsAre("km^3*cd^2"));
}

TEST(CompatibleUnits, GoByTheTypeAndNotByTheDimensions)
{
    const Units decays = unitOf("kBq");
    ASSERT_TRUE(decays.IsCommensurable(catalogueUnit("kHz")));
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(decays)), ElementsAre("kBq"));
}

TEST(CompatibleUnits, OfAnAliasLeaveOutWhatEqualsIt)
{
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(catalogueUnit("Fahrenheit"))),
                ElementsAre("°F", "°C", "K"));
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(catalogueUnit("radians"))), ElementsAre("rad", "°"));
}

TEST(CompatibleUnits, KeepAUnitThatDiffersInItsLabelOnly)
{
    Units metre = unitOf("m");
    metre.SetUnitsLabel(QStringLiteral("meter"));
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(metre)),
                ElementsAre("meter", "cm", "in", "km", "m", "mil", "mm", "nm", "µm"));
}

TEST(CompatibleUnits, OfAnInvalidUnitAreThoseOfPlainNumbers)
{
    // it is equal to the plain number, whose validity takes no part
    EXPECT_THAT(labelsOf(catalogue().GetCompatibleUnits(Units())),
                ElementsAre("", "%", "Abs", "dB10", "dB20", "hundreds", "log", "millions", "thousands"));
}

// ---- InsertUnits, RemoveUnits

TEST(InsertUnits, NeverReplacesAUnit)
{
    const Units other(UnitType::length, QStringLiteral("in"), 5.0, 0.0, 0.0);
    ChangedCatalogue changed;
    EXPECT_EQ(changed.insert(other), ER_ALREADY_EXISTS);
    EXPECT_EQ(changed.insert(QStringLiteral("in"), other), ER_ALREADY_EXISTS);
    EXPECT_EQ(catalogueUnit("in").GetScale(), 0.0254);
}

TEST(InsertUnits, RefusesAnInvalidUnitUnderANewName)
{
    ChangedCatalogue changed;
    EXPECT_EQ(changed.insert(QStringLiteral("new name"), Units()), ER_INVALID_ARGUMENT);
    EXPECT_EQ(changed.insert(QStringLiteral("new name"), unitOf("ft")), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(isNamed("new name"));
}

TEST(InsertUnits, ReportsATakenNameBeforeAnInvalidUnit)
{
    ChangedCatalogue changed;
    EXPECT_EQ(changed.insert(QStringLiteral("in"), Units()), ER_ALREADY_EXISTS);
    EXPECT_EQ(changed.insert(Units()), ER_ALREADY_EXISTS); // the empty key
}

TEST(InsertUnits, WithoutANameTakesTheLabelOrElseTheSIString)
{
    ChangedCatalogue changed;
    EXPECT_EQ(changed.insert(Units(UnitType::length, QStringLiteral("ell"), 1.143, 0.0, 0.0)), ER_SUCCESS);
    EXPECT_TRUE(isNamed("ell"));
    EXPECT_EQ(changed.insert(unitOf("kPa")), ER_SUCCESS);
    EXPECT_TRUE(isNamed("kPa"));
    EXPECT_EQ(changed.insert(Units(UnitType::pressure, QString(), 133.0, 0.0, 0.0)), ER_SUCCESS);
    EXPECT_EQ(catalogueUnit("Pa").GetScale(), 133.0); // the reference SI string of its type
}

TEST(InsertUnits, WithoutANamePutsAPlainNumberWithoutALabelUnderTheEmptyKey)
{
    ChangedCatalogue changed;
    EXPECT_EQ(changed.insert(unitOf("1")), ER_ALREADY_EXISTS);
    ASSERT_EQ(changed.remove(QString()), ER_SUCCESS);
    EXPECT_EQ(changed.insert(Units()), ER_INVALID_ARGUMENT);
    EXPECT_EQ(changed.insert(unitOf("1")), ER_SUCCESS);
    EXPECT_EQ(siUnitsOf(catalogueUnit("")), "1");
    EXPECT_FALSE(isNamed("1"));
}

TEST(InsertUnits, UnderAnotherNameKeepsTheLabel)
{
    ChangedCatalogue changed;
    ASSERT_EQ(changed.insert(QStringLiteral("inch"), catalogueUnit("in")), ER_SUCCESS);
    EXPECT_EQ(labelOf(catalogueUnit("inch")), "in");
    EXPECT_EQ(catalogue().GetAllUnits().size(), 117); // one more name of a unit that is there
    EXPECT_TRUE(catalogue().GetUnitNames(UnitType::length).contains(QStringLiteral("inch")));
}

TEST(RemoveUnits, LeavesTheOtherNamesOfTheSameUnit)
{
    ChangedCatalogue changed;
    EXPECT_EQ(changed.remove(QStringLiteral("degC")), ER_SUCCESS);
    EXPECT_FALSE(isNamed("degC"));
    EXPECT_TRUE(isNamed("°C"));
    EXPECT_TRUE(isNamed("Celsius"));
    EXPECT_EQ(catalogue().GetAllUnits().size(), 117);
    EXPECT_EQ(catalogue().RemoveUnits(QStringLiteral("degC")), ER_NOT_FOUND);
}

TEST(RemoveUnits, IsNotUndoneByALookUp)
{
    ChangedCatalogue changed;
    ASSERT_EQ(changed.remove(QStringLiteral("in")), ER_SUCCESS);
    EXPECT_FALSE(lookUp("in").IsValid());
    ASSERT_EQ(changed.remove(QStringLiteral("km")), ER_SUCCESS);
    EXPECT_TRUE(lookUp("km").IsValid()); // by the parser
    EXPECT_FALSE(isNamed("km"));
    EXPECT_EQ(catalogue().GetAllUnits().size(), 115);
}

TEST(RemoveUnits, OfAnUnknownNameIsNotFound)
{
    EXPECT_EQ(catalogue().RemoveUnits(QStringLiteral("no such unit")), ER_NOT_FOUND);
    EXPECT_EQ(catalogue().RemoveUnits(QStringLiteral("uF")), ER_NOT_FOUND); // the name is "µF"
    EXPECT_EQ(catalogue().GetAllUnits().size(), 117);
}
} // namespace
} // namespace Orrery
