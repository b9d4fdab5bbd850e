#include "foundations/storage/DataFileCheck.h"
#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/OutputFile.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/SavedFile.h"
#include "hosts/orrery/SizeText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/commands/Commands.h"

#include <QFileInfo>
#include <QString>

#include <cstdint>
#include <memory>
#include <string>

namespace Orrery::Host {

namespace {

struct RepackOptions
{
    std::string input;
    std::string output;
    int level = 0;
    bool hasLevel = false;
    bool isPacked = false;
    bool hasPacked = false;
    bool force = false;
};

const char s_help[] = R"(OUT gets the whole tree of IN, bit for bit, stored in another way. Each array is
read and tested before; one that is damaged ends it, and OUT stays as it was.
What no option tells stays as it is in IN.

--compress 1 is fast, 9 small; arrays of less than 64 KiB and texts aren't
compressed, and 0 undoes it. --packed stores small arrays together, for files
that only this program reads: other HDF5 tools see them as bytes.

OUT is written whole or not at all, so it may be IN itself. If it exists and is
an HDF5 file, it is replaced; any other file is replaced with --force only.

Example: orrery repack run.h5 small.h5 --compress 6)";

std::uint64_t sizeOf(const std::string& path)
{
    return static_cast<std::uint64_t>(QFileInfo(QString::fromStdString(path)).size());
}

// Whatever way the two are spelled. Two hard links to one file are two files: only the one is replaced.
bool isSamePath(const std::string& a, const std::string& b)
{
    const QString path = QFileInfo(QString::fromStdString(a)).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(QString::fromStdString(b)).canonicalFilePath();
}

std::shared_ptr<DataFile> openForRepacking(const RepackOptions& options, bool isInPlace)
{
    if (!isInPlace)
        return openForReading(options.input);
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromStdString(options.input), DataFile::ReadWrite, &file,
                                         &why) < 0)
        throw Failure(fileLine(options.input, why));
    return file;
}

void choose(DataFile* file, const RepackOptions& options)
{
    if ((options.hasLevel && file->SetCompressionLevel(options.level) < 0) ||
        (options.hasPacked && file->SetPacked(options.isPacked) < 0))
        throw Failure(printable(options.input) + ": files of this type can't be stored in another way");
}

// A save passes the bytes of an array on as they are, with the checksums that they had: damage stays to be found by
// whoever reads them. Whoever repacks wants to know now.
void requireSound(DataFile& file, const std::string& input)
{
    ProgressLine progress(input);
    DataFileCheck::RunOnTree(
        *file.GetRoot(),
        [&](const DataFileCheck::Finding& finding) {
            if (finding.severity == DataFileCheck::Error)
                throw Failure(printable(input) + ": " + printable(finding.path.toStdString()) + ": " +
                              printable(finding.text.toStdString()));
        },
        [&](std::uint64_t done, std::uint64_t all) { progress.update(done, all); });
}

void repack(const RepackOptions& options, Output& out)
{
    const bool isInPlace = isSamePath(options.input, options.output);
    if (!isInPlace)
        checkOutput(options.input, options.output, options.force);
    const std::uint64_t before = sizeOf(options.input);
    const std::shared_ptr<DataFile> file = openForRepacking(options, isInPlace);
    requireSound(*file, options.input);
    choose(file.get(), options);
    if (isInPlace)
        saveInPlace(*file, options.output);
    else
        saveDataFile(*file, options.output);
    out.write(printable(options.output) + ": " + sizeText(sizeOf(options.output)) + ", before " +
              sizeText(before) + '\n');
}

} // namespace

void addRepackCommand(CLI::App& program, Action* action)
{
    CLI::App* const command =
        program.add_subcommand("repack", "Store a data file anew, compressed or packed");
    const auto options = std::make_shared<RepackOptions>();
    command->add_option("IN", options->input, "Data file")->required()->type_name("");
    command->add_option("OUT", options->output, "Data file to write")->required()->type_name("");
    CLI::Option* const level =
        command->add_option("--compress", options->level, "Level of compression, 0 for none")
            ->type_name("LEVEL")
            ->check(CLI::Range(0, 9).description(""));
    CLI::Option* const packed =
        command->add_flag("--packed", options->isPacked, "Store small arrays together");
    CLI::Option* const unpacked =
        command->add_flag("--no-packed", "Store each array by itself")->excludes(packed);
    command->add_flag("-f,--force", options->force, "Replace OUT even if it is not an HDF5 file");
    command->footer(s_help);
    command->callback([options, action, level, packed, unpacked] {
        options->hasLevel = level->count() > 0;
        options->hasPacked = packed->count() + unpacked->count() > 0;
        *action = [options](Output& out) { repack(*options, out); };
    });
}

} // namespace Orrery::Host
