#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/OutputFile.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/RawFile.h"
#include "hosts/orrery/RawImporter.h"
#include "hosts/orrery/SweepValues.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "results/Result.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

struct ImportOptions
{
    std::string input;
    std::string output;
    std::string sweep;
    std::string sweepUnits;
    std::string displayUnits;
    bool force = false;
    bool hasSweep = false;
    bool hasSweepUnits = false;
};

const char s_help[] = R"(OUT gets one result, named like FILE without its ending. Each plot of the raw
file becomes a folder in it, named by the kind of its run and a number: dc1,
dc2, ac1, tran1. Each vector becomes a variable in that, under its own name.
Title, date, plot name and flags become texts in the result's setup folder.

A vector gets the units of its type (V for voltage, Hz for frequency), and the
first vector of a plot becomes the axis of those that are as long. With
--display-units mA,mV it is shown in the first of them that fits its units.

--sweep NAME=v1,v2,... tells the parameter that had another value in each plot,
and --sweep-units its units; NAME=@TEXTFILE reads the values from a file. The
result gets a sweep, dc-sweep for dc plots, that 'orrery join' and 'orrery plot'
take.

OUT is written whole or not at all. If it exists and is an HDF5 file, it is
replaced; any other file is replaced with --force only.

Read are text and binary raw files, real and complex, with any number of plots.

Example: orrery import diode.raw -o diode.h5
             --sweep temperature=-40,0,27,85,125 --sweep-units degC)";

// "runs/diode.raw" is the result "diode".
QString resultName(const std::string& path)
{
    const std::string file = path.substr(path.rfind('/') + 1);
    const std::size_t dot = file.rfind('.');
    const std::string name = dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
    return QString::fromStdString(name);
}

std::optional<SweepValues> wantedSweep(const ImportOptions& options)
{
    if (!options.hasSweep && options.hasSweepUnits)
        throw Failure("--sweep-units: there is no --sweep to have them", ExitUsage);
    if (!options.hasSweep)
        return std::nullopt;
    SweepValues sweep = parseSweep(options.sweep);
    if (options.hasSweepUnits)
        sweep.units = parseUnits(options.sweepUnits);
    return sweep;
}

std::vector<Units> wantedDisplayUnits(const ImportOptions& options)
{
    std::vector<Units> units;
    const QStringList texts =
        QString::fromStdString(options.displayUnits).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& text : texts)
        units.push_back(parseUnits(text.toStdString()));
    return units;
}

void tellRenamed(const QMap<QString, QString>& renamed)
{
    for (auto vector = renamed.begin(); vector != renamed.end(); ++vector)
        warn("the vector " + inQuotes(vector.key().toStdString()) + " is called " +
             inQuotes(vector.value().toStdString()) + ", since its name is taken");
}

std::shared_ptr<DataFile> newDataFile(const std::string& path)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromStdString(path), DataFile::Create, &file, &why) < 0)
        throw Failure(fileLine(path, why));
    return file;
}

void importFile(const ImportOptions& options)
{
    if (options.output.empty())
        throw Failure("--output: expected the name of a file", ExitUsage);
    const std::optional<SweepValues> sweep = wantedSweep(options);
    std::vector<Units> displayUnits = wantedDisplayUnits(options);
    checkOutput(options.input, options.output, options.force);
    ProgressLine progress(options.input);
    RawFile raw(options.input, [&](std::uint64_t done, std::uint64_t size) { progress.update(done, size); });

    const std::shared_ptr<DataFile> file = newDataFile(options.output);
    auto owned = std::make_unique<Result>(resultName(options.input), QString());
    Result* const result = owned.get();
    insertNode(file->GetRoot(), std::move(owned));
    RawImporter importer(result, std::move(displayUnits));
    RawPlot plot;
    while (raw.next(&plot))
        importer.add(std::move(plot));
    if (sweep)
        importer.addSweep(*sweep);
    progress.stage("saving");
    QString why;
    if (file->Save(&why) < 0)
        throw Failure(fileLine(options.output, why));
    tellRenamed(importer.renamed());
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
    CLI::Option* const sweep =
        command->add_option("--sweep", options->sweep, "The parameter of a sweep")->type_name("NAME=VALUES");
    CLI::Option* const units =
        command->add_option("--sweep-units", options->sweepUnits, "Units of its values")->type_name("UNIT");
    command->add_option("--display-units", options->displayUnits, "Units in which to show what they fit")
        ->type_name("UNIT,...");
    command->footer(s_help);
    command->callback([options, action, sweep, units] {
        options->hasSweep = sweep->count() > 0;
        options->hasSweepUnits = units->count() > 0;
        *action = [options](Output&) { importFile(*options); };
    });
}

} // namespace Orrery::Host
