// Texts that would end the stack of a recursive parser, and the time of one that copies what is left at every step.
#include "tests/support/CaseName.h"
#include "tests/units/SmallStack.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

namespace Orrery::UnitsTest {
namespace {

constexpr int s_deep = 100000;
constexpr int s_million = 1000000;

QString repeated(const char* piece, int count)
{
    return QString::fromLatin1(piece).repeated(count);
}

struct LongCase
{
    const char* name;
    std::function<QString()> text;
    bool accepted;
    Exponents exponents;
    double scale;
};

// The default would print the bytes of a function object.
void PrintTo(const LongCase& c, std::ostream* out)
{
    *out << c.name;
}

class LongSIString : public ::testing::TestWithParam<LongCase>
{
};

TEST_P(LongSIString, IsAnsweredOnASmallStack)
{
    const LongCase& c = GetParam();
    const QString text = c.text();
    runOnSmallStack([&] {
        Units::Impl impl;
        impl.type = UnitType::force;
        EXPECT_EQ(impl.ParseSIString(text), c.accepted);
        EXPECT_EQ(impl.scale, c.scale);
        EXPECT_EQ(impl.type.GetDimensions(),
                  c.accepted ? toDimensions(c.exponents) : UnitType::force.GetDimensions());
    });
}

TEST_P(LongSIString, IsDiagnosedOnASmallStack)
{
    const LongCase& c = GetParam();
    const QString text = c.text();
    runOnSmallStack([&] {
        const SIStringDiagnosis diagnosis = Units::DiagnoseSIString(text);
        EXPECT_EQ(diagnosis.valid, c.accepted);
        EXPECT_GE(diagnosis.position, 0);
        EXPECT_LE(diagnosis.position, text.size());
        EXPECT_EQ(diagnosis.message().isEmpty(), c.accepted);
        EXPECT_LT(diagnosis.found.size(), 200) << "a message for a person shows no megabyte";
        EXPECT_LT(diagnosis.message().size(), 2000);
    });
}

TEST_P(LongSIString, MakesAUnitOnASmallStack)
{
    const LongCase& c = GetParam();
    const QString text = c.text();
    runOnSmallStack([&] {
        const Units units = Units::FromSIString(text);
        EXPECT_EQ(units.IsValid(), c.accepted);
        EXPECT_EQ(units.GetSIUnits(), c.accepted ? text : QString());
    });
}

const Exponents s_none{};
const Exponents s_metre{1, 0, 0, 0, 0, 0, 0, 0, 0};

INSTANTIATE_TEST_SUITE_P(
    Parentheses, LongSIString,
    ::testing::Values(
        LongCase{"Balanced", [] { return repeated("(", s_deep) + "km" + repeated(")", s_deep); }, true,
                 s_metre, 1000.0},
        LongCase{"OnlyOpening", [] { return repeated("(", s_deep); }, false, s_none, 1.0},
        LongCase{"OneClosingMissing", [] { return repeated("(", s_deep) + "km" + repeated(")", s_deep - 1); },
                 false, s_none, 1000.0},
        LongCase{"OneClosingTooMany", [] { return repeated("(", s_deep) + "km" + repeated(")", s_deep + 1); },
                 false, s_none, 1000.0},
        LongCase{"NothingInside", [] { return repeated("(", s_deep) + repeated(")", s_deep); }, false, s_none,
                 1.0},
        LongCase{"OneInside", [] { return repeated("(", s_deep) + "1" + repeated(")", s_deep); }, true,
                 s_none, 1.0},
        LongCase{"NestedDenominators", [] { return repeated("m/(", s_deep) + "m" + repeated(")", s_deep); },
                 true, s_metre, 1.0},
        LongCase{"NestedInverses", [] { return repeated("1/(", s_deep) + "km" + repeated(")", s_deep); },
                 true, s_metre, 1000.0},
        LongCase{"NestedProducts", [] { return repeated("m*(", s_deep) + "m" + repeated(")", s_deep); }, true,
                 Exponents{s_deep + 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        LongCase{"FactorsBehindNesting", [] { return repeated("(", s_deep) + "m" + repeated(")*m", s_deep); },
                 true, Exponents{s_deep + 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        LongCase{"InDecibels",
                 [] { return "dB(" + repeated("(", s_deep) + "kW" + repeated(")", s_deep + 1); }, true,
                 Exponents{2, 1, -3, 0, 0, 0, 0, 0, 0}, 1000.0},
        LongCase{"InLogarithm",
                 [] { return "log" + repeated("(", s_deep) + "km" + repeated(")", s_deep + 1); }, true,
                 s_metre, 1000.0},
        LongCase{"BesideEachOther", [] { return repeated("(m)*", s_deep) + "(m)"; }, true,
                 Exponents{s_deep + 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        LongCase{"SpoiltInside", [] { return repeated("(km*", s_deep) + "x" + repeated(")", s_deep); }, false,
                 s_none, 1000.0}),
    TestSupport::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Lengths, LongSIString,
    ::testing::Values(
        LongCase{"AMillionFactors", [] { return "m" + repeated("*m", s_million); }, true,
                 Exponents{s_million + 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        LongCase{"AMillionPrefixedFactors", [] { return "mm" + repeated("*mm", s_million); }, true,
                 Exponents{s_million + 1, 0, 0, 0, 0, 0, 0, 0, 0}, 0.0},
        LongCase{"AMillionFactorsAndAStar", [] { return "km" + repeated("*m", s_million) + "*"; }, false,
                 s_none, 1000.0},
        LongCase{"AMillionFactorsBelow", [] { return "1/(m" + repeated("*m", s_million) + ")"; }, true,
                 Exponents{-s_million - 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        LongCase{"AMillionDigits", [] { return "km^1" + repeated("0", s_million); }, true, s_none, 1.0},
        LongCase{"AMillionDigitsAndALetter", [] { return "km^1" + repeated("0", s_million) + "x"; }, false,
                 s_none, 1.0},
        LongCase{"AMillionZeros", [] { return "km^" + repeated("0", s_million); }, false, s_none, 1000.0},
        LongCase{"AMillionBlanks", [] { return repeated(" ", s_million) + "km"; }, true, s_metre, 1000.0},
        LongCase{"AMillionBlanksBelow", [] { return "m*m/" + repeated(" ", s_million) + "m"; }, true, s_metre,
                 1.0},
        LongCase{"AMillionBlanksAndNoMore", [] { return repeated(" ", s_million); }, false, s_none, 1.0},
        LongCase{"AMillionBlanksBehind", [] { return "km" + repeated(" ", s_million); }, false, s_none,
                 1000.0},
        LongCase{"AMillionStars", [] { return "km" + repeated("*", s_million); }, false, s_none, 1000.0},
        LongCase{"AMillionDivisions", [] { return "m" + repeated("/m", s_million); }, false, s_none, 1.0},
        LongCase{"AMillionUnknownLetters", [] { return repeated("x", s_million); }, false, s_none, 1.0},
        LongCase{"AMillionSymbolsInARow", [] { return repeated("km", s_million); }, false, s_none, 1000.0},
        LongCase{"AMillionOnes", [] { return repeated("1", s_million); }, false, s_none, 1.0},
        LongCase{"AMillionNuls", [] { return QString(s_million, QChar(0)); }, false, s_none, 1.0},
        LongCase{"AMillionSurrogates", [] { return QString(s_million, QChar(0xD800)); }, false, s_none, 1.0},
        LongCase{"AMillionClosings", [] { return "dB(kW" + repeated(")", s_million); }, false, s_none,
                 1000.0}),
    TestSupport::CaseName());

TEST(LongSIStringScale, IsFoldedFromTheRight)
{
    // a*(b*(c*d)): the large factors at the end meet first and overflow before a small one can save them.
    const QString text = repeated("ym*", 20) + repeated("Ym*", 19) + "Ym";
    Units::Impl impl;
    ASSERT_TRUE(impl.ParseSIString(text));
    EXPECT_EQ(impl.scale, std::numeric_limits<double>::infinity());
    ASSERT_TRUE(impl.ParseSIString(repeated("Ym*", 20) + repeated("ym*", 19) + "ym"));
    EXPECT_EQ(impl.scale, 0.0);
}

} // namespace
} // namespace Orrery::UnitsTest
