#include "hosts/orrery/Offsets.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Failure.h"
#include "variables/ExplicitDataVar.h"

#include <gmock/gmock.h>

#include <numeric>

namespace Orrery::Host {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Shape = std::vector<std::uint64_t>;

namespace {

// 0, 1, 2, ... in that shape.
Variable counting(const Shape& shape)
{
    std::uint64_t count = 1;
    for (const std::uint64_t size : shape)
        count *= size;
    std::vector<double> values(count);
    std::iota(values.begin(), values.end(), 0.0);
    return Variable(QStringLiteral("v"), BVariant(std::move(values), shape));
}

std::vector<double> valuesOf(const Selection& selection)
{
    if (selection.data.isEmpty())
        return {};
    Brindle::Quay::IterableContainer<double> elements(selection.data);
    return {elements.begin(), elements.end()};
}

std::string failureOf(const Variable& variable, const OffsetRange& range)
{
    try {
        select(variable, range);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitFailed);
        return failure.what();
    }
    return "";
}

} // namespace

TEST(OffsetText, IsANumberFromZero)
{
    const OffsetRange range = parseOffset("7");
    EXPECT_EQ(range.begin, 7U);
    EXPECT_TRUE(range.isSingle);
    EXPECT_EQ(parseOffset("18446744073709551615").begin, 18446744073709551615U);
    for (const char* const text : {"", "-1", "+1", "1.0", "0x1", "1 ", "18446744073709551616", "a"}) {
        try {
            parseOffset(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitUsage) << text;
        }
    }
}

TEST(RangeText, HasAColonAndOpenEnds)
{
    EXPECT_EQ(parseRange("2:5").begin, 2U);
    EXPECT_EQ(parseRange("2:5").end, 5U);
    EXPECT_EQ(parseRange("2:").end, std::nullopt);
    EXPECT_EQ(parseRange(":5").begin, 0U);
    EXPECT_EQ(parseRange(":").end, std::nullopt);
    EXPECT_EQ(parseRange("0:0").end, 0U);
    for (const char* const text : {"", "5", "5:2", "-1:2", "1:-2", "a:b", "1:2:3", "1 : 2"}) {
        try {
            parseRange(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitUsage) << text;
        }
    }
}

TEST(VectorSelection, WholePartAndOne)
{
    const Variable vector = counting({5});
    EXPECT_THAT(valuesOf(selectAll(vector)), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(selectAll(vector).offsets, 5U);
    const Selection part = select(vector, {1, 3});
    EXPECT_THAT(valuesOf(part), ElementsAre(1, 2));
    EXPECT_EQ(part.firstOffset, 1U);
    EXPECT_EQ(part.dimensions, Shape{2});
    const Selection one = select(vector, {4, 5, true});
    EXPECT_THAT(valuesOf(one), ElementsAre(4));
    EXPECT_EQ(one.dimensions, Shape{1});
    EXPECT_EQ(one.offsets, 1U);
    EXPECT_THAT(one.elementShape, IsEmpty());
    EXPECT_THAT(valuesOf(select(vector, {2})), ElementsAre(2, 3, 4));
}

TEST(EmptySelection, IsNoFailureWithinTheVariable)
{
    const Variable vector = counting({5});
    for (const std::uint64_t offset : {0U, 2U, 5U})
        EXPECT_THAT(valuesOf(select(vector, {offset, offset})), IsEmpty()) << offset;
    EXPECT_THAT(valuesOf(select(vector, {5})), IsEmpty());
    EXPECT_THAT(valuesOf(select(Variable(), {0})), IsEmpty());
    EXPECT_EQ(selectAll(Variable()).offsets, 0U);
}

TEST(SelectionPastTheEnd, TellsWhatThereIs)
{
    const Variable vector = counting({5});
    EXPECT_EQ(failureOf(vector, {5, 6, true}), "there is no offset 5; there are 5, from 0 to 4");
    EXPECT_EQ(failureOf(vector, {2, 8}), "there is no offset 7; there are 5, from 0 to 4");
    EXPECT_EQ(failureOf(vector, {6}), "there is no offset 6; there are 5, from 0 to 4");
    EXPECT_EQ(failureOf(Variable(), {0, 1, true}), "there is no offset 0; there are no values");
}

TEST(MatrixSelection, CutsAlongTheFirstDimension)
{
    const Variable matrix = counting({3, 2});
    const Selection whole = selectAll(matrix);
    EXPECT_EQ(whole.offsets, 3U);
    EXPECT_EQ(whole.elementShape, Shape{2});
    const Selection part = select(matrix, {1, 3});
    EXPECT_THAT(valuesOf(part), ElementsAre(2, 3, 4, 5));
    EXPECT_EQ(part.dimensions, (Shape{2, 2}));
    const Selection run = select(matrix, {1, 2});
    EXPECT_THAT(valuesOf(run), ElementsAre(2, 3));
    EXPECT_EQ(run.offsets, 1U);
    EXPECT_EQ(run.elementShape, Shape{2});
    EXPECT_EQ(run.dimensions, (Shape{1, 2}));
    const Selection one = select(matrix, {2, 3, true});
    EXPECT_THAT(valuesOf(one), ElementsAre(4, 5));
    EXPECT_EQ(one.dimensions, (Shape{1, 2}));
    EXPECT_EQ(one.elementShape, Shape{2});
}

TEST(CubeSelection, KeepsTheShapeOfItsElements)
{
    const Variable cube = counting({2, 2, 3});
    const Selection one = select(cube, {1, 2, true});
    EXPECT_THAT(valuesOf(one), ElementsAre(6, 7, 8, 9, 10, 11));
    EXPECT_EQ(one.dimensions, (Shape{2, 3}));
    EXPECT_FALSE(one.leadsWithOffset);
    const Selection run = select(cube, {1, 2});
    EXPECT_EQ(run.dimensions, (Shape{1, 2, 3}));
    EXPECT_EQ(run.offsets, 1U);
    EXPECT_EQ(run.elementShape, (Shape{2, 3}));
}

// The offsets of a row lie along a later dimension, and a person sees no reason why that should matter.
TEST(RowSelection, WorksAlongTheRow)
{
    for (const Shape& shape : {Shape{1, 4}, Shape{1, 1, 4}}) {
        const Variable row = counting(shape);
        EXPECT_THAT(valuesOf(select(row, {1, 3})), ElementsAre(1, 2));
        EXPECT_EQ(select(row, {1, 3}).offsets, 2U);
        EXPECT_EQ(select(row, {2, 3}).offsets, 1U);
        EXPECT_THAT(valuesOf(select(row, {3, 4, true})), ElementsAre(3));
        EXPECT_THAT(valuesOf(select(row, {0, 4})), ElementsAre(0, 1, 2, 3));
        EXPECT_EQ(selectAll(row).offsets, 4U);
    }
}

TEST(ScalarSelection, HasOneOffset)
{
    const Variable scalar(QStringLiteral("v"), BVariant(7.0));
    EXPECT_THAT(valuesOf(select(scalar, {0, 1, true})), ElementsAre(7));
    EXPECT_THAT(valuesOf(select(scalar, {0, 1})), ElementsAre(7));
    EXPECT_EQ(selectAll(scalar).offsets, 1U);
}

} // namespace Orrery::Host
