#include "hosts/orrery/CommandLine.h"

#include "hosts/orrery/Colour.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/Output.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/commands/Commands.h"
#include "hosts/orrery/measurements/Registration.h"
#include "hosts/orrery/netcdf/NetcdfFile.h"

#include <CLI/CLI.hpp>
#include <QTextCodec>
#include <unistd.h>

#include <algorithm>
#include <complex>
#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <vector>

namespace Orrery::Host {

namespace {

const char s_version[] = "orrery " ORRERY_VERSION;

const char s_help[] = R"('orrery COMMAND --help' tells more about a command.

With --color auto, a terminal gets colours unless NO_COLOR is set and not empty,
or TERM is 'dumb'. A file or a pipe gets none.

Exit codes: 0 good, 1 failure, 2 wrong usage.)";

int usageError(const std::string& line, const std::string& command)
{
    reportError(printable(line) + "; try '" + command + " --help'");
    return ExitUsage;
}

// The command that was given, as it is typed.
std::string givenCommand(const CLI::App& program)
{
    for (const CLI::App* const command : program.get_subcommands())
        return "orrery " + command->get_name();
    return "orrery";
}

std::vector<CLI::App*> shownCommands(CLI::App& program)
{
    return program.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

// "copy, diff or import".
std::string commandNames(CLI::App& program)
{
    const std::vector<CLI::App*> commands = shownCommands(program);
    std::string names;
    for (const CLI::App* const command : commands) {
        if (!names.empty())
            names += command == commands.back() ? " or " : ", ";
        names += command->get_name();
    }
    return names;
}

std::string usageLine(CLI::App& program, const CLI::Error& error)
{
    if (!program.get_subcommands().empty())
        return error.what();
    for (const std::string& word : program.remaining()) {
        if (word.empty() || word.front() != '-')
            return "there is no command " + inQuotes(word);
        return "there is no option " + inQuotes(word);
    }
    return "expected a command: " + commandNames(program);
}

void addCommands(CLI::App& program, Action* action)
{
    addCopyCommand(program, action);
    addDiffCommand(program, action);
    addExportCommand(program, action);
    addImportCommand(program, action);
    addJoinCommand(program, action);
    addLsCommand(program, action);
    addPlotCommand(program, action);
    addShowCommand(program, action);
    addRepackCommand(program, action);
    addVerifyCommand(program, action);
    addWatchCommand(program, action);
    addUnitsCommand(program, action);
    addConvertCommand(program, action);
    addCompleteCommand(program, action);
}

// On a terminal, unless the environment or the option tells otherwise. Set while the command line is read, so that
// what is wrong with the rest of it is told in the same way.
void useColour(const std::string& choice, Output& out)
{
    const ColourUse use = parseColourUse(choice);
    out.setColoured(wantsColour(use, STDOUT_FILENO));
    colourMessages(wantsColour(use, STDERR_FILENO));
}

/// What was typed, for the parser, which wants the last word first.
///
/// To the parser "-40" is a number, but "-i" and "-.5" are options: a blank in front makes numbers of them.
std::vector<std::string> wordsOf(int argc, const char* const* argv)
{
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const bool isConversion = std::find(words.begin(), words.end(), "convert") != words.end();
    for (std::string& word : words) {
        std::complex<double> number;
        if (isConversion && word.size() > 1 && word.front() == '-' && parseComplex(word, &number))
            word.insert(0, 1, ' ');
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::string helpText(const CLI::App& program)
{
    for (const CLI::App* const command : program.get_subcommands())
        return command->help("orrery");
    return program.help();
}

int run(CLI::App& program, int argc, const char* const* argv, Output& out)
{
    Action action;
    bool isVerbose = false;
    setUpProgram(program, {[&] { isVerbose = true; }, [&](const std::string& when) { useColour(when, out); }},
                 &action);
    try {
        program.parse(wordsOf(argc, argv));
    } catch (const CLI::CallForHelp&) {
        out.write(helpText(program));
        out.flush();
        return ExitGood;
    } catch (const CLI::CallForVersion&) {
        out.write(std::string(s_version) + '\n');
        out.flush();
        return ExitGood;
    } catch (const CLI::Error& error) {
        return usageError(usageLine(program, error), givenCommand(program));
    }
    if (isVerbose)
        showLog();
    action(out);
    out.flush();
    return ExitGood;
}

} // namespace

void setUpProgram(CLI::App& program, const GlobalOptions& options, Action* action)
{
    program.name("orrery");
    program.description("Import, list and print data files of named variables, and convert units.");
    program.set_version_flag("--version", s_version, "Print the version");
    program.add_flag_callback("-v,--verbose", options.verbose, "Show the library's log on standard error");
    program.add_option_function<std::string>("--color", options.color, "Whether to print in colour")
        ->type_name("auto|always|never")
        ->trigger_on_parse();
    program.require_subcommand(1);
    program.fallthrough();
    program.set_help_flag("-h,--help", "Print this help");
    addCommands(program, action);
    for (CLI::App* const command : shownCommands(program))
        command->group("Commands");
    program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    program.footer(s_help);
}

int runCommandLine(int argc, const char* const* argv)
{
    // File names are UTF-8 whatever the locale says.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    silenceLog();
    // A file above the user's limit can't be written, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    NetcdfFile::keepExitSafe();
    registerMeasurements();
    CLI::App program;
    Output out;
    useColour("auto", out);
    try {
        return run(program, argc, argv, out);
    } catch (const ReaderGone&) {
        return ExitGood;
    } catch (const Ended& ended) {
        return ended.exitCode;
    } catch (const Trouble& trouble) {
        reportError(trouble.what());
        return ExitUsage;
    } catch (const Failure& failure) {
        if (failure.exitCode() == ExitUsage)
            return usageError(failure.what(), givenCommand(program));
        reportError(failure.what());
        return failure.exitCode();
    } catch (const std::bad_alloc&) {
        reportError("there is not enough memory");
    } catch (const std::exception& error) {
        reportError(printable(error.what()));
    }
    return ExitFailed;
}

} // namespace Orrery::Host
