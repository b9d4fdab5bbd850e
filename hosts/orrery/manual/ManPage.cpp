#include "hosts/orrery/manual/ManPage.h"

#include "hosts/orrery/manual/Roff.h"

#include <algorithm>
#include <string_view>

namespace Orrery::Host {

namespace {

const char s_description[] =
    R"(A data file is a tree of named variables: scalars and arrays, with physical units and with the axes over which
they lie. 'orrery import' makes one of what a simulator wrote, and the other commands list it, print it, draw it and
compare it. Where a PATH is asked for, it is the names from the root of the tree down to the node, with '/' between
them, such as run/dc1/i(vd), as 'orrery ls' prints them. Most shells want such names in quotes. A character that can't
stand in a name of a path is written as % and two hexadecimal digits.

Values may be shown in any unit of their kind: a name that 'orrery units' lists, or a product of SI units such as
kg*m^2/s^3, with any of the SI prefixes.

Only what was asked for is written on standard output. A failure is one line on standard error, which begins with
orrery:, and a text that is no unit is shown below it. A file is written whole or not at all.)";

const char s_files[] =
    R"(A data file is an HDF5 file. Each array in it can be read by h5dump(1) and by every other program that reads HDF5,
at the path that it has in the tree.)";

struct Variable
{
    const char* name;
    const char* meaning;
};

const Variable s_environment[] = {
    {"NO_COLOR",
     "If it is set and not empty, nothing is printed in colour, unless --color=always asks for it."},
    {"TERM", "If it is not set, or is dumb, the terminal is taken to have no colours."},
};

/// Everything that stands in capitals for a value in the texts of a command.
std::vector<std::string> placeholders(const CommandText& command)
{
    std::vector<std::string> names = {"COMMAND", "PATH"};
    for (const OptionText& argument : command.arguments)
        names.push_back(argument.names.front());
    for (const OptionText& option : command.options) {
        const std::size_t end = option.value.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
        names.push_back(option.value.substr(0, end));
    }
    names.erase(std::remove(names.begin(), names.end(), std::string()), names.end());
    return names;
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// One page, written from top to bottom.
class Page
{
public:
    Page(const ProgramText& text, const CommandText& command)
        : m_program(text.program.name)
        , m_names(placeholders(command))
    {
        for (const CommandText& each : text.commands)
            m_commands.push_back(each.name);
    }

    void title(const std::string& name, const Edition& edition);
    void section(const char* name) { m_roff += std::string(".SH ") + name + '\n'; }
    void paragraph(const std::string& text);
    void indented(const std::vector<std::string>& lines);
    void tagged(const std::string& tag, const std::string& text);
    void synopsis(const std::string& line) { m_roff += line + '\n'; }
    void option(const OptionText& option);
    void example(const std::string& line);
    void exitCodes(const std::string& codes);
    void references(std::vector<std::string> names);

    std::string body(const std::string& text) const { return roffText(text, m_program, m_commands, m_names); }
    std::string take() { return std::move(m_roff); }

private:
    std::string m_program;
    std::vector<std::string> m_commands;
    std::vector<std::string> m_names;
    std::string m_roff;
};

void Page::title(const std::string& name, const Edition& edition)
{
    std::string capitals = name;
    std::transform(capitals.begin(), capitals.end(), capitals.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    m_roff += ".\\\" Written by the build from the texts of '" + m_program + " --help'.\n";
    m_roff += ".TH " + roffLiteral(capitals) + " 1 \"" + edition.date + "\" \"" + m_program + ' ' +
              edition.version + "\" \"Orrery Manual\"\n";
    m_roff += ".nh\n.ad l\n"; // paths and options shouldn't be hyphenated or stretched
}

// The lines as text to fill. One that begins with an option, behind the end of a sentence, begins a text of its own.
std::vector<std::string> filled(const std::vector<std::string>& lines)
{
    std::vector<std::string> texts;
    for (const std::string& line : lines) {
        if (texts.empty() || (line.front() == '-' && texts.back().back() == '.'))
            texts.push_back(line);
        else
            texts.back() += ' ' + line;
    }
    return texts;
}

// Lines that are indented in a help are a list or, where they have columns, a table that keeps its shape.
void Page::indented(const std::vector<std::string>& lines)
{
    const bool isTable = std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("  ", line.find_first_not_of(' ')) != std::string::npos;
    });
    m_roff += isTable ? ".RS 2\n.nf\n" : ".RS 2\n";
    for (const std::string& line : lines)
        m_roff += body(line.substr(line.find_first_not_of(' '))) + '\n';
    m_roff += isTable ? ".fi\n.RE\n" : ".RE\n";
}

void Page::paragraph(const std::string& text)
{
    std::vector<std::string> lines = split(text, '\n');
    const auto isIndented = [](const std::string& line) { return line.front() == ' '; };
    for (auto line = lines.begin(); line != lines.end();) {
        const bool isList = isIndented(*line);
        const auto end = std::find_if(line, lines.end(),
                                      [&](const std::string& other) { return isIndented(other) != isList; });
        const std::vector<std::string> piece(line, end);
        if (isList) {
            indented(piece);
        } else {
            for (const std::string& part : filled(piece))
                m_roff += ".PP\n" + body(part) + '\n';
        }
        line = end;
    }
}

void Page::tagged(const std::string& tag, const std::string& text)
{
    m_roff += ".TP\n" + tag + '\n' + text + '\n';
}

void Page::option(const OptionText& option)
{
    std::string tag;
    for (const std::string& name : option.names) {
        const bool isArgument = name.front() != '-';
        tag += (tag.empty() ? "" : ", ") + (isArgument ? roffItalic(name) : roffBold(name));
    }
    if (!option.value.empty() && option.names.front().front() == '-')
        tag += ' ' + roffItalic(option.value);
    if (option.isRepeated)
        tag += " ...";
    std::string text = body(option.description) + '.';
    if (option.isRequired && option.names.front().front() == '-')
        text += " It must be given.";
    if (!option.defaultValue.empty())
        text += " The default is " + roffLiteral(option.defaultValue) + '.';
    tagged(tag, text);
}

void Page::example(const std::string& line)
{
    m_roff += ".PP\n.nf\n.RS 2\n" + roffLiteral(line) + "\n.RE\n.fi\n";
}

// "0 good, 1 failure"
void Page::exitCodes(const std::string& codes)
{
    for (const std::string& code : split(codes, ',')) {
        const std::size_t number = code.find_first_not_of(' ');
        const std::size_t blank = code.find(' ', number);
        std::string meaning = code.substr(blank + 1);
        meaning.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(meaning.front())));
        tagged(roffBold(code.substr(number, blank - number)), body(meaning) + '.');
    }
}

void Page::references(std::vector<std::string> names)
{
    section("SEE ALSO");
    for (std::size_t i = 0; i < names.size(); ++i)
        m_roff += ".BR " + roffLiteral(names[i]) + " (1)" + (i + 1 < names.size() ? " ,\n" : "\n");
}

std::string pageName(const ProgramText& text, const CommandText& command)
{
    return text.program.name + '-' + command.name;
}

std::string synopsisOf(const std::string& program, const CommandText& command)
{
    std::string line = roffBold(program + ' ' + command.name) + " [" + roffItalic("OPTIONS") + ']';
    for (const OptionText& argument : command.arguments) {
        const std::string name = roffItalic(argument.names.front()) + (argument.isRepeated ? " ..." : "");
        line += argument.isRequired ? ' ' + name : " [" + name + ']';
    }
    for (const OptionText& option : command.options) {
        if (option.isRequired)
            line += ' ' + roffBold(option.names.front()) + ' ' + roffItalic(option.value);
    }
    return line;
}

// What a description begins with is in capitals in a help, and not behind the dash of NAME.
std::string asPhrase(std::string text)
{
    text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    if (text.back() == '.')
        text.pop_back();
    return text;
}

void addName(Page* page, const std::string& name, const std::string& description)
{
    page->section("NAME");
    page->synopsis(roffLiteral(name) + " \\- " + roffLiteral(asPhrase(description)));
}

void addEnvironment(Page* page)
{
    page->section("ENVIRONMENT");
    for (const Variable& variable : s_environment)
        page->tagged(roffBold(variable.name), page->body(variable.meaning));
}

std::vector<std::string> splitParagraphs(std::string_view text)
{
    std::vector<std::string> paragraphs;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find("\n\n"), text.size());
        paragraphs.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 2, text.size()));
    }
    return paragraphs;
}

void addCommands(Page* page, const ProgramText& text)
{
    page->section("COMMANDS");
    for (const CommandText& command : text.commands)
        page->tagged(roffReference(pageName(text, command)), page->body(command.description) + '.');
}

void addExamples(Page* page, const ProgramText& text)
{
    page->section("EXAMPLES");
    for (const CommandText& command : text.commands) {
        if (command.examples.empty())
            continue;
        page->paragraph(command.description + ':');
        page->example(command.examples.front());
    }
}

} // namespace

std::string programPage(const ProgramText& text, const Edition& edition)
{
    const std::string& name = text.program.name;
    Page page(text, text.program);
    page.title(name, edition);
    addName(&page, name, text.program.description);
    page.section("SYNOPSIS");
    page.synopsis(roffBold(name) + " [" + roffItalic("OPTIONS") + "] " + roffItalic("COMMAND") + " [" +
                  roffItalic("ARGUMENTS") + "]\n.br");
    page.synopsis(roffBold(name) + ' ' + roffItalic("COMMAND") + ' ' + roffBold("--help"));
    page.section("DESCRIPTION");
    for (const std::string& paragraph : splitParagraphs(s_description))
        page.paragraph(paragraph);
    addCommands(&page, text);
    page.section("OPTIONS");
    for (const OptionText& option : text.program.options)
        page.option(option);
    for (const std::string& paragraph : text.program.paragraphs)
        page.paragraph(paragraph);
    page.section("EXIT STATUS");
    page.exitCodes(text.program.exitCodes);
    addEnvironment(&page);
    page.section("FILES");
    page.paragraph(s_files);
    addExamples(&page, text);
    std::vector<std::string> others;
    for (const CommandText& command : text.commands)
        others.push_back(pageName(text, command));
    others.emplace_back("h5dump");
    page.references(std::move(others));
    return page.take();
}

std::string commandPage(const ProgramText& text, const CommandText& command, const Edition& edition)
{
    const std::string& program = text.program.name;
    Page page(text, command);
    page.title(pageName(text, command), edition);
    addName(&page, pageName(text, command), command.description);
    page.section("SYNOPSIS");
    page.synopsis(synopsisOf(program, command));
    page.section("DESCRIPTION");
    for (const std::string& paragraph : command.paragraphs)
        page.paragraph(paragraph);
    page.section("OPTIONS");
    for (const OptionText& argument : command.arguments)
        page.option(argument);
    for (const OptionText& option : command.options)
        page.option(option);
    page.paragraph("The options of the program itself, such as --color, are told in " + program + "(1).");
    page.section("EXIT STATUS");
    page.exitCodes(command.exitCodes.empty() ? text.program.exitCodes : command.exitCodes);
    if (!command.examples.empty()) {
        page.section("EXAMPLES");
        for (const std::string& line : command.examples)
            page.example(line);
    }
    std::vector<std::string> others = {program};
    for (const CommandText& other : text.commands) {
        const std::string quoted = "'" + program + ' ' + other.name;
        const bool isMentioned =
            std::any_of(command.paragraphs.begin(), command.paragraphs.end(), [&](std::string paragraph) {
                std::replace(paragraph.begin(), paragraph.end(), '\n', ' ');
                return paragraph.find(quoted + '\'') != std::string::npos ||
                       paragraph.find(quoted + ' ') != std::string::npos;
            });
        if (isMentioned && other.name != command.name)
            others.push_back(pageName(text, other));
    }
    page.references(std::move(others));
    return page.take();
}

} // namespace Orrery::Host
