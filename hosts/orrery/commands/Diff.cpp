#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/TreeComparison.h"
#include "hosts/orrery/commands/Commands.h"

#include <exception>
#include <memory>
#include <new>
#include <string>

namespace Orrery::Host {

namespace {

struct DiffOptions
{
    std::string first;
    std::string second;
    std::string tolerance;
    bool hasTolerance = false;
    bool ignoresTypes = false;
};

const char s_help[] = R"(Each difference is one line with the path at which it stands: what only one of
the files has, another name for the same content, kinds, type names, flags,
units, element types, shapes, values, and where references lead. Of values it
tells how many differ, the first of them, and the largest relative difference.

Numbers are the same if their bits are; so is a NaN. With --tolerance REL they
may differ by that part of the larger one. With --ignore-types the integer 3 and
the floating-point 3 are the same, and type names don't count.

Computed variables are compared by what they are made from; nothing is computed.

Exit codes: 0 the same, 1 different, 2 trouble.

Example: orrery diff old.h5 new.h5 --tolerance 1e-9)";

ComparisonOptions comparisonOptions(const DiffOptions& options)
{
    ComparisonOptions comparison;
    comparison.ignoresTypes = options.ignoresTypes;
    if (!options.hasTolerance)
        return comparison;
    double tolerance = 0.0;
    if (!parseNumber(options.tolerance, &tolerance) || !(tolerance >= 0.0))
        throw Failure("--tolerance: expected a number from 0, found " + inQuotes(options.tolerance),
                      ExitUsage);
    comparison.tolerance = tolerance;
    return comparison;
}

Ink inkOf(const Difference& difference)
{
    switch (difference.kind) {
    case Difference::OnlyInFirst:
        return Ink::Removed;
    case Difference::OnlyInSecond:
        return Ink::Added;
    case Difference::Changed:
        break;
    }
    return Ink::Changed;
}

/// Whether there are differences.
bool diff(const DiffOptions& options, Output& out)
{
    const ComparisonOptions comparison = comparisonOptions(options);
    const std::shared_ptr<DataFile> first = openForReading(options.first);
    const std::shared_ptr<DataFile> second = openForReading(options.second);
    bool isDifferent = false;
    try {
        compareTrees({first->GetRoot(), printable(options.first)},
                     {second->GetRoot(), printable(options.second)}, comparison,
                     [&](const Difference& difference) {
                         isDifferent = true;
                         out.write(out.painted(inkOf(difference), difference.path + ':') + ' ' +
                                   difference.what + '\n');
                     });
    } catch (const Failure&) {
        out.flush(); // what has been found is true
        throw;
    }
    out.flush();
    return isDifferent;
}

// Scripts tell a difference from trouble by the exit code.
void runDiff(const DiffOptions& options, Output& out)
{
    bool isDifferent = true;
    try {
        isDifferent = diff(options, out);
    } catch (const ReaderGone&) {
        // there was something to write, hence a difference
    } catch (const Failure& failure) {
        if (failure.exitCode() == ExitUsage)
            throw;
        throw Trouble(failure.what());
    } catch (const std::bad_alloc&) {
        throw Trouble("there is not enough memory");
    } catch (const std::exception& error) {
        throw Trouble(printable(error.what()));
    }
    if (isDifferent)
        throw Ended{ExitFailed};
}

} // namespace

void addDiffCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("diff", "Compare two data files");
    const auto options = std::make_shared<DiffOptions>();
    command->add_option("A", options->first, "Data file")->required()->type_name("");
    command->add_option("B", options->second, "Data file to compare with it")->required()->type_name("");
    CLI::Option* const tolerance =
        command->add_option("--tolerance", options->tolerance, "Relative difference of numbers to pass over")
            ->type_name("REL");
    command->add_flag("--ignore-types", options->ignoresTypes,
                      "Compare what values are worth, not their types");
    command->footer(s_help);
    command->callback([options, action, tolerance] {
        options->hasTolerance = tolerance->count() > 0;
        *action = [options](Output& out) { runDiff(*options, out); };
    });
}

} // namespace Orrery::Host
