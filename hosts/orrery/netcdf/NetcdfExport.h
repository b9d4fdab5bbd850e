#pragma once

#include "hosts/orrery/ExportedVariable.h"
#include "hosts/orrery/Failure.h"

#include <string>

namespace Orrery::Host {

/// What is amiss is the place where the file is written, not the variable.
class NotWritten : public Failure
{
public:
    using Failure::Failure;
};

/// Write a variable with its axes as an HDF5 file that programs for netCDF-4 read.
///
/// Shape:  the first dimension is that of the offsets. A single axis of real values is its coordinate variable; else it
///         is called "offset", and the axes are variables over it, named in the attribute "coordinates". An element that
///         is an array adds the dimensions "dim_1", "dim_2" and so on. Complex values are two variables, "x_re" and
///         "x_im".
/// Units:  the attribute "units"; "long_name" has the name as it is in the data file.
/// Errors: NotWritten when the file can't be written; Failure for a variable without values, for element types that
///         netCDF doesn't have, and for what can't be computed.
/// Cost:   of computed values no more than a block is in memory at any time.
void writeNetcdf(const std::string& path, const std::string& title, ExportedVariable& variable);

} // namespace Orrery::Host
