#include "foundations/property/SimpleProperty.h"

#include "foundations/variant/Variant.h"
#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

using namespace TreeTest;

TEST(SimpleProperty, StartsWithNullAndFlagZero)
{
    const SimpleProperty leaf(QStringLiteral("Start"));
    EXPECT_EQ(leaf.GetName(), QStringLiteral("Start"));
    EXPECT_TRUE(leaf.GetValue().isNull());
    EXPECT_EQ(leaf.GetValueIsCellArray(), IsCellArrayFalse);
}

TEST(SimpleProperty, KeepsValueAndFlag)
{
    SimpleProperty leaf(QStringLiteral("x"));
    EXPECT_EQ(leaf.SetValue(BVariant(std::vector<double>{1.0, 2.0}), IsCellArrayTrue), ER_SUCCESS);
    EXPECT_EQ(leaf.GetValueIsCellArray(), IsCellArrayTrue);
    EXPECT_EQ(leaf.GetValue().elementCount(), 2U);
    EXPECT_EQ(leaf.SetValue(BVariant(3.0), IsCellArrayFalse), ER_SUCCESS);
    EXPECT_EQ(leaf.GetValueIsCellArray(), IsCellArrayFalse);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(leaf.GetValue()), 3.0);
    EXPECT_EQ(leaf.SetValue(BVariant(), IsCellArrayTrue), ER_SUCCESS);
    EXPECT_TRUE(leaf.GetValue().isNull());
    EXPECT_EQ(leaf.GetValueIsCellArray(), IsCellArrayTrue);
}

TEST(SimpleProperty, SharesTheElementsOfAnArrayUntilOneIsWritten)
{
    SimpleProperty leaf(QStringLiteral("x"));
    BVariant array(std::vector<double>{1.0, 2.0});
    const void* elements = array.constData();
    ASSERT_EQ(leaf.SetValue(array, IsCellArrayFalse), ER_SUCCESS);
    BVariant read = leaf.GetValue();
    EXPECT_EQ(read.constData(), elements);
    Brindle::Quay::setElement<double>(read, {0}, 9.0);
    EXPECT_EQ(*static_cast<const double*>(leaf.GetValue().constData()), 1.0);
    Brindle::Quay::setElement<double>(array, {0}, 8.0);
    EXPECT_EQ(*static_cast<const double*>(leaf.GetValue().constData()), 1.0);
}

TEST(SimpleProperty, TakesOverAMovedArray)
{
    SimpleProperty leaf(QStringLiteral("x"));
    BVariant array(std::vector<double>(1000, 1.0));
    const void* elements = array.constData();
    ASSERT_EQ(leaf.SetValue(std::move(array), IsCellArrayFalse), ER_SUCCESS);
    EXPECT_EQ(leaf.GetValue().constData(), elements);
}

TEST(SimpleProperty, CloneCarriesNameFlagsValueAndCellFlag)
{
    PropertyObject folder;
    SimpleProperty* leaf = addValue(folder, QStringLiteral("x"));
    ASSERT_EQ(leaf->SetValue(BVariant(std::string("t")), IsCellArrayTrue), ER_SUCCESS);
    leaf->SetPropertyFlags(PropertyFlagHidden);
    const std::unique_ptr<AbstractProperty> clone(leaf->Clone());
    auto* copy = dynamic_cast<SimpleProperty*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetParent(), nullptr);
    EXPECT_EQ(copy->GetName(), QStringLiteral("x"));
    EXPECT_EQ(copy->GetPropertyFlags(), 2U);
    EXPECT_EQ(copy->GetValueIsCellArray(), IsCellArrayTrue);
    EXPECT_TRUE(Brindle::Quay::exactlyEqual(copy->GetValue(), leaf->GetValue()));
    ASSERT_EQ(copy->SetValue(BVariant(1.0), IsCellArrayFalse), ER_SUCCESS);
    EXPECT_EQ(Brindle::Quay::getScalar<std::string>(leaf->GetValue()), "t");
}

} // namespace
} // namespace Orrery
