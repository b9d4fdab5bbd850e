#include "hosts/orrery/manual/CommandText.h"

#include "hosts/orrery/commands/Commands.h"

#include <gmock/gmock.h>

#include <set>

namespace Orrery::Host {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

ProgramText textOfProgram()
{
    CLI::App program;
    Action action;
    setUpProgram(program, {[] {}, [](const std::string&) {}}, &action);
    return textOf(program);
}

CommandText textOfCommand(const char* footer)
{
    CLI::App program("", "orrery");
    program.add_subcommand("ls", "List")->footer(footer);
    return textOf(program).commands.at(0);
}

} // namespace

// The manual and the completion say no more than the helps do, so these must say all.
TEST(EachCommand, TellsWhatItDoesInItsHelp)
{
    const ProgramText text = textOfProgram();
    ASSERT_GT(text.commands.size(), 5U);
    std::set<std::string> names;
    for (const CommandText& command : text.commands) {
        SCOPED_TRACE(command.name);
        EXPECT_TRUE(names.insert(command.name).second);
        EXPECT_THAT(command.description, Not(IsEmpty()));
        EXPECT_NE(command.description.back(), '.') << "a list of commands has no sentences";
        EXPECT_THAT(command.paragraphs, Not(IsEmpty()));
        EXPECT_THAT(command.examples, Not(IsEmpty()));
        for (const std::string& example : command.examples)
            EXPECT_EQ(example.find("orrery " + command.name + ' '), 0U) << example;
    }
}

TEST(EachCommand, TellsWhatEachOptionDoes)
{
    const ProgramText text = textOfProgram();
    std::vector<CommandText> all = text.commands;
    all.push_back(text.program);
    for (const CommandText& command : all) {
        std::vector<OptionText> options = command.options;
        EXPECT_GE(options.size(), 1U);
        options.insert(options.end(), command.arguments.begin(), command.arguments.end());
        for (const OptionText& option : options) {
            SCOPED_TRACE(command.name + ' ' + option.names.front());
            EXPECT_THAT(option.description, Not(IsEmpty()));
            EXPECT_TRUE(option.description.empty() || option.description.back() != '.');
        }
    }
}

TEST(CommandText, TakesAFooterApart)
{
    const CommandText text =
        textOfCommand("One\nand two.\n\nExit codes: 0 good, 1 bad.\n\nThree.\n\n"
                      "Examples: orrery ls a\n          orrery ls b\n            --long");
    EXPECT_THAT(text.paragraphs, ElementsAre("One\nand two.", "Three."));
    EXPECT_EQ(text.exitCodes, "0 good, 1 bad");
    EXPECT_THAT(text.examples, ElementsAre("orrery ls a", "orrery ls b \\\n    --long"));
    EXPECT_THAT(textOfCommand("Example: orrery ls").examples, ElementsAre("orrery ls"));
    EXPECT_THAT(textOfCommand("").paragraphs, IsEmpty());
}

TEST(CommandText, TellsArgumentsAndOptionsApart)
{
    CLI::App program("", "orrery");
    CLI::App* const command = program.add_subcommand("ls", "List");
    std::string value;
    std::vector<std::string> values;
    bool flag = false;
    int digits = 12;
    command->add_option("FILE", value, "A file")->required()->type_name("");
    command->add_option("MORE", values, "More of them")->type_name("");
    command->add_option("-r,--range", value, "Some")->type_name("A:B");
    command->add_option("--digits", digits, "Digits")
        ->type_name("N")
        ->check(CLI::Range(1, 17))
        ->capture_default_str();
    command->add_flag("-l,--long", flag, "All");
    command->add_flag("--secret", flag, "Nobody's business")->group("");
    program.add_subcommand("hidden", "Nobody's business")->group("");
    const ProgramText text = textOf(program);
    ASSERT_EQ(text.commands.size(), 1U);
    const CommandText& ls = text.commands.front();
    ASSERT_EQ(ls.arguments.size(), 2U);
    EXPECT_THAT(ls.arguments[0].names, ElementsAre("FILE"));
    EXPECT_TRUE(ls.arguments[0].isRequired);
    EXPECT_FALSE(ls.arguments[0].isRepeated);
    EXPECT_TRUE(ls.arguments[1].isRepeated);
    ASSERT_EQ(ls.options.size(), 4U); // with the help's
    EXPECT_THAT(ls.options[1].names, ElementsAre("-r", "--range"));
    EXPECT_EQ(ls.options[1].value, "A:B");
    EXPECT_EQ(ls.options[2].value, "N");
    EXPECT_EQ(ls.options[2].defaultValue, "12");
    EXPECT_THAT(ls.options[3].names, ElementsAre("-l", "--long"));
    EXPECT_EQ(ls.options[3].value, "");
}

} // namespace Orrery::Host
