#pragma once

#include "foundations/variant/Variant.h"
#include "tests/support/ElementTypes.h"

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace Orrery::ConversionTest {
using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

template <class T>
inline constexpr bool isNumber = (TestSupport::elementCode<T> & 0x000F) != 0;
template <class T>
inline constexpr bool isComplex = (TestSupport::elementCode<T> & 0x8000) != 0;

/// What a number of an element type is as a double, or as a complex double.
template <class T>
double widened(T value)
{
    return static_cast<double>(value);
}
template <class T>
std::complex<double> widened(std::complex<T> value)
{
    return {static_cast<double>(value.real()), static_cast<double>(value.imag())};
}
template <class T>
std::complex<double> widened(Brindle::Quay::Complex<T> value)
{
    return {static_cast<double>(value.real), static_cast<double>(value.imag)};
}

template <class T>
using Widened = std::conditional_t<isComplex<T>, std::complex<double>, double>;

/// A variant as it was: which payload it held, and every byte of it. Keeps no share of the payload, since a writer
/// would then leave that one alone and write to a copy.
class Snapshot
{
public:
    explicit Snapshot(const BVariant& variant)
        : m_payload(variant.payload())
        , m_data(variant.isEmpty() ? nullptr : variant.constData())
        , m_type(variant.getWellKnownType().code())
        , m_isScalar(variant.isScalar())
        , m_dimensions(variant.getDimensions().begin(), variant.getDimensions().end())
        , m_ordering(variant.getDataOrdering())
        , m_bytes(bytesOf(variant))
    {
    }

    /// Whether the variant is still the same, payload and all.
    friend bool operator==(const Snapshot& a, const Snapshot& b)
    {
        return a.m_payload == b.m_payload && a.m_data == b.m_data && a.m_type == b.m_type &&
               a.m_isScalar == b.m_isScalar && a.m_dimensions == b.m_dimensions &&
               a.m_ordering == b.m_ordering && a.m_bytes == b.m_bytes;
    }

private:
    static std::string bytesOf(const BVariant& variant)
    {
        const std::uint64_t count = variant.elementCount();
        if (count == 0 || variant.getWellKnownType() == Brindle::Quay::WellKnownType::RunTime)
            return {};
        std::string bytes;
        if (variant.getWellKnownType() == Brindle::Quay::WellKnownType::Text) {
            for (const std::string& text : Brindle::Quay::IterableContainer<std::string>(variant))
                bytes += text + '\0';
            return bytes;
        }
        bytes.resize(count * Brindle::Quay::elementSize(variant.getWellKnownType()));
        std::memcpy(bytes.data(), variant.constData(), bytes.size());
        return bytes;
    }

    const void* m_payload;
    const void* m_data;
    std::uint16_t m_type;
    bool m_isScalar;
    std::vector<std::uint64_t> m_dimensions;
    DataOrdering m_ordering;
    std::string m_bytes;
};
} // namespace Orrery::ConversionTest
