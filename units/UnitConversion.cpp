// The arithmetic of units. The order of the floating-point operations decides the last bits and is a promise to
// hosts: (value * scale + offset - offset of the target) / scale of the target, one true division, nothing merged.
#include "units/Units.h"

#include "foundations/variant/Variant.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace Orrery {
namespace {
using Brindle::Quay::WellKnownType;

/// What a logarithm is taken of at least; keeps zero and negative values out of it.
constexpr double s_smallestLinear = 1e-300;

std::uint64_t bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

/// The numbers of both units, side by side for the loops. A logarithmic scale of NaN counts as not 0.
struct Conversion
{
    Conversion(const Units& source, const Units& target)
        : logScale(source.GetLogScale())
        , scale(source.GetScale())
        , offset(source.GetOffset())
        , targetOffset(target.GetOffset())
        , targetScale(target.GetScale())
        , targetLogScale(target.GetLogScale())
    {
    }

    /// Whether both logarithmic scales are 0, of either sign: one branch, as single values have time for no more.
    bool isLinear() const { return ((bitsOf(logScale) | bitsOf(targetLogScale)) << 1U) == 0; }

    double toLinear(double value) const { return logScale == 0.0 ? value : std::pow(10.0, value / logScale); }
    double rescaled(double linear) const { return (linear * scale + offset - targetOffset) / targetScale; }
    double fromLinear(double linear) const
    {
        if (targetLogScale == 0.0)
            return linear;
        if (linear < s_smallestLinear) // false for NaN, which goes through
            linear = s_smallestLinear;
        return std::log10(linear) * targetLogScale;
    }
    double operator()(double value) const { return fromLinear(rescaled(toLinear(value))); }

    double logScale;
    double scale;
    double offset;
    double targetOffset;
    double targetScale;
    double targetLogScale;
};

/// Without a call: compilers expand this comparison, but not that of two arrays.
bool sameDimensions(const Dimensions& a, const Dimensions& b)
{
    return std::memcmp(a.Exponents().data(), b.Exponents().data(), sizeof(a.Exponents())) == 0;
}

template <class Part>
double toDouble(const Part* part)
{
    if constexpr (std::is_same_v<Part, bool>)
        return *reinterpret_cast<const unsigned char*>(part) != 0 ? 1.0 : 0.0; // a host may have put any byte
    else
        return static_cast<double>(*part);
}

/// `count` numbers at `source`, converted into fresh memory at `target`.
template <class Part>
void convertRun(const Part* source, std::uint64_t count, Conversion conversion, double* target)
{
    if (!conversion.isLinear()) {
        for (std::uint64_t i = 0; i < count; ++i)
            target[i] = conversion(toDouble(source + i));
    } else if (conversion.targetScale == 1.0) { // dividing by it would change no bit
        for (std::uint64_t i = 0; i < count; ++i)
            target[i] = toDouble(source + i) * conversion.scale + conversion.offset - conversion.targetOffset;
    } else {
        for (std::uint64_t i = 0; i < count; ++i)
            target[i] = conversion.rescaled(toDouble(source + i));
    }
}

/// Converts when `type` is the code of Part.
template <class Part>
bool convertIfOf(WellKnownType type, const void* source, std::uint64_t count, const Conversion& conversion,
                 double* target)
{
    if (type != WellKnownType::of<Part>())
        return false;
    convertRun(static_cast<const Part*>(source), count, conversion, target);
    return true;
}

/// Converts numbers of whichever of these types has that code; false when none has.
template <class... Parts>
bool convertAnyOf(WellKnownType type, const void* source, std::uint64_t count, const Conversion& conversion,
                  double* target)
{
    return (convertIfOf<Parts>(type, source, count, conversion, target) || ...);
}

bool convertParts(WellKnownType part, const void* source, std::uint64_t count, const Conversion& conversion,
                  double* target)
{
    return convertAnyOf<double, float, bool, std::int8_t, std::int16_t, std::int32_t, std::int64_t,
                        std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(part, source, count,
                                                                                   conversion, target);
}

/// The converted elements as numbers of doubles; null for elements that aren't numbers.
///
/// A complex number is a pair of parts, in every type that has complex numbers.
template <class Number>
BVariant convertNumbers(const BVariant& data, const Conversion& conversion)
{
    constexpr std::uint64_t partCount = std::is_same_v<Number, double> ? 1 : 2;
    const WellKnownType part =
        static_cast<std::uint16_t>(data.getWellKnownType().code() & ~WellKnownType::ComplexBit);
    const void* source = data.constData();
    if (data.isScalar()) {
        double parts[2] = {};
        if (!convertParts(part, source, partCount, conversion, parts))
            return BVariant();
        if constexpr (partCount == 1)
            return BVariant::scalar(parts[0], data.getDataOrdering());
        else
            return BVariant::scalar(Number(parts[0], parts[1]), data.getDataOrdering());
    }
    BVariant converted = Brindle::Quay::createUninitializedArray(
        WellKnownType::of<Number>(), data.getDimensions(), data.getDataOrdering());
    auto* target = static_cast<double*>(converted.mutableData());
    if (!convertParts(part, source, data.elementCount() * partCount, conversion, target))
        return BVariant();
    return converted;
}

/// The same for all that can become numbers, such as text; null or an exception for the rest.
template <class Number>
BVariant convertElements(const BVariant& data, const Conversion& conversion)
{
    BVariant converted = convertNumbers<Number>(data, conversion);
    if (!converted.isNull())
        return converted;
    return convertNumbers<Number>(Brindle::Quay::convertedTo(data, WellKnownType::of<Number>()), conversion);
}

/// Apart, so that a linear conversion needn't make room for its calls.
[[gnu::noinline]] ERESULT convertLogarithmic(const Units& source, const Units& target, double value,
                                             double* result)
{
    *result = Conversion(source, target)(value);
    return ER_SUCCESS;
}
} // namespace

double Units::ConvertValueToUnit(double value, const Units& target) const
{
    return Conversion(*this, target)(value);
}

ERESULT Units::ConvertTo(const Units& target, double value, double* result) const
{
    // IsCommensurable would cost as much as the rest
    if (!result || !sameDimensions(m_impl->type.m_dimensions, target.m_impl->type.m_dimensions))
        return ER_INVALID_ARGUMENT;
    const Conversion conversion(*this, target);
    if (!conversion.isLinear())
        return convertLogarithmic(*this, target, value, result);
    *result = conversion.rescaled(value);
    return ER_SUCCESS;
}

ERESULT Units::ConvertTo(const Units& target, std::complex<double> value, std::complex<double>* result) const
{
    if (!result || !IsCommensurable(target))
        return ER_INVALID_ARGUMENT;
    const Conversion conversion(*this, target);
    *result = {conversion(value.real()), conversion(value.imag())};
    return ER_SUCCESS;
}

ERESULT Units::ConvertTo(const Units& target, BVariant& data) const
{
    if (GetSIUnits() == target.GetSIUnits())
        return ER_SUCCESS;
    BVariant dropped; // a success tells that the data can be converted; they stay as they are
    return ConvertedTo(target, data, &dropped);
}

ERESULT Units::ConvertedTo(const Units& target, const BVariant& data, BVariant* result) const
{
    if (!result || !IsCommensurable(target))
        return ER_INVALID_ARGUMENT;
    try {
        const Conversion conversion(*this, target);
        const bool isComplex = (data.getWellKnownType().code() & WellKnownType::ComplexBit) != 0;
        BVariant converted = isComplex ? convertElements<std::complex<double>>(data, conversion)
                                       : convertElements<double>(data, conversion);
        if (converted.isNull())
            return ER_INVALID_ARGUMENT;
        *result = std::move(converted);
        return ER_SUCCESS;
    } catch (...) { // whatever a host's payload or a damaged file throws
        return ER_INVALID_ARGUMENT;
    }
}
} // namespace Orrery
