#include "hosts/orrery/Colour.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Output.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

TEST(Colour, IsTakenFromItsOption)
{
    EXPECT_EQ(parseColourUse("auto"), ColourUse::Auto);
    EXPECT_EQ(parseColourUse("always"), ColourUse::Always);
    EXPECT_EQ(parseColourUse("never"), ColourUse::Never);
    for (const char* const text : {"", "Auto", "yes"})
        EXPECT_THROW(parseColourUse(text), Failure) << text;
}

TEST(Colour, IsWantedByWhoSaysSoAndByNoFile)
{
    EXPECT_TRUE(wantsColour(ColourUse::Always, -1));
    EXPECT_FALSE(wantsColour(ColourUse::Never, -1));
    EXPECT_FALSE(wantsColour(ColourUse::Auto, -1));
}

TEST(Colour, EndsBehindTheText)
{
    EXPECT_EQ(inked(Ink::Error, "orrery:"), "\x1b[1;31morrery:\x1b[0m");
    EXPECT_EQ(inked(Ink::Plain, "x"), "x");
    EXPECT_EQ(inked(Ink::Error, ""), "");
}

TEST(Colour, IsInAnOutputOnlyIfItIsTold)
{
    Output out;
    EXPECT_EQ(out.painted(Ink::Added, "x"), "x");
    out.setColoured(true);
    EXPECT_EQ(out.painted(Ink::Added, "x"), "\x1b[32mx\x1b[0m");
}

} // namespace Orrery::Host
