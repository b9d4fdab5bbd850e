#include "foundations/variant/Variant.h"
#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <QLatin1String>

#include <cstdint>
#include <limits>
#include <string>

// What a host writes as the second argument must compile, not be ambiguous, and be stored as what it is.

namespace Orrery {
namespace {

using namespace TreeTest;
using Brindle::Quay::getScalar;

const QString s_name = QStringLiteral("x");

class SetPropertyOverloads : public ::testing::Test
{
protected:
    BVariant stored() const
    {
        const auto* leaf = dynamic_cast<const SimpleProperty*>(folder.GetPropertyConstPtr(s_name));
        EXPECT_NE(leaf, nullptr);
        return leaf ? leaf->GetValue() : BVariant();
    }
    unsigned int storedCode() const { return stored().getWellKnownType().code(); }

    PropertyObject folder;
};

TEST_F(SetPropertyOverloads, LiteralZeroIsAnInt)
{
    ASSERT_EQ(folder.SetProperty(s_name, 0), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 6U);
    EXPECT_EQ(getScalar<int>(stored()), 0);
}

TEST_F(SetPropertyOverloads, IntegersKeepWidthAndSign)
{
    ASSERT_EQ(folder.SetProperty(s_name, std::int64_t(0)), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 7U);
    ASSERT_EQ(folder.SetProperty(s_name, std::numeric_limits<std::int64_t>::min()), ER_SUCCESS);
    EXPECT_EQ(getScalar<std::int64_t>(stored()), std::numeric_limits<std::int64_t>::min());
    ASSERT_EQ(folder.SetProperty(s_name, 7U), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16390U);
    EXPECT_EQ(getScalar<unsigned int>(stored()), 7U);
    ASSERT_EQ(folder.SetProperty(s_name, std::numeric_limits<std::uint64_t>::max()), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16391U);
    EXPECT_EQ(getScalar<std::uint64_t>(stored()), std::numeric_limits<std::uint64_t>::max());
    ASSERT_EQ(folder.SetProperty(s_name, std::int16_t(-3)), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 5U);
    ASSERT_EQ(folder.SetProperty(s_name, std::uint16_t(3)), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16389U);
    ASSERT_EQ(folder.SetProperty(s_name, std::int8_t(-3)), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 4U);
    ASSERT_EQ(folder.SetProperty(s_name, std::uint8_t(3)), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16388U);
    ASSERT_EQ(folder.SetProperty(s_name, 5LL), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 7U);
    ASSERT_EQ(folder.SetProperty(s_name, 5ULL), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16391U);
}

TEST_F(SetPropertyOverloads, BoolIsABool)
{
    ASSERT_EQ(folder.SetProperty(s_name, true), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16387U);
    EXPECT_TRUE(getScalar<bool>(stored()));
    ASSERT_EQ(folder.SetProperty(s_name, false), ER_SUCCESS);
    EXPECT_FALSE(getScalar<bool>(stored()));
}

TEST_F(SetPropertyOverloads, FloatingPointKeepsItsWidth)
{
    ASSERT_EQ(folder.SetProperty(s_name, 0.1F), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 2U);
    EXPECT_EQ(getScalar<float>(stored()), 0.1F);
    ASSERT_EQ(folder.SetProperty(s_name, 0.1), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 1U);
    EXPECT_EQ(getScalar<double>(stored()), 0.1);
}

TEST_F(SetPropertyOverloads, EveryKindOfTextIsText)
{
    ASSERT_EQ(folder.SetProperty(s_name, "text"), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16U);
    EXPECT_EQ(getScalar<std::string>(stored()), "text");
    const char* pointer = "pointer";
    ASSERT_EQ(folder.SetProperty(s_name, pointer), ER_SUCCESS);
    EXPECT_EQ(getScalar<std::string>(stored()), "pointer");
    ASSERT_EQ(folder.SetProperty(s_name, std::string("string")), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16U);
    EXPECT_EQ(getScalar<std::string>(stored()), "string");
    const QString text = QStringLiteral("\u03a9 and \u20ac");
    ASSERT_EQ(folder.SetProperty(s_name, text), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16U);
    EXPECT_EQ(getScalar<std::string>(stored()), "\xce\xa9 and \xe2\x82\xac");
    ASSERT_EQ(folder.SetProperty(s_name, QLatin1String("latin")), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 16U);
    EXPECT_EQ(getScalar<std::string>(stored()), "latin");
}

TEST_F(SetPropertyOverloads, AVariantIsKeptAsItIs)
{
    ASSERT_EQ(folder.SetProperty(s_name, BVariant(std::vector<int>{1, 2, 3})), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 6U);
    EXPECT_EQ(stored().elementCount(), 3U);
    BVariant variable(2.5);
    ASSERT_EQ(folder.SetProperty(s_name, variable), ER_SUCCESS); // not const: still no other overload
    EXPECT_EQ(getScalar<double>(stored()), 2.5);
}

TEST_F(SetPropertyOverloads, ANumberReplacesATextAndBack)
{
    ASSERT_EQ(folder.SetProperty(s_name, "text"), ER_SUCCESS);
    ASSERT_EQ(folder.SetProperty(s_name, 1), ER_SUCCESS);
    EXPECT_EQ(storedCode(), 6U);
    ASSERT_EQ(folder.SetProperty(s_name, QStringLiteral("text")), ER_SUCCESS);
    QString text;
    EXPECT_EQ(folder.GetProperty(s_name, &text), ER_SUCCESS);
    EXPECT_EQ(text, QStringLiteral("text"));
}

TEST_F(SetPropertyOverloads, AllFailAlikeOverAFolder)
{
    const HostFolder* child = addFolder(folder, s_name);
    EXPECT_EQ(folder.SetProperty(s_name, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetProperty(s_name, true), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetProperty(s_name, "text"), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetProperty(s_name, std::string("text")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.GetPropertyPtr(s_name), child);
}

} // namespace
} // namespace Orrery
