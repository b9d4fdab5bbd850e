#pragma once

#include "hosts/orrery/Output.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace Orrery::Host {

/// What a command runs once the command line has been understood. It throws Failure or ReaderGone.
using Action = std::function<void(Output&)>;

/// Each of these adds one command to the program, and stores in `*action` what it does when it was given. `*action`
/// must outlive the parsing.
void addCompleteCommand(CLI::App& program, Action* action);
void addConvertCommand(CLI::App& program, Action* action);
void addCopyCommand(CLI::App& program, Action* action);
void addDiffCommand(CLI::App& program, Action* action);
void addExportCommand(CLI::App& program, Action* action);
void addImportCommand(CLI::App& program, Action* action);
void addJoinCommand(CLI::App& program, Action* action);
void addLsCommand(CLI::App& program, Action* action);
void addPlotCommand(CLI::App& program, Action* action);
void addRepackCommand(CLI::App& program, Action* action);
void addShowCommand(CLI::App& program, Action* action);
void addUnitsCommand(CLI::App& program, Action* action);
void addVerifyCommand(CLI::App& program, Action* action);
void addWatchCommand(CLI::App& program, Action* action);

/// What the program's own options do as they are read.
struct GlobalOptions
{
    std::function<void()> verbose;
    std::function<void(const std::string& when)> color;
};

/// Make `program` what "orrery" understands: every command and option, with the texts of its help. The manual pages
/// and the completion of the shell are written from that as well.
void setUpProgram(CLI::App& program, const GlobalOptions& options, Action* action);

} // namespace Orrery::Host
