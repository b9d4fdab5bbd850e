#include "foundations/variant/VariantOperations.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;

namespace {
constexpr char mismatch[] = "Data type mismatch, cannot provide iterable container";
} // namespace

template <class T>
class ContainerOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(ContainerOf, ElementTypes, ElementTypeName);

TYPED_TEST(ContainerOf, RunsOverAllElementsInStorageOrder)
{
    const auto elements = sampleElements<TypeParam>(6);
    const BVariant array(std::vector<TypeParam>(elements), {2, 3}, DataOrdering::ColumnMajor);
    const IterableContainer<TypeParam> container(array);
    ASSERT_EQ(container.end() - container.begin(), 6);
    EXPECT_EQ(static_cast<const void*>(container.begin()), array.constData()); // nothing is copied
    std::size_t i = 0;
    for (const TypeParam& element : container)
        EXPECT_TRUE(sameElement<TypeParam>(element, elements[i++]));
    EXPECT_EQ(i, 6u);
}

TYPED_TEST(ContainerOf, RunsOverAScalar)
{
    const IterableContainer<TypeParam> container{BVariant(Samples<TypeParam>::other())};
    ASSERT_EQ(container.end() - container.begin(), 1);
    EXPECT_TRUE(sameElement<TypeParam>(*container.begin(), Samples<TypeParam>::other()));
}

TYPED_TEST(ContainerOf, RunsOverNothingWithoutPointers)
{
    for (const BVariant& empty : {BVariant(), BVariant(std::vector<TypeParam>{}),
                                  BVariant(std::vector<TimePoint>{}), MakeCounting({0, 3})}) {
        const IterableContainer<TypeParam> container(empty);
        EXPECT_EQ(container.begin(), nullptr);
        EXPECT_EQ(container.end(), nullptr);
    }
}

TYPED_TEST(ContainerOf, RefusesElementsOfAnotherType)
{
    using Other = std::conditional_t<std::is_same_v<TypeParam, float>, double, float>;
    EXPECT_EQ(failureOf([] { IterableContainer<TypeParam>{BVariant(Samples<Other>::first())}; }),
              runtimeError(mismatch));
    EXPECT_EQ(failureOf([] { IterableContainer<TypeParam>{BVariant(sampleElements<Other>(3))}; }),
              runtimeError(mismatch));
    EXPECT_EQ(failureOf([] { IterableContainer<TypeParam>{BVariant::runTime(Samples<Other>::first())}; }),
              runtimeError(mismatch));
}

TYPED_TEST(ContainerOf, RunsOverARunTimeValueOfItsType)
{
    const IterableContainer<TypeParam> container(BVariant::runTime(Samples<TypeParam>::first()));
    ASSERT_EQ(container.end() - container.begin(), 1);
    EXPECT_TRUE(sameElement<TypeParam>(*container.begin(), Samples<TypeParam>::first()));
}

TEST(IterableContainer, KeepsItsElementsAlive)
{
    auto array = std::make_unique<BVariant>(std::vector<std::string>{"a", Samples<std::string>::other()});
    const IterableContainer<std::string> container(*array);
    array.reset();
    EXPECT_THAT(container, ElementsAre("a", Samples<std::string>::other()));
}

TEST(IterableContainer, IsNotTouchedByWritesToTheVariant)
{
    BVariant array = MakeVector({1, 2, 3});
    const IterableContainer<int> container(array);
    setElement<int>(array, {0}, BVariant(9));
    EXPECT_THAT(container, ElementsAre(1, 2, 3));
}

TEST(IterableContainer, IsCopiedWithAScalarInItsOwnBuffer)
{
    auto original = std::make_unique<IterableContainer<double>>(BVariant(2.5));
    const IterableContainer<double> copy(*original);
    EXPECT_NE(copy.begin(), original->begin());
    original.reset();
    EXPECT_THAT(copy, ElementsAre(2.5));
}

TEST(IterableContainer, ChecksPositionsOnRequest)
{
    const IterableContainer<int> container(MakeVector({1, 2}));
    EXPECT_EQ(container.at(1), 2);
    EXPECT_EQ(failureOf([&] { container.at(2); }), outOfRange("Indices out of bounds."));
    EXPECT_EQ(failureOf([&] { container.at(UINT64_MAX); }), outOfRange("Indices out of bounds."));
}
} // namespace Brindle::Quay
