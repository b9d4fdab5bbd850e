#include "foundations/variant/ArraySlice.h"
#include "foundations/variant/VariantOperations.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <sstream>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;
constexpr std::uint64_t hugeNumber = std::numeric_limits<std::uint64_t>::max();
constexpr char badIndex[] = "Index value out-of-range";
constexpr char badSlice[] = "The given ArraySlice is invalid.";

const IndexValue fromEnd(std::uint64_t value)
{
    return IndexValue(value, true);
}

IndexSet one(std::uint64_t value)
{
    return IndexSet(IndexValue(value));
}

IndexSet range(std::uint64_t first, std::uint64_t last, std::uint64_t stride = 1)
{
    return IndexSet(IndexRange(IndexValue(first), IndexValue(last), stride));
}

IndexSet all()
{
    return IndexSet(IndexRange::all);
}
} // namespace

TEST(IndexValue, SelectsItsIndex)
{
    EXPECT_THAT(IndexValue(0).resolve(3), ElementsAre(0u));
    EXPECT_THAT(IndexValue(2).resolve(3), ElementsAre(2u));
}

TEST(IndexValue, CountsFromTheEndOnRequest)
{
    EXPECT_THAT(fromEnd(0).resolve(3), ElementsAre(2u));
    EXPECT_THAT(fromEnd(2).resolve(3), ElementsAre(0u));
}

TEST(IndexValue, FailsPastTheDimension)
{
    for (std::uint64_t value : {std::uint64_t{3}, hugeNumber}) {
        EXPECT_EQ(failureOf([&] { IndexValue(value).resolve(3); }), outOfRange(badIndex));
        EXPECT_EQ(failureOf([&] { fromEnd(value).resolve(3); }), outOfRange(badIndex));
    }
}

TEST(IndexValue, FailsOnADimensionOfSizeZero)
{
    EXPECT_EQ(failureOf([] { IndexValue(0).resolve(0); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { fromEnd(0).resolve(0); }), outOfRange(badIndex));
}

TEST(IndexValue, IsValidBelowTheSize)
{
    EXPECT_TRUE(IndexValue(2).isValid(3));
    EXPECT_FALSE(IndexValue(3).isValid(3));
    EXPECT_FALSE(IndexValue(0).isValid(0));
    EXPECT_TRUE(fromEnd(2).isValid(3));
    EXPECT_FALSE(fromEnd(3).isValid(3));
}

TEST(IndexRange, SelectsUpToAndIncludingItsEnd)
{
    EXPECT_THAT(IndexRange(1, 3).resolve(5), ElementsAre(1u, 2u, 3u));
    EXPECT_THAT(IndexRange(2, 2).resolve(5), ElementsAre(2u));
    EXPECT_THAT(IndexRange(fromEnd(1), fromEnd(0)).resolve(5), ElementsAre(3u, 4u));
    EXPECT_THAT(IndexRange(1, fromEnd(1)).resolve(5), ElementsAre(1u, 2u, 3u));
}

TEST(IndexRange, WalksByItsStride)
{
    EXPECT_THAT(IndexRange(0, 4, 2).resolve(5), ElementsAre(0u, 2u, 4u));
    EXPECT_THAT(IndexRange(0, 3, 2).resolve(5), ElementsAre(0u, 2u));
    EXPECT_THAT(IndexRange(1, 4, 5).resolve(5), ElementsAre(1u));
}

TEST(IndexRange, DoesNotWrapAroundByAHugeStride)
{
    EXPECT_THAT(IndexRange(1, 4, hugeNumber).resolve(5), ElementsAre(1u));
    EXPECT_THAT(IndexRange(1, 4, hugeNumber / 2 + 1).resolve(5), ElementsAre(1u));
    EXPECT_THAT(IndexRange(0, hugeNumber - 1, hugeNumber / 2).resolve(hugeNumber),
                ElementsAre(0u, hugeNumber / 2, hugeNumber - 1));
}

TEST(IndexRange, FailsWhenAnEndLiesPastTheDimension)
{
    EXPECT_EQ(failureOf([] { IndexRange(0, 5).resolve(5); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { IndexRange(5, 0).resolve(5); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { IndexRange(5, 5).resolve(5); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { IndexRange(fromEnd(5), 0).resolve(5); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { IndexRange(0, fromEnd(5)).resolve(5); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([] { IndexRange(0, 0).resolve(0); }), outOfRange(badIndex));
}

TEST(IndexRange, ThatGoesBackByOneIsEmpty)
{
    EXPECT_THAT(IndexRange(3, 2).resolve(5), IsEmpty());
    EXPECT_THAT(IndexRange(1, 0).resolve(2), IsEmpty());
}

TEST(IndexRange, ThatGoesFurtherBackFailsInTheReservation)
{
    EXPECT_THROW(IndexRange(3, 1).resolve(5), std::length_error);
    EXPECT_THROW(IndexRange(4, 0).resolve(5), std::length_error);
    EXPECT_THROW(IndexRange(4, 0, 2).resolve(5), std::length_error);
    EXPECT_THAT(IndexRange(4, 0, hugeNumber).resolve(5), IsEmpty()); // (0 - 4) / stride + 1 wraps to 1
}

TEST(IndexRange, WithoutAStrideFailsAsASlice)
{
    EXPECT_EQ(failureOf([] { IndexRange(0, 2, 0).resolve(5); }), invalidArgument(badSlice));
}

TEST(IndexRange, IsValidWithBothEndsInsideAndAStride)
{
    EXPECT_TRUE(IndexRange(0, 4).isValid(5));
    EXPECT_FALSE(IndexRange(0, 5).isValid(5));
    EXPECT_FALSE(IndexRange(5, 0).isValid(5));
    EXPECT_FALSE(IndexRange(0, 4, 0).isValid(5));
    EXPECT_TRUE(IndexRange(4, 0).isValid(5));
    EXPECT_FALSE(IndexRange(0, 0).isValid(0));
}

TEST(IndexRange, AllSelectsTheWholeDimension)
{
    EXPECT_THAT(IndexRange::all.resolve(3), ElementsAre(0u, 1u, 2u));
    EXPECT_THAT(IndexRange::all.resolve(1), ElementsAre(0u));
    EXPECT_THAT(IndexRange::all.resolve(0), IsEmpty());
    EXPECT_TRUE(IndexRange::all.isValid(3));
}

TEST(IndexItem, IsClonedWithAllItHolds)
{
    const std::unique_ptr<IndexItem> value(fromEnd(1).clone());
    EXPECT_THAT(value->resolve(5), ElementsAre(3u));
    const std::unique_ptr<IndexItem> strided(IndexRange(1, fromEnd(0), 2).clone());
    EXPECT_THAT(strided->resolve(6), ElementsAre(1u, 3u, 5u));
    const std::unique_ptr<IndexItem> whole(IndexRange::all.clone());
    EXPECT_THAT(whole->resolve(2), ElementsAre(0u, 1u));
    EXPECT_THAT(whole->resolve(0), IsEmpty());
}

TEST(IndexSet, IsCopiedAssignedAndMovedWithItsItems)
{
    const BVariant array = MakeVector({10.0, 11.0, 12.0, 13.0});
    IndexSet original = range(1, 2);
    IndexSet copy(original);
    original = one(0);
    EXPECT_EQ(ToDoubles(slice(array, {copy})), (Doubles{11, 12}));
    EXPECT_EQ(ToDoubles(slice(array, {original})), (Doubles{10}));
    const IndexSet& itself = copy;
    copy = itself;
    EXPECT_EQ(ToDoubles(slice(array, {copy})), (Doubles{11, 12}));
    const IndexSet moved(std::move(copy));
    EXPECT_EQ(ToDoubles(slice(array, {moved})), (Doubles{11, 12}));
}

TEST(ArraySliceFromIndices, HasOneValuePerIndex)
{
    EXPECT_EQ(ArraySliceFromIndices({1, 2, 3}).size(), 3u);
    EXPECT_EQ(ArraySliceFromIndices({}).size(), 0u);
    EXPECT_EQ(ToDoubles(slice(MakeCounting({2, 3}), ArraySliceFromIndices({1, 2}))), (Doubles{5}));
}

template <class T>
class SliceOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(SliceOf, ElementTypes, ElementTypeName);

TYPED_TEST(SliceOf, TakesEveryOtherElement)
{
    const auto elements = sampleElements<TypeParam>(6);
    const BVariant part = slice(BVariant(std::vector<TypeParam>(elements)), {range(1, 5, 2)});
    EXPECT_EQ(part.getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_EQ(ToDimensions(part), (Sizes{3}));
    const auto read = ToElements<TypeParam>(part);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(read[i], elements[1 + 2 * i])) << i;
}

TYPED_TEST(SliceOf, TakesARun)
{
    const auto elements = sampleElements<TypeParam>(7);
    const BVariant part = slice(BVariant(std::vector<TypeParam>(elements)), {range(2, 4)});
    const auto read = ToElements<TypeParam>(part);
    ASSERT_EQ(read.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(read[i], elements[2 + i])) << i;
}

TYPED_TEST(SliceOf, TakesOneElementToOneDimensionOfSizeOne)
{
    const auto elements = sampleElements<TypeParam>(6);
    for (DataOrdering ordering : {rowMajor, columnMajor}) {
        const BVariant array(std::vector<TypeParam>(elements), {2, 3}, ordering);
        for (std::uint64_t i = 0; i < 2; ++i) {
            for (std::uint64_t j = 0; j < 3; ++j) {
                const BVariant element = elementAt(array, {i, j});
                EXPECT_EQ(ToDimensions(element), (Sizes{1}));
                EXPECT_EQ(element.getWellKnownType().code(), elementCode<TypeParam>);
                const TypeParam expected = elements[ordering == rowMajor ? i * 3 + j : j * 2 + i];
                EXPECT_TRUE(sameElement<TypeParam>(getScalar<TypeParam>(element), expected))
                    << i << ", " << j;
            }
        }
    }
}

TYPED_TEST(SliceOf, LeavesItsSourceAlone)
{
    const auto elements = sampleElements<TypeParam>(4);
    const BVariant array{std::vector<TypeParam>(elements)};
    BVariant whole = slice(array, {all()});
    setElement<TypeParam>(whole, {0}, Samples<TypeParam>::second());
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(array)[0], elements[0]));
}

TEST(Slice, DropsADimensionPickedByASingleValue)
{
    const BVariant cube = MakeCounting({2, 3, 4});
    EXPECT_EQ(ToDimensions(slice(cube, {one(1), all(), all()})), (Sizes{3, 4}));
    EXPECT_EQ(ToDimensions(slice(cube, {all(), one(2), all()})), (Sizes{2, 4}));
    EXPECT_EQ(ToDimensions(slice(cube, {one(1), all(), one(0)})), (Sizes{3}));
    EXPECT_EQ(ToDimensions(slice(cube, {one(1), one(1), one(0)})), (Sizes{1}));
}

TEST(Slice, KeepsADimensionPickedByARangeOfOne)
{
    const BVariant cube = MakeCounting({2, 3, 4});
    EXPECT_EQ(ToDimensions(slice(cube, {range(1, 1), all(), one(0)})), (Sizes{1, 3}));
    EXPECT_EQ(ToDimensions(slice(cube, {range(1, 1), range(0, 0), range(2, 2)})), (Sizes{1, 1, 1}));
}

TEST(Slice, SelectsTheSameElementsInBothOrderings)
{
    const BVariant rows = MakeCounting({3, 4});
    const BVariant columns = rows.reordered(columnMajor);
    const ArraySlice part{range(0, 2, 2), range(1, 3)};
    const BVariant ofRows = slice(rows, part);
    const BVariant ofColumns = slice(columns, part);
    EXPECT_EQ(ToDoubles(ofRows), (Doubles{1, 2, 3, 9, 10, 11}));
    EXPECT_EQ(ofRows.getDataOrdering(), rowMajor);
    EXPECT_EQ(ofColumns.getDataOrdering(), columnMajor);
    EXPECT_EQ(ToDoubles(ofColumns), (Doubles{1, 9, 2, 10, 3, 11}));
    EXPECT_TRUE(exactlyEqual(ofColumns.reordered(rowMajor), ofRows));
}

TEST(Slice, TakesRemainingDimensionsWhole)
{
    const BVariant cube = MakeCounting({2, 3, 2});
    const BVariant part = slice(cube, {one(1)});
    EXPECT_EQ(ToDimensions(part), (Sizes{3, 2}));
    EXPECT_EQ(ToDoubles(part), (Doubles{6, 7, 8, 9, 10, 11}));
    const BVariant whole = slice(cube, {});
    EXPECT_TRUE(exactlyEqual(whole, cube));
}

TEST(Slice, RefusesMoreSetsThanDimensions)
{
    EXPECT_EQ(failureOf([] { slice(MakeCounting({3}), {all(), all()}); }), invalidArgument(badSlice));
    EXPECT_EQ(failureOf([] { slice(MakeCounting({3}), {one(0), one(0)}); }), invalidArgument(badSlice));
    EXPECT_EQ(failureOf([] { slice(BVariant(1.0), {one(0), one(0)}); }), invalidArgument(badSlice));
}

TEST(Slice, RefusesAStrideOfZero)
{
    EXPECT_EQ(failureOf([] { slice(MakeCounting({3}), {range(0, 2, 0)}); }), invalidArgument(badSlice));
}

TEST(Slice, OfNullFailsWithItsOwnMessage)
{
    EXPECT_EQ(failureOf([] { slice(BVariant(), {all()}); }), invalidArgument(badSlice));
    EXPECT_EQ(failureOf([] { slice(BVariant(), {}); }), invalidArgument(badSlice));
    EXPECT_EQ(failureOf([] { elementAt(BVariant(), {0}); }), invalidArgument(badSlice));
}

TEST(Slice, OfARunTimeTypeIsAnUnknownType)
{
    EXPECT_EQ(failureOf([] { slice(BVariant::runTime(1.0), {all()}); }), runtimeError("unknown type"));
}

TEST(Slice, FailsPastADimension)
{
    const BVariant matrix = MakeCounting({2, 3});
    EXPECT_EQ(failureOf([&] { slice(matrix, {one(2), all()}); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([&] { slice(matrix, {all(), range(0, 3)}); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([&] { elementAt(matrix, {0, 3}); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([&] { elementAt(matrix, {hugeNumber, 0}); }), outOfRange(badIndex));
}

TEST(Slice, OfADimensionOfSizeZeroTakesOnlyAll)
{
    const BVariant empty = MakeCounting({0, 3});
    const BVariant whole = slice(empty, {all(), all()});
    EXPECT_EQ(ToDimensions(whole), (Sizes{0, 3}));
    EXPECT_EQ(ToDimensions(slice(empty, {all(), one(1)})), (Sizes{0}));
    EXPECT_EQ(ToDimensions(slice(empty, {all(), range(0, 1)})), (Sizes{0, 2}));
    EXPECT_EQ(failureOf([&] { slice(empty, {one(0), all()}); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([&] { slice(empty, {range(0, 0), all()}); }), outOfRange(badIndex));
    EXPECT_EQ(failureOf([&] { slice(empty, {all(), one(3)}); }), outOfRange(badIndex));
}

TEST(Slice, OfABackwardRangeIsEmptyByOneAndFailsFurtherBack)
{
    const BVariant matrix = MakeCounting({5, 3});
    const BVariant none = slice(matrix, {range(3, 2), all()});
    EXPECT_EQ(ToDimensions(none), (Sizes{0, 3}));
    EXPECT_EQ(none.getWellKnownType().code(), elementCode<double>);
    EXPECT_THROW(slice(matrix, {range(3, 1), all()}), std::length_error);
    EXPECT_THROW(slice(MakeCounting({5}), {range(4, 0)}), std::length_error);
}

TEST(Slice, JoinsTheItemsOfASet)
{
    const BVariant vector = MakeCounting({6});
    const IndexValue first(4), second(0);
    const IndexRange run(1, 2);
    const BVariant part = slice(vector, {IndexSet{first, run, second}});
    EXPECT_EQ(ToDoubles(part), (Doubles{4, 1, 2, 0}));
    EXPECT_EQ(ToDimensions(part), (Sizes{4}));
}

TEST(Slice, OfAScalarIsTheScalar)
{
    EXPECT_EQ(getScalar<double>(slice(BVariant(2.5), {one(0)})), 2.5);
    EXPECT_EQ(getScalar<double>(slice(BVariant(2.5), {all()})), 2.5);
    EXPECT_EQ(getScalar<std::string>(elementAt(BVariant("abc"), {0})), "abc");
    EXPECT_EQ(failureOf([] { elementAt(BVariant(2.5), {1}); }), outOfRange(badIndex));
}

TEST(ElementAt, KeepsTheOrderingOfItsSource)
{
    EXPECT_EQ(elementAt(MakeCounting({2, 2}, columnMajor), {0, 1}).getDataOrdering(), columnMajor);
    EXPECT_EQ(elementAt(MakeCounting({2, 2}), {0, 1}).getDataOrdering(), rowMajor);
}

TEST(ElementAt, RefusesMoreIndicesThanDimensions)
{
    EXPECT_EQ(failureOf([] { elementAt(MakeCounting({3}), {0, 0}); }), invalidArgument(badSlice));
}

TEST(ElementAt, RefusesToReadManyElementsAsOne)
{
    EXPECT_THROW(elementAt(MakeCounting({2, 3}), {0}), std::invalid_argument);
    EXPECT_THROW(elementAt(MakeCounting({3}), std::vector<std::uint64_t>{}), std::invalid_argument);
    EXPECT_EQ(getScalar<double>(elementAt(MakeCounting({2, 1}), {1})), 1.0);
}

TEST(ElementAt, LeavesTheSourceAliveOnlyAsLongAsNeeded)
{
    BVariant element;
    {
        const BVariant texts(std::vector<std::string>{"a", Samples<std::string>::other()});
        element = elementAt(texts, {1});
    }
    EXPECT_EQ(getScalar<std::string>(element), Samples<std::string>::other());
}

TEST(SliceRange, EqualsTheSliceByOneRange)
{
    for (DataOrdering ordering : {rowMajor, columnMajor}) {
        for (const auto& dimensions :
             std::vector<std::vector<std::uint64_t>>{{6}, {6, 1}, {6, 4}, {6, 2, 3}}) {
            const BVariant array = MakeCounting(dimensions, ordering);
            for (std::uint64_t first = 0; first < 6; ++first)
                for (std::uint64_t last = first; last < 6; ++last)
                    EXPECT_TRUE(
                        exactlyEqual(sliceRange(array, first, last), slice(array, {range(first, last)})));
            EXPECT_EQ(failureOf([&] { sliceRange(array, 0, 6); }), outOfRange(badIndex));
            EXPECT_TRUE(exactlyEqual(sliceRange(array, 3, 2), slice(array, {range(3, 2)})));
            EXPECT_THROW(sliceRange(array, 3, 1), std::length_error);
        }
    }
    EXPECT_EQ(failureOf([] { sliceRange(BVariant(), 0, 0); }), invalidArgument(badSlice));
    EXPECT_EQ(failureOf([] { sliceRange(BVariant::runTime(1.0), 0, 0); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([] { sliceRange(MakeCounting({0}), 0, 0); }), outOfRange(badIndex));
}

TEST(SubArrayAt, EqualsTheSliceByOneIndex)
{
    for (DataOrdering ordering : {rowMajor, columnMajor}) {
        for (const auto& dimensions :
             std::vector<std::vector<std::uint64_t>>{{6}, {6, 1}, {6, 4}, {6, 2, 3}}) {
            const BVariant array = MakeCounting(dimensions, ordering);
            for (std::uint64_t index = 0; index < 6; ++index)
                EXPECT_TRUE(exactlyEqual(subArrayAt(array, index), slice(array, {one(index)}))) << index;
            EXPECT_EQ(failureOf([&] { subArrayAt(array, 6); }), outOfRange(badIndex));
        }
    }
    EXPECT_EQ(failureOf([] { subArrayAt(BVariant(), 0); }), invalidArgument(badSlice));
}

// A selector that a host brings: every index it lists is taken, in its order, repeated ones too.
namespace {
class ListedIndices : public IndexItem
{
public:
    explicit ListedIndices(std::vector<std::uint64_t> indices)
        : m_indices(std::move(indices))
    {
    }
    std::vector<std::uint64_t> resolve(std::uint64_t) const override { return m_indices; }
    bool isValid(std::uint64_t size) const override
    {
        return std::all_of(m_indices.begin(), m_indices.end(), [size](std::uint64_t i) { return i < size; });
    }
    ListedIndices* clone() const override { return new ListedIndices(*this); }

private:
    std::vector<std::uint64_t> m_indices;
};
} // namespace

TEST(Slice, TakesTheSelectorsOfAHost)
{
    const BVariant matrix = MakeCounting({2, 3});
    const BVariant picked = slice(matrix, {all(), IndexSet(ListedIndices({2, 0, 2}))});
    EXPECT_EQ(ToDoubles(picked), (Doubles{2, 0, 2, 5, 3, 5}));
    EXPECT_EQ(ToDimensions(slice(matrix, {IndexSet(ListedIndices({1})), all()})), (Sizes{1, 3}));
}

TEST(Slice, StopsASelectorOfAHostThatLeavesItsDimension)
{
    // offset 3 lies inside the array, index 3 doesn't lie inside the dimension
    EXPECT_EQ(failureOf([] {
                  slice(MakeCounting({2, 3}), {one(0), IndexSet(ListedIndices({3}))});
              }),
              outOfRange("Indices out of bounds."));
    EXPECT_EQ(failureOf([] {
                  slice(MakeCounting({2, 3}), {IndexSet(ListedIndices({7})), all()});
              }),
              outOfRange("Indices out of bounds."));
}

// A selector that can't be copied, against its contract.
namespace {
class Uncloneable : public IndexItem
{
public:
    std::vector<std::uint64_t> resolve(std::uint64_t) const override { return {0}; }
    bool isValid(std::uint64_t) const override { return true; }
    Uncloneable* clone() const override { return nullptr; }
};
} // namespace

TEST(IndexSet, RefusesASelectorWithoutAClone)
{
    EXPECT_EQ(failureOf([] { IndexSet{Uncloneable()}; }), invalidArgument(badSlice));
    IndexSet set = one(1);
    EXPECT_EQ(failureOf([&] { set.append(Uncloneable()); }), invalidArgument(badSlice));
    EXPECT_EQ(ToDoubles(slice(MakeCounting({3}), {set})), (Doubles{1}));
    EXPECT_EQ(failureOf([] { IndexSet(std::vector<std::unique_ptr<IndexItem>>(1)); }),
              invalidArgument(badSlice));
}

TEST(IndexSet, WithoutSelectorsSelectsNothing)
{
    EXPECT_EQ(ToDimensions(slice(MakeCounting({2, 3}), {IndexSet(), all()})), (Sizes{0, 3}));
}

TEST(SliceFlattener, ListsOffsetsInTheOrderOfTheResult)
{
    const std::vector<std::uint64_t> dimensions{3, 4};
    const ArraySlice part{range(0, 2, 2), range(1, 2)};
    const SliceFlattener rows(part, dimensions, rowMajor);
    EXPECT_THAT(rows.offsets(), ElementsAre(1u, 2u, 9u, 10u));
    EXPECT_THAT(rows.dimensions(), ElementsAre(2u, 2u));
    EXPECT_EQ(rows.count(), 4u);
    const SliceFlattener columns(part, dimensions, columnMajor, UseDataOrdering::Source);
    EXPECT_THAT(columns.offsets(), ElementsAre(3u, 5u, 6u, 8u));
}

TEST(SliceFlattener, KnowsARunThatLiesTogether)
{
    const std::vector<std::uint64_t> dimensions{3, 4};
    EXPECT_TRUE(SliceFlattener({range(1, 2)}, dimensions, rowMajor).isContiguous());
    EXPECT_EQ(SliceFlattener({range(1, 2)}, dimensions, rowMajor).firstOffset(), 4u);
    EXPECT_TRUE(SliceFlattener({all(), range(1, 2)}, dimensions, columnMajor).isContiguous());
    EXPECT_FALSE(SliceFlattener({all(), range(1, 2)}, dimensions, rowMajor).isContiguous());
    EXPECT_EQ(SliceFlattener({all(), range(1, 2)}, dimensions, rowMajor).runLength(), 2u);
}

// A naive model: the selected index tuples, walked one by one, each looked up by the offset formula.
namespace {
struct Selector
{
    IndexSet set;
    std::vector<std::uint64_t> indices;
    bool drops;
    std::string text;
};

Selector randomSelector(std::mt19937_64& random, std::uint64_t size)
{
    std::ostringstream text;
    const auto index = [&] { return randomBelow(random, size); };
    const auto place = [&](std::uint64_t at) {
        const bool backwards = randomBelow(random, 2) == 1;
        text << (backwards ? " end-" : " ") << (backwards ? size - 1 - at : at);
        return backwards ? fromEnd(size - 1 - at) : IndexValue(at);
    };
    switch (size == 0 ? 0 : randomBelow(random, 4)) {
    case 0: {
        std::vector<std::uint64_t> indices(size);
        std::iota(indices.begin(), indices.end(), 0u);
        return {all(), indices, false, " all"};
    }
    case 1: {
        const std::uint64_t at = index();
        const IndexValue value = place(at);
        return {IndexSet(value), {at}, true, text.str()};
    }
    default: {
        std::uint64_t first = index(), last = index();
        if (first > last)
            std::swap(first, last);
        if (randomBelow(random, 8) == 0 && first > 0)
            last = first - 1; // the one backward range that is empty
        const std::uint64_t strides[] = {1, 1, 1, 2, 3, size, hugeNumber, hugeNumber / 2 + 1};
        const std::uint64_t stride = last < first ? 1 : strides[randomBelow(random, 8)];
        const IndexValue from = place(first), to = place(last);
        text << " by " << stride;
        std::vector<std::uint64_t> indices;
        for (std::uint64_t i = 0; i < size; ++i)
            if (i >= first && i <= last && (i - first) % stride == 0)
                indices.push_back(i);
        return {IndexSet(IndexRange(from, to, stride)), indices, false, text.str()};
    }
    }
}

// Where the tuple lies in an array; both orderings, written out rather than taken from ArrayIndexing.
std::uint64_t offsetOf(const std::vector<std::uint64_t>& tuple, const std::vector<std::uint64_t>& dimensions,
                       DataOrdering ordering)
{
    std::uint64_t offset = 0;
    for (std::size_t i = 0; i < tuple.size(); ++i) {
        const std::size_t d = ordering == rowMajor ? i : tuple.size() - 1 - i;
        offset = offset * dimensions[d] + tuple[d];
    }
    return offset;
}

// Counts `tuple` up within `sizes`, the last place first; false after the last one.
bool advance(std::vector<std::uint64_t>& tuple, const std::vector<std::uint64_t>& sizes)
{
    for (std::size_t d = sizes.size(); d-- > 0;) {
        if (++tuple[d] < sizes[d])
            return true;
        tuple[d] = 0;
    }
    return false;
}

struct ModelSlice
{
    std::vector<std::uint64_t> dimensions;
    std::vector<double> elements; // in the ordering of the source
};

ModelSlice modelSlice(const std::vector<std::uint64_t>& dimensions, DataOrdering ordering,
                      const std::vector<Selector>& selectors)
{
    ModelSlice model;
    std::vector<std::uint64_t> sizes; // with the dropped dimensions, as 1
    for (const Selector& selector : selectors) {
        sizes.push_back(selector.indices.size());
        if (!selector.drops)
            model.dimensions.push_back(selector.indices.size());
    }
    if (model.dimensions.empty())
        model.dimensions = {1};
    std::uint64_t count = 1;
    for (std::uint64_t size : sizes)
        count *= size;
    model.elements.resize(count);
    if (count == 0)
        return model;
    std::vector<std::uint64_t> tuple(sizes.size());
    do {
        std::vector<std::uint64_t> source;
        for (std::size_t d = 0; d < tuple.size(); ++d)
            source.push_back(selectors[d].indices[tuple[d]]);
        // element values are source offsets
        model.elements[offsetOf(tuple, sizes, ordering)] =
            static_cast<double>(offsetOf(source, dimensions, ordering));
    } while (advance(tuple, sizes));
    return model;
}

std::string textOf(const std::vector<std::uint64_t>& dimensions, DataOrdering ordering,
                   const std::vector<Selector>& selectors)
{
    std::ostringstream text;
    text << (ordering == rowMajor ? "row-major" : "column-major");
    for (std::size_t d = 0; d < dimensions.size(); ++d)
        text << " [" << dimensions[d] << ":" << selectors[d].text << "]";
    return text.str();
}
} // namespace

template <class T>
class RandomSlice : public ::testing::Test
{
};
// One type for each width of element, and one that isn't copied as bytes.
using SliceWidths =
    ::testing::Types<double, float, std::int16_t, std::int8_t, std::complex<double>, std::string>;
TYPED_TEST_SUITE(RandomSlice, SliceWidths, ElementTypeName);

template <class T>
T elementOfNumber(double number)
{
    if constexpr (std::is_same_v<T, std::string>)
        return std::to_string(static_cast<long>(number)) + " in a text too long for a short string";
    else if constexpr (std::is_same_v<T, std::int8_t>)
        return static_cast<T>(static_cast<int>(number) % 127); // a prime: neighbours in any stride differ
    else
        return T(static_cast<float>(number));
}

TYPED_TEST(RandomSlice, EqualsAWalkOverIndexTuples)
{
    const RandomSeed seed{20240601};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int round = 0; round < 1500; ++round) {
        const DataOrdering ordering = randomBelow(random, 2) ? columnMajor : rowMajor;
        std::vector<std::uint64_t> dimensions(1 + randomBelow(random, 5));
        std::uint64_t count = 1;
        for (auto& size : dimensions)
            count *= size = randomBelow(random, 20) == 0 ? 0 : 1 + randomBelow(random, 6);
        std::vector<Selector> selectors;
        ArraySlice given;
        const std::size_t givenSets = randomBelow(random, dimensions.size() + 1);
        for (std::size_t d = 0; d < dimensions.size(); ++d) {
            if (d < givenSets || randomBelow(random, 2)) {
                selectors.push_back(randomSelector(random, dimensions[d]));
            } else { // left to the rule that remaining dimensions are whole, if nothing follows
                std::vector<std::uint64_t> indices(dimensions[d]);
                std::iota(indices.begin(), indices.end(), 0u);
                selectors.push_back({all(), indices, false, " all"});
            }
        }
        std::size_t sets = dimensions.size();
        while (sets > givenSets && selectors[sets - 1].text == " all")
            --sets;
        for (std::size_t d = 0; d < sets; ++d)
            given.push_back(selectors[d].set);

        SCOPED_TRACE(textOf(dimensions, ordering, selectors));
        std::vector<TypeParam> elements;
        for (std::uint64_t i = 0; i < count; ++i)
            elements.push_back(elementOfNumber<TypeParam>(static_cast<double>(i)));
        const BVariant result = slice(BVariant(std::move(elements), dimensions, ordering), given);
        const ModelSlice model = modelSlice(dimensions, ordering, selectors);

        ASSERT_EQ(ToDimensions(result), model.dimensions);
        ASSERT_EQ(result.getDataOrdering(), ordering);
        const auto read = ToElements<TypeParam>(result);
        ASSERT_EQ(read.size(), model.elements.size());
        for (std::size_t i = 0; i < read.size(); ++i)
            ASSERT_EQ(read[i], elementOfNumber<TypeParam>(model.elements[i])) << i;
    }
}

TEST(Slice, OfOneRunEqualsTheSameSelectionByParts)
{
    // A contiguous run may be copied in one go; the same indices given as two items can't be told from a
    // scattered selection so easily. Both must agree.
    const BVariant matrix = MakeCounting({50, 40});
    const IndexRange head(10, 19), tail(20, 29);
    const BVariant run = slice(matrix, {range(10, 29), all()});
    const BVariant parts = slice(matrix, {IndexSet{head, tail}, all()});
    EXPECT_TRUE(exactlyEqual(run, parts));
    const BVariant strided = slice(matrix, {range(10, 29, 1), range(0, 39, 1)});
    EXPECT_TRUE(exactlyEqual(run, strided));
}
} // namespace Brindle::Quay
