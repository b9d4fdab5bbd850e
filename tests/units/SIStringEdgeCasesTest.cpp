// Texts whose meaning is settled one by one: what a rule says, checked by hand.
#include "tests/support/CaseName.h"
#include "tests/units/PlainParser.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace Orrery::UnitsTest {
namespace {

struct GoodCase
{
    const char* text; ///< in UTF-8
    const UnitType* type;
    double scale;
    double logScale;
};

void expectGood(const GoodCase& c)
{
    SCOPED_TRACE(std::string("'") + c.text + "'");
    const Units units = parse(c.text);
    EXPECT_TRUE(units.IsValid());
    EXPECT_TRUE(units.GetUnitType() == *c.type) << units.GetUnitType().GetName().toStdString();
    EXPECT_EQ(units.GetScale(), c.scale);
    EXPECT_EQ(units.GetOffset(), 0.0);
    EXPECT_EQ(units.GetLogScale(), c.logScale);
    EXPECT_TRUE(parsePlainly(QString::fromUtf8(c.text)).accepted) << "the oracle of the other tests is wrong";
}

void expectRefused(std::initializer_list<const char*> texts)
{
    for (const char* text : texts) {
        EXPECT_FALSE(parse(text).IsValid()) << "'" << text << "'";
        EXPECT_FALSE(parsePlainly(QString::fromUtf8(text)).accepted)
            << "the oracle of the other tests is wrong";
    }
}

Dimensions dimensionsOf(const char* text)
{
    return parse(text).GetUnitType().GetDimensions();
}

TEST(SIString, HasTheMeaningThatHostsAreTold)
{
    for (const GoodCase& c : {
             GoodCase{"", &UnitType::dimensionless, 1.0, 0.0},
             GoodCase{"1", &UnitType::dimensionless, 1.0, 0.0},
             GoodCase{"km", &UnitType::length, 1000.0, 0.0},
             GoodCase{"kg", &UnitType::mass, 1.0, 0.0},
             GoodCase{"g", &UnitType::mass, 0.001, 0.0},
             GoodCase{"mm^2", &UnitType::area, std::pow(0.001, 2), 0.0},
             GoodCase{"mL", &UnitType::volume, 0.001 * 0.001, 0.0},
             GoodCase{"deg", &UnitType::planeAngle, 0.017453292519943295, 0.0},
             GoodCase{"1/s", &UnitType::frequency, 1.0, 0.0},
             GoodCase{"kg*m^2/(A*s^3)", &UnitType::electricPotential, 1.0, 0.0},
             GoodCase{"dB(W)", &UnitType::power, 1.0, 10.0},
             GoodCase{"dB(mW)", &UnitType::power, 0.001, 10.0},
             GoodCase{"dB(V)", &UnitType::electricPotential, 1.0, 20.0},
             GoodCase{"dB(A)", &UnitType::electricCurrent, 1.0, 20.0},
             GoodCase{"log(m))", &UnitType::length, 1.0, 1.0},
         })
        expectGood(c);
    EXPECT_DOUBLE_EQ(parse("mm^2").GetScale(), 0.000001);
    EXPECT_DOUBLE_EQ(parse("mL").GetScale(), 0.000001);
}

TEST(SIString, MayHaveBlanksBeforeATermAndNowhereElse)
{
    expectGood({"m/ s", &UnitType::velocity, 1.0, 0.0});
    expectGood({"  m", &UnitType::length, 1.0, 0.0});
    expectGood({"\t\n\v\f\r km", &UnitType::length, 1000.0, 0.0});
    expectGood({"m* m", &UnitType::area, 1.0, 0.0});
    expectGood({"( m/( s* s))", &UnitType::acceleration, 1.0, 0.0});
    expectGood({"dB( W)", &UnitType::power, 1.0, 10.0});
    expectGood({"\xE2\x80\x83m", &UnitType::length, 1.0, 0.0}); // an em space
    expectRefused({"m /s", "m ", " (m)", "m* (s)", "m/ (s)", " 1", "1 ", "1 /s", "(m )", "m * s", " dB(m)",
                   "k m", "m ^2", "m^ 2", " "});
}

TEST(SIString, TakesSignedExponentsWithoutLeadingZero)
{
    expectGood({"m^2", &UnitType::area, 1.0, 0.0});
    expectGood({"m^+2", &UnitType::area, 1.0, 0.0});
    expectGood({"s^-1", &UnitType::frequency, 1.0, 0.0});
    EXPECT_TRUE(parse("m^-2").IsValid());
    EXPECT_EQ(dimensionsOf("m^-2"), Dimensions(-2, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("m^10"), Dimensions(10, 0, 0, 0, 0, 0, 0, 0, 0));
    expectRefused(
        {"m^0", "m^02", "m^1.5", "m^", "m^-", "m^+", "m^--2", "m^+-2", "m^x", "m^2^3", "m^-0", "m**2", "^2"});
}

TEST(SIString, TakesNoExponentOnAParenthesis)
{
    expectRefused({"(m)^2", "(m/s)^2", "m/(s)^2", "dB(m)^2", "1^2"});
}

TEST(SIString, ReadsAnExponentTooLongForAnIntAsZero)
{
    for (const char* text : {"km^2147483648", "km^-2147483649", "km^99999999999999999999999"}) {
        SCOPED_TRACE(text);
        const Units units = parse(text);
        EXPECT_TRUE(units.IsValid());
        EXPECT_EQ(units.GetScale(), 1.0);
        EXPECT_TRUE(units.GetUnitType() == UnitType::dimensionless);
    }
    // Digits of other scripts belong to the exponent, which is then no number that can be read.
    expectGood({"km^1\xD9\xA2", &UnitType::dimensionless, 1.0, 0.0});
}

TEST(SIString, WrapsExponentsAround)
{
    EXPECT_EQ(dimensionsOf("m^-2147483648"), Dimensions(INT_MIN, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("1/m^-2147483648"), Dimensions(INT_MIN, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("N^-2147483648"), Dimensions(INT_MIN, INT_MIN, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("s^2147483647*s"), Dimensions(0, 0, INT_MIN, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("m^-2147483648/m"), Dimensions(INT_MAX, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(dimensionsOf("F^2147483647"), Dimensions(2, -INT_MAX, -4, -2, 0, 0, 0, 0, 0));
    EXPECT_EQ(parse("km^-2147483648").GetScale(), 0.0);
    EXPECT_EQ(parse("km^2147483647").GetScale(), HUGE_VAL);
}

TEST(SIString, PutsThePrefixInsideThePower)
{
    expectGood({"km^2", &UnitType::area, 1e6, 0.0});
    expectGood({"kg^1", &UnitType::mass, 1.0, 0.0});
    EXPECT_EQ(parse("mg").GetScale(), std::pow(10.0, -3) * 0.001);
    EXPECT_EQ(parse("deg^2").GetScale(), std::pow(0.017453292519943295, 2));
}

TEST(SIString, OpensParenthesesInProductsAndDenominators)
{
    EXPECT_EQ(dimensionsOf("(m/s)*kg"), Dimensions(1, 1, -1, 0, 0, 0, 0, 0, 0));
    EXPECT_TRUE(parse("(m/s)*kg").IsValid());
    EXPECT_EQ(dimensionsOf("(m/s)/(kg/A)"), Dimensions(1, -1, -1, 1, 0, 0, 0, 0, 0));
    EXPECT_TRUE(parse("(m/s)/(kg/A)").IsValid());
    expectGood({"m/(s*s)", &UnitType::acceleration, 1.0, 0.0});
    expectGood({"m*kg/s^2", &UnitType::force, 1.0, 0.0});
    expectGood({"(((km)))", &UnitType::length, 1000.0, 0.0});
    expectGood({"km/(ms/(mm/m))", &UnitType::velocity, 1000.0 / (0.001 / (0.001 / 1.0)), 0.0});
    expectGood({"1/(1/s)", &UnitType::time, 1.0, 0.0});
    expectGood({"(1)", &UnitType::dimensionless, 1.0, 0.0});
    expectGood({"1/(1)", &UnitType::dimensionless, 1.0, 0.0});
    expectGood({"(1)*km", &UnitType::length, 1000.0, 0.0});
    expectRefused(
        {"()", "(", ")", "(m", "m)", "((m)", "(m))", "m/()", "m(s)", "(m)(s)", "(m)s", "m/(s", "m/(s))"});
}

TEST(SIString, HasOneDivisionAtMostOnEachLevel)
{
    expectRefused({"m/s/s", "m/s*kg", "m/(s)/s", "1/s/s", "/s", "m/", "m//s", "m*/s", "(m/s/s)"});
}

TEST(SIString, TakesAOneOnlyForAWholeProduct)
{
    expectGood({"1/s", &UnitType::frequency, 1.0, 0.0});
    expectGood({"1/ms", &UnitType::frequency, 1.0 / std::pow(10.0, -3), 0.0});
    expectRefused({"1*m", "m*1", "m/1", "11", "1m", "1/1", "1(m)", "0", "2", "1.0", "01"});
}

TEST(SIString, StartsTheScaleOfAnInnerOneAtOne)
{
    expectGood({"km*(1/s)", &UnitType::velocity, 1000.0, 0.0});
    expectGood({"kHz/(1/ms)", &UnitType::dimensionless, 1000.0 / (1.0 / std::pow(10.0, -3)), 0.0});
    expectGood({"(1/ms)*s", &UnitType::dimensionless, 1.0 / std::pow(10.0, -3), 0.0});
}

TEST(SIString, StarsEndInAFactor)
{
    expectRefused({"*", "*m", "m*", "m**s", "m*/s", "m*)"});
}

TEST(SIString, KnowsOnlyTheSymbolsOfTheTable)
{
    expectRefused({"um", "P", "kP", "k", "da", "Ohm", "uF", "metre", "min", "h", "eV", "x", "M", "G"});
    expectRefused({"\xE2\x84\xA6", "\xCE\xBCm"}); // the ohm sign and the Greek mu
    expectGood({"Pa", &UnitType::pressure, 1.0, 0.0});
    expectGood({"kPa", &UnitType::pressure, 1000.0, 0.0});
    expectGood({"k\xCE\xA9", &UnitType::electricResistance, 1000.0, 0.0});
    expectGood({"\xC2\xB5m", &UnitType::length, std::pow(10.0, -6), 0.0});
}

TEST(SIString, IsCaseSensitive)
{
    expectGood({"L", &UnitType::volume, 0.001, 0.0});
    expectGood({"l", &UnitType::volume, 0.001, 0.0});
    expectGood({"S", &UnitType::conductance, 1.0, 0.0});
    expectGood({"s", &UnitType::time, 1.0, 0.0});
    expectGood({"T", &UnitType::magneticFluxDensity, 1.0, 0.0});
    expectGood({"Tm", &UnitType::length, 1e12, 0.0});
    expectGood({"mm", &UnitType::length, std::pow(10.0, -3), 0.0});
    expectGood({"Mm", &UnitType::length, 1e6, 0.0});
    expectRefused({"KM", "Km", "HZ", "hz", "pa", "DB(W)", "db(W)", "Log(m))", "LOG(m))", "v", "RAD"});
}

TEST(SIString, ReadsTheLongestSymbol)
{
    expectGood({"mol", &UnitType::amountOfSubstance, 1.0, 0.0});
    expectGood({"mmol", &UnitType::amountOfSubstance, std::pow(10.0, -3), 0.0});
    expectGood({"ms", &UnitType::time, std::pow(10.0, -3), 0.0});
    expectGood({"cd", &UnitType::luminousIntensity, 1.0, 0.0});
    expectGood({"dam", &UnitType::length, 10.0, 0.0});
    expectGood({"mm", &UnitType::length, std::pow(10.0, -3), 0.0});
    expectGood({"Gy", &UnitType::absorbedDose, 1.0, 0.0});
    expectGood({"GGy", &UnitType::absorbedDose, 1e9, 0.0});
    expectGood({"kat", &UnitType::catalyticActivity, 1.0, 0.0});
    expectGood({"pPa", &UnitType::pressure, std::pow(10.0, -12), 0.0});
    expectRefused({"mo", "kk", "kkm", "mms", "mkm", "cdm", "ma", "dakm", "Pas"});
}

TEST(SIString, OfDecibelsTakesTheFactorFromTheDimensions)
{
    expectGood({"dB(1)", &UnitType::dimensionless, 1.0, 10.0});
    expectGood({"dB(\xCE\xA9)", &UnitType::electricResistance, 1.0, 10.0});
    expectGood({"dB(kg*m^2/(A*s^3))", &UnitType::electricPotential, 1.0, 20.0});
    expectGood({"dB(C/s)", &UnitType::electricCurrent, 1.0, 20.0});
    expectGood({"dB(mV)", &UnitType::electricPotential, std::pow(10.0, -3), 20.0});
    expectGood({"dB(V^2/\xCE\xA9)", &UnitType::power, 1.0, 10.0});
    expectGood({"dB(1/s)", &UnitType::frequency, 1.0, 10.0});
    expectGood({"dB((m))", &UnitType::length, 1.0, 10.0});
    expectGood({"dB(kBq)", &UnitType::radioactivity, 1000.0, 10.0});
    expectRefused({"dB",      "dBm",    "dB(m",    "dB(mW)x", "dB()",      "dB(",     "dB)",
                   "dB(m)) ", "dB(m))", "dB(m)/s", "dB(m)*s", "dB(dB(m))", "m*dB(m)", "(dB(m))",
                   "dB (m)",  "dB( )",  "dB(m )",  "dB(m/)",  "dB(x)",     "dB(m*x)"});
}

TEST(SIString, OfLogarithmsNeedsASecondClosingParenthesis)
{
    expectGood({"log(m))", &UnitType::length, 1.0, 1.0});
    expectGood({"log(km/ms))", &UnitType::velocity, 1000.0 / std::pow(10.0, -3), 1.0});
    expectGood({"log(1))", &UnitType::dimensionless, 1.0, 1.0});
    expectGood({"log((m)))", &UnitType::length, 1.0, 1.0});
    expectGood({"log(m)/s)", &UnitType::velocity, 1.0, 1.0});
    expectGood({"log(V))", &UnitType::electricPotential, 1.0, 1.0});
    expectRefused(
        {"log", "log(", "log()", "log())", "log(m)", "log(m)))", "log(m))x", "logm", "log(log(m)))", "log)"});
}

TEST(SIString, ThatIsRefusedLeavesTheTypeAndTheScaleOfTheLastAcceptedTerm)
{
    struct RefusedCase
    {
        const char* text;
        double scale;
    };
    for (const RefusedCase& c : {
             RefusedCase{"x", 1.0},
             RefusedCase{"km/x", 1000.0},
             RefusedCase{"km x", 1000.0},
             RefusedCase{"(km", 1000.0},
             RefusedCase{"((km)", 1000.0},
             RefusedCase{"km/s/s", 1000.0},
             RefusedCase{"km*hm*", 1000.0}, // the inner product keeps its scale to itself
             RefusedCase{"km*hm)", 100000.0},
             RefusedCase{"km/hm)", 10.0},
             RefusedCase{"s/(km/x)", 1.0},
             RefusedCase{"(km*m/hm", 10.0},
             RefusedCase{"1/x", 1.0},
             RefusedCase{"dB(km", 1000.0},
             RefusedCase{"dB(km)x", 1000.0},
             RefusedCase{"log(km)", 1000.0},
             RefusedCase{"log(km", 1000.0},
         }) {
        SCOPED_TRACE(c.text);
        Units::Impl impl;
        impl.type = UnitType::force;
        impl.scale = 7.0;
        impl.offset = 8.0;
        impl.logScale = 9.0;
        EXPECT_FALSE(impl.ParseSIString(QString::fromLatin1(c.text)));
        EXPECT_EQ(impl.scale, c.scale);
        EXPECT_EQ(impl.offset, 0.0);
        EXPECT_EQ(impl.logScale, 0.0);
        EXPECT_TRUE(impl.type == UnitType::force);
        EXPECT_EQ(parsePlainly(QString::fromLatin1(c.text)).scale, c.scale)
            << "the oracle of the other tests is wrong";
    }
}

TEST(SIString, ThatIsRefusedRegistersNoType)
{
    const Dimensions dimensions(4, 0, 0, 0, 4, 0, 0, 0, 0);
    for (const char* text : {"m^4*K^4/", "m^4*K^4)", "(m^4*K^4", "m^4*K^4 ", "dB(m^4*K^4", "log(m^4*K^4)"}) {
        EXPECT_FALSE(parse(text).IsValid()) << text;
        EXPECT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty()) << text;
    }
}

TEST(SIString, OfNewDimensionsNamesALastingTypeByTheWholeText)
{
    const Dimensions dimensions(1, 0, 0, 0, 3, 0, 0, 0, 0);
    ASSERT_TRUE(UnitType::FindCompatibleTypes(dimensions).isEmpty());
    EXPECT_EQ(parse("dB( m*K^3)").GetUnitType().GetName(), QStringLiteral("dB( m*K^3)"));
    EXPECT_EQ(parse("K^3*m").GetUnitType().GetName(), QStringLiteral("dB( m*K^3)"));
    EXPECT_EQ(parse("K^3*m").GetUnitType().GetReferenceSIString(), QStringLiteral("m*K^3"));
    EXPECT_EQ(UnitType::FindCompatibleTypes(dimensions).size(), 1);
}

TEST(SIString, ChoosesBetweenTypesOfEqualDimensionsByTheWholeText)
{
    expectGood({"kBq", &UnitType::radioactivity, 1000.0, 0.0});
    expectGood({"kHz", &UnitType::frequency, 1000.0, 0.0});
    expectGood({"mSv", &UnitType::equivalentDose, std::pow(10.0, -3), 0.0});
    expectGood({"J/kg", &UnitType::absorbedDose, 1.0, 0.0});
    expectGood({"Bq*Hz/Hz", &UnitType::frequency, 1.0, 0.0});
    expectGood({"log(Bq))", &UnitType::radioactivity, 1.0, 1.0});
}

TEST(SIString, MayHoldAnything)
{
    expectRefused({"\xF0\x9D\x9F\x90", "m\xF0\x9D\x9F\x90"}); // a mathematical digit
    for (const QString& text :
         {QString(QChar(0)), QString(QLatin1Char('m')) + QChar(0), QString(QChar(0xD800)),
          QString(QLatin1Char('m')) + QChar(0xDC00), QString(QChar(0)) + QLatin1Char('m'),
          QString(QChar(0xFEFF)) + QLatin1Char('m')})
        EXPECT_FALSE(Units::FromSIString(text).IsValid());
    const Units units = Units::FromSIString(QString(QChar(0x2003)) + QStringLiteral("km"));
    EXPECT_TRUE(units.IsValid());
    EXPECT_EQ(units.GetSIUnits(), QString(QChar(0x2003)) + QStringLiteral("km"));
}

} // namespace
} // namespace Orrery::UnitsTest
