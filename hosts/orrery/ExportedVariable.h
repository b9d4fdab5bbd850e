#pragma once

#include "hosts/orrery/ColumnReader.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <memory>
#include <optional>
#include <vector>

namespace Orrery::Host {

/// A variable with the axes over which it lies, to be written for other programs: in the units of the data, so that no
/// value is rounded, unless other ones are asked for. Display units are for people.
struct ExportedVariable
{
    std::unique_ptr<ColumnReader> values;
    std::vector<std::unique_ptr<ColumnReader>> axes; ///< those that have as many offsets as the values
};

/// The variable must outlive the result.
///
/// Units:  `units`, if given, are for the values, not for the axes.
/// Errors: Failure for units that don't fit, and when the values of a function can't be computed.
/// Edge:   an axis that leads nowhere, or has another number of values, is left out with a warning.
ExportedVariable exportedVariable(const Variable& variable, const std::optional<Units>& units);

} // namespace Orrery::Host
