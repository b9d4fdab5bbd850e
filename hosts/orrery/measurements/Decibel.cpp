#include "hosts/orrery/measurements/Decibel.h"

#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Samples.h"
#include "units/SystemOfUnits.h"

#include <cmath>

namespace Orrery::Host {

namespace {

/// A ratio is taken for one of voltages, as gains are.
double factorFor(const std::optional<Units>& units)
{
    if (!units || Dimensionless(*units))
        return 20.0;
    return UnitType::GetDBType(units->GetUnitType()) == UnitType::fieldDecibel ? 20.0 : 10.0;
}

/// Decibels against one of the unit: the catalogue's own if it has such a unit, as dBV for V.
Units decibelsOf(const Units& units, double factor)
{
    const QList<Units> known = SystemOfUnits::instance().GetCompatibleUnits(units);
    for (const Units& candidate : known) {
        if (candidate.GetLogScale() == factor && candidate.GetScale() == units.GetScale())
            return candidate;
    }
    const QString label = QStringLiteral("dB(%1)").arg(units.GetUnitsLabel());
    return Units(units.GetUnitType(), label, units.GetScale(), 0.0, factor);
}

} // namespace

Decibel::Decibel()
{
    category = QStringLiteral("Complex");
    set_name(QStringLiteral("decibel"));
    set_description(QStringLiteral("20 log10 of the magnitude, 10 log10 for powers"));
}

Measured Decibel::measure(const Variable& input) const
{
    const std::optional<Units> units = unitsOf(input);
    if (units && (units->IsLogarithmic() || units->GetOffset() != 0.0))
        throw std::invalid_argument("values in " + unitsLabel(*units) + " have no decibels");
    const double factor = factorFor(units);
    const auto level = [=](const auto& value) { return factor * std::log10(std::abs(value)); };
    Measured found;
    found.data = mapped(samplesOf(input), level);
    if (units)
        found.units = decibelsOf(*units, factor);
    return found;
}

} // namespace Orrery::Host
