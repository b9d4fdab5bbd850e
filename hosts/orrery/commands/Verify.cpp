#include "hosts/orrery/CheckProcess.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/SizeText.h"
#include "hosts/orrery/commands/Commands.h"

#include <memory>
#include <string>
#include <vector>

namespace Orrery::Host {

namespace {

struct VerifyOptions
{
    std::vector<std::string> files;
    unsigned timeout = 60;
    bool isQuiet = false;
    bool isStrict = false;
    bool isInChild = false;
};

const char s_help[] = R"(Each file is read whole, in a process of its own, since a damaged file may bring
that process down; an end by a crash, or without progress for --timeout seconds,
or for want of memory, is an error of the file. Nothing is written.

Each finding is one line with the path at which it stands. Errors are what can't
be read: the structure, arrays whose bytes don't fit their checksums, objects
that would lead other programs out of the file. Warnings are what keeps nobody
from reading the tree: references that lead nowhere, here or in another file,
datasets and links that the tree doesn't know, attributes that can't be read.
With --strict they count like errors.

The last line of a file tells whether it is sound. With --quiet a file gets
lines only for what makes it unsound.

Exit codes: 0 all sound, 1 one is not, 2 wrong usage or trouble.

Example: orrery verify runs/*.h5)";

std::string counted(std::uint64_t count, const std::string& word)
{
    return std::to_string(count) + ' ' + word + (count == 1 ? "" : "s");
}

std::string soundLine(const DataFileCheck::Summary& summary)
{
    std::string line = "sound, " + counted(summary.folders, "folder") + ", " +
                       counted(summary.values, "value") + ", " + sizeText(summary.fileBytes);
    if (summary.warnings > 0)
        line += ", " + counted(summary.warnings, "warning");
    return line;
}

std::string unsoundLine(const DataFileCheck::Summary& summary)
{
    std::string line = "not sound, " + counted(summary.errors, "error");
    if (summary.warnings > 0)
        line += ", " + counted(summary.warnings, "warning");
    return line;
}

/// Whether the file is sound.
bool verifyFile(const std::string& path, const VerifyOptions& options, Output& out)
{
    const std::string name = printable(path);
    CheckOutcome outcome;
    {
        ProgressLine progress(path);
        const auto tell = [&](DataFileCheck::Severity severity, const std::string& line) {
            const bool isError = severity == DataFileCheck::Error || options.isStrict;
            if (options.isQuiet && !isError)
                return;
            out.write(name + (severity == DataFileCheck::Error ? ": error: " : ": warning: ") + line + '\n');
        };
        outcome = checkInProcess(path, options.timeout, {tell, [&](std::uint64_t done, std::uint64_t all) {
                                                             progress.update(done, all);
                                                         }});
        if (!outcome.death.empty()) {
            ++outcome.summary.errors;
            tell(DataFileCheck::Error, outcome.death);
        }
    }
    const bool isSound = outcome.summary.errors == 0 && (outcome.summary.warnings == 0 || !options.isStrict);
    if (!options.isQuiet)
        out.write(name + ": " + (isSound ? soundLine(outcome.summary) : unsoundLine(outcome.summary)) + '\n');
    out.flush();
    return isSound;
}

void verify(const VerifyOptions& options, Output& out)
{
    if (options.isInChild)
        runCheckProcess(options.files.front());
    bool areSound = true;
    for (const std::string& path : options.files)
        areSound = verifyFile(path, options, out) && areSound;
    if (!areSound)
        throw Ended{ExitFailed};
}

} // namespace

void addVerifyCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("verify", "Check data files whole");
    const auto options = std::make_shared<VerifyOptions>();
    command->add_option("FILE", options->files, "Data files")->required()->type_name("");
    command->add_option("--timeout", options->timeout, "How long a check may stand still, 60 if not given")
        ->type_name("SECONDS")
        ->check(CLI::Range(1U, 86400U).description(""));
    command->add_flag("-q,--quiet", options->isQuiet, "Tell only what makes a file unsound");
    command->add_flag("--strict", options->isStrict, "Take warnings for errors");
    command->add_flag("--in-child", options->isInChild)->group(""); // how the program starts itself
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output& out) { verify(*options, out); }; });
}

} // namespace Orrery::Host
