#pragma once

#include "foundations/property/AbstractProperty.h"
#include "hosts/orrery/Output.h"

#include <string>

namespace Orrery::Host {

/// The nodes that a listing of `node` shows as one JSON document: an object with a list of them, a line each.
/// docs/json.md tells its members.
void printJsonListing(Output& out, const std::string& file, AbstractProperty& node, bool showsAll);

} // namespace Orrery::Host
