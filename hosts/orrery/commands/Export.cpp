#include "hosts/orrery/ExportedVariable.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/OutputFile.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ReplacedFile.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "hosts/orrery/csv/CsvExport.h"
#include "hosts/orrery/netcdf/NetcdfExport.h"

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

namespace Orrery::Host {

namespace {

struct ExportOptions
{
    std::string file;
    std::string path;
    std::string output;
    std::string units;
    bool isCsv = false;
    bool isNetcdf = false;
    bool force = false;
    bool hasUnits = false;
};

const char s_help[] = R"(The ending of OUT says what to write: .csv, or .nc for netCDF-4. With --csv or
--netcdf it may have any other one. OUT is written whole or not at all, and a
file that is there is replaced with --force only.

CSV has a line of names with their units in brackets, then one line for each
offset: the values of the axes, and the value. A complex value is two columns,
.re and .im; an element that is an array is one column for each of its values,
[0,1]. Numbers have the shortest text that reads back as the same number, and
'orrery import' brings the same values back.

A netCDF-4 file is an HDF5 file in which the axis is the coordinate variable of
the values, with attributes units and long_name. Of several axes each is a
variable over the dimension offset, named in the attribute coordinates. Complex
values are two variables, _re and _im; text and numbers of all sizes stay what
they are.

Values are in the units of the data, not in display units. --units U converts
them to any unit of their kind, the axes stay.

Examples: orrery export diode.h5 'diode/dc1/i(vd)' --to current.csv --units mA
          orrery export filter.h5 filter/network/S21 --to s21.nc)";

enum class ExportFormat
{
    Csv,
    Netcdf,
};

bool hasEnding(const std::string& path, const char* ending)
{
    return QString::fromStdString(path).endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

ExportFormat wantedFormat(const ExportOptions& options)
{
    if (options.isCsv || (!options.isNetcdf && hasEnding(options.output, ".csv")))
        return ExportFormat::Csv;
    if (options.isNetcdf || hasEnding(options.output, ".nc") || hasEnding(options.output, ".nc4"))
        return ExportFormat::Netcdf;
    throw Failure("--to: expected a name that ends with .csv or .nc, or --csv or --netcdf, found " +
                      inQuotes(options.output),
                  ExitUsage);
}

void checkPlace(const ExportOptions& options)
{
    checkOutput(options.file, options.output, true);
    struct stat status = {};
    if (!options.force && ::stat(options.output.c_str(), &status) == 0)
        throw Failure(printable(options.output) + ": exists; --force replaces it");
}

/// Writes to a new file that takes the place of the old one at the end.
void write(const ExportOptions& options, ExportFormat format, ExportedVariable& variable)
{
    ReplacedFile file(options.output);
    if (format == ExportFormat::Csv) {
        Output out(file.descriptor(), options.output);
        writeCsv(out, variable);
        out.flush();
    } else {
        try {
            writeNetcdf(file.path(), options.path, variable);
        } catch (const NotWritten& failure) {
            throw Failure(printable(options.output) + ": " + failure.what());
        }
    }
    file.commit();
}

const Variable& wantedVariable(DataFile& file, const ExportOptions& options)
{
    const AbstractProperty* const node = findNode(file, options.file, options.path);
    if (node->IsVariable())
        return static_cast<const Variable&>(*node);
    throw Failure(node->IsSimpleProperty() ? "is a single value; 'orrery show' prints it"
                                           : "is a folder; 'orrery ls' lists it");
}

void exportVariable(const ExportOptions& options)
{
    const ExportFormat format = wantedFormat(options);
    std::optional<Units> units;
    if (options.hasUnits)
        units = parseUnits(options.units);
    checkPlace(options);
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    static_cast<void>(findNode(*file, options.file, options.path));
    try {
        ExportedVariable variable = exportedVariable(wantedVariable(*file, options), units);
        write(options, format, variable);
    } catch (const Failure& failure) {
        const std::string place = printable(options.output) + ": ";
        if (std::string(failure.what()).rfind(place, 0) == 0)
            throw;
        throw Failure(printable(options.file) + ": " + printable(options.path) + ": " + failure.what(),
                      failure.exitCode());
    } catch (const std::exception& error) {
        throw Failure(fileLine(options.file, QString::fromUtf8(error.what())));
    }
}

} // namespace

void addExportCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("export", "Write a variable as CSV or netCDF-4");
    const auto options = std::make_shared<ExportOptions>();
    command->add_option("FILE", options->file, "Data file")->required()->type_name("");
    command->add_option("PATH", options->path, "The variable, such as run/dc1/i(vd)")
        ->required()
        ->type_name("");
    command->add_option("-o,--to", options->output, "File to write")->required()->type_name("OUT");
    CLI::Option* const csv = command->add_flag("--csv", options->isCsv, "Write CSV, whatever its ending");
    command->add_flag("--netcdf", options->isNetcdf, "Write netCDF-4, whatever its ending")->excludes(csv);
    CLI::Option* const units =
        command->add_option("--units", options->units, "Convert the values to these units")->type_name("U");
    command->add_flag("-f,--force", options->force, "Replace OUT if it exists");
    command->footer(s_help);
    command->callback([options, action, units] {
        options->hasUnits = units->count() > 0;
        *action = [options](Output&) { exportVariable(*options); };
    });
}

} // namespace Orrery::Host
