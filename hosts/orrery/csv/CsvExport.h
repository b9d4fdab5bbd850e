#pragma once

#include "hosts/orrery/ExportedVariable.h"
#include "hosts/orrery/Output.h"

namespace Orrery::Host {

/// Write a variable as CSV that importing brings back with the same values.
///
/// Shape:  a header line of names with their units in brackets, then one record for each offset: the axes, then the
///         value. Complex values are two columns, "x.re" and "x.im"; an element that is an array is one column for each
///         of its values, "m[0,1]".
/// Units:  a label that doesn't read back as the same unit is written as an SI string.
/// Errors: Failure for values that can't be computed; what reading them throws; what writing throws.
/// Edge:   numbers have the shortest text that reads back as the same double; a float is written as the double that it
///         is.
/// Cost:   of computed values no more than a block is in memory at any time.
void writeCsv(Output& out, ExportedVariable& variable);

} // namespace Orrery::Host
