#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/ValuePrinter.h"
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
    bool isCsv = false;
    bool hasAt = false;
    bool hasRange = false;
};

const char s_help[] = R"(PATH is a variable, or a single value such as dc1/Title. A position along the
first axis of the values is an offset, from 0. --range A:B is A up to but not
including B; A: goes to the end, :B begins at 0.

A vector is printed one value a line, a matrix one row a line with tabs between
the values. Numbers have the shortest text that reads back as the same number,
complex ones the form re+imi.

--csv prints a line of column names, then one line for each offset: the offset
and its value. A complex value is two columns, .re and .im; an element that is
an array is one column for each of its values.

Examples: orrery show diode.h5 'dc1/i(vd)' --at 140
          orrery show diode.h5 'dc1/i(vd)' --range 100:110 --csv)";

std::optional<OffsetRange> wantedOffsets(const ShowOptions& options)
{
    if (options.hasAt)
        return parseOffset(options.at);
    if (options.hasRange)
        return parseRange(options.range);
    return std::nullopt;
}

Selection read(const Variable& variable, const std::optional<OffsetRange>& range)
{
    return range ? select(variable, *range) : selectAll(variable);
}

// A single value is read as a variable that holds it.
Selection readNode(const AbstractProperty& node, const std::optional<OffsetRange>& range)
{
    if (node.IsVariable())
        return read(static_cast<const Variable&>(node), range);
    if (!node.IsSimpleProperty())
        throw Failure("is a folder; 'orrery ls' lists it");
    return read(Variable(node.GetName(), static_cast<const SimpleProperty&>(node).GetValue()), range);
}

void show(const ShowOptions& options, Output& out)
{
    const std::optional<OffsetRange> range = wantedOffsets(options);
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    const AbstractProperty* const node = findNode(*file, options.file, options.path);
    try {
        const Selection values = readNode(*node, range);
        if (options.isCsv)
            printCsv(out, values, node->GetName().toStdString());
        else
            printValues(out, values);
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
    command->add_option("PATH", options->path, "The variable, such as dc1/i(vd)")->required()->type_name("");
    CLI::Option* const at =
        command->add_option("--at", options->at, "Only the values at one offset")->type_name("N");
    CLI::Option* const range =
        command->add_option("--range", options->range, "Only the offsets from A up to B")->type_name("A:B");
    range->excludes(at);
    command->add_flag("--csv", options->isCsv, "As comma-separated values");
    command->footer(s_help);
    command->callback([options, action, at, range] {
        options->hasAt = at->count() > 0;
        options->hasRange = range->count() > 0;
        *action = [options](Output& out) { show(*options, out); };
    });
}

} // namespace Orrery::Host
