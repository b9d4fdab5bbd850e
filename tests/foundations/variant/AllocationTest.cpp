// What takes no heap memory. In a program of its own, which counts every allocation.
#include "foundations/variant/Variant.h"

#include "tests/support/CountingAllocator.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Variants.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <optional>

namespace Brindle::Quay {
using namespace TestSupport;

namespace {
template <class Function>
std::uint64_t allocationsOf(Function function)
{
    const AllocationCount allocations;
    function();
    return allocations.count();
}

struct Point
{
    int x, y;
    bool operator==(const Point& other) const { return x == other.x && y == other.y; }
};
} // namespace

TEST(CountingAllocator, SeesEveryWayToTheHeap)
{
    // through volatile pointers, so that no pair of calls is optimised away
    EXPECT_EQ(allocationsOf([] {
                  int* volatile number = new int(1);
                  delete number;
              }),
              1u);
    EXPECT_EQ(allocationsOf([] {
                  void* volatile block = std::malloc(8);
                  std::free(block);
              }),
              1u);
    EXPECT_EQ(allocationsOf([] {
                  void* volatile block = std::aligned_alloc(64, 64);
                  std::free(block);
              }),
              1u);
    EXPECT_GE(allocationsOf([] { createArray(WellKnownType::of<double>(), {100}); }), 1u);
}

template <class T>
class AllocationsOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(AllocationsOf, ElementTypes, ElementTypeName);

TYPED_TEST(AllocationsOf, AScalarAreNone)
{
    const TypeParam first = Samples<TypeParam>::first(),
                    second = Samples<TypeParam>::second(); // no long texts
    EXPECT_EQ(allocationsOf([&] {
                  BVariant scalar{TypeParam(first)};
                  BVariant copy(scalar);
                  const BVariant moved(std::move(copy));
                  scalar = moved;
                  setElement<TypeParam>(scalar, {0}, BVariant(TypeParam(second)));
                  TypeParam out{};
                  tryGetScalar<TypeParam>(scalar, &out);
                  scalar.detach();
              }),
              0u);
}

TYPED_TEST(AllocationsOf, ACopyOfAnArrayAreNone)
{
    const BVariant array{sampleElements<TypeParam>(100)};
    EXPECT_EQ(allocationsOf([&] {
                  BVariant copy(array);
                  BVariant other;
                  other = copy;
                  copy = std::move(other);
                  const IterableContainer<TypeParam> container(copy);
                  convertedTo(copy, WellKnownType::of<TypeParam>());
              }),
              0u);
}

TYPED_TEST(AllocationsOf, OneElementReadAreNone)
{
    const BVariant vector{std::vector<TypeParam>(100, Samples<TypeParam>::first())};
    const BVariant matrix(std::vector<TypeParam>(100, Samples<TypeParam>::first()), {10, 10});
    const std::vector<std::uint64_t> indices{7};
    EXPECT_EQ(allocationsOf([&] { elementAt(vector, {99}); }), 0u);
    EXPECT_EQ(allocationsOf([&] { elementAt(vector, indices); }), 0u);
    EXPECT_EQ(allocationsOf([&] { elementAt(matrix, {9, 9}); }), 0u);
    EXPECT_EQ(allocationsOf([&] { getScalar<TypeParam>(elementAt(vector, {99})); }), 0u);
}

TYPED_TEST(AllocationsOf, EqualityAreNone)
{
    const BVariant a{sampleElements<TypeParam>(10)}, b{sampleElements<TypeParam>(10)};
    EXPECT_EQ(allocationsOf([&] { exactlyEqual(a, b); }), 0u);
    EXPECT_EQ(allocationsOf([&] { equalWithConversion(a, b); }), 0u);
}

TEST(Allocations, OfANullAreNone)
{
    EXPECT_EQ(allocationsOf([] {
                  BVariant null;
                  BVariant copy(null);
                  null = std::move(copy);
                  null.detach();
              }),
              0u);
}

TEST(Allocations, OfASmallRunTimeValueAreNone)
{
    EXPECT_EQ(allocationsOf([] {
                  const BVariant point = BVariant::runTime(Point{1, 2});
                  const BVariant copy(point);
              }),
              0u);
}

TEST(Allocations, OfAConvertedNumberAreNone)
{
    const BVariant number(2.5);
    EXPECT_EQ(allocationsOf([&] { getScalar<int>(number); }), 0u);
    EXPECT_EQ(allocationsOf([&] { getScalar<std::complex<double>>(number); }), 0u);
    EXPECT_EQ(allocationsOf([&] { getScalar<std::string>(number); }), 0u); // short
}

TEST(Allocations, OfAVectorTakenOverDoNotGrowWithIt)
{
    std::vector<double> elements(100000);
    const AllocationCount allocations;
    const BVariant array(std::move(elements));
    EXPECT_LE(allocations.count(), 3u);
    EXPECT_LT(allocations.bytes(), 1000u);
}

TEST(Allocations, OfASliceAreThoseOfItsResult)
{
    const BVariant array = MakeCounting({1000, 100});
    const ArraySlice run{IndexSet(IndexRange(100, 899))};
    const ArraySlice strided{IndexSet(IndexRange(0, 998, 2)), IndexSet(IndexRange(0, 98, 2))};
    for (const ArraySlice* part : {&run, &strided}) {
        std::optional<BVariant> result;
        const AllocationCount allocations;
        result = slice(array, *part);
        const std::uint64_t bytes = result->elementCount() * sizeof(double);
        EXPECT_GE(allocations.bytes(), bytes);
        EXPECT_LE(allocations.bytes(), bytes + 2000); // no list of offsets
    }
    const AllocationCount allocations;
    const BVariant result = sliceRange(array, 100, 899);
    EXPECT_EQ(allocations.count(), 1u);
}

TEST(Allocations, OfCreatedArraysAreOneBlock)
{
    EXPECT_EQ(allocationsOf([] { createArray(WellKnownType::of<double>(), {1000}); }), 1u);
    EXPECT_EQ(allocationsOf([] { createArray(WellKnownType::of<double>(), {100, 1000}); }), 1u);
    EXPECT_EQ(allocationsOf([] { createUninitializedArray(WellKnownType::of<double>(), {1000}); }), 1u);
}

TEST(Allocations, OfAReorderedVectorDoNotGrowWithIt)
{
    const BVariant array = MakeCounting({1, 100000});
    const AllocationCount allocations;
    const BVariant other = array.reordered(DataOrdering::ColumnMajor);
    EXPECT_LT(allocations.bytes(), 1000u);
}

TEST(Allocations, OfASharedArrayWrittenToAreOneCopy)
{
    BVariant array = MakeCounting({1000});
    const BVariant copy(array);
    const AllocationCount allocations;
    setElement<double>(array, {0}, BVariant(9.0));
    EXPECT_LE(allocations.bytes(), 1000 * sizeof(double) + 1000);
    const AllocationCount further;
    for (std::uint64_t i = 0; i < 100; ++i)
        setElement<double>(array, {i}, BVariant(9.0));
    EXPECT_EQ(further.count(), 0u);
}

TEST(Allocations, OfAppendedVectorsAreThoseOfTheResult)
{
    const BVariant a = MakeCounting({10000}), b = MakeCounting({5000});
    const AllocationCount allocations;
    const BVariant joined = appendValues(a, b);
    EXPECT_LE(allocations.bytes(), 15000 * sizeof(double) + 1000);
}

TEST(Allocations, AreAllGivenBack)
{
    const AllocationCount allocations;
    {
        BVariant array = MakeCounting({100, 100});
        const BVariant copy(array);
        setElement<double>(array, {0, 0}, BVariant(9.0));
        BVariant part = slice(array, {IndexSet(IndexRange(1, 50, 2))});
        part = appendValues(BVariant(Samples<std::string>::other()), BVariant("b"));
        part = convertedTo(copy, WellKnownType::of<std::complex<float>>());
        part = array.reordered(DataOrdering::ColumnMajor);
        part = BVariant::runTime(std::array<int, 50>{});
        EXPECT_THROW(convertInPlace(part, WellKnownType::of<double>()), std::runtime_error);
        EXPECT_GT(allocations.count(), 5u);
    }
    EXPECT_EQ(allocations.liveBytes(), 0);
}
} // namespace Brindle::Quay
