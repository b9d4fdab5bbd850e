#pragma once

#include "Core/Measurement.h"

/// Smooths data: each value becomes the mean of itself and up to window - 1 values before it.
///
/// A measurement of a host's own. It becomes known to the library by MeasurementManager::Register(), and from then on
/// any Function can name it, one that comes from a file too.
class MovingAverage final : public Orrery::Measurement<Orrery::Variable>
{
public:
    MovingAverage();

    QString get_name() override;
    Orrery::AbstractProbe* make_probe() override;
    Orrery::Measurement<Orrery::Variable>* clone() const override;

    /// What the probe calls. Writes the means to the output, or to a new Variable that the caller owns if none is set.
    ///
    /// Errors: std::runtime_error for data or a window that are no numbers, std::invalid_argument for no input and for
    ///         a window below 1.
    Orrery::Variable* apply(Orrery::Variable* input);

private:
    std::size_t window() const;
};
