#include "variables/RangeVarStrategy.h"

#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "variables/RangeParameters_p.h"
#include "variables/RangeVar.h"

#include <QDebug>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <typeinfo>

namespace Orrery {

using Brindle::Quay::DataOrdering;
using Brindle::Quay::getScalar;
using Brindle::Quay::tryGetScalar;
using Brindle::Quay::WellKnownType;

namespace {

/// The child as a value, or null. A cast costs more than the look-up; the usual type is told without one.
const SimpleProperty* valueChild(const PropertyObject& owner, const QString& name)
{
    const AbstractProperty* node = owner.GetPropertyConstPtr(name);
    if (node && typeid(*node) == typeid(SimpleProperty))
        return static_cast<const SimpleProperty*>(node);
    return dynamic_cast<const SimpleProperty*>(node);
}

ERESULT reportUnreadable(BVariant* out, ERESULT code)
{
    qWarning().noquote().nospace() << "failed to read RangeVar properties";
    *out = BVariant();
    return code;
}

double valueOf(std::uint64_t offset, double step, double start)
{
    return static_cast<double>(offset) * step + start;
}

/// Writes the values of offsets [first, first + count).
///
/// The machine converts 32-bit integers to double several at a time, 64-bit ones singly. Up to 2^53 each
/// offset is exactly the sum of two doubles, a block's beginning and a 32-bit place in the block, so both
/// ways agree.
void fillValues(double* values, std::uint64_t first, std::uint64_t count, double step, double start)
{
    constexpr std::uint64_t exactLimit = std::uint64_t(1) << std::numeric_limits<double>::digits;
    constexpr std::uint64_t blockLength = 1U << 20U;
    std::uint64_t done = 0;
    while (done < count && first + done <= exactLimit - blockLength) {
        const double base = static_cast<double>(first + done);
        const auto length = static_cast<std::int32_t>(std::min(blockLength, count - done));
        for (std::int32_t i = 0; i < length; ++i)
            values[i] = (base + static_cast<double>(i)) * step + start;
        values += length;
        done += static_cast<std::uint64_t>(length);
    }
    for (; done < count; ++done)
        *values++ = valueOf(first + done, step, start);
}

} // namespace

ERESULT setRangeParameter(PropertyObject& owner, const QString& name, const BVariant& value)
{
    if (value.elementCount() != 1)
        return ER_INVALID_ARGUMENT;
    return owner.SetProperty(name, value);
}

RangeVarStrategy::RangeVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
}

RangeVarStrategy::~RangeVarStrategy() = default;

const QString& RangeVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("RangeStrategy");
    return type;
}

QString RangeVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> RangeVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<RangeVarStrategy>(owner);
}

ERESULT RangeVarStrategy::SetStart(const BVariant& value)
{
    return setRangeParameter(*backRef(), RangeVar::Start, value);
}

ERESULT RangeVarStrategy::SetStep(const BVariant& value)
{
    return setRangeParameter(*backRef(), RangeVar::Step, value);
}

ERESULT RangeVarStrategy::SetCount(const BVariant& value)
{
    return setRangeParameter(*backRef(), RangeVar::Count, value);
}

ERESULT RangeVarStrategy::GetParams(double* start, double* step, std::uint64_t* count) const
{
    if (!start || !step || !count)
        return ER_INVALID_ARGUMENT;
    const SimpleProperty* const storedStart = valueChild(*backRef(), RangeVar::Start);
    const SimpleProperty* const storedCount = valueChild(*backRef(), RangeVar::Count);
    const SimpleProperty* const storedStep = valueChild(*backRef(), RangeVar::Step);
    if (!storedStart || !storedCount)
        return ER_NOT_FOUND;
    try {
        *start = getScalar<double>(storedStart->GetValueRef());
        *count = getScalar<std::uint64_t>(storedCount->GetValueRef());
    } catch (...) { // a host's payload may throw anything
        return ER_FAILED;
    }
    if (!storedStep || !tryGetScalar<double>(storedStep->GetValueRef(), step))
        *step = 1.0;
    return ER_SUCCESS;
}

ERESULT RangeVarStrategy::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    double start = 0;
    double step = 0;
    std::uint64_t count = 0;
    const ERESULT code = GetParams(&start, &step, &count);
    if (code < 0)
        return reportUnreadable(out, code);
    if (offset >= count)
        return reportUnreadable(out, ER_INVALID_ARGUMENT);
    *out = BVariant(valueOf(offset, step, start));
    return ER_SUCCESS;
}

ERESULT RangeVarStrategy::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    if (end == 0)
        end = GetMaxIndepOffset();
    double startValue = 0;
    double step = 0;
    std::uint64_t rangeCount = 0;
    const ERESULT code = GetParams(&startValue, &step, &rangeCount);
    if (code < 0)
        return reportUnreadable(out, code);
    if (end < start)
        throw std::length_error("A run of a range can't end before its start.");
    const std::uint64_t count = end - start;
    BVariant values = Brindle::Quay::createUninitializedArray(WellKnownType::of<double>(), {&count, 1});
    fillValues(static_cast<double*>(values.mutableData()), start, count, step, startValue);
    *out = std::move(values);
    return ER_SUCCESS;
}

std::uint64_t RangeVarStrategy::GetMaxIndepOffset() const
{
    std::uint64_t count = 0;
    const SimpleProperty* const stored = valueChild(*backRef(), RangeVar::Count);
    return stored && tryGetScalar<std::uint64_t>(stored->GetValueRef(), &count) ? count : 0;
}

std::uint64_t RangeVarStrategy::GetElementDimCount() const
{
    return 0;
}

ERESULT RangeVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    return ER_SUCCESS;
}

} // namespace Orrery
