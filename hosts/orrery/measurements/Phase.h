#pragma once

#include "hosts/orrery/measurements/HostMeasurement.h"

namespace Orrery::Host {

/// "phase": the angle of each element in degrees, from -180 to 180; 0 or 180 for real ones.
class Phase final : public HostMeasurement<Phase>
{
public:
    Phase();

    /// Errors: as samplesOf().
    Measured measure(const Variable& input) const;
};

} // namespace Orrery::Host
