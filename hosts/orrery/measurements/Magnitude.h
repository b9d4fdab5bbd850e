#pragma once

#include "hosts/orrery/measurements/HostMeasurement.h"

namespace Orrery::Host {

/// "magnitude": the absolute value of each element, in the same units.
class Magnitude final : public HostMeasurement<Magnitude>
{
public:
    Magnitude();

    /// Errors: as samplesOf().
    Measured measure(const Variable& input) const;
};

} // namespace Orrery::Host
