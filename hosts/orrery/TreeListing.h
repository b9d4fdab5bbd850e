#pragma once

#include "foundations/property/AbstractProperty.h"
#include "hosts/orrery/Output.h"

namespace Orrery::Host {

struct ListingOptions
{
    bool showsAll = false; ///< every node, not only folders and variables
    bool isLong = false;   ///< more columns and a line of their names
};

/// Write a table of what stands below `node`, or of the node itself if it isn't a folder that is listed: one line
/// for each, indented by its depth, folders with "/" behind the name, numbers in names by their value.
void printListing(Output& out, AbstractProperty& node, const ListingOptions& options);

} // namespace Orrery::Host
