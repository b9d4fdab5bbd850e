#include "hosts/orrery/manual/Roff.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

namespace {

std::string marked(const char* text)
{
    return roffText(text, "orrery", {"ls", "show"}, {"FILE", "PATH", "A"});
}

} // namespace

TEST(Roff, KeepsEveryCharacterOfALiteral)
{
    EXPECT_EQ(roffLiteral("--a 'b' \"c\" \\d `e` ^f ~g"),
              "\\-\\-a \\(aqb\\(aq \\(dqc\\(dq \\(rsd \\(gae\\(ga \\(haf \\(tig");
    EXPECT_EQ(roffLiteral(".TH"), "\\&.TH");
    EXPECT_EQ(roffLiteral("'x"), "\\(aqx");
    EXPECT_EQ(roffLiteral("µ°\xF0\x9D\x84\x9E"), "\\[u00B5]\\[u00B0]\\[u1D11E]");
    EXPECT_EQ(roffLiteral(""), "");
}

TEST(Roff, MarksOptionsAndWhatStandsForValues)
{
    EXPECT_EQ(marked("-a and --ignore-types."), "\\fB\\-a\\fR and \\fB\\-\\-ignore\\-types\\fR.");
    EXPECT_EQ(marked("below PATH, PATHS"), "below \\fIPATH\\fR, PATHS");
    EXPECT_EQ(marked("--range A:B is. A thing"), "\\fB\\-\\-range\\fR \\fIA\\fR:B is. A thing");
    EXPECT_EQ(marked("read-only, 20-30, -1.5"), "read-only, 20-30, -1.5");
}

TEST(Roff, TurnsQuotedCommandsIntoTheirPages)
{
    EXPECT_EQ(marked("'orrery ls' and ('orrery\nshow')"),
              "\\fBorrery\\-ls\\fR(1) and (\\fBorrery\\-show\\fR(1))");
    EXPECT_EQ(marked("'orrery COMMAND --help'"), "\\fBorrery COMMAND \\-\\-help\\fR");
    EXPECT_EQ(marked("h5dump(1) reads v(1)"), "\\fBh5dump\\fR(1) reads \\fBv\\fR(1)");
}

TEST(Roff, PrintsApostrophesAndQuotes)
{
    EXPECT_EQ(marked("it isn't 'dumb'"), "it isn\\(cqt \\(oqdumb\\(cq");
    EXPECT_EQ(marked("'open"), "\\(cqopen");
    EXPECT_EQ(marked(".re and .im"), "\\&.re and .im");
    EXPECT_EQ(marked("\xC2\xB0"
                     "C"),
              "\\[u00B0]C");
}

} // namespace Orrery::Host
