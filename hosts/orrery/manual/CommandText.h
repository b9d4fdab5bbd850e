#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Orrery::Host {

/// An option or an argument of a command, as its help tells it.
struct OptionText
{
    std::vector<std::string> names; ///< "-o" and "--output"; for an argument its name, "FILE"
    std::string value;              ///< what stands for the value, "OUT"; empty for a flag
    std::string description;
    std::string defaultValue; ///< empty for none
    bool isRequired = false;
    bool isRepeated = false;
};

/// A command, or the program itself, as its help tells it.
struct CommandText
{
    std::string name;
    std::string description;
    std::vector<OptionText> arguments;
    std::vector<OptionText> options;

    /// What the help says below its tables, in paragraphs without line ends at their ends.
    std::vector<std::string> paragraphs;
    std::vector<std::string> examples; ///< a command line each, as a shell takes it
    std::string exitCodes;             ///< "0 good, 1 failure"; empty where those of the program hold
};

/// A program with the commands that its help shows, in that order.
struct ProgramText
{
    CommandText program;
    std::vector<CommandText> commands;
};

/// What the help of a program and of its commands says, taken apart.
///
/// Shape:  a paragraph of a footer that begins with "Example:" or "Examples:" holds one command line a line; a line
///         that doesn't begin with the program's name goes on with the one before. "Exit codes:" begins a paragraph of
///         exit codes.
ProgramText textOf(const CLI::App& program);

} // namespace Orrery::Host
