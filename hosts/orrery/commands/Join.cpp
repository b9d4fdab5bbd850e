#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SweepAccess.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/ValueTable.h"
#include "hosts/orrery/commands/Commands.h"

#include <memory>
#include <optional>
#include <string>

namespace Orrery::Host {

namespace {

struct JoinOptions
{
    std::string file;
    std::string path;
    std::string name;
    std::string range;
    std::string units;
    bool hasUnits = false;
    bool hasRange = false;
    bool isCsv = false;
};

const char s_help[] = R"(PATH is a sweep, such as diode/dc-sweep, and NAME a variable of its members. The
variables of that name of all members are joined end to end and printed beside
the axes of the members and, last of the axes, the sweep's parameter, whose
value is repeated along each member. No file is changed.

--range A:B is A up to but not including B; A: goes to the end, :B begins at 0.

Example: orrery join diode.h5 diode/dc-sweep 'i(vd)' --range 200:203)";

ParameterizedResultData& asSweep(AbstractProperty& node)
{
    if (auto* const sweep = dynamic_cast<ParameterizedResultData*>(&node))
        return *sweep;
    throw Failure("is no sweep");
}

void join(const JoinOptions& options, Output& out)
{
    TableOptions table;
    if (options.hasRange)
        table.range = parseRange(options.range);
    if (options.hasUnits)
        table.units = parseUnits(options.units);
    table.isCsv = options.isCsv;
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    AbstractProperty* const node = findNode(*file, options.file, options.path);
    try {
        printVariable(out, *joinedVariable(asSweep(*node), QString::fromStdString(options.name)), table);
    } catch (const Failure& failure) {
        throw Failure(printable(options.file) + ": " + printable(options.path) + ": " + failure.what(),
                      failure.exitCode());
    } catch (const std::exception& error) {
        throw Failure(fileLine(options.file, QString::fromUtf8(error.what())));
    }
}

} // namespace

void addJoinCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("join", "Print a variable of a sweep, joined");
    const auto options = std::make_shared<JoinOptions>();
    command->add_option("FILE", options->file, "Data file")->required()->type_name("");
    command->add_option("PATH", options->path, "The sweep")->required()->type_name("");
    command->add_option("NAME", options->name, "The variable, such as i(vd)")->required()->type_name("");
    CLI::Option* const range =
        command->add_option("--range", options->range, "Only the offsets from A up to B")->type_name("A:B");
    CLI::Option* const units =
        command->add_option("--units", options->units, "Convert the values to this unit")->type_name("UNIT");
    command->add_flag("--csv", options->isCsv, "As comma-separated values");
    command->footer(s_help);
    command->callback([options, action, range, units] {
        options->hasUnits = units->count() > 0;
        options->hasRange = range->count() > 0;
        *action = [options](Output& out) { join(*options, out); };
    });
}

} // namespace Orrery::Host
