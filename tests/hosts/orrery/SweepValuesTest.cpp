#include "hosts/orrery/SweepValues.h"

#include "hosts/orrery/Failure.h"
#include "tests/hosts/orrery/ScratchFolder.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

namespace {

std::string refusalOf(const std::string& text, ExitCode code)
{
    try {
        parseSweep(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), code);
        return failure.what();
    }
    return "was accepted";
}

} // namespace

TEST(SweepValues, AreNumbersBehindAName)
{
    const SweepValues sweep = parseSweep("r=-40, 0,1e3,inf");
    EXPECT_EQ(sweep.name, "r");
    EXPECT_EQ(sweep.values, (std::vector<double>{-40, 0, 1000, std::numeric_limits<double>::infinity()}));
    EXPECT_FALSE(sweep.units);
    EXPECT_EQ(parseSweep("a b=1").name, "a b");
}

TEST(SweepValues, MayStandInAFile)
{
    const ScratchFolder folder;
    const std::string path = folder.write("values", "1, 2\t3\r\n\n  4,5\n6");
    EXPECT_EQ(parseSweep("r=@" + path).values, (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(parseSweep("r=@" + folder.write("empty", "")).values.empty());
}

TEST(SweepValues, AreRefusedInAnyOtherForm)
{
    for (const char* const text : {"", "r", "r=", "=1"})
        EXPECT_EQ(refusalOf(text, ExitUsage),
                  "--sweep: expected NAME=v1,v2,... or NAME=@FILE, found '" + std::string(text) + "'");
    EXPECT_EQ(refusalOf("r=1,,2", ExitUsage), "--sweep: expected a number, found ''");
    EXPECT_EQ(refusalOf("r=1,1k", ExitUsage), "--sweep: expected a number, found '1k'");
}

TEST(SweepValues, OfAFileNameItAndTheLine)
{
    const ScratchFolder folder;
    const std::string path = folder.write("values", "1\n2 x\n");
    EXPECT_EQ(refusalOf("r=@" + path, ExitFailed), path + ": line 2: expected a number, found 'x'");
    EXPECT_EQ(refusalOf("r=@" + folder.path("none"), ExitFailed),
              folder.path("none") + ": No such file or directory");
}

} // namespace Orrery::Host
