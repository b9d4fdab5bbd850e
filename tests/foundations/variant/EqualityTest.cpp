#include "foundations/variant/VariantOperations.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Brindle::Quay {
using namespace TestSupport;

namespace {
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Point
{
    int x, y;
    bool operator==(const Point& other) const { return x == other.x && y == other.y; }
};

// Equal whatever it holds: shows whether the library asks the type at all.
struct AlwaysEqual
{
    int ignored;
    bool operator==(const AlwaysEqual&) const { return true; }
};

// Never equal, and not to be asked.
struct Untouchable
{
    int value;
    bool operator==(const Untouchable&) const { throw std::logic_error("compared"); }
};
} // namespace

template <class T>
class EqualityOf : public ::testing::Test
{
protected:
    static BVariant array() { return BVariant(sampleElements<T>(5)); }
    static BVariant changed()
    {
        auto elements = sampleElements<T>(5);
        elements[4] = Samples<T>::second();
        return BVariant(std::move(elements));
    }
};
TYPED_TEST_SUITE(EqualityOf, ElementTypes, ElementTypeName);

TYPED_TEST(EqualityOf, HoldsBetweenArraysOfTheSameElements)
{
    EXPECT_TRUE(exactlyEqual(this->array(), this->array()));
    EXPECT_TRUE(equalWithConversion(this->array(), this->array()));
}

TYPED_TEST(EqualityOf, FailsForOneDifferentElement)
{
    EXPECT_FALSE(exactlyEqual(this->array(), this->changed()));
    EXPECT_FALSE(equalWithConversion(this->array(), this->changed()));
}

TYPED_TEST(EqualityOf, HoldsBetweenEqualScalarsOnly)
{
    const BVariant first(Samples<TypeParam>::first()), second(Samples<TypeParam>::second());
    EXPECT_TRUE(exactlyEqual(first, BVariant(Samples<TypeParam>::first())));
    EXPECT_TRUE(equalWithConversion(first, BVariant(Samples<TypeParam>::first())));
    EXPECT_FALSE(exactlyEqual(first, second));
    EXPECT_FALSE(equalWithConversion(first, second));
}

TYPED_TEST(EqualityOf, HoldsBetweenAScalarAndAVectorOfOne)
{
    const BVariant scalar(Samples<TypeParam>::first());
    const BVariant vector{std::vector<TypeParam>{Samples<TypeParam>::first()}};
    EXPECT_TRUE(exactlyEqual(scalar, vector));
    EXPECT_TRUE(equalWithConversion(scalar, vector));
}

TYPED_TEST(EqualityOf, ComparesRawMemoryOfEachElement)
{
    const auto a = sampleElements<TypeParam>(4), b = sampleElements<TypeParam>(4);
    const BVariant left{std::vector<TypeParam>(a)}, right{std::vector<TypeParam>(b)};
    const WellKnownType type = WellKnownType::of<TypeParam>();
    EXPECT_TRUE(rawElementsEqual(type, left.constData(), right.constData(), 4));
    EXPECT_TRUE(rawElementsEqual(type, this->array().constData(), this->changed().constData(), 0));
    const BVariant x = this->array(), y = this->changed();
    EXPECT_TRUE(rawElementsEqual(type, x.constData(), y.constData(), 4));
    EXPECT_FALSE(rawElementsEqual(type, x.constData(), y.constData(), 5));
}

TEST(RawElementsEqual, FailsOnCodesWithoutElements)
{
    const double one = 1;
    EXPECT_EQ(failureOf([&] { rawElementsEqual(0, &one, &one, 1); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([&] { rawElementsEqual(32, &one, &one, 1); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([&] { rawElementsEqual(3, &one, &one, 1); }), runtimeError("not a numeric type"));
}

TEST(RawElementsEqual, LooksAtBothPartsOfAComplexBool)
{
    const Complex<bool> a{true, false}, b{true, true}, c{false, false};
    const WellKnownType type = WellKnownType::of<Complex<bool>>();
    EXPECT_TRUE(rawElementsEqual(type, &a, &a, 1));
    EXPECT_FALSE(rawElementsEqual(type, &a, &b, 1));
    EXPECT_FALSE(rawElementsEqual(type, &a, &c, 1));
}

TEST(Equality, TakesNaNForUnequalToItself)
{
    for (const BVariant& nan :
         {BVariant(notANumber), MakeVector({1.0, notANumber}), BVariant(std::nanf("")),
          BVariant(std::complex<double>(0, notANumber)), BVariant(std::complex<double>(notANumber, 0)),
          BVariant(std::complex<float>(std::nanf(""), 0.0f)),
          BVariant(std::complex<float>(0.0f, std::nanf("")))}) {
        const BVariant copy(nan); // the very same payload, in the case of an array
        EXPECT_FALSE(exactlyEqual(nan, nan));
        EXPECT_FALSE(exactlyEqual(nan, copy));
        EXPECT_FALSE(equalWithConversion(nan, copy));
    }
    EXPECT_FALSE(equalWithConversion(BVariant(notANumber), BVariant(std::nanf(""))));
}

TEST(Equality, TakesBothZerosForEqual)
{
    EXPECT_TRUE(exactlyEqual(BVariant(0.0), BVariant(-0.0)));
    EXPECT_TRUE(exactlyEqual(BVariant(0.0f), BVariant(-0.0f)));
    EXPECT_TRUE(
        exactlyEqual(BVariant(std::complex<double>(0.0, -0.0)), BVariant(std::complex<double>(-0.0, 0.0))));
    EXPECT_TRUE(equalWithConversion(BVariant(-0.0), BVariant(0)));
}

TEST(Equality, ComparesTextByLengthAndBytes)
{
    const std::string withNul("a\0b", 3), otherTail("a\0c", 3);
    EXPECT_TRUE(exactlyEqual(BVariant(withNul), BVariant(withNul)));
    EXPECT_FALSE(exactlyEqual(BVariant(withNul), BVariant(otherTail)));
    EXPECT_FALSE(exactlyEqual(BVariant(withNul), BVariant("a")));
}

TEST(ExactlyEqual, HoldsBetweenTwoNullsOnly)
{
    EXPECT_TRUE(exactlyEqual(BVariant(), BVariant()));
    EXPECT_FALSE(exactlyEqual(BVariant(), BVariant(0.0)));
    EXPECT_FALSE(exactlyEqual(BVariant(0.0), BVariant()));
    EXPECT_FALSE(exactlyEqual(BVariant(), BVariant(std::vector<double>{})));
    EXPECT_FALSE(exactlyEqual(BVariant(std::vector<double>{}), BVariant()));
}

TEST(ExactlyEqual, NeedsTheSameType)
{
    EXPECT_FALSE(exactlyEqual(BVariant(1), BVariant(1.0)));
    EXPECT_FALSE(exactlyEqual(BVariant(1), BVariant(1u)));
    EXPECT_FALSE(exactlyEqual(BVariant(true), BVariant(std::uint8_t{1})));
    EXPECT_FALSE(exactlyEqual(BVariant(Duration{{1, 2}}), BVariant(TimePoint{{1, 2}})));
    EXPECT_FALSE(exactlyEqual(BVariant(std::vector<double>{}), BVariant(std::vector<int>{})));
}

TEST(ExactlyEqual, NeedsTheSameDimensions)
{
    EXPECT_FALSE(exactlyEqual(MakeCounting({6}), MakeCounting({2, 3})));
    EXPECT_FALSE(exactlyEqual(MakeCounting({2, 3}), MakeCounting({3, 2})));
    EXPECT_FALSE(exactlyEqual(MakeCounting({6}), MakeCounting({6, 1})));
    EXPECT_FALSE(exactlyEqual(MakeCounting({1}), MakeCounting({1, 1})));
    EXPECT_FALSE(exactlyEqual(MakeCounting({0, 3}), MakeCounting({0, 2})));
    EXPECT_TRUE(exactlyEqual(MakeCounting({0, 3}), MakeCounting({0, 3})));
}

TEST(ExactlyEqual, NeedsTheSameOrderingEvenOfAVector)
{
    EXPECT_FALSE(exactlyEqual(MakeCounting({2, 2}), MakeCounting({2, 2}).reordered(columnMajor)));
    EXPECT_FALSE(exactlyEqual(MakeCounting({3}, rowMajor), MakeCounting({3}, columnMajor)));
    EXPECT_FALSE(exactlyEqual(MakeCounting({0}, rowMajor), MakeCounting({0}, columnMajor)));
}

TEST(ExactlyEqual, ComparesRunTimeValuesByTheirOwnEquality)
{
    EXPECT_TRUE(exactlyEqual(BVariant::runTime(Point{1, 2}), BVariant::runTime(Point{1, 2})));
    EXPECT_FALSE(exactlyEqual(BVariant::runTime(Point{1, 2}), BVariant::runTime(Point{1, 3})));
    EXPECT_TRUE(exactlyEqual(BVariant::runTime(AlwaysEqual{1}), BVariant::runTime(AlwaysEqual{2})));
}

TEST(ExactlyEqual, TakesDifferentRunTimeTypesForUnequalWithoutAskingThem)
{
    EXPECT_FALSE(exactlyEqual(BVariant::runTime(Untouchable{1}), BVariant::runTime(Point{1, 0})));
    EXPECT_FALSE(exactlyEqual(BVariant::runTime(AlwaysEqual{1}), BVariant::runTime(Untouchable{1})));
    EXPECT_FALSE(exactlyEqual(BVariant::runTime(1.0), BVariant(1.0)));
    EXPECT_FALSE(exactlyEqual(BVariant(), BVariant::runTime(1.0)));
}

TEST(ExactlyEqual, PassesExceptionsOn)
{
    EXPECT_THROW(exactlyEqual(BVariant::runTime(Untouchable{1}), BVariant::runTime(Untouchable{1})),
                 std::logic_error);
    HostPayload::Log log;
    log.fails = true;
    const BVariant damaged = HostPayload::make(&log, {1, 2}, {2});
    EXPECT_EQ(failureOf([&] { exactlyEqual(damaged, MakeVector({1.0, 2.0})); }), runtimeError("damaged"));
}

TEST(EqualWithConversion, HoldsBetweenAnyTwoEmpties)
{
    const std::vector<BVariant> empties = {BVariant(),
                                           BVariant(std::vector<double>{}),
                                           MakeCounting({0, 3}),
                                           MakeCounting<std::int16_t>({2, 0}),
                                           BVariant(std::vector<std::string>{}),
                                           BVariant(std::vector<Duration>{})};
    for (const BVariant& a : empties) {
        for (const BVariant& b : empties)
            EXPECT_TRUE(equalWithConversion(a, b));
        EXPECT_FALSE(equalWithConversion(a, BVariant(0.0)));
        EXPECT_FALSE(equalWithConversion(BVariant(0.0), a));
        EXPECT_FALSE(equalWithConversion(a, BVariant::runTime(1.0)));
    }
}

TEST(EqualWithConversion, ComparesInTheCommonType)
{
    EXPECT_TRUE(equalWithConversion(BVariant(1), BVariant(1.0)));
    EXPECT_TRUE(equalWithConversion(BVariant(1.0), BVariant(1)));
    EXPECT_FALSE(equalWithConversion(BVariant(1), BVariant(1.5)));
    EXPECT_FALSE(equalWithConversion(BVariant(1.5), BVariant(1)));
    EXPECT_TRUE(equalWithConversion(MakeVector({1, 2}), MakeVector({1.0f, 2.0f})));
    EXPECT_TRUE(equalWithConversion(BVariant(true), BVariant(std::complex<float>(1, 0))));
    EXPECT_FALSE(equalWithConversion(BVariant(1.0), BVariant(std::complex<float>(1, 1))));
    EXPECT_TRUE(
        equalWithConversion(BVariant(std::complex<float>(1, 1)), BVariant(Complex<std::int8_t>{1, 1})));
}

TEST(EqualWithConversion, DoesNotWrapSigns)
{
    // the common type is neither of the two
    EXPECT_FALSE(equalWithConversion(BVariant(std::int16_t{-1}), BVariant(std::uint16_t{65535})));
    EXPECT_TRUE(equalWithConversion(BVariant(std::int16_t{1}), BVariant(std::uint16_t{1})));
    EXPECT_FALSE(equalWithConversion(BVariant(std::int64_t{-1}), BVariant(UINT64_MAX)));
}

TEST(EqualWithConversion, ComparesSixtyFourBitIntegersOfBothSignsAsDoubles)
{
    EXPECT_TRUE(equalWithConversion(BVariant(INT64_MAX), BVariant(std::uint64_t{1} << 63)));
    EXPECT_FALSE(exactlyEqual(BVariant(INT64_MAX), BVariant(std::uint64_t{1} << 63)));
}

TEST(EqualWithConversion, NeedsTheSameDimensions)
{
    EXPECT_FALSE(equalWithConversion(MakeCounting({6}), MakeCounting({2, 3})));
    EXPECT_FALSE(equalWithConversion(MakeCounting({6}), MakeCounting<int>({6, 1})));
    EXPECT_FALSE(equalWithConversion(MakeCounting({1}), MakeCounting({1, 1})));
}

TEST(EqualWithConversion, ComparesByPositionWhateverTheOrdering)
{
    const BVariant rows = MakeCounting({2, 3, 4});
    const BVariant columns = rows.reordered(columnMajor);
    const BVariant otherColumns = MakeCounting({2, 3, 4}, columnMajor);
    EXPECT_TRUE(equalWithConversion(rows, columns));
    EXPECT_TRUE(equalWithConversion(columns, rows));
    EXPECT_FALSE(equalWithConversion(rows, otherColumns));
    EXPECT_TRUE(equalWithConversion(MakeCounting({3}), MakeCounting({3}, columnMajor)));
    EXPECT_TRUE(equalWithConversion(MakeCounting({1, 3}), MakeCounting({1, 3}, columnMajor)));
}

TEST(EqualWithConversion, ComparesByPositionAlsoAcrossTypes)
{
    const BVariant rows = MakeCounting({2, 3});
    for (std::uint16_t code :
         {elementCode<std::int32_t>, elementCode<std::complex<double>>, elementCode<float>}) {
        const BVariant columns = convertedTo(rows.reordered(columnMajor), code);
        EXPECT_TRUE(equalWithConversion(rows, columns)) << code;
        EXPECT_TRUE(equalWithConversion(columns, rows)) << code;
        const BVariant other = convertedTo(MakeCounting({2, 3}, columnMajor), code);
        EXPECT_FALSE(equalWithConversion(rows, other)) << code;
        EXPECT_FALSE(equalWithConversion(other, rows)) << code;
    }
    // both sides are converted: short and unsigned short meet in int
    const BVariant shorts = convertedTo(rows, elementCode<std::int16_t>);
    const BVariant unsignedColumns = convertedTo(rows.reordered(columnMajor), elementCode<std::uint16_t>);
    EXPECT_TRUE(equalWithConversion(shorts, unsignedColumns));
    EXPECT_TRUE(equalWithConversion(unsignedColumns, shorts));
    EXPECT_FALSE(equalWithConversion(
        shorts, convertedTo(MakeCounting({2, 3}, columnMajor), elementCode<std::uint16_t>)));
}

TEST(EqualWithConversion, FailsWithoutACommonType)
{
    EXPECT_FALSE(equalWithConversion(BVariant("1"), BVariant(1)));
    EXPECT_FALSE(equalWithConversion(BVariant(1), BVariant("1")));
    EXPECT_FALSE(equalWithConversion(BVariant(Duration{{1, 0}}), BVariant(TimePoint{{1, 0}})));
    EXPECT_FALSE(equalWithConversion(BVariant(1.0), BVariant::runTime(1.0)));
    EXPECT_FALSE(equalWithConversion(BVariant::runTime(1.0), BVariant(1.0)));
}

TEST(EqualWithConversion, ComparesRunTimeValuesByTheirOwnEquality)
{
    EXPECT_TRUE(equalWithConversion(BVariant::runTime(Point{1, 2}), BVariant::runTime(Point{1, 2})));
    EXPECT_FALSE(equalWithConversion(BVariant::runTime(Point{1, 2}), BVariant::runTime(Point{2, 2})));
    EXPECT_FALSE(equalWithConversion(BVariant::runTime(Point{1, 2}), BVariant::runTime(AlwaysEqual{1})));
    EXPECT_FALSE(equalWithConversion(BVariant::runTime(AlwaysEqual{1}), BVariant::runTime(Point{1, 2})));
}

TEST(EqualWithConversion, TakesAnyExceptionForUnequal)
{
    EXPECT_FALSE(equalWithConversion(BVariant::runTime(Untouchable{1}), BVariant::runTime(Untouchable{1})));
    HostPayload::Log log;
    log.fails = true;
    const BVariant damaged = HostPayload::make(&log, {1, 2}, {2});
    EXPECT_FALSE(equalWithConversion(damaged, MakeVector({1.0, 2.0})));
    EXPECT_FALSE(equalWithConversion(MakeVector({1, 2}), damaged));
    log.fails = false;
    EXPECT_TRUE(equalWithConversion(MakeVector({1, 2}), damaged));
}
} // namespace Brindle::Quay
