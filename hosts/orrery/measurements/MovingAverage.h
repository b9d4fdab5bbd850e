#pragma once

#include "hosts/orrery/measurements/HostMeasurement.h"

#include <cstdint>

namespace Orrery::Host {

/// "moving-average": each value becomes the mean of itself and up to window - 1 values before it, in the same units.
///
/// Edge: a NaN or an infinity spoils the means of its own windows only.
class MovingAverage final : public HostMeasurement<MovingAverage>
{
public:
    MovingAverage();

    /// Errors: as samplesOf(); std::invalid_argument for a window that is no whole number from 1.
    Measured measure(const Variable& input) const;

private:
    std::uint64_t window() const;
};

} // namespace Orrery::Host
