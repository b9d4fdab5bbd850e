#include "foundations/variant/VariantOperations.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;

namespace {
constexpr char outOfBounds[] = "Indices out of bounds.";
constexpr char notScalar[] = "The given Brindle::Quay::BVariant must hold a scalar value.";
} // namespace

template <class T>
class SetElementOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(SetElementOf, ElementTypes, ElementTypeName);

TYPED_TEST(SetElementOf, WritesWhatElementAtReads)
{
    for (DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
        BVariant array = createArray(WellKnownType::of<TypeParam>(), {2, 3}, ordering);
        const auto elements = sampleElements<TypeParam>(6);
        for (std::uint64_t i = 0; i < 2; ++i)
            for (std::uint64_t j = 0; j < 3; ++j)
                setElement<TypeParam>(array, {i, j}, BVariant(TypeParam(elements[i * 3 + j])));
        for (std::uint64_t i = 0; i < 2; ++i)
            for (std::uint64_t j = 0; j < 3; ++j)
                EXPECT_TRUE(sameElement<TypeParam>(getScalar<TypeParam>(elementAt(array, {i, j})),
                                                   elements[i * 3 + j]));
        const auto stored = ToElements<TypeParam>(array);
        const std::size_t second = ordering == DataOrdering::RowMajor ? 1 : 2; // where (0, 1) lies
        EXPECT_TRUE(sameElement<TypeParam>(stored[second], elements[1]));
    }
}

TYPED_TEST(SetElementOf, WritesInPlaceWhenNobodyShares)
{
    BVariant array{sampleElements<TypeParam>(3)};
    const void* data = array.constData();
    setElement<TypeParam>(array, std::vector<std::uint64_t>{1}, Samples<TypeParam>::first());
    EXPECT_EQ(array.constData(), data);
}

TYPED_TEST(SetElementOf, FailsOnAnArrayOfAnotherType)
{
    BVariant other = std::is_same_v<TypeParam, double> ? MakeCounting<int>({3}) : MakeCounting<double>({3});
    const BVariant before(other);
    EXPECT_EQ(failureOf([&] { setElement<TypeParam>(other, {0}, Samples<TypeParam>::first()); }),
              invalidArgument("Wrong data type."));
    EXPECT_TRUE(exactlyEqual(other, before));
    EXPECT_EQ(other.constData(), before.constData()); // not even detached
}

TYPED_TEST(SetElementOf, FailsOnNull)
{
    BVariant null;
    EXPECT_EQ(failureOf([&] { setElement<TypeParam>(null, {0}, Samples<TypeParam>::first()); }),
              invalidArgument("Cannot access element of null variant."));
    EXPECT_TRUE(null.isNull());
}

TYPED_TEST(SetElementOf, FailsPastTheEnd)
{
    BVariant array{sampleElements<TypeParam>(3)};
    const BVariant before(array);
    EXPECT_EQ(failureOf([&] { setElement<TypeParam>(array, {3}, Samples<TypeParam>::first()); }),
              outOfRange(outOfBounds));
    EXPECT_EQ(array.constData(), before.constData());
}

TEST(SetElement, ConvertsItsValue)
{
    BVariant array = MakeVector({1, 2, 3});
    setElement<int>(array, {1}, BVariant(-7.9));
    EXPECT_THAT(ToElements<int>(array), ElementsAre(1, -7, 3));
    setElement<int>(array, {2}, BVariant("42"));
    EXPECT_THAT(ToElements<int>(array), ElementsAre(1, -7, 42));
}

TEST(SetElement, TakesAnyArrayOfOneElementAsItsValue)
{
    BVariant array = MakeVector({1, 2, 3});
    setElement<int>(array, {0}, BVariant(std::vector<int>{9}, {1, 1, 1}));
    EXPECT_THAT(ToElements<int>(array), ElementsAre(9, 2, 3));
}

TEST(SetElement, RefusesAValueThatIsNoScalar)
{
    BVariant array = MakeVector({1, 2, 3});
    for (const BVariant& value :
         {BVariant(), MakeVector({1, 2}), BVariant(std::vector<int>{}), MakeCounting<int>({0, 1})}) {
        EXPECT_EQ(failureOf([&] { setElement<int>(array, {0}, value); }), invalidArgument(notScalar));
    }
    EXPECT_THAT(ToElements<int>(array), ElementsAre(1, 2, 3));
}

TEST(SetElement, FailsWithTheConversionMessage)
{
    BVariant array = MakeVector<std::uint8_t>({1, 2, 3});
    EXPECT_EQ(failureOf([&] { setElement<std::uint8_t>(array, {0}, BVariant(-1)); }),
              runtimeError("Cannot convert Brindle::Quay::BVariant of type 'int' (size: 1) to 'uint8_t'"));
    EXPECT_EQ(failureOf([&] { setElement<std::uint8_t>(array, {0}, BVariant::runTime(1.0)); }),
              runtimeError("unknown type"));
    EXPECT_THAT(ToElements<std::uint8_t>(array), ElementsAre(1, 2, 3));
}

TEST(SetElement, LooksAtTheValueFirstThenAtTheIndicesThenAtTheType)
{
    BVariant null;
    EXPECT_EQ(failureOf([&] { setElement<int>(null, {9}, MakeVector({1, 2})); }), invalidArgument(notScalar));
    EXPECT_THROW(setElement<int>(null, {9}, BVariant("x")), std::runtime_error);
    EXPECT_EQ(failureOf([&] { setElement<int>(null, {9}, BVariant(1)); }),
              invalidArgument("Cannot access element of null variant."));
    BVariant doubles = MakeVector({1.0, 2.0});
    EXPECT_EQ(
        failureOf([&] { setElement<int>(doubles, {9}, BVariant("x")); }),
        runtimeError("Cannot convert Brindle::Quay::BVariant of type 'std::string' (size: 1) to 'int'"));
    EXPECT_EQ(failureOf([&] { setElement<int>(doubles, {9}, BVariant(1)); }), outOfRange(outOfBounds));
    EXPECT_EQ(failureOf([&] { setElement<int>(doubles, {1}, BVariant(1)); }),
              invalidArgument("Wrong data type."));
}

TEST(SetElement, ChecksEachIndexAgainstItsDimension)
{
    BVariant matrix = MakeCounting({2, 3});
    const BVariant before(matrix);
    for (const auto& indices :
         std::vector<std::vector<std::uint64_t>>{{0, 3}, {2, 0}, {0, UINT64_MAX}, {UINT64_MAX, 1}})
        EXPECT_EQ(failureOf([&] { setElement<double>(matrix, indices, BVariant(9.0)); }),
                  outOfRange(outOfBounds));
    EXPECT_TRUE(exactlyEqual(matrix, before));
}

TEST(SetElement, FailsWhenAnIndexWithoutADimensionLeadsPastTheEnd)
{
    BVariant matrix = MakeCounting({2, 3});
    for (std::uint64_t last : {std::uint64_t{1}, UINT64_MAX}) // the second one would wrap around
        EXPECT_EQ(failureOf([&] {
                      setElement<double>(matrix, {1, 2, last}, BVariant(9.0));
                  }),
                  outOfRange(outOfBounds));
}

TEST(SetElement, FailsOnAnArrayWithoutElements)
{
    BVariant empty{std::vector<double>{}};
    EXPECT_EQ(failureOf([&] { setElement<double>(empty, {0}, BVariant(9.0)); }), outOfRange(outOfBounds));
    EXPECT_EQ(failureOf([&] { setElement<double>(empty, std::vector<std::uint64_t>{}, BVariant(9.0)); }),
              outOfRange(outOfBounds));
    EXPECT_TRUE(empty.isEmpty());
}

TEST(SetElement, WritesAScalar)
{
    BVariant scalar("abc");
    setElement<std::string>(scalar, {0}, BVariant(Samples<std::string>::other()));
    EXPECT_EQ(getScalar<std::string>(scalar), Samples<std::string>::other());
    EXPECT_TRUE(scalar.isScalar());
}

TEST(SetElement, WritesTheFirstElementWithoutIndices)
{
    BVariant array = MakeVector({1, 2});
    setElement<int>(array, std::vector<std::uint64_t>{}, BVariant(9));
    EXPECT_THAT(ToElements<int>(array), ElementsAre(9, 2));
}

TEST(SetElement, WritesARunTimeValueOfItsType)
{
    BVariant number = BVariant::runTime(1.0);
    setElement<double>(number, {0}, BVariant(2.5));
    EXPECT_EQ(*static_cast<const double*>(number.constData()), 2.5);
    EXPECT_EQ(number.getWellKnownType().code(), 32u);
}

TEST(SetElement, MayWriteAnElementOfItself)
{
    BVariant texts(std::vector<std::string>{"a", Samples<std::string>::other()});
    setElement<std::string>(texts, {0}, elementAt(texts, {1}));
    EXPECT_THAT(ToTexts(texts), ElementsAre(Samples<std::string>::other(), Samples<std::string>::other()));
    BVariant scalar(3.5);
    setElement<double>(scalar, {0}, scalar);
    EXPECT_EQ(getScalar<double>(scalar), 3.5);
}

TEST(SetElement, WritesACopyOfASharedPayloadOfAHost)
{
    HostPayload::Log log;
    BVariant array = HostPayload::make(&log, {1, 2}, {2});
    const BVariant copy(array);
    setElement<double>(array, {0}, BVariant(9.0));
    EXPECT_EQ(ToDoubles(array), (Doubles{9, 2}));
    EXPECT_EQ(ToDoubles(copy), (Doubles{1, 2}));
}

TEST(SetElement, LeavesTheArrayWhenItsElementsCannotBeFetched)
{
    HostPayload::Log log;
    BVariant array = HostPayload::make(&log, {1, 2}, {2});
    const BVariant copy(array);
    log.fails = true;
    EXPECT_EQ(failureOf([&] { setElement<double>(array, {0}, BVariant(9.0)); }), runtimeError("damaged"));
    log.fails = false;
    EXPECT_EQ(array.constData(), copy.constData());
    EXPECT_EQ(ToDoubles(array), (Doubles{1, 2}));
}
} // namespace Brindle::Quay
