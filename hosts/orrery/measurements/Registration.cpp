#include "hosts/orrery/measurements/Registration.h"

#include "Core/MeasurementManager.h"
#include "hosts/orrery/measurements/Decibel.h"
#include "hosts/orrery/measurements/Derivative.h"
#include "hosts/orrery/measurements/Magnitude.h"
#include "hosts/orrery/measurements/MovingAverage.h"
#include "hosts/orrery/measurements/Phase.h"

namespace Orrery::Host {

namespace {

// One that is registered twice is never destroyed.
void registerOnce(std::unique_ptr<Measurement<Variable>> measurement)
{
    auto* const manager = MeasurementManager<Variable>::Instance();
    if (!manager->GetMeasurement(measurement->get_category(), measurement->get_name()))
        manager->Register(measurement.release());
}

} // namespace

void registerMeasurements()
{
    registerOnce(std::make_unique<Magnitude>());
    registerOnce(std::make_unique<Phase>());
    registerOnce(std::make_unique<Decibel>());
    registerOnce(std::make_unique<Derivative>());
    registerOnce(std::make_unique<MovingAverage>());
}

} // namespace Orrery::Host
