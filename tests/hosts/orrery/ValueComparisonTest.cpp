#include "hosts/orrery/ValueComparison.h"

#include "foundations/variant/VariantOperations.h"

#include <gmock/gmock.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace Orrery::Host {

using namespace Brindle::Quay;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

double nanWithPayload(std::uint64_t payload)
{
    const std::uint64_t bits = 0x7ff8000000000000U | payload;
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::vector<std::string> differences(const BVariant& a, const BVariant& b,
                                     const ComparisonOptions& options = {})
{
    bool readsSecond = false;
    return differencesOf(a, b, options, &readsSecond);
}

BVariant vectorOf(std::vector<double> values)
{
    return BVariant(std::move(values));
}

const ComparisonOptions s_tolerant = {0.1, false};
const ComparisonOptions s_typeless = {std::nullopt, true};

} // namespace

TEST(SameValues, HaveNoDifference)
{
    for (const BVariant& value : {BVariant(), BVariant(1.5), BVariant(std::string("text")), vectorOf({}),
                                  vectorOf({1, nan, infinity}), BVariant(std::vector<std::string>{"a", ""}),
                                  BVariant(std::vector<bool>{true, false}),
                                  BVariant(std::vector<double>(6), {2, 3}, DataOrdering::ColumnMajor)}) {
        EXPECT_THAT(differences(value, value), IsEmpty());
        EXPECT_THAT(differences(value, value, s_tolerant), IsEmpty());
        EXPECT_THAT(differences(value, value, s_typeless), IsEmpty());
    }
}

TEST(SingleValues, AreToldBoth)
{
    EXPECT_THAT(differences(BVariant(1.5), BVariant(-2.0)), ElementsAre("value 1.5 and -2"));
    EXPECT_THAT(differences(BVariant(std::string("a\n")), BVariant(std::string("b"))),
                ElementsAre("value 'a\\n' and 'b'"));
    EXPECT_THAT(differences(BVariant(true), BVariant(false)), ElementsAre("value true and false"));
}

TEST(Vectors, TellHowManyDifferAndTheFirstAndTheLargestDifference)
{
    EXPECT_THAT(differences(vectorOf({1, 2, 3}), vectorOf({1, 2.5, 3})),
                ElementsAre("1 of 3 values differs: at 1, 2 and 2.5; largest relative difference 0.2"));
    EXPECT_THAT(
        differences(vectorOf({1, 2, 3}), vectorOf({1, 2.5, 6})),
        ElementsAre("2 of 3 values differ, the first at 1: 2 and 2.5; largest relative difference 0.5"));
    EXPECT_THAT(differences(BVariant(std::vector<std::string>{"a", "b"}),
                            BVariant(std::vector<std::string>{"a", "c"})),
                ElementsAre("1 of 2 values differs: at 1, 'b' and 'c'"));
}

TEST(Vectors, AreComparedInAllTheirBlocks)
{
    const std::size_t count = 1'500'000; // three blocks of doubles
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = 0.5 * static_cast<double>(i);
    const BVariant first(values);
    for (const std::size_t position :
         {std::size_t(0), std::size_t(524'287), std::size_t(524'288), count - 1}) {
        std::vector<double> changed = values;
        changed[position] = -1.0;
        EXPECT_THAT(differences(first, BVariant(changed)),
                    ElementsAre(::testing::StartsWith("1 of 1500000 values differs: at " +
                                                      std::to_string(position) + ",")));
    }
    EXPECT_THAT(differences(first, BVariant(values)), IsEmpty());
}

TEST(Bits, DecideWithoutATolerance)
{
    EXPECT_THAT(differences(BVariant(0.0), BVariant(-0.0)), ElementsAre("value 0 and -0"));
    EXPECT_THAT(differences(BVariant(nanWithPayload(1)), BVariant(nanWithPayload(1))), IsEmpty());
    EXPECT_THAT(differences(BVariant(nanWithPayload(1)), BVariant(nanWithPayload(2))),
                ElementsAre("value nan and nan with other bits"));
    EXPECT_THAT(differences(vectorOf({nan, 1}), vectorOf({nan, nan})),
                ElementsAre("1 of 2 values differs: at 1, 1 and nan; largest relative difference inf"));
    const std::int64_t odd = (std::int64_t(1) << 53) + 1; // no double
    EXPECT_THAT(differences(BVariant(odd), BVariant(odd - 1)),
                ElementsAre("value 9007199254740993 and 9007199254740992"));
}

TEST(Tolerance, IsAPartOfTheLargerNumber)
{
    EXPECT_THAT(differences(vectorOf({10, -9}), vectorOf({9, -10}), s_tolerant), IsEmpty());
    EXPECT_THAT(
        differences(vectorOf({10, 10}), vectorOf({8.9, -10}), s_tolerant),
        ElementsAre("2 of 2 values differ, the first at 0: 10 and 8.9; largest relative difference 2"));
    EXPECT_THAT(differences(BVariant(0.0), BVariant(-0.0), s_tolerant), IsEmpty());
    EXPECT_THAT(differences(BVariant(0.0), BVariant(1e-300), s_tolerant), ElementsAre("value 0 and 1e-300"));
    EXPECT_THAT(differences(BVariant(infinity), BVariant(1e300), s_tolerant),
                ElementsAre("value inf and 1e+300"));
    EXPECT_THAT(differences(BVariant(nan), BVariant(1.0), s_tolerant), ElementsAre("value nan and 1"));
    EXPECT_THAT(differences(BVariant(std::int32_t(100)), BVariant(std::int32_t(99)), s_tolerant), IsEmpty());
    EXPECT_THAT(differences(BVariant(std::string("a")), BVariant(std::string("b")), s_tolerant),
                ElementsAre("value 'a' and 'b'"));
}

TEST(Tolerance, OfComplexNumbersIsThatOfTheirDistance)
{
    const std::complex<double> a(30, 40);
    EXPECT_THAT(differences(BVariant(a), BVariant(a + std::complex<double>(0, -4)), s_tolerant), IsEmpty());
    EXPECT_THAT(differences(BVariant(a), BVariant(a + std::complex<double>(-4, -4)), s_tolerant),
                ElementsAre("value 30+40i and 26+36i"));
}

TEST(ElementTypes, AreADifferenceUnlessTheyAreIgnored)
{
    const BVariant whole(std::vector<std::int32_t>{1, 2});
    EXPECT_THAT(differences(whole, vectorOf({1, 2})), ElementsAre("elements int32 and double"));
    EXPECT_THAT(differences(whole, vectorOf({1, 2}), s_typeless), IsEmpty());
    EXPECT_THAT(differences(whole, vectorOf({1, 3}), s_typeless),
                ElementsAre("1 of 2 values differs: at 1, 2 and 3; largest relative difference 0.333"));
    EXPECT_THAT(differences(BVariant(std::string("1")), BVariant(1.0), s_typeless),
                ElementsAre("elements text and double"));
    EXPECT_THAT(differences(BVariant(), BVariant(1.0), s_typeless),
                ElementsAre("elements null and double", "shape  and scalar"));
    EXPECT_THAT(differences(BVariant(float(nan)), BVariant(nan), s_typeless), IsEmpty());
}

TEST(ElementTypes, OfAnyPairAreComparedExactly)
{
    const std::uint64_t big = 0xffffffffffffffffU; // as a double it is 2^64
    EXPECT_THAT(differences(BVariant(big), BVariant(18446744073709551616.0), s_typeless),
                ElementsAre("value 18446744073709551615 and 18446744073709551616"));
    EXPECT_THAT(differences(BVariant(std::complex<float>(2, 0)), BVariant(std::int8_t(2)), s_typeless),
                IsEmpty());
    EXPECT_THAT(
        differences(BVariant(Complex<std::int16_t>{2, 1}), BVariant(std::complex<double>(2, 1)), s_typeless),
        IsEmpty());
    EXPECT_THAT(differences(BVariant(true), BVariant(std::uint8_t(1)), s_typeless), IsEmpty());
}

TEST(Shapes, AreADifferenceAndEndTheComparison)
{
    EXPECT_THAT(differences(vectorOf({1, 2}), vectorOf({1, 2, 3})), ElementsAre("shape 2 and 3"));
    EXPECT_THAT(
        differences(BVariant(std::vector<double>(6), {2, 3}), BVariant(std::vector<double>(6), {3, 2})),
        ElementsAre("shape 2 x 3 and 3 x 2"));
    EXPECT_THAT(differences(BVariant(1.0), vectorOf({1})), ElementsAre("shape scalar and 1"));
}

TEST(Orderings, AreADifferenceAndValuesArePairedByTheirIndices)
{
    const BVariant rows(std::vector<double>{1, 2, 3, 4, 5, 6}, {2, 3});
    const BVariant columns = rows.reordered(DataOrdering::ColumnMajor);
    EXPECT_THAT(differences(rows, columns), ElementsAre("ordering row-major and column-major"));
    const BVariant changed(std::vector<double>{1, 2, 3, 4, 5, 7}, {2, 3});
    EXPECT_THAT(differences(columns, changed),
                ElementsAre("ordering column-major and row-major",
                            "1 of 6 values differs: at [1,2], 6 and 7; largest relative difference 0.143"));
    EXPECT_THAT(differences(rows, BVariant(std::vector<double>{1, 2, 3, 0, 5, 6}, {2, 3})),
                ElementsAre("1 of 6 values differs: at [1,0], 4 and 0; largest relative difference 1"));
}

} // namespace Orrery::Host
