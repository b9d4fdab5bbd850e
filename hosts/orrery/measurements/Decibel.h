#pragma once

#include "hosts/orrery/measurements/HostMeasurement.h"

namespace Orrery::Host {

/// "decibel": 20 times the decimal logarithm of the magnitude for voltages, currents and plain numbers, 10 times for
/// powers and what else has units: decibels against one of the unit. 0 becomes minus infinity.
class Decibel final : public HostMeasurement<Decibel>
{
public:
    Decibel();

    /// Errors: as samplesOf(); std::invalid_argument for units that are decibels already or have an offset.
    Measured measure(const Variable& input) const;
};

} // namespace Orrery::Host
