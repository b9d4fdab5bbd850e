#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/TreeJson.h"
#include "hosts/orrery/TreeListing.h"
#include "hosts/orrery/commands/Commands.h"

#include <memory>
#include <string>

namespace Orrery::Host {

namespace {

struct LsOptions
{
    std::string file;
    std::string path;
    ListingOptions listing;
    bool isJson = false;
};

const char s_help[] = R"(One line for each folder and variable below PATH, or below the root of the file:
name, type, shape, element type and units of the values, the axis they lie over,
and the value itself if it is the only one. Names are written as they stand in a
PATH.

-a shows every node: also hidden ones, and the values and references that
folders and variables consist of.
-l adds columns: COUNT, the number of values, or of a folder's children;
ORDERING of arrays with more than one dimension; FLAGS: r read-only, h hidden,
s saved with the tree, c cell array.

--json writes one JSON document: "nodes" is a list with an object for each line
that the table would have, with all that -l shows, and more: full paths, units
with their numbers, and where references lead ("target", whose "resolved" is
null for one that leads nowhere).

Examples: orrery ls diode.h5
          orrery ls -la diode.h5 diode/dc1
          orrery ls --json diode.h5 diode/dc1)";

void list(const LsOptions& options, Output& out)
{
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    AbstractProperty* const node = findNode(*file, options.file, options.path);
    if (options.isJson)
        printJsonListing(out, options.file, *node, options.listing.showsAll);
    else
        printListing(out, *node, options.listing);
}

} // namespace

void addLsCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("ls", "List what a data file holds");
    const auto options = std::make_shared<LsOptions>();
    command->add_option("FILE", options->file, "Data file")->required()->type_name("");
    command->add_option("PATH", options->path, "Where to begin, such as run/dc1 or run/dc1/i(vd)")
        ->type_name("");
    command->add_flag("-l,--long", options->listing.isLong, "More columns, with their names");
    command->add_flag("-a,--all", options->listing.showsAll, "Every node");
    command->add_flag("--json", options->isJson, "As JSON, with all columns");
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output& out) { list(*options, out); }; });
}

} // namespace Orrery::Host
