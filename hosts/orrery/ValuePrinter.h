#pragma once

#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/Output.h"

#include <string>

namespace Orrery::Host {

/// Values for a person and for simple tools.
///
/// Shape:  a vector is one value a line, a matrix one row a line with tabs between the values. A higher array is
///         its matrices one after another, each below a line "[i,j,:,:]" and parted by an empty line. Control
///         characters in text are shown as \n and the like.
void printValues(Output& out, const Selection& values);

/// Values as CSV (RFC 4180, lines end with LF): a header line, then one record for each offset.
///
/// Shape:  columns "offset" and `name`; an element that is an array has one column for each of its values,
///         "name[i,j]"; a complex value has two, "name.re" and "name.im".
void printCsv(Output& out, const Selection& values, const std::string& name);

} // namespace Orrery::Host
