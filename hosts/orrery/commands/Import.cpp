#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/InputFormat.h"
#include "hosts/orrery/OutputFile.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/RawFile.h"
#include "hosts/orrery/RawImporter.h"
#include "hosts/orrery/SavedFile.h"
#include "hosts/orrery/SweepValues.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "hosts/orrery/csv/CsvImporter.h"
#include "hosts/orrery/touchstone/TouchstoneFile.h"
#include "hosts/orrery/touchstone/TouchstoneHeader.h"
#include "hosts/orrery/touchstone/TouchstoneImporter.h"
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
    std::string format;
    std::string separator;
    std::string axis;
    int ports = 0;
    bool force = false;
    bool isDecimalComma = false;
    bool ignoresUnits = false;
    bool hasNoAxis = false;
    bool hasSweep = false;
    bool hasSweepUnits = false;
    bool hasFormat = false;
    bool hasSeparator = false;
    bool hasAxis = false;
    bool hasPorts = false;
};

const char s_help[] = R"(OUT gets one result, named like FILE without its ending. It is written whole or
not at all. If OUT exists and is an HDF5 file, it is replaced; any other file is
replaced with --force only. With --display-units mA,mV a variable is shown in
the first of them that fits its units. FILE is a raw, Touchstone or CSV file, by
its ending and by how it begins, or what --format says.

A raw file of a simulator, text or binary, real or complex: each plot becomes a
folder, named by the kind of its run and a number: dc1, dc2, ac1, tran1. Each
vector becomes a variable in that, under its own name, with the units of its
type. The first vector of a plot becomes the axis of those that are as long.
Title, date, plot name and flags become texts in the result's setup folder.
--sweep NAME=v1,v2,... tells the parameter that had another value in each plot,
and --sweep-units its units; NAME=@TEXTFILE reads the values from a file. The
result gets a sweep, dc-sweep for dc plots, that 'orrery join' and 'orrery plot'
take.

A Touchstone file (.s1p to .s99p, .ts) of version 1 or 2: the folder network has
frequency in Hz, S11, S21 and so on over it (S2_1 of more than 9 ports), and
reference, the resistances of the ports. Y, Z, G and H are in S and ohm, without
the normalization of version 1. The folder noise has frequency, NFmin in dB10,
Gamma_opt, and Rn in ohm. --ports tells what a name without its number doesn't.

A CSV file has a header line with units in brackets: time [s],v(out) [V],i [mA].
The folder table has a variable for each column. The first one, or --axis NAME,
becomes the axis of the others, unless there is --no-axis. A column is of whole
numbers, numbers, true and false, or else text; a column with units is of
numbers, and an empty cell of them is NaN. x.re and x.im beside each other are
complex; m[0] and m[1] an array. Fields are parted by a tab, a semicolon or a
comma, the first of these in the header. Lines that begin with # are comments.

Examples: orrery import diode.raw -o diode.h5
              --sweep temperature=-40,0,27,85,125 --sweep-units degC
          orrery import filter.s2p -o filter.h5
          orrery import log.csv -o log.h5 --separator semicolon --decimal-comma)";

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

void tellRenamed(const char* what, const QMap<QString, QString>& renamed)
{
    for (auto vector = renamed.begin(); vector != renamed.end(); ++vector)
        warn(std::string("the ") + what + ' ' + inQuotes(vector.key().toStdString()) + " is called " +
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

/// Options that mean nothing to a format would be passed over in silence.
void refuse(bool isGiven, const char* option, const char* file)
{
    if (isGiven)
        throw Failure(std::string(option) + ": is for a " + file, ExitUsage);
}

void checkOptions(const ImportOptions& options, InputFormat format)
{
    if (format != InputFormat::Raw) {
        refuse(options.hasSweep, "--sweep", "raw file");
        refuse(options.hasSweepUnits, "--sweep-units", "raw file");
    }
    if (format != InputFormat::Touchstone)
        refuse(options.hasPorts, "--ports", "Touchstone file");
    if (format != InputFormat::Csv) {
        refuse(options.hasSeparator, "--separator", "CSV file");
        refuse(options.isDecimalComma, "--decimal-comma", "CSV file");
        refuse(options.ignoresUnits, "--ignore-units", "CSV file");
        refuse(options.hasAxis, "--axis", "CSV file");
        refuse(options.hasNoAxis, "--no-axis", "CSV file");
    }
}

char parseSeparator(const std::string& text)
{
    if (text == "comma" || text == ",")
        return ',';
    if (text == "semicolon" || text == ";")
        return ';';
    if (text == "tab" || text == "\t")
        return '\t';
    throw Failure("--separator: expected comma, semicolon or tab, found " + inQuotes(text), ExitUsage);
}

CsvOptions wantedCsv(const ImportOptions& options)
{
    CsvOptions csv;
    if (options.hasSeparator)
        csv.separator = parseSeparator(options.separator);
    csv.isDecimalComma = options.isDecimalComma;
    csv.ignoresUnits = options.ignoresUnits;
    if (csv.isDecimalComma && csv.separator == ',')
        throw Failure("--decimal-comma: the comma can't be the separator too", ExitUsage);
    return csv;
}

std::optional<std::size_t> wantedPorts(const ImportOptions& options)
{
    if (!options.hasPorts)
        return portsOfName(options.input);
    if (options.ports < 1 || static_cast<std::size_t>(options.ports) > s_mostPorts)
        throw Failure("--ports: expected 1 to " + std::to_string(s_mostPorts) + ", found " +
                          std::to_string(options.ports),
                      ExitUsage);
    return static_cast<std::size_t>(options.ports);
}

/// One import: the file is read into a result, which is saved then.
class Import
{
public:
    explicit Import(const ImportOptions& options)
        : m_options(options)
        , m_displayUnits(wantedDisplayUnits(options))
        , m_progress(options.input)
    {
    }

    void run(InputFormat format)
    {
        if (format == InputFormat::Raw)
            runRaw();
        else if (format == InputFormat::Touchstone)
            runTouchstone();
        else
            runCsv();
    }

private:
    SourceFile::Progress progress()
    {
        return [this](std::uint64_t done, std::uint64_t size) { m_progress.update(done, size); };
    }

    Result* makeResult();
    void save();
    void runRaw();
    void runTouchstone();
    void runCsv();

    const ImportOptions& m_options;
    std::vector<Units> m_displayUnits;
    ProgressLine m_progress;
    std::shared_ptr<DataFile> m_file;
};

Result* Import::makeResult()
{
    m_file = newDataFile(m_options.output);
    auto owned = std::make_unique<Result>(resultName(m_options.input), QString());
    Result* const result = owned.get();
    insertNode(m_file->GetRoot(), std::move(owned));
    return result;
}

void Import::save()
{
    m_progress.stage("saving");
    saveDataFile(*m_file, m_options.output);
}

void Import::runRaw()
{
    const std::optional<SweepValues> sweep = wantedSweep(m_options);
    RawFile raw(m_options.input, progress());
    RawImporter importer(makeResult(), m_displayUnits);
    RawPlot plot;
    while (raw.next(&plot))
        importer.add(std::move(plot));
    if (sweep)
        importer.addSweep(*sweep);
    save();
    tellRenamed("vector", importer.renamed());
}

void Import::runTouchstone()
{
    TouchstoneData data = readTouchstone(m_options.input, wantedPorts(m_options), progress());
    const std::vector<std::string> remarks = data.remarks;
    importTouchstone(makeResult(), std::move(data), m_displayUnits);
    save();
    for (const std::string& remark : remarks)
        warn(printable(m_options.input) + ": " + remark);
}

void Import::runCsv()
{
    const CsvAxis axis = {!m_options.hasNoAxis, QString::fromStdString(m_options.axis)};
    CsvTable table = readCsv(m_options.input, wantedCsv(m_options), progress());
    QMap<QString, QString> renamed;
    importCsv(makeResult(), std::move(table), axis, m_displayUnits, &renamed);
    save();
    tellRenamed("column", renamed);
}

void importFile(const ImportOptions& options)
{
    if (options.output.empty())
        throw Failure("--output: expected the name of a file", ExitUsage);
    std::optional<InputFormat> format;
    if (options.hasFormat)
        format = parseInputFormat(options.format);
    static_cast<void>(wantedSweep(options)); // wrong usage is told before the files are looked at
    Import import(options);
    checkOutput(options.input, options.output, options.force);
    if (!format)
        format = detectInputFormat(options.input);
    checkOptions(options, *format);
    import.run(*format);
}

} // namespace

void addImportCommand(CLI::App& program, Action* action)
{
    CLI::App* const command =
        program.add_subcommand("import", "Read a raw, Touchstone or CSV file as a data file");
    const auto options = std::make_shared<ImportOptions>();
    command->add_option("FILE", options->input, "SPICE raw, Touchstone or CSV file")
        ->required()
        ->type_name("");
    command->add_option("-o,--output", options->output, "Data file to write")->required()->type_name("OUT");
    command->add_flag("-f,--force", options->force, "Replace OUT even if it is not an HDF5 file");
    CLI::Option* const format =
        command->add_option("--format", options->format, "raw, touchstone or csv")->type_name("NAME");
    CLI::Option* const sweep =
        command->add_option("--sweep", options->sweep, "The parameter of a sweep")->type_name("NAME=VALUES");
    CLI::Option* const units =
        command->add_option("--sweep-units", options->sweepUnits, "Units of its values")->type_name("UNIT");
    command->add_option("--display-units", options->displayUnits, "Units in which to show what they fit")
        ->type_name("UNIT,...");
    CLI::Option* const ports =
        command->add_option("--ports", options->ports, "Ports of a Touchstone file")->type_name("N");
    CLI::Option* const separator =
        command->add_option("--separator", options->separator, "comma, semicolon or tab")->type_name("NAME");
    command->add_flag("--decimal-comma", options->isDecimalComma, "The numbers of a CSV file are like 1,5");
    command->add_flag("--ignore-units", options->ignoresUnits, "Drop what is no unit in its header");
    CLI::Option* const axis =
        command->add_option("--axis", options->axis, "The column that is the axis")->type_name("NAME");
    command->add_flag("--no-axis", options->hasNoAxis, "No column is an axis")->excludes(axis);
    command->footer(s_help);
    command->callback([=] {
        options->hasFormat = format->count() > 0;
        options->hasSweep = sweep->count() > 0;
        options->hasSweepUnits = units->count() > 0;
        options->hasPorts = ports->count() > 0;
        options->hasSeparator = separator->count() > 0;
        options->hasAxis = axis->count() > 0;
        *action = [options](Output&) { importFile(*options); };
    });
}

} // namespace Orrery::Host
