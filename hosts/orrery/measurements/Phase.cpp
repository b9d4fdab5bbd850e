#include "hosts/orrery/measurements/Phase.h"

#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Samples.h"

#include <cmath>

namespace Orrery::Host {

namespace {

constexpr double s_degreesPerRadian = 57.29577951308232; // 180 / pi

} // namespace

Phase::Phase()
{
    category = QStringLiteral("Complex");
    set_name(QStringLiteral("phase"));
    set_description(QStringLiteral("angle in degrees"));
}

Measured Phase::measure(const Variable& input) const
{
    const auto angle = [](const auto& value) { return std::arg(value) * s_degreesPerRadian; };
    return {mapped(samplesOf(input), angle), parseUnits("deg")};
}

} // namespace Orrery::Host
