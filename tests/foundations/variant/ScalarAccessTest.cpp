#include "foundations/variant/VariantOperations.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {
constexpr auto columnMajor = DataOrdering::ColumnMajor;

std::string message(const std::string& source, const std::string& size, const std::string& target)
{
    return "Cannot convert Brindle::Quay::BVariant of type '" + source + "' (size: " + size + ") to '" +
           target + "'";
}
} // namespace

template <class T>
class ScalarOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(ScalarOf, ElementTypes, ElementTypeName);

TYPED_TEST(ScalarOf, IsReadBack)
{
    for (const TypeParam& value : {Samples<TypeParam>::first(), Samples<TypeParam>::second(),
                                   Samples<TypeParam>::other(), Samples<TypeParam>::extreme()}) {
        const BVariant scalar{TypeParam(value)};
        EXPECT_TRUE(sameElement<TypeParam>(getScalar<TypeParam>(scalar), value));
        TypeParam out{};
        EXPECT_TRUE(tryGetScalar<TypeParam>(scalar, &out));
        EXPECT_TRUE(sameElement<TypeParam>(out, value));
    }
}

TYPED_TEST(ScalarOf, IsReadOutOfAnArrayOfOneElement)
{
    for (const auto& dimensions : std::vector<std::vector<std::uint64_t>>{{1}, {1, 1}, {1, 1, 1}}) {
        const BVariant one(std::vector<TypeParam>{Samples<TypeParam>::other()}, dimensions);
        EXPECT_TRUE(sameElement<TypeParam>(getScalar<TypeParam>(one), Samples<TypeParam>::other()));
    }
}

TYPED_TEST(ScalarOf, IsNotReadOutOfNull)
{
    TypeParam out = Samples<TypeParam>::first();
    EXPECT_FALSE(tryGetScalar<TypeParam>(BVariant(), &out));
    EXPECT_TRUE(sameElement<TypeParam>(out, Samples<TypeParam>::first()));
    EXPECT_EQ(failureOf([] { getScalar<TypeParam>(BVariant()); }), runtimeError("unknown type"));
}

TYPED_TEST(ScalarOf, IsNotReadOutOfSeveralElements)
{
    const BVariant two{sampleElements<TypeParam>(2)};
    TypeParam out = Samples<TypeParam>::first();
    EXPECT_FALSE(tryGetScalar<TypeParam>(two, &out));
    EXPECT_TRUE(sameElement<TypeParam>(out, Samples<TypeParam>::first()));
    const std::string name = elementRow(elementCode<TypeParam>).name;
    EXPECT_EQ(failureOf([&] { getScalar<TypeParam>(two); }), runtimeError(message(name, "2", name)));
}

TYPED_TEST(ScalarOf, IsNotReadOutOfAnEmptyArray)
{
    const BVariant empty(std::vector<TypeParam>{}, {1, 0});
    TypeParam out = Samples<TypeParam>::first();
    EXPECT_FALSE(tryGetScalar<TypeParam>(empty, &out));
    const std::string name = elementRow(elementCode<TypeParam>).name;
    EXPECT_EQ(failureOf([&] { getScalar<TypeParam>(empty); }), runtimeError(message(name, "0", name)));
}

TYPED_TEST(ScalarOf, FailsWithTheNamesOfBothTypes)
{
    // a time converts to nothing but itself, and only itself to it
    using Other = std::conditional_t<std::is_same_v<TypeParam, TimePoint>, Duration, TimePoint>;
    const std::string name = elementRow(elementCode<TypeParam>).name;
    const std::string otherName = elementRow(elementCode<Other>).name;
    EXPECT_EQ(failureOf([] { getScalar<Other>(BVariant(Samples<TypeParam>::first())); }),
              runtimeError(message(name, "1", otherName)));
    EXPECT_EQ(failureOf([] { getScalar<TypeParam>(BVariant(Samples<Other>::first())); }),
              runtimeError(message(otherName, "1", name)));
    EXPECT_EQ(elementTypeName(WellKnownType::of<TypeParam>()), name);
    EXPECT_EQ(conversionMessage(BVariant(Samples<TypeParam>::first()), WellKnownType::of<Other>()),
              message(name, "1", otherName));
}

TYPED_TEST(ScalarOf, IsGuardedByItsType)
{
    using Other = std::conditional_t<std::is_same_v<TypeParam, TimePoint>, Duration, TimePoint>;
    EXPECT_NO_THROW(checkElementType<TypeParam>(BVariant(Samples<TypeParam>::first())));
    EXPECT_NO_THROW(checkElementType<TypeParam>(BVariant(sampleElements<TypeParam>(2))));
    EXPECT_NO_THROW(checkElementType<TypeParam>(BVariant::runTime(Samples<TypeParam>::first())));
    EXPECT_EQ(failureOf([] { checkElementType<TypeParam>(BVariant(Samples<Other>::first())); }),
              invalidArgument("Wrong data type."));
    EXPECT_EQ(failureOf([] { checkElementType<TypeParam>(BVariant::runTime(Samples<Other>::first())); }),
              invalidArgument("Wrong data type."));
    EXPECT_EQ(failureOf([] { checkElementType<TypeParam>(BVariant()); }),
              invalidArgument("Cannot access element of null variant."));
}

TEST(GetScalar, ConvertsToTheTypeAskedFor)
{
    EXPECT_EQ(getScalar<int>(BVariant(2.9)), 2);
    EXPECT_EQ(getScalar<double>(BVariant("2.5")), 2.5);
    EXPECT_EQ(getScalar<std::string>(BVariant(2.5)), "2.5");
    EXPECT_EQ(getScalar<std::complex<double>>(BVariant(2)), std::complex<double>(2, 0));
    EXPECT_EQ(getScalar<bool>(BVariant(-0.5)), true);
    EXPECT_EQ(getScalar<int>(BVariant(std::vector<double>{2.9}, {1, 1})), 2);
}

TEST(GetScalar, TellsTheSizeOfWhatItRefuses)
{
    EXPECT_EQ(
        failureOf([] {
            getScalar<std::string>(MakeVector({1.0, 2.0, 3.0}));
        }),
        runtimeError("Cannot convert Brindle::Quay::BVariant of type 'double' (size: 3) to 'std::string'"));
    EXPECT_EQ(failureOf([] {
                  getScalar<int>(MakeCounting({2, 3}));
              }),
              runtimeError(message("double", "6", "int")));
}

TEST(GetScalar, OfARunTimeTypeIsAnUnknownType)
{
    // it isn't converted, not even to what it holds
    double out = 7;
    EXPECT_FALSE(tryGetScalar<double>(BVariant::runTime(2.5), &out));
    EXPECT_EQ(out, 7);
    EXPECT_EQ(failureOf([] { getScalar<double>(BVariant::runTime(2.5)); }), runtimeError("unknown type"));
}

TEST(TryGetScalar, LeavesItsOutputWhenTheValueDoesNotFit)
{
    std::uint8_t out = 7;
    EXPECT_FALSE(tryGetScalar<std::uint8_t>(BVariant(256), &out));
    EXPECT_FALSE(tryGetScalar<std::uint8_t>(BVariant("x"), &out));
    EXPECT_EQ(out, 7);
    EXPECT_TRUE(tryGetScalar<std::uint8_t>(BVariant(255), &out));
    EXPECT_EQ(out, 255);
}

TEST(TryGetScalar, ReadsOtherIntegerTypesByWidthAndSign)
{
    long long wide = 0;
    EXPECT_TRUE(tryGetScalar<long long>(BVariant(INT64_MIN), &wide));
    EXPECT_EQ(wide, INT64_MIN);
    EXPECT_FALSE(tryGetScalar<long long>(BVariant(UINT64_MAX), &wide));
    EXPECT_EQ(getScalar<unsigned long long>(BVariant(UINT64_MAX)), UINT64_MAX);
}

TEST(TryGetIntVector, ReadsByRowMajorPosition)
{
    std::vector<int> out;
    EXPECT_TRUE(tryGetIntVector(MakeCounting({2, 3}), &out));
    EXPECT_THAT(out, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_TRUE(tryGetIntVector(MakeCounting({2, 3}, columnMajor), &out));
    EXPECT_THAT(out, ElementsAre(0, 2, 4, 1, 3, 5));
    EXPECT_TRUE(tryGetIntVector(MakeCounting<int>({2, 2, 2}, columnMajor), &out));
    EXPECT_THAT(out, ElementsAre(0, 4, 2, 6, 1, 5, 3, 7));
    EXPECT_TRUE(tryGetIntVector(MakeCounting({1, 3}, columnMajor), &out));
    EXPECT_THAT(out, ElementsAre(0, 1, 2));
}

TEST(TryGetIntVector, ConvertsItsElements)
{
    std::vector<int> out;
    EXPECT_TRUE(tryGetIntVector(MakeVector({1.9, -1.9}), &out));
    EXPECT_THAT(out, ElementsAre(1, -1));
    EXPECT_TRUE(tryGetIntVector(BVariant(std::vector<std::string>{"7", "8"}), &out));
    EXPECT_THAT(out, ElementsAre(7, 8));
    EXPECT_TRUE(tryGetIntVector(BVariant(7u), &out));
    EXPECT_THAT(out, ElementsAre(7));
}

TEST(TryGetIntVector, GivesNothingOfAnEmptyArray)
{
    std::vector<int> out{9};
    EXPECT_TRUE(tryGetIntVector(MakeCounting({0, 3}, columnMajor), &out));
    EXPECT_THAT(out, IsEmpty());
}

TEST(TryGetIntVector, LeavesItsOutputOnFailure)
{
    std::vector<int> out{9};
    EXPECT_FALSE(tryGetIntVector(BVariant(), &out));
    EXPECT_FALSE(tryGetIntVector(MakeVector({1.0, 3e9}), &out));
    EXPECT_FALSE(tryGetIntVector(BVariant("x"), &out));
    EXPECT_FALSE(tryGetIntVector(BVariant(Duration{}), &out));
    EXPECT_FALSE(tryGetIntVector(BVariant::runTime(1), &out));
    EXPECT_THAT(out, ElementsAre(9));
}

TEST(GetIntVector, ReadsOrFailsWithTheNameOfTheVector)
{
    EXPECT_EQ(getIntVector(MakeCounting({2, 2}, columnMajor)), (std::vector<int>{0, 2, 1, 3}));
    EXPECT_EQ(failureOf([] {
                  getIntVector(MakeVector({1.0, 3e9}));
              }),
              runtimeError(message("double", "2", "std::vector<int>")));
    EXPECT_EQ(failureOf([] { getIntVector(BVariant("x")); }),
              runtimeError(message("std::string", "1", "std::vector<int>")));
    EXPECT_EQ(failureOf([] { getIntVector(BVariant()); }), runtimeError("unknown type"));
}
} // namespace Brindle::Quay
