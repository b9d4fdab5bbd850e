// What a person is told about a text that is no SI string.
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"
#include "tests/units/ParserComparison.h"
#include "tests/units/SIStringTexts.h"
#include "tests/units/UnitsTestSupport.h"
#include "units/SystemOfUnits.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <vector>

namespace Orrery::UnitsTest {
namespace {

SIStringDiagnosis diagnose(const char* utf8)
{
    return Units::DiagnoseSIString(QString::fromUtf8(utf8));
}

TEST(SIStringDiagnosis, IsOfNothingByDefault)
{
    const SIStringDiagnosis diagnosis;
    EXPECT_FALSE(diagnosis.valid);
    EXPECT_EQ(diagnosis.position, 0);
    EXPECT_EQ(diagnosis.found, QString());
    EXPECT_EQ(diagnosis.expected, QString());
    EXPECT_TRUE(diagnosis.suggestions.isEmpty());
}

TEST(SIStringDiagnosis, SaysNothingAboutAGoodText)
{
    for (const char* text :
         {"", "1", "km", " m/ s", "kg*m^2/(A*s^3)", "dB(mW)", "log(m))", "m^99999999999"}) {
        const SIStringDiagnosis diagnosis = diagnose(text);
        EXPECT_TRUE(diagnosis.valid) << text;
        EXPECT_EQ(diagnosis.message(), QString()) << text;
        EXPECT_TRUE(diagnosis.suggestions.isEmpty()) << text;
        EXPECT_EQ(diagnosis.found, QString()) << text;
        EXPECT_EQ(diagnosis.expected, QString()) << text;
    }
}

TEST(SIStringDiagnosis, PointsAtASecondDivisionAndSaysHowToWriteIt)
{
    const SIStringDiagnosis diagnosis = diagnose("m/s/s");
    EXPECT_FALSE(diagnosis.valid);
    EXPECT_EQ(diagnosis.position, 3);
    EXPECT_TRUE(diagnosis.found.startsWith(QLatin1Char('/'))) << diagnosis.found.toStdString();
    EXPECT_TRUE(diagnosis.suggestions.contains(QStringLiteral("m/s^2")) ||
                diagnosis.suggestions.contains(QStringLiteral("m/(s*s)")))
        << diagnosis.suggestions.join(QStringLiteral(", ")).toStdString();
    const QString message = diagnosis.message();
    EXPECT_TRUE(message.contains(QLatin1Char('/')) && message.contains(QLatin1Char('3')))
        << message.toStdString();
    EXPECT_TRUE(message.contains(QStringLiteral("m/s^2")) || message.contains(QStringLiteral("m/(s*s)")))
        << message.toStdString();
}

struct SuggestionCase
{
    const char* name;
    const char* text;
    const char* suggestion; ///< one of those that are made
};

class SIStringSuggestion : public ::testing::TestWithParam<SuggestionCase>
{
};

TEST_P(SIStringSuggestion, IsMadeAndShown)
{
    const SIStringDiagnosis diagnosis = diagnose(GetParam().text);
    const QString expected = QString::fromUtf8(GetParam().suggestion);
    EXPECT_FALSE(diagnosis.valid);
    EXPECT_TRUE(diagnosis.suggestions.contains(expected))
        << '[' << diagnosis.suggestions.join(QStringLiteral(", ")).toStdString() << ']';
    EXPECT_FALSE(diagnosis.message().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Texts, SIStringSuggestion,
                         ::testing::Values(SuggestionCase{"Ohm", "kohm", "k\xCE\xA9"},
                                           SuggestionCase{"OhmInCapitals", "kOhm", "k\xCE\xA9"},
                                           SuggestionCase{"Micro", "um", "\xC2\xB5m"},
                                           SuggestionCase{"OhmSign", "k\xE2\x84\xA6", "k\xCE\xA9"},
                                           SuggestionCase{"GreekMu", "\xCE\xBCm", "\xC2\xB5m"},
                                           SuggestionCase{"SecondDivision", "m/s/s", "m/s^2"}),
                         TestSupport::CaseName());

struct ReadingsCase
{
    const char* name;
    const char* text;
    std::vector<const char*> suggestions; ///< all of them, in order
};

class SIStringReadings : public ::testing::TestWithParam<ReadingsCase>
{
};

TEST_P(SIStringReadings, AreAllThatIsSuggested)
{
    QStringList expected;
    for (const char* suggestion : GetParam().suggestions)
        expected.append(QString::fromUtf8(suggestion));
    const QString separator = QStringLiteral(", ");
    EXPECT_EQ(diagnose(GetParam().text).suggestions.join(separator).toStdString(),
              expected.join(separator).toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SIStringReadings,
    ::testing::Values(ReadingsCase{"SecondDivision", "m/s/s", {"m/s^2", "m/(s*s)"}},
                      ReadingsCase{"ManyDivisions", "m/s/A/K/s", {"m/(s*A*K*s)"}},
                      ReadingsCase{"PowersDivided", "m/s^2/s^2", {"m/(s^2*s^2)"}},
                      ReadingsCase{"SecondDivisionInDecibels", "dB(m/s/s)", {"dB(m/s^2)", "dB(m/(s*s))"}},
                      ReadingsCase{"SecondDivisionInParentheses", "(m/s/A)*kg", {"(m/(s*A))*kg"}},
                      ReadingsCase{"GroupDivided", "m/(s*A)/(K/kg)", {"m/((s*A)*(K/kg))"}},
                      ReadingsCase{"Factor", "V/s*A", {"V*A/s", "V/(s*A)"}},
                      ReadingsCase{"FactorBehindAGroup", "V/(s*K)*A", {"V*A/(s*K)", "V/((s*K)*A)"}},
                      ReadingsCase{"FactorBehindAOne", "1/s*kg", {"kg/s", "1/(s*kg)"}},
                      ReadingsCase{"FactorInParentheses", "(1/s*kg)", {"(kg/s)", "(1/(s*kg))"}},
                      ReadingsCase{"FactorThenDivision", "J/kg*K/s", {"J*K/(kg*s)"}},
                      ReadingsCase{"FactorThenDivisionOfAnother", "m/s*kg/A", {"m*kg/(s*A)"}},
                      ReadingsCase{"FactorThenTheSameDivision", "m/s*kg/s", {"m*kg/s^2", "m*kg/(s*s)"}},
                      ReadingsCase{"DivisionThenFactor", "kg/m/s*A", {"kg*A/(m*s)", "kg/(m*s*A)"}},
                      ReadingsCase{"DivisionOfAPrefix", "W/m/K*s", {"W*s/(m*K)", "W/(m*K*s)"}},
                      ReadingsCase{"PowerOfTwoStars", "m/s**2", {"m/s^2"}},
                      ReadingsCase{"NameOfDecibelsDivided", "dBm/Hz", {"dB(mW/Hz)"}},
                      ReadingsCase{"NameOfDecibelsTimes", "dBmV*A", {"dB(mV*A)"}},
                      ReadingsCase{"NameOfDecibelsRepaired", "dBuV/m", {"dB(\xC2\xB5V/m)"}},
                      ReadingsCase{"DecibelsOfAUnitDivided", "dBmW/Hz", {"dB(mW/Hz)"}},
                      ReadingsCase{"DecibelsOfAUnit", "dBmW", {"dB(mW)"}},
                      ReadingsCase{"CatalogueNameThatIsAnSIString", "dBm", {"dB(mW)"}},
                      ReadingsCase{"CatalogueNameThatIsNone", "in", {}},
                      ReadingsCase{"CatalogueNameOfASign", "%", {}}),
    TestSupport::CaseName());

TEST(SIStringDiagnosis, TakesNoMetreFromAPowerOfDecibelsOfAMilliwatt)
{
    EXPECT_FALSE(diagnose("dBm^2").suggestions.contains(QStringLiteral("dB(m^2)")));
}

TEST(SIStringDiagnosis, SendsToTheCatalogueForAName)
{
    EXPECT_EQ(diagnose("in").message(),
              QStringLiteral("'in' at 0 is a name of the unit catalogue, not an SI string; look it up in the "
                             "catalogue"));
    EXPECT_TRUE(diagnose("dBm").message().endsWith(QStringLiteral("; write dB(mW)")));
}

/// A quotient that goes on behind its first divisor, and the dimensions that people mean by it.
struct LongQuotient
{
    QString text;
    Dimensions fromTheLeft;
    Dimensions allDivided; ///< all that stands behind the first "/"
};

LongQuotient longQuotient(std::mt19937_64& random)
{
    static const char* const operands[] = {"m", "kg", "s", "A", "K", "mol", "ms^2", "W", "(m*cd)", "(kg/A)"};
    const auto next = [&] { return QLatin1String(operands[random() % std::size(operands)]); };
    const auto dimensionsOf = [](const QString& text) {
        return Units::FromSIString(text).GetUnitType().GetDimensions();
    };
    LongQuotient quotient;
    quotient.text = random() % 8 == 0 ? QStringLiteral("1") : QString(next());
    quotient.fromTheLeft = quotient.allDivided = dimensionsOf(quotient.text);
    const std::size_t count = 2 + random() % 3;
    for (std::size_t i = 0; i < count; ++i) {
        const bool divides = i == 0 || random() % 2 == 0;
        const QString operand = next();
        const Dimensions dimensions = dimensionsOf(operand);
        quotient.text += QLatin1Char(divides ? '/' : '*') + operand;
        quotient.fromTheLeft =
            divides ? quotient.fromTheLeft / dimensions : quotient.fromTheLeft * dimensions;
        quotient.allDivided = quotient.allDivided / dimensions;
    }
    return quotient;
}

TEST(SIStringDiagnosis, SuggestsForALongQuotientOnlyWhatIsMeantByIt)
{
    const TestSupport::RandomSeed seed{224};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int i = 0; i < 3000; ++i) {
        const LongQuotient quotient = longQuotient(random);
        const QStringList suggestions = Units::DiagnoseSIString(quotient.text).suggestions;
        ASSERT_FALSE(suggestions.isEmpty()) << shown(quotient.text);
        int fromTheLeft = 0;
        for (const QString& suggestion : suggestions) {
            const Units units = Units::FromSIString(suggestion);
            ASSERT_TRUE(units.IsValid()) << shown(quotient.text) << ": " << shown(suggestion);
            const Dimensions dimensions = units.GetUnitType().GetDimensions();
            ASSERT_TRUE(dimensions == quotient.fromTheLeft || dimensions == quotient.allDivided)
                << shown(quotient.text) << ": " << shown(suggestion);
            fromTheLeft += dimensions == quotient.fromTheLeft;
        }
        ASSERT_GT(fromTheLeft, 0) << shown(quotient.text);
    }
}

struct PositionCase
{
    const char* name;
    const char* text;
    int position;
};

class SIStringPosition : public ::testing::TestWithParam<PositionCase>
{
};

TEST_P(SIStringPosition, IsWhereTheReadingStops)
{
    const SIStringDiagnosis diagnosis = diagnose(GetParam().text);
    EXPECT_FALSE(diagnosis.valid);
    EXPECT_EQ(diagnosis.position, GetParam().position);
    EXPECT_FALSE(diagnosis.expected.isEmpty());
    const bool atTheEnd = diagnosis.position == QString::fromUtf8(GetParam().text).size();
    EXPECT_EQ(diagnosis.found.isEmpty(), atTheEnd) << diagnosis.found.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SIStringPosition,
    ::testing::Values(PositionCase{"AtTheStart", "xyz", 0}, PositionCase{"BehindAProduct", "m*x", 2},
                      PositionCase{"BehindADivision", "km/x", 3}, PositionCase{"AtTheEnd", "m/", 2},
                      PositionCase{"AfterAStar", "m*", 2}, PositionCase{"ClosingMissing", "(m", 2},
                      PositionCase{"ClosingTooMany", "m)", 1}, PositionCase{"BlankBehind", "m ", 1},
                      PositionCase{"PowerOfAParenthesis", "(m)^2", 3},
                      PositionCase{"TwoSymbols", "(cd*kat)km", 8}, PositionCase{"DecibelsOpen", "dB(m", 4},
                      PositionCase{"DecibelsFollowed", "dB(mW)x", 6},
                      PositionCase{"LogarithmWithOneClosing", "log(m)", 6},
                      PositionCase{"OneTimes", "1*m", 1}),
    TestSupport::CaseName());

TEST(SIStringDiagnosis, SuggestsOnlyWhatIsAUnitAndAtMostThree)
{
    const TestSupport::RandomSeed seed{223};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    TextGenerator texts(random);
    int suggested = 0;
    for (int i = 0; i < 5000; ++i) {
        const QString text = texts.spoilt();
        const SIStringDiagnosis diagnosis = Units::DiagnoseSIString(text);
        ASSERT_LE(diagnosis.suggestions.size(), 3) << shown(text);
        QStringList different = diagnosis.suggestions;
        ASSERT_EQ(different.removeDuplicates(), 0) << shown(text);
        for (const QString& suggestion : diagnosis.suggestions) {
            Units named;
            ASSERT_TRUE(Units::FromSIString(suggestion).IsValid() ||
                        SystemOfUnits::instance().GetUnitsByName(suggestion, &named) == ER_SUCCESS)
                << shown(text) << ": " << shown(suggestion);
            ++suggested;
        }
    }
    EXPECT_GT(suggested, 0);
}

/// A fifth of the texts on which the parser is compared: a diagnosis searches for what was meant, and takes its time.
class SIStringVerdict : public ::testing::TestWithParam<int>
{
};

TEST_P(SIStringVerdict, IsThatOfTheParser)
{
    const TestSupport::RandomSeed seed{220};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    TextGenerator texts(random);
    int accepted = 0;
    for (int i = 0; i < 100000; ++i) {
        const QString text = texts.next();
        if (i % 5 != GetParam())
            continue;
        Units::Impl impl;
        const bool good = impl.ParseSIString(text);
        ASSERT_EQ(faultOfDiagnosis(text, good), "") << i << ": '" << shown(text) << "'";
        accepted += good;
    }
    EXPECT_GT(accepted, 4000);
}

INSTANTIATE_TEST_SUITE_P(Fifths, SIStringVerdict, ::testing::Range(0, 5));

TEST(SIStringDiagnosis, TakesEveryCodeUnitOfTheFirstBlocksAndOneInSixtyOfTheRest)
{
    for (int code = 0; code < 0x10000; code += code < 0x400 ? 1 : 61) {
        for (const char* before : {"", "m", "m^1", "m/", "dB("}) {
            const QString text = QLatin1String(before) + QString(QChar(code));
            Units::Impl impl;
            ASSERT_EQ(faultOfDiagnosis(text, impl.ParseSIString(text)), "") << shown(text);
        }
    }
}

TEST(SIStringDiagnosis, RegistersNoType)
{
    const Dimensions dimensions(6, 0, 6, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(diagnose("m^6*s^6").valid);
    EXPECT_FALSE(diagnose("m^6*s^6/").valid);
    EXPECT_FALSE(diagnose("m^6/s^-3/s^-3").valid);
    EXPECT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
}

TEST(SIStringDiagnosis, RegistersNoTypeForANameOfTheCatalogue)
{
    // a host's unit whose text says something else than its numbers, with dimensions of no type
    const Dimensions dimensions(7, 0, 0, 0, 5, 0, 0, 0, 0);
    Units units = parse("m");
    ASSERT_EQ(units.SetProperty(Units::SIUnits, QStringLiteral("m^7*K^5")), ER_SUCCESS);
    ASSERT_EQ(SystemOfUnits::instance().InsertUnits(QStringLiteral("dBodd"), units), ER_SUCCESS);
    for (const char* text : {"dBodd", "dBodd/s"})
        EXPECT_FALSE(diagnose(text).suggestions.contains(QStringLiteral("m^7*K^5"))) << text;
    EXPECT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
    EXPECT_EQ(SystemOfUnits::instance().RemoveUnits(QStringLiteral("dBodd")), ER_SUCCESS);
}

} // namespace
} // namespace Orrery::UnitsTest
