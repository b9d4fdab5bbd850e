#include "variables/GetAt.h"

#include "tests/variables/VariableTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace Orrery {
namespace {

constexpr std::uint64_t largestIndex = std::numeric_limits<std::uint64_t>::max();

struct GetAtCase
{
    const char* name;
    std::vector<std::uint64_t> dimensions;
    DataOrdering ordering;
    std::uint64_t index;
    std::vector<std::uint64_t> resultDimensions;
    std::vector<double> result;
};

class GetAtSuccess : public ::testing::TestWithParam<GetAtCase>
{
};

TEST_P(GetAtSuccess, ReadsTheElementOrTheSubArray)
{
    const GetAtCase& c = GetParam();
    BVariant out;
    ASSERT_EQ(GetAt(&out, MakeCounting(c.dimensions, c.ordering), c.index), ER_SUCCESS);
    EXPECT_EQ(ToDimensions(out), c.resultDimensions);
    EXPECT_EQ(ToDoubles(out), c.result);
}

constexpr auto rows = DataOrdering::RowMajor;
constexpr auto columns = DataOrdering::ColumnMajor;

// The source's elements are 0, 1, 2, ... in memory order.
INSTANTIATE_TEST_SUITE_P(
    Shapes, GetAtSuccess,
    ::testing::Values(GetAtCase{"FirstOfVector", {5}, rows, 0, {1}, {0}},
                      GetAtCase{"LastOfVector", {5}, rows, 4, {1}, {4}},
                      GetAtCase{"OneElementVector", {1}, rows, 0, {1}, {0}},
                      GetAtCase{"Row", {1, 5}, rows, 3, {1}, {3}},
                      GetAtCase{"RowInColumnOrder", {1, 5}, columns, 3, {1}, {3}},
                      GetAtCase{"Column", {5, 1}, rows, 3, {1}, {3}},
                      GetAtCase{"ColumnInColumnOrder", {5, 1}, columns, 3, {1}, {3}},
                      GetAtCase{"OneByOne", {1, 1}, rows, 0, {1}, {0}},
                      GetAtCase{"ColumnOfThreeDimensions", {3, 1, 1}, rows, 2, {1}, {2}},
                      GetAtCase{"RowOfMatrix", {2, 3}, rows, 1, {3}, {3, 4, 5}},
                      GetAtCase{"RowOfMatrixInColumnOrder", {2, 3}, columns, 1, {3}, {1, 3, 5}},
                      GetAtCase{"LayerOfCube", {2, 3, 2}, rows, 1, {3, 2}, {6, 7, 8, 9, 10, 11}},
                      GetAtCase{"LayerOfCubeInColumnOrder", {2, 2, 2}, columns, 0, {2, 2}, {0, 2, 4, 6}},
                      GetAtCase{"FirstOfFlatCube", {1, 1, 5}, rows, 0, {1, 5}, {0, 1, 2, 3, 4}}),
    [](const auto& row) { return std::string(row.param.name); });

class GetAtFailure : public ::testing::TestWithParam<GetAtCase>
{
};

TEST_P(GetAtFailure, IsAFailedCodeAndLeavesTheOutput)
{
    const GetAtCase& c = GetParam();
    BVariant out = MakeVector<double>({7.5});
    EXPECT_EQ(GetAt(&out, MakeCounting(c.dimensions, c.ordering), c.index), ER_FAILED);
    EXPECT_EQ(ToDoubles(out), (std::vector<double>{7.5}));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, GetAtFailure,
    ::testing::Values(GetAtCase{"PastTheVector", {5}, rows, 5, {}, {}},
                      GetAtCase{"LargestIndex", {5}, rows, largestIndex, {}, {}},
                      GetAtCase{"PastTheRow", {1, 5}, rows, 5, {}, {}},
                      GetAtCase{"PastTheColumn", {5, 1}, rows, 5, {}, {}},
                      GetAtCase{"PastOneByOne", {1, 1}, rows, 1, {}, {}},
                      GetAtCase{"PastTheColumnOfThreeDimensions", {3, 1, 1}, rows, 3, {}, {}},
                      GetAtCase{"PastTheMatrix", {2, 3}, rows, 2, {}, {}},
                      GetAtCase{"LargestIndexOfMatrix", {2, 3}, rows, largestIndex, {}, {}},
                      // The row of three dimensions isn't read along its last one, unlike that of two.
                      GetAtCase{"OneByOneByFiveAtTwo", {1, 1, 5}, rows, 2, {}, {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(GetAt, EmptyArrayIsCopiedWithItsDimensionsForAnyIndex)
{
    const BVariant empty(std::vector<double>(), std::vector<std::uint64_t>{0, 3});
    for (const std::uint64_t index : {std::uint64_t(0), std::uint64_t(4), largestIndex}) {
        BVariant out = MakeVector<double>({7.5});
        EXPECT_EQ(GetAt(&out, empty, index), ER_SUCCESS);
        EXPECT_EQ(ToDimensions(out), (std::vector<std::uint64_t>{0, 3}));
    }
}

TEST(GetAt, NullIsCopiedForAnyIndex)
{
    BVariant out = MakeVector<double>({7.5});
    EXPECT_EQ(GetAt(&out, BVariant(), 12), ER_SUCCESS);
    EXPECT_TRUE(out.isNull());
}

TEST(GetAt, ScalarHasOneOffset)
{
    BVariant out;
    EXPECT_EQ(GetAt(&out, BVariant(2.5), 0), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(out), (std::vector<double>{2.5}));
    EXPECT_EQ(GetAt(&out, BVariant(3.5), 1), ER_FAILED);
    EXPECT_EQ(ToDoubles(out), (std::vector<double>{2.5}));
}

TEST(GetAt, KeepsTheElementType)
{
    const BVariant texts(std::vector<std::string>{"a", std::string(100, 'b')});
    BVariant out;
    ASSERT_EQ(GetAt(&out, texts, 1), ER_SUCCESS);
    EXPECT_EQ(Brindle::Quay::getScalar<std::string>(out), std::string(100, 'b'));

    const BVariant flags(std::vector<bool>{false, true, false});
    ASSERT_EQ(GetAt(&out, flags, 1), ER_SUCCESS);
    EXPECT_EQ(out.getWellKnownType(), Brindle::Quay::WellKnownType::of<bool>());
    EXPECT_TRUE(Brindle::Quay::getScalar<bool>(out));
}

TEST(GetAt, ReadsIntoTheVariantThatItReadsFrom)
{
    BVariant matrix = MakeCounting({2, 2});
    ASSERT_EQ(GetAt(&matrix, matrix, 1), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(matrix), (std::vector<double>{2, 3}));
}

TEST(GetAt, RefusesANullOutput)
{
    EXPECT_EQ(GetAt(nullptr, MakeVector<double>({1.0}), 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(GetAt(nullptr, BVariant(), 0), ER_INVALID_ARGUMENT);
}

TEST(GetAt, KeepsTheOrderingOfTheSource)
{
    BVariant element;
    ASSERT_EQ(GetAt(&element, MakeCounting({4}, DataOrdering::ColumnMajor), 1), ER_SUCCESS);
    EXPECT_EQ(element.getDataOrdering(), DataOrdering::ColumnMajor);
    BVariant row;
    ASSERT_EQ(GetAt(&row, MakeCounting({2, 3, 2}, DataOrdering::ColumnMajor), 1), ER_SUCCESS);
    EXPECT_EQ(row.getDataOrdering(), DataOrdering::ColumnMajor);
}

TEST(GetAt, OfARunTimeValueFailsAndLeavesTheOutput)
{
    BVariant out(7.0);
    EXPECT_EQ(GetAt(&out, BVariant::runTime(3.0), 0), ER_FAILED);
    EXPECT_EQ(ToDoubles(out), (std::vector<double>{7.0}));
}

} // namespace
} // namespace Orrery
