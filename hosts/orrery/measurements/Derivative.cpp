#include "hosts/orrery/measurements/Derivative.h"

#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Samples.h"

#include <cmath>
#include <string>

namespace Orrery::Host {

namespace {

const Variable& axisOf(const Variable& input)
{
    if (input.GetIndepCount() == 0)
        throw std::invalid_argument("the variable has no axis");
    Variable* axis = nullptr;
    if (input.GetIndepVariable(&axis, 0) < 0 || !axis)
        throw std::invalid_argument("the axis leads nowhere");
    return *axis;
}

/// The values of the axis, one for each offset or one for each value.
Samples axisSamples(const Variable& axis, const Samples& values)
{
    // Asked before it is read: an axis that is computed may be longer than any memory.
    Samples samples;
    if (axis.GetMaxIndepOffset() == values.offsets)
        samples = realSamplesOf(axis);
    if (samples.count() != values.offsets && samples.count() != values.count())
        throw std::invalid_argument("the axis is not as long as the values");
    return samples;
}

/// The slope at position i of `count`, of values that lie `stride` apart.
template <class T>
T slopeAt(const double* x, const T* y, std::uint64_t i, std::uint64_t count, std::uint64_t stride)
{
    const auto forward = [&] { return (y[(i + 1) * stride] - y[i * stride]) / (x[i + 1] - x[i]); };
    const auto backward = [&] { return (y[i * stride] - y[(i - 1) * stride]) / (x[i] - x[i - 1]); };
    if (i == 0)
        return forward();
    if (i + 1 == count)
        return backward();
    const double before = x[i] - x[i - 1];
    const double behind = x[i + 1] - x[i];
    const bool turns = (before > 0.0 && behind < 0.0) || (before < 0.0 && behind > 0.0);
    if (turns)
        return std::abs(behind) < std::abs(before) ? forward() : backward();
    // That of the parabola: both slopes, each weighted with the other distance.
    return (backward() * behind + forward() * before) / (before + behind);
}

template <class T>
std::vector<T> slopes(const double* x, const T* y, std::uint64_t count, std::uint64_t lanes)
{
    std::vector<T> results(count * lanes);
    for (std::uint64_t lane = 0; lane < lanes; ++lane) {
        for (std::uint64_t i = 0; i < count; ++i)
            results[i * lanes + lane] = slopeAt(x, y + lane, i, count, lanes);
    }
    return results;
}

QString inParentheses(const Units& units)
{
    const QString label = units.GetUnitsLabel();
    const bool isCompound = label.contains(QLatin1Char('/')) || label.contains(QLatin1Char('*'));
    return isCompound ? QLatin1Char('(') + label + QLatin1Char(')') : label;
}

/// A difference has no offset: a degree Celsius of it is a kelvin. One of decibels is no unit of the catalogue's kind.
std::optional<Units> quotient(const std::optional<Units>& units, const std::optional<Units>& perUnits)
{
    if (!units || !perUnits || units->IsLogarithmic() || perUnits->IsLogarithmic())
        return std::nullopt;
    const QString top = units->GetUnitsLabel().isEmpty() ? QStringLiteral("1") : units->GetUnitsLabel();
    const QString label = perUnits->GetUnitsLabel().isEmpty()
                              ? units->GetUnitsLabel()
                              : top + QLatin1Char('/') + inParentheses(*perUnits);
    const Dimensions dimensions =
        units->GetUnitType().GetDimensions() / perUnits->GetUnitType().GetDimensions();
    return Units(UnitType::FindUnitType(dimensions, label), label, units->GetScale() / perUnits->GetScale(),
                 0.0, 0.0);
}

} // namespace

Derivative::Derivative()
{
    category = QStringLiteral("Calculus");
    set_name(QStringLiteral("derivative"));
    set_description(QStringLiteral("slope against the axis"));
}

Measured Derivative::measure(const Variable& input) const
{
    const Variable& axis = axisOf(input);
    Samples values = samplesOf(input);
    const Samples places = axisSamples(axis, values);
    if (places.count() < 2)
        throw std::invalid_argument("a derivative needs at least 2 values");
    if (places.count() == values.count()) { // the points of a plot of more dimensions are one run
        values.offsets = values.count();
        values.lanes = 1;
    }
    const auto* const x = static_cast<const double*>(places.data.constData());
    const auto make = [&](const auto* y) { return slopes(x, y, values.offsets, values.lanes); };
    return {computedFrom(values, make), quotient(unitsOf(input), unitsOf(axis))};
}

} // namespace Orrery::Host
