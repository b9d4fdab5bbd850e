#include "foundations/variant/ArrayIndexing.h"

#include "tests/support/Failures.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {
using Indices = std::vector<std::uint64_t>;

std::uint64_t rowOffset(const Indices& indices, const Indices& dimensions, bool checked = true)
{
    return ArrayIndexing::calculateOffsetRowMajor(indices, ArrayDimensionsView(dimensions), checked);
}

std::uint64_t columnOffset(const Indices& indices, const Indices& dimensions, bool checked = true)
{
    return ArrayIndexing::calculateOffsetColumnMajor(indices, ArrayDimensionsView(dimensions), checked);
}

Indices rowIndices(std::uint64_t offset, const Indices& dimensions)
{
    Indices indices;
    ArrayIndexing::CalculateIndicesRowMajor(&indices, offset, ArrayDimensionsView(dimensions), false);
    return indices;
}
} // namespace

TEST(ArrayIndexing, CountsTheLastDimensionFastestInRowMajorOrder)
{
    EXPECT_EQ(rowOffset({0, 0, 0}, {2, 3, 4}), 0u);
    EXPECT_EQ(rowOffset({0, 0, 3}, {2, 3, 4}), 3u);
    EXPECT_EQ(rowOffset({0, 1, 0}, {2, 3, 4}), 4u);
    EXPECT_EQ(rowOffset({1, 0, 0}, {2, 3, 4}), 12u);
    EXPECT_EQ(rowOffset({1, 2, 3}, {2, 3, 4}), 23u);
}

TEST(ArrayIndexing, CountsTheFirstDimensionFastestInColumnMajorOrder)
{
    EXPECT_EQ(columnOffset({0, 0, 0}, {2, 3, 4}), 0u);
    EXPECT_EQ(columnOffset({1, 0, 0}, {2, 3, 4}), 1u);
    EXPECT_EQ(columnOffset({0, 1, 0}, {2, 3, 4}), 2u);
    EXPECT_EQ(columnOffset({0, 0, 1}, {2, 3, 4}), 6u);
    EXPECT_EQ(columnOffset({1, 2, 3}, {2, 3, 4}), 23u);
}

TEST(ArrayIndexing, ChecksEachIndexOfACallerAgainstItsOwnDimension)
{
    // offset 3 would lie inside the array, but the index doesn't lie inside its dimension
    for (const Indices& indices : {Indices{0, 3}, Indices{2, 0}, Indices{0, UINT64_MAX}}) {
        EXPECT_EQ(failureOf([&] { rowOffset(indices, {2, 3}); }), outOfRange("Indices out of bounds."));
        EXPECT_EQ(failureOf([&] { columnOffset(indices, {2, 3}); }), outOfRange("Indices out of bounds."));
    }
}

TEST(ArrayIndexing, TrustsTheIndicesOfItsOwnWalks)
{
    EXPECT_EQ(rowOffset({0, 3}, {2, 3}, false), 3u);
    EXPECT_EQ(columnOffset({2, 0}, {2, 3}, false), 2u);
}

TEST(ArrayIndexing, ChecksOnlyWhatHasBothAnIndexAndADimension)
{
    EXPECT_EQ(rowOffset({}, {2, 3}), 0u);
    EXPECT_EQ(columnOffset({}, {2, 3}), 0u);
    EXPECT_EQ(rowOffset({1}, {2, 3}), 3u);
    EXPECT_EQ(columnOffset({1}, {2, 3}), 1u);
    EXPECT_NO_THROW(rowOffset({5}, {}));
    EXPECT_NO_THROW(columnOffset({5}, {}));
    EXPECT_EQ(rowOffset({}, {}), 0u);
    EXPECT_EQ(columnOffset({}, {}), 0u);
}

TEST(ArrayIndexing, RefusesAnyIndexOfADimensionOfSizeZero)
{
    EXPECT_EQ(failureOf([] { rowOffset({0}, {0}); }), outOfRange("Indices out of bounds."));
    EXPECT_EQ(failureOf([] { columnOffset({0, 0}, {3, 0}); }), outOfRange("Indices out of bounds."));
}

TEST(ArrayIndexing, FindsTheIndicesOfARowMajorOffset)
{
    EXPECT_THAT(rowIndices(0, {2, 3}), ElementsAre(0u, 0u));
    EXPECT_THAT(rowIndices(2, {2, 3}), ElementsAre(0u, 2u));
    EXPECT_THAT(rowIndices(3, {2, 3}), ElementsAre(1u, 0u));
    EXPECT_THAT(rowIndices(5, {2, 3}), ElementsAre(1u, 2u));
    EXPECT_THAT(rowIndices(4, {5}), ElementsAre(4u));
    EXPECT_THAT(rowIndices(0, {}), IsEmpty());
}

TEST(ArrayIndexing, ReplacesWhatTheOutputHeld)
{
    Indices indices{9, 9, 9, 9};
    const Indices dimensions{2, 3};
    ArrayIndexing::CalculateIndicesRowMajor(&indices, 5, ArrayDimensionsView(dimensions), false);
    EXPECT_THAT(indices, ElementsAre(1u, 2u));
}

TEST(ArrayIndexing, OffsetsAndIndicesAreInverse)
{
    const RandomSeed seed{1203};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int round = 0; round < 200; ++round) {
        Indices dimensions(1 + randomBelow(random, 5));
        std::uint64_t count = 1;
        for (auto& size : dimensions)
            count *= size = 1 + randomBelow(random, 5);
        std::vector<bool> reached(count);
        for (std::uint64_t offset = 0; offset < count; ++offset) {
            const Indices indices = rowIndices(offset, dimensions);
            ASSERT_EQ(rowOffset(indices, dimensions), offset);
            const Indices backwards(indices.rbegin(), indices.rend());
            const Indices backwardDimensions(dimensions.rbegin(), dimensions.rend());
            ASSERT_EQ(columnOffset(backwards, backwardDimensions), offset);
            reached[columnOffset(indices, dimensions)] = true;
        }
        ASSERT_EQ(std::count(reached.begin(), reached.end(), true), static_cast<std::ptrdiff_t>(count));
    }
}

TEST(ArrayIndexing, HandlesOffsetsBeyondThirtyTwoBits)
{
    const Indices dimensions{1ull << 20, 1ull << 20, 1ull << 20};
    const Indices last{(1ull << 20) - 1, (1ull << 20) - 1, (1ull << 20) - 1};
    EXPECT_EQ(rowOffset(last, dimensions), (1ull << 60) - 1);
    EXPECT_EQ(columnOffset(last, dimensions), (1ull << 60) - 1);
    EXPECT_EQ(rowIndices((1ull << 60) - 1, dimensions), last);
}
} // namespace Brindle::Quay
