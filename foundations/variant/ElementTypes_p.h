#pragma once

#include "foundations/variant/WellKnownType.h"

#include <complex>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

/// The 25 element types with their names in messages, in the order in which a run-time code is tested: no
/// compiler's signature text gives all of these names.
#define QUAY_FOR_EACH_ELEMENT(X)                                                                             \
    X(bool, "bool")                                                                                          \
    X(Complex<bool>, "Brindle::Quay::Complex<bool,void>")                                                    \
    X(double, "double")                                                                                      \
    X(float, "float")                                                                                        \
    X(std::int8_t, "int8_t")                                                                                 \
    X(std::int16_t, "int16_t")                                                                               \
    X(std::int32_t, "int")                                                                                   \
    X(std::int64_t, "int64_t")                                                                               \
    X(std::uint8_t, "uint8_t")                                                                               \
    X(std::uint16_t, "uint16_t")                                                                             \
    X(std::uint32_t, "unsigned int")                                                                         \
    X(std::uint64_t, "uint64_t")                                                                             \
    X(std::complex<double>, "std::complex<double>")                                                          \
    X(std::complex<float>, "std::complex<float>")                                                            \
    X(Complex<std::int8_t>, "Brindle::Quay::Complex<signed char,void>")                                      \
    X(Complex<std::int16_t>, "Brindle::Quay::Complex<short,void>")                                           \
    X(Complex<std::int32_t>, "Brindle::Quay::Complex<int,void>")                                             \
    X(Complex<std::int64_t>, "Brindle::Quay::Complex<__int64,void>")                                         \
    X(Complex<std::uint8_t>, "Brindle::Quay::Complex<unsigned char,void>")                                   \
    X(Complex<std::uint16_t>, "Brindle::Quay::Complex<unsigned short,void>")                                 \
    X(Complex<std::uint32_t>, "Brindle::Quay::Complex<unsigned int,void>")                                   \
    X(Complex<std::uint64_t>, "Brindle::Quay::Complex<unsigned __int64,void>")                               \
    X(std::string, "std::string")                                                                            \
    X(Duration, "Brindle::Quay::Duration")                                                                   \
    X(TimePoint, "Brindle::Quay::TimePoint")

namespace Brindle::Quay::Internal {
template <class T>
struct ElementTag
{
    using type = T;
};

[[noreturn]] inline void failDispatch(WellKnownType type)
{
    throw std::runtime_error((type.code() & 0xFU) != 0 ? "not a numeric type" : "unknown type");
}

/// Calls `action` with the ElementTag of the type that `type` names. The one place where a run-time code picks a
/// template member.
template <class Action>
decltype(auto) dispatchElement(WellKnownType type, Action&& action)
{
    switch (type.code()) {
#define QUAY_CASE(T, name)                                                                                   \
    case codeOf<T>():                                                                                        \
        return action(ElementTag<T>{});
        QUAY_FOR_EACH_ELEMENT(QUAY_CASE)
#undef QUAY_CASE
    default:
        failDispatch(type);
    }
}

/// An element as its type has it: where a bool stands, a host or a file may have put any byte.
template <class T>
decltype(auto) loadElement(const T* element)
{
    if constexpr (std::is_same_v<T, bool>)
        return *reinterpret_cast<const unsigned char*>(element) != 0;
    else
        return (*element);
}

/// A number type of the table: a known storage class with a sign that it has, complex or not.
constexpr bool isNumeric(WellKnownType type) noexcept
{
    const unsigned code = type.code();
    const unsigned storage = code & 0xFU;
    const bool isUnsigned = (code & WellKnownType::UnsignedBit) != 0;
    if ((code & ~0xC00FU) != 0 || storage == 0 || storage > 7)
        return false;
    return storage >= 4 || isUnsigned == (storage == 3);
}

constexpr bool isComplex(WellKnownType type) noexcept
{
    return (type.code() & WellKnownType::ComplexBit) != 0;
}

/// The type of the parts of a complex type, and any other type itself.
constexpr WellKnownType partOf(WellKnownType type) noexcept
{
    return static_cast<std::uint16_t>(type.code() & ~WellKnownType::ComplexBit);
}

/// Whatever isn't row-major is column-major.
constexpr DataOrdering normalized(DataOrdering ordering) noexcept
{
    return ordering == DataOrdering::RowMajor ? DataOrdering::RowMajor : DataOrdering::ColumnMajor;
}
} // namespace Brindle::Quay::Internal
