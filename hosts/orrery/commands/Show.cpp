#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/FunctionCall.h"
#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/ValueTable.h"
#include "hosts/orrery/commands/Commands.h"
#include "variables/Variable.h"

#include <memory>
#include <optional>
#include <string>

namespace Orrery::Host {

namespace {

struct ShowOptions
{
    std::string file;
    std::string path;
    std::string at;
    std::string range;
    std::string units;
    std::string function;
    bool isCsv = false;
    bool isJson = false;
    bool hasAt = false;
    bool hasRange = false;
    bool hasUnits = false;
    bool hasFunction = false;
};

const char s_help[] = R"(PATH is a variable, or a single value such as run/dc1/v(out)/Type. A position
along the first axis of the values is an offset, from 0. --range A:B is A up to
but not including B; A: goes to the end, :B begins at 0.

A variable that lies over an axis is printed as a table: a line of names with
their units, then one line for each value, behind the value of the axis. With
--at and --range the offset stands first.

Without an axis, a vector is printed one value a line, a matrix one row a line
with tabs between the values. Numbers have the shortest text that reads back as
the same number, complex ones the form re+imi.

--csv prints a line of column names with their units, then one line for each
offset: the offset, the values of the axes, and the value. A complex value is
two columns, .re and .im; an element that is an array is one column for each of
its values.

--json writes one JSON document: the values, nested as their "shape" says, and
"axes" with theirs; types, units and paths. Numbers are exact, a complex one is
[re, im], and what JSON has no number for is "NaN", "Infinity" or "-Infinity".
Text that is no UTF-8 is {"base64": "..."}.

--units U converts the values to any unit of their kind, the axes stay.

--function NAME shows a function of the variable, which is computed in memory:
  magnitude, phase (in degrees), decibel (20 log10 for voltages and currents,
  10 for powers), derivative (against the axis), moving-average:WINDOW,
  polynomial-N:C0,...,CN (which only hands the values on)
Where parameters are left out, the function has its own.

Examples: orrery show diode.h5 'diode/dc1/i(vd)' --at 140 --units mA
          orrery show diode.h5 'diode/dc1/i(vd)' --range 100:110 --csv
          orrery show diode.h5 'diode/dc1/i(vd)' --function derivative
          orrery show diode.h5 'diode/dc1/i(vd)' --json)";

std::optional<OffsetRange> wantedOffsets(const ShowOptions& options)
{
    if (options.hasAt)
        return parseOffset(options.at);
    if (options.hasRange)
        return parseRange(options.range);
    return std::nullopt;
}

/// What is to be printed of a node: the variable itself, or a function of it that joins it in the tree.
const Variable& wantedVariable(DataFile& file, const Variable& variable,
                               const std::optional<FunctionCall>& call)
{
    if (!call)
        return variable;
    if (isFunction(variable))
        static_cast<void>(resultOf(variable)); // a function of it takes what is stored
    return addFunction(*file.GetRoot(), variable, *call);
}

/// For who wants to see that a result is computed once.
void reportReads(const Variable& function)
{
    const auto updates = [&] { return std::to_string(function.getDirtyTracker()->getUpdateCount()); };
    const std::string first = updates();
    static_cast<void>(function.GetData());
    inform(printable(function.GetName().toStdString()) + ": update count " + first +
           " after the first read, " + updates() + " after another one");
}

void print(DataFile& file, const AbstractProperty& node, const std::optional<FunctionCall>& call,
           TableOptions table, Output& out)
{
    if (table.json) {
        table.json->path = node.GetFullPath();
        table.json->type = node.PropertyObjType();
    }
    if (node.IsVariable()) {
        const Variable& variable = wantedVariable(file, static_cast<const Variable&>(node), call);
        printVariable(out, variable, table);
        if (call)
            reportReads(variable);
        return;
    }
    if (!node.IsSimpleProperty())
        throw Failure("is a folder; 'orrery ls' lists it");
    if (call)
        throw Failure("is a single value; --function takes a variable");
    // A single value is printed as a variable that holds it.
    printVariable(out, Variable(node.GetName(), static_cast<const SimpleProperty&>(node).GetValue()), table);
}

void show(const ShowOptions& options, Output& out)
{
    TableOptions table;
    table.range = wantedOffsets(options);
    table.isCsv = options.isCsv;
    if (options.isJson)
        table.json = JsonHead{options.file, QString(), QString(), options.function};
    const std::optional<FunctionCall> call =
        options.hasFunction ? std::make_optional(parseFunction(options.function)) : std::nullopt;
    if (options.hasUnits)
        table.units = parseUnits(options.units);
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    const AbstractProperty* const node = findNode(*file, options.file, options.path);
    try {
        print(*file, *node, call, table, out);
    } catch (const Failure& failure) {
        throw Failure(printable(options.file) + ": " + printable(options.path) + ": " + failure.what(),
                      failure.exitCode());
    } catch (const std::exception& error) {
        throw Failure(fileLine(options.file, QString::fromUtf8(error.what())));
    }
}

} // namespace

void addShowCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("show", "Print the values of a variable");
    const auto options = std::make_shared<ShowOptions>();
    command->add_option("FILE", options->file, "Data file")->required()->type_name("");
    command->add_option("PATH", options->path, "The variable, such as run/dc1/i(vd)")
        ->required()
        ->type_name("");
    CLI::Option* const at =
        command->add_option("--at", options->at, "Only the values at one offset")->type_name("N");
    CLI::Option* const range =
        command->add_option("--range", options->range, "Only the offsets from A up to B")->type_name("A:B");
    range->excludes(at);
    CLI::Option* const units =
        command->add_option("--units", options->units, "Convert the values to these units")->type_name("U");
    CLI::Option* const function =
        command->add_option("--function", options->function, "Show a function of the variable")
            ->type_name("NAME[:P1,...]");
    CLI::Option* const csv = command->add_flag("--csv", options->isCsv, "As comma-separated values");
    command->add_flag("--json", options->isJson, "As JSON")->excludes(csv);
    command->footer(s_help);
    command->callback([options, action, at, range, units, function] {
        options->hasAt = at->count() > 0;
        options->hasRange = range->count() > 0;
        options->hasUnits = units->count() > 0;
        options->hasFunction = function->count() > 0;
        *action = [options](Output& out) { show(*options, out); };
    });
}

} // namespace Orrery::Host
