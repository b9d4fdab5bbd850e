// The parser beside a plain recursive one that makes a regular expression for each term.
#include "tests/support/RandomSeed.h"
#include "tests/units/ParserComparison.h"
#include "tests/units/SIStringTexts.h"

#include <gtest/gtest.h>

namespace Orrery::UnitsTest {
namespace {

TEST(SIStringDifferential, AgreesOnAHundredThousandTexts)
{
    const TestSupport::RandomSeed seed{220};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    TextGenerator texts(random);
    TypeModel types;
    int accepted = 0;
    for (int i = 0; i < 100000; ++i) {
        const QString text = texts.next();
        ASSERT_EQ(differenceFromPlain(text, &types), "") << i << ": '" << shown(text) << "'";
        accepted += parsePlainly(text).accepted;
    }
    // The generator must reach both sides.
    EXPECT_GT(accepted, 20000);
    EXPECT_LT(accepted, 80000);
}

TEST(SIStringDifferential, AgreesOnTextsThatGrowByOneLetter)
{
    const TestSupport::RandomSeed seed{221};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    TextGenerator texts(random);
    TypeModel types;
    for (int i = 0; i < 500; ++i) {
        const QString text = texts.written();
        for (int length = 0; length <= text.size(); ++length)
            ASSERT_EQ(differenceFromPlain(text.left(length), &types), "") << shown(text.left(length));
    }
}

struct UnitPlace
{
    const char* name;
    const char* before;
    const char* behind;
};

class EveryCodeUnit : public ::testing::TestWithParam<UnitPlace>
{
};

TEST_P(EveryCodeUnit, IsReadAsTheRegularExpressionReadsIt)
{
    TypeModel types;
    const QString before = QString::fromLatin1(GetParam().before);
    const QString behind = QString::fromLatin1(GetParam().behind);
    for (int code = 0; code < 0x10000; ++code) {
        const QString text = before + QChar(code) + behind;
        ASSERT_EQ(differenceFromPlain(text, &types), "") << shown(text);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Places, EveryCodeUnit,
    ::testing::Values(UnitPlace{"Alone", "", ""}, UnitPlace{"BehindAnExponent", "m^1", ""},
                      UnitPlace{"AsFirstDigit", "m^-", "3"}, UnitPlace{"BeforeASymbol", "", "m"},
                      UnitPlace{"BehindASymbol", "m", ""}, UnitPlace{"InADenominator", "m/", "s"},
                      UnitPlace{"InsideDecibels", "dB(", "W)"}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace Orrery::UnitsTest
