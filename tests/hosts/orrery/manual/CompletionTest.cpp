#include "hosts/orrery/manual/Completion.h"

#include <gmock/gmock.h>

namespace Orrery::Host {

namespace {

std::string kindOfArgument(const char* name, const char* description)
{
    OptionText option;
    option.names = {name};
    option.description = description;
    return completionKind(option);
}

std::string kindOfValue(const char* value, const char* description)
{
    OptionText option;
    option.names = {"--option"};
    option.value = value;
    option.description = description;
    return completionKind(option);
}

} // namespace

TEST(CompletionKind, OfFilesIsToldByTheirDescription)
{
    EXPECT_EQ(kindOfArgument("FILE", "Data file"), "files h5 hdf5");
    EXPECT_EQ(kindOfArgument("B", "Data file to compare with it"), "files h5 hdf5");
    EXPECT_EQ(kindOfArgument("FILE", "SPICE raw, Touchstone or CSV file"),
              "files raw s1p s2p s3p s4p ts csv");
    EXPECT_EQ(kindOfValue("OUT", "Picture to write, .svg or .png"), "files svg png");
    EXPECT_EQ(kindOfValue("OUT", "Somewhere"), "files");
    EXPECT_EQ(kindOfValue("TEXTFILE", "Something"), "files");
}

TEST(CompletionKind, OfOtherValuesIsToldByTheirName)
{
    EXPECT_EQ(kindOfArgument("PATH", "The variable"), "nodes");
    EXPECT_EQ(kindOfArgument("FROM", "Its unit"), "units");
    EXPECT_EQ(kindOfArgument("TO", "The unit to convert it to"), "units");
    EXPECT_EQ(kindOfValue("U", "Convert to these"), "units");
    EXPECT_EQ(kindOfValue("UNIT,...", "Units to show"), "units");
    EXPECT_EQ(kindOfValue("TYPE", "Only those"), "types");
    EXPECT_EQ(kindOfValue("a|b|c", "Choose"), "words a b c");
    EXPECT_EQ(kindOfValue("N", "Which offset"), "none");
    EXPECT_EQ(kindOfArgument("NAME", "The variable, such as i(vd)"), "none");
}

TEST(BashCompletion, QuotesWhatIsInTheTexts)
{
    ProgramText text;
    text.program.name = "orrery";
    CommandText command;
    command.name = "it's";
    text.commands.push_back(command);
    EXPECT_THAT(bashCompletion(text), ::testing::HasSubstr("_orrery_commands='it'\\''s'\n"));
}

} // namespace Orrery::Host
