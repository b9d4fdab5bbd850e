#pragma once

#include "foundations/property/PropertyObject.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <vector>

/// Stands for an instrument: each measurement adds one value to the variable "voltage" over the axis "time".
///
/// It knows nothing of windows. Whoever wants to see the values follows the variable.
class Instrument
{
public:
    /// Puts the two variables into the folder, which owns them and must outlive this object.
    explicit Instrument(Orrery::PropertyObject& folder);

    Orrery::Variable& Voltage() { return *m_voltage; }

    /// Take one more value: an oscillation that dies away, every 20 ms.
    void Measure();

    /// Start again, with another frequency.
    void Restart(double hertz);

private:
    void Publish();

    Orrery::RangeVar* m_time;           // owned by the folder
    Orrery::ExplicitDataVar* m_voltage; // owned by the folder
    std::vector<double> m_values;
    double m_hertz = 0.8;
};
