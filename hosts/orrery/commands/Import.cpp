#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/RawFile.h"
#include "hosts/orrery/RawImporter.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/commands/Commands.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>

namespace Orrery::Host {

namespace {

struct ImportOptions
{
    std::string input;
    std::string output;
    bool force = false;
};

const char s_help[] = R"(Each plot of the raw file becomes a folder of OUT, named by the kind of its run
and a number: dc1, dc2, ac1, tran1. Each vector becomes a variable in it, under
its own name. Title, date, plot name and flags become texts of the folder.

A vector gets the units of its type (V for voltage, Hz for frequency), and the
first vector of a plot becomes the axis of those that are as long.

OUT is written whole or not at all. If it exists and is an HDF5 file, it is
replaced; any other file is replaced with --force only.

Read are text and binary raw files, real and complex, with any number of plots.

Example: orrery import diode.raw -o diode.h5)";

bool startsLikeDataFile(const std::string& path)
{
    const std::string signature = "\x89HDF\r\n\x1a\n";
    std::string start(signature.size(), '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open())
        return false;
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return file.gcount() == 0 || start == signature;
}

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Tells before the work what would be told after it.
void checkFolder(const std::string& output)
{
    const std::string folder = folderOf(output);
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0)
        throw Failure(printable(output) + ": the folder " + inQuotes(folder) + ": " + std::strerror(errno));
    if (!S_ISDIR(status.st_mode))
        throw Failure(printable(output) + ": " + inQuotes(folder) + " is not a folder");
}

void checkOutput(const ImportOptions& options)
{
    const std::string name = printable(options.output);
    struct stat out = {};
    if (::stat(options.output.c_str(), &out) != 0) {
        checkFolder(options.output);
        return;
    }
    if (S_ISDIR(out.st_mode))
        throw Failure(name + ": is a folder, expected a file to write");
    if (!S_ISREG(out.st_mode))
        throw Failure(name + ": is not a regular file");
    struct stat in = {};
    if (::stat(options.input.c_str(), &in) == 0 && in.st_dev == out.st_dev && in.st_ino == out.st_ino)
        throw Failure(name + ": is the file to import; write to another one");
    if (!options.force && !startsLikeDataFile(options.output))
        throw Failure(name + ": exists and is not an HDF5 file; --force replaces it");
}

void importFile(const ImportOptions& options)
{
    if (options.output.empty())
        throw Failure("--output: expected the name of a file", ExitUsage);
    checkOutput(options);
    ProgressLine progress(options.input);
    RawFile raw(options.input, [&](std::uint64_t done, std::uint64_t size) { progress.update(done, size); });

    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromStdString(options.output), DataFile::Create, &file,
                                         &why) < 0)
        throw Failure(fileLine(options.output, why));
    RawImporter importer(file->GetRoot());
    RawPlot plot;
    while (raw.next(&plot))
        importer.add(std::move(plot));
    progress.stage("saving");
    if (file->Save(&why) < 0)
        throw Failure(fileLine(options.output, why));
}

} // namespace

void addImportCommand(CLI::App& program, Action* action)
{
    CLI::App* const command =
        program.add_subcommand("import", "Read a simulator's raw file into a data file");
    const auto options = std::make_shared<ImportOptions>();
    command->add_option("FILE", options->input, "SPICE raw file")->required()->type_name("");
    command->add_option("-o,--output", options->output, "Data file to write")->required()->type_name("OUT");
    command->add_flag("-f,--force", options->force, "Replace OUT even if it is not an HDF5 file");
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output&) { importFile(*options); }; });
}

} // namespace Orrery::Host
