#include "foundations/storage/DataFileCheck.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/OutputFile.h"
#include "hosts/orrery/SavedFile.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/commands/Commands.h"

#include <memory>
#include <string>

namespace Orrery::Host {

namespace {

struct CopyOptions
{
    std::string input;
    std::string output;
    bool force = false;
};

const char s_help[] = R"(The whole tree is read, and written as a new file: damaged data are found, and
what earlier versions of the format have is written as this one does. 'orrery
diff' tells that both hold the same.

OUT is written whole or not at all. If it exists and is an HDF5 file, it is
replaced; any other file is replaced with --force only.

Example: orrery copy diode.h5 -o copy.h5)";

// A save takes arrays that nobody has read as they stand, damaged or not; a copy is to be good.
void expectGood(const std::string& path)
{
    const QString name = QString::fromStdString(path);
    QString why;
    DataFileCheck::Run(name, [&](const DataFileCheck::Finding& finding) {
        if (finding.severity == DataFileCheck::Error && why.isEmpty())
            why = name + QStringLiteral(": ") +
                  (finding.path.isEmpty() ? QString() : finding.path + QStringLiteral(": ")) + finding.text;
    });
    if (!why.isEmpty())
        throw Failure(fileLine(path, why));
}

void copy(const CopyOptions& options)
{
    if (options.output.empty())
        throw Failure("--output: expected the name of a file", ExitUsage);
    checkOutput(options.input, options.output, options.force);
    const std::shared_ptr<DataFile> file = openForReading(options.input);
    expectGood(options.input);
    saveDataFile(*file, options.output);
}

} // namespace

void addCopyCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("copy", "Read a data file and save it as another");
    const auto options = std::make_shared<CopyOptions>();
    command->add_option("FILE", options->input, "Data file")->required()->type_name("");
    command->add_option("-o,--output", options->output, "Data file to write")->required()->type_name("OUT");
    command->add_flag("-f,--force", options->force, "Replace OUT even if it is not an HDF5 file");
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output&) { copy(*options); }; });
}

} // namespace Orrery::Host
