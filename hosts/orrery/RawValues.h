#pragma once

#include "foundations/variant/BVariant.h"
#include "hosts/orrery/RawHeader.h"
#include "hosts/orrery/SourceFile.h"

#include <vector>

namespace Orrery::Host {

/// Read the values behind a plot's header: one array for each of its columns, in their order.
///
/// Errors: Failure when the rest of the file is too short for what the header says, before anything is allocated;
///         for text, also when a point's number or a value is wrong.
std::vector<Brindle::Quay::BVariant> readRawValues(SourceFile& file, const RawHeader& header);

} // namespace Orrery::Host
