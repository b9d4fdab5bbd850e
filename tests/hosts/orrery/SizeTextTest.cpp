#include "hosts/orrery/SizeText.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace Orrery::Host {
namespace {

TEST(SizeText, CountsBytesBelowAThousand)
{
    EXPECT_EQ(sizeText(0), "0 B");
    EXPECT_EQ(sizeText(999), "999 B");
}

TEST(SizeText, TakesTheLargestUnitThatLeavesAtLeastOne)
{
    EXPECT_EQ(sizeText(1000), "1.0 kB");
    EXPECT_EQ(sizeText(38210), "38.2 kB");
    EXPECT_EQ(sizeText(999949), "999.9 kB");
    EXPECT_EQ(sizeText(999950), "1.0 MB");
    EXPECT_EQ(sizeText(1600000000), "1.6 GB");
    EXPECT_EQ(sizeText(UINT64_MAX), "18.4 EB");
}

} // namespace
} // namespace Orrery::Host
