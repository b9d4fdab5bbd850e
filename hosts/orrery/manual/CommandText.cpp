#include "hosts/orrery/manual/CommandText.h"

#include <algorithm>
#include <string_view>

namespace Orrery::Host {

namespace {

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// What the checks of an option expect, as the library puts it behind the name of the type: ":INT in [1 - 17]".
std::string checksOf(const CLI::Option& option)
{
    std::string checks;
    try {
        for (int i = 0;; ++i)
            checks += ':' + const_cast<CLI::Option&>(option).get_validator(i)->get_description();
    } catch (const CLI::OptionNotFound&) { // there is no other way to learn that it was the last
    }
    return checks;
}

std::string valueOf(const CLI::Option& option)
{
    if (option.get_items_expected_max() == 0)
        return {};
    const std::string name = option.get_type_name();
    const std::string checks = checksOf(option);
    const bool hasChecks = checks.size() < name.size() && name.substr(name.size() - checks.size()) == checks;
    return name.substr(0, name.size() - (hasChecks ? checks.size() : 0));
}

OptionText optionText(const CLI::Option& option)
{
    OptionText text;
    for (const std::string& name : option.get_snames())
        text.names.push_back('-' + name);
    for (const std::string& name : option.get_lnames())
        text.names.push_back("--" + name);
    if (text.names.empty())
        text.names.push_back(option.get_name(true));
    text.value = valueOf(option);
    text.description = option.get_description();
    text.defaultValue = option.get_default_str();
    text.isRequired = option.get_required();
    text.isRepeated = option.get_items_expected_max() > 1;
    return text;
}

std::vector<std::string> split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + separator.size(), text.size()));
    }
    return parts;
}

std::string withoutIndent(const std::string& line)
{
    return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

void addExamples(const std::string& paragraph, const std::string& program, CommandText* text)
{
    for (const std::string& line : split(paragraph.substr(paragraph.find(':') + 1), "\n")) {
        const std::string words = withoutIndent(line);
        if (startsWith(words, program + ' ') || text->examples.empty())
            text->examples.push_back(words);
        else
            text->examples.back() += " \\\n    " + words;
    }
}

void addFooter(const std::string& footer, const std::string& program, CommandText* text)
{
    static const std::string exitCodes = "Exit codes: ";
    for (std::string& paragraph : split(footer, "\n\n")) {
        if (startsWith(paragraph, "Example:") || startsWith(paragraph, "Examples:"))
            addExamples(paragraph, program, text);
        else if (startsWith(paragraph, exitCodes))
            text->exitCodes = paragraph.substr(exitCodes.size(), paragraph.rfind('.') - exitCodes.size());
        else
            text->paragraphs.push_back(std::move(paragraph));
    }
}

CommandText commandText(const CLI::App& command, const std::string& program)
{
    CommandText text;
    text.name = command.get_name();
    text.description = command.get_description();
    for (const CLI::Option* const option : command.get_options()) {
        if (option->get_group().empty())
            continue;
        (option->get_positional() ? text.arguments : text.options).push_back(optionText(*option));
    }
    addFooter(command.get_footer(), program, &text);
    return text;
}

} // namespace

ProgramText textOf(const CLI::App& program)
{
    ProgramText text;
    text.program = commandText(program, program.get_name());
    const auto isShown = [](const CLI::App* command) { return !command->get_group().empty(); };
    for (const CLI::App* const command : program.get_subcommands(isShown))
        text.commands.push_back(commandText(*command, program.get_name()));
    return text;
}

} // namespace Orrery::Host
