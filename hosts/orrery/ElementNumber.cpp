#include "hosts/orrery/ElementNumber.h"

#include <limits>
#include <type_traits>

namespace Orrery::Host {

using namespace Brindle::Quay;

static_assert(std::numeric_limits<long double>::digits >= 64, "64-bit integers are compared as long doubles");

namespace {

template <class T>
ElementNumber asNumber(const T& value)
{
    static_assert(std::is_arithmetic_v<T>);
    return {static_cast<long double>(value), 0.0L};
}

template <class T>
ElementNumber asNumber(const std::complex<T>& value)
{
    return {static_cast<long double>(value.real()), static_cast<long double>(value.imag())};
}

template <class T>
ElementNumber asNumber(const Complex<T>& value)
{
    return {static_cast<long double>(value.real), static_cast<long double>(value.imag)};
}

template <class T>
ElementNumber readAs(const void* data, std::uint64_t position)
{
    return asNumber(static_cast<const T*>(data)[position]);
}

struct Row
{
    WellKnownType type;
    ReadElementNumber read;
};

template <class T>
constexpr Row row()
{
    return {WellKnownType::of<T>(), &readAs<T>};
}

constexpr Row s_rows[] = {
    row<double>(),
    row<float>(),
    row<bool>(),
    row<std::int8_t>(),
    row<std::int16_t>(),
    row<std::int32_t>(),
    row<std::int64_t>(),
    row<std::uint8_t>(),
    row<std::uint16_t>(),
    row<std::uint32_t>(),
    row<std::uint64_t>(),
    row<std::complex<double>>(),
    row<std::complex<float>>(),
    row<Complex<bool>>(),
    row<Complex<std::int8_t>>(),
    row<Complex<std::int16_t>>(),
    row<Complex<std::int32_t>>(),
    row<Complex<std::int64_t>>(),
    row<Complex<std::uint8_t>>(),
    row<Complex<std::uint16_t>>(),
    row<Complex<std::uint32_t>>(),
    row<Complex<std::uint64_t>>(),
};

} // namespace

ReadElementNumber numberReader(WellKnownType type)
{
    for (const Row& entry : s_rows) {
        if (entry.type == type)
            return entry.read;
    }
    return nullptr;
}

} // namespace Orrery::Host
