#pragma once

#include "units/Units.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// The parameter of a sweep as it is given on the command line.
struct SweepValues
{
    QString name;
    std::vector<double> values; ///< one for each run
    std::optional<Units> units;
};

/// "NAME=v1,v2,..." or "NAME=@FILE", a text file of numbers with commas, blanks or line ends between them.
///
/// Errors: Failure (ExitUsage) for another text and for what is no number; Failure that names the file for one that
///         can't be read or holds anything but numbers.
SweepValues parseSweep(const std::string& text);

} // namespace Orrery::Host
