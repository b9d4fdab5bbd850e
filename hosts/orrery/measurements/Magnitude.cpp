#include "hosts/orrery/measurements/Magnitude.h"

#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Samples.h"

#include <cmath>

namespace Orrery::Host {

Magnitude::Magnitude()
{
    category = QStringLiteral("Complex");
    set_name(QStringLiteral("magnitude"));
    set_description(QStringLiteral("absolute value"));
}

Measured Magnitude::measure(const Variable& input) const
{
    return {mapped(samplesOf(input), [](const auto& value) { return std::abs(value); }), unitsOf(input)};
}

} // namespace Orrery::Host
