#pragma once

#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/Output.h"
#include "hosts/orrery/ValueJson.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <optional>
#include <string>

namespace Orrery::Host {

struct TableOptions
{
    std::optional<OffsetRange> range; ///< all offsets if not given
    std::optional<Units> units;       ///< if not given, the display units of the variable, or its units
    bool isCsv = false;
    std::optional<JsonHead> json; ///< as a JSON document with that head; before isCsv
};

/// Print a variable with the axes over which it lies.
///
/// Shape:  with an axis, a line of names with their units in brackets, then one line for each value: the value of each
///         axis and of the variable, in columns; in front the offset where only some were asked for, and where there
///         are several values at one. As CSV, the records of printCsvRecords(), axes first. Without an axis as
///         printValues(). As JSON, what ValueJson says.
/// Units:  only the values are converted to units that are given; axes are shown in their display units.
/// Errors: Failure for offsets that aren't there, for values that can't be computed or converted.
/// Edge:   an axis that leads nowhere, or has another number of values, is left out with a warning.
/// Cost:   of computed values no more than a block is in memory at any time.
void printVariable(Output& out, const Variable& variable, const TableOptions& options);

} // namespace Orrery::Host
