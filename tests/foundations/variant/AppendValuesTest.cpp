#include "foundations/variant/VariantOperations.h"

#include "tests/support/CaseName.h"
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
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;
constexpr char vectorsOnly[] = "appendValues currently supports only vector arguments";
} // namespace

template <class T>
class AppendOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(AppendOf, ElementTypes, ElementTypeName);

TYPED_TEST(AppendOf, PutsTheSecondVectorAfterTheFirst)
{
    const auto elements = sampleElements<TypeParam>(7);
    const BVariant first{std::vector<TypeParam>(elements.begin(), elements.begin() + 3)};
    const BVariant second{std::vector<TypeParam>(elements.begin() + 3, elements.end())};
    const BVariant joined = appendValues(first, second);
    EXPECT_EQ(joined.getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_EQ(ToDimensions(joined), (Sizes{7}));
    EXPECT_EQ(joined.getDataOrdering(), rowMajor);
    const auto read = ToElements<TypeParam>(joined);
    for (std::size_t i = 0; i < 7; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(read[i], elements[i])) << i;
}

TYPED_TEST(AppendOf, PutsAScalarAfterAScalar)
{
    const BVariant joined =
        appendValues(BVariant(Samples<TypeParam>::first()), BVariant(Samples<TypeParam>::other()));
    EXPECT_EQ(ToDimensions(joined), (Sizes{2}));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(joined)[0], Samples<TypeParam>::first()));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(joined)[1], Samples<TypeParam>::other()));
}

TYPED_TEST(AppendOf, LeavesItsArgumentsAlone)
{
    BVariant first{sampleElements<TypeParam>(2)};
    const BVariant second(Samples<TypeParam>::other());
    BVariant joined = appendValues(first, second);
    setElement<TypeParam>(joined, {0}, Samples<TypeParam>::second());
    EXPECT_EQ(first.elementCount(), 2u);
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(first)[0], Samples<TypeParam>::first()));
    EXPECT_TRUE(sameElement(getScalar<TypeParam>(second), Samples<TypeParam>::other()));
}

TEST(AppendValues, OfSomethingAndNothingIsThatThingUnconverted)
{
    const BVariant vector = MakeVector({1, 2});
    for (const BVariant& nothing : {BVariant(), BVariant(std::vector<double>{}), MakeCounting({0, 3}),
                                    BVariant(std::vector<std::string>{})}) {
        const BVariant after = appendValues(vector, nothing);
        EXPECT_EQ(after.constData(), vector.constData());
        EXPECT_EQ(after.getWellKnownType().code(), elementCode<std::int32_t>);
        const BVariant before = appendValues(nothing, vector);
        EXPECT_EQ(before.constData(), vector.constData());
    }
}

TEST(AppendValues, OfAScalarAndNullStaysAScalar)
{
    EXPECT_TRUE(appendValues(BVariant(2.5), BVariant()).isScalar());
    EXPECT_TRUE(appendValues(BVariant(), BVariant(2.5)).isScalar());
}

TEST(AppendValues, OfAMatrixAndNothingIsTheMatrix)
{
    const BVariant matrix = MakeCounting({2, 3}, columnMajor);
    EXPECT_TRUE(exactlyEqual(appendValues(matrix, BVariant()), matrix));
    EXPECT_TRUE(exactlyEqual(appendValues(BVariant(), matrix), matrix));
}

TEST(AppendValues, OfTwoNothingsIsTheSecond)
{
    EXPECT_TRUE(appendValues(BVariant(), BVariant()).isNull());
    EXPECT_TRUE(appendValues(MakeCounting({0, 3}), BVariant()).isNull());
    EXPECT_EQ(ToDimensions(appendValues(BVariant(), MakeCounting({0, 3}))), (Sizes{0, 3}));
    const BVariant second = appendValues(MakeCounting<double>({0}), MakeCounting<std::int16_t>({2, 0}));
    EXPECT_EQ(second.getWellKnownType().code(), elementCode<std::int16_t>);
}

TEST(AppendValues, OfARunTimeTypeAndNothingIsTheRunTimeType)
{
    EXPECT_EQ(appendValues(BVariant::runTime(1.0), BVariant()).getWellKnownType().code(), 32u);
}

TEST(AppendValues, GivesTheCommonType)
{
    const BVariant joined = appendValues(BVariant(0.5), MakeVector({1, 2}));
    EXPECT_EQ(joined.getWellKnownType().code(), elementCode<double>);
    EXPECT_THAT(ToElements<double>(joined), ElementsAre(0.5, 1.0, 2.0));
    EXPECT_EQ(ToDimensions(joined), (Sizes{3}));

    const BVariant wider = appendValues(MakeVector<std::int8_t>({-1}), MakeVector<std::uint8_t>({255}));
    EXPECT_EQ(wider.getWellKnownType().code(), elementCode<std::int16_t>);
    EXPECT_THAT(ToElements<std::int16_t>(wider), ElementsAre(-1, 255));

    const BVariant complex = appendValues(MakeVector({1.5}), BVariant(std::complex<float>(1, 2)));
    EXPECT_EQ(complex.getWellKnownType().code(), elementCode<std::complex<double>>);
}

struct ShapeOfJoin
{
    const char* name;
    std::vector<std::uint64_t> first, second, joined;
};

class JoinedShape : public ::testing::TestWithParam<ShapeOfJoin>
{
};

TEST_P(JoinedShape, GrowsAlongTheDimensionThatIsNotOne)
{
    const ShapeOfJoin& c = GetParam();
    const BVariant first = MakeCounting(c.first);
    const BVariant second = MakeCounting(c.second);
    const BVariant joined = appendValues(first, second);
    EXPECT_EQ(ToDimensions(joined), c.joined);
    std::vector<double> expected = ToDoubles(first);
    for (double element : ToDoubles(second))
        expected.push_back(element);
    EXPECT_EQ(ToDoubles(joined), expected);
}

INSTANTIATE_TEST_SUITE_P(Shapes, JoinedShape,
                         ::testing::Values(ShapeOfJoin{"Vectors", {2}, {3}, {5}},
                                           ShapeOfJoin{"RowAndVector", {1, 2}, {3}, {1, 5}},
                                           ShapeOfJoin{"VectorAndRow", {3}, {1, 2}, {1, 5}},
                                           ShapeOfJoin{"ColumnAndVector", {2, 1}, {3}, {5, 1}},
                                           ShapeOfJoin{"VectorAndColumn", {3}, {2, 1}, {5, 1}},
                                           ShapeOfJoin{"RowAndColumn", {1, 2}, {3, 1}, {1, 5}},
                                           ShapeOfJoin{"ColumnAndRow", {3, 1}, {1, 2}, {5, 1}},
                                           ShapeOfJoin{"OneByOneAndVector", {1, 1}, {3}, {4, 1}},
                                           ShapeOfJoin{"OneByOneTwice", {1, 1}, {1, 1}, {2, 1}},
                                           ShapeOfJoin{"SingleAndOneByOneByOne", {1}, {1, 1, 1}, {2, 1, 1}},
                                           ShapeOfJoin{"MiddleDimension", {1, 4, 1}, {2}, {1, 6, 1}},
                                           ShapeOfJoin{"LastDimension", {1, 1, 4}, {2}, {1, 1, 6}},
                                           ShapeOfJoin{"FirstDimension", {4, 1, 1}, {2}, {6, 1, 1}},
                                           ShapeOfJoin{"SingleMatrixAndRow", {1, 1}, {1, 3}, {4, 1}}),
                         CaseName());

TEST(AppendValues, OfVectorsInColumnMajorOrderIsRowMajor)
{
    const BVariant joined =
        appendValues(MakeCounting({1, 3}, columnMajor), MakeCounting({2, 1}, columnMajor));
    EXPECT_EQ(joined.getDataOrdering(), rowMajor);
    EXPECT_EQ(ToDimensions(joined), (Sizes{1, 5}));
    EXPECT_EQ(ToDoubles(joined), (Doubles{0, 1, 2, 0, 1}));
}

TEST(AppendValues, RefusesAMatrixOnEitherSide)
{
    EXPECT_EQ(failureOf([] {
                  appendValues(MakeCounting({2, 3}), BVariant(1.0));
              }),
              runtimeError(vectorsOnly));
    EXPECT_EQ(failureOf([] {
                  appendValues(BVariant(1.0), MakeCounting({2, 3}));
              }),
              runtimeError(vectorsOnly));
    EXPECT_EQ(failureOf([] {
                  appendValues(MakeCounting({2, 2}), MakeCounting({2, 2}));
              }),
              runtimeError(vectorsOnly));
    // before the types are looked at
    EXPECT_EQ(failureOf([] {
                  appendValues(MakeCounting({2, 3}), BVariant("text"));
              }),
              runtimeError(vectorsOnly));
}

TEST(AppendValues, FailsByTheFirstConversionWithoutACommonType)
{
    EXPECT_EQ(failureOf([] {
                  appendValues(MakeVector({1.0, 2.0}), BVariant("text"));
              }),
              runtimeError("Cannot convert Brindle::Quay::BVariant of type 'double' (size: 2) to ''"));
    EXPECT_EQ(failureOf([] {
                  appendValues(BVariant("text"), MakeVector({1.0, 2.0}));
              }),
              runtimeError("Cannot convert Brindle::Quay::BVariant of type 'std::string' (size: 1) to ''"));
}

TEST(AppendValues, RefusesTwoRunTimeTypes)
{
    EXPECT_EQ(failureOf([] { appendValues(BVariant::runTime(1.0), BVariant::runTime(2.0)); }),
              runtimeError("Creating with run-time wellknowntype is not allowed."));
}

TEST(AppendValues, RefusesMoreElementsThanCanBeCounted)
{
    // elements that aren't in memory can be more than any memory holds
    HostPayload::Log log;
    log.fails = true;
    const BVariant endless = HostPayload::make(&log, {}, {UINT64_MAX});
    EXPECT_EQ(failureOf([&] { appendValues(endless, BVariant(1.0)); }).type, "std::length_error");
    EXPECT_EQ(failureOf([&] { appendValues(BVariant(1.0), endless); }).type, "std::length_error");
    EXPECT_EQ(log.reads, 0);
}

TEST(AppendValues, OfItselfDoublesIt)
{
    const BVariant vector = MakeVector({1.0, 2.0});
    EXPECT_EQ(ToDoubles(appendValues(vector, vector)), (Doubles{1, 2, 1, 2}));
}
} // namespace Brindle::Quay
