#pragma once

#include "units/Units.h"

#include <QString>

#include <optional>

namespace Orrery::Host {

/// The units that a vector of this type has in a raw file, by the words that simulators use: V for "voltage", °C for
/// "temp-sweep". Case doesn't matter.
///
/// None for a type that names no unit: "notype"; "phase", which is degrees or radians as a setting of the simulator
/// has it; a noise density per square root of Hz, which has no integer exponents.
std::optional<Units> unitsOfRawType(const QString& type);

} // namespace Orrery::Host
