#pragma once

#include "hosts/orrery/measurements/HostMeasurement.h"

namespace Orrery::Host {

/// "derivative": the slope against the first independent variable, in units per unit of it.
///
/// Through each value and its two neighbours, which need not be equally far, goes a parabola. At both ends, and where the
/// axis turns, as at the end of each run of a nested sweep, the slope is that to one neighbour, the nearer one.
class Derivative final : public HostMeasurement<Derivative>
{
public:
    Derivative();

    /// Errors: as samplesOf(); std::invalid_argument without an axis of real numbers as long as the values, and for less than 2.
    Measured measure(const Variable& input) const;
};

} // namespace Orrery::Host
