#pragma once

#include "quaycore_export.h"

#include <complex>
#include <cstdint>
#include <string>
#include <type_traits>

namespace Brindle::Quay {
/// A pair of T, real part first: the complex numbers of the integer types and of bool.
template <class T, class = void>
struct QUAYCORE_EXPORT Complex
{
    T real; ///< comes first in memory
    T imag; ///< comes second in memory
};

/// Both parts are equal.
template <class T>
constexpr bool operator==(const Complex<T>& a, const Complex<T>& b) noexcept
{
    return a.real == b.real && a.imag == b.imag;
}

/// One part or both differ.
template <class T>
constexpr bool operator!=(const Complex<T>& a, const Complex<T>& b) noexcept
{
    return !(a == b);
}

/// A span of time; what the two words mean is up to the host, the library only stores and compares them.
struct QUAYCORE_EXPORT Duration
{
    std::uint64_t words[2]; ///< stored and compared, never read as a time
};

/// Both words are equal.
constexpr bool operator==(const Duration& a, const Duration& b) noexcept
{
    return a.words[0] == b.words[0] && a.words[1] == b.words[1];
}

/// One word or both differ.
constexpr bool operator!=(const Duration& a, const Duration& b) noexcept
{
    return !(a == b);
}

/// A point in time; what the two words mean is up to the host, the library only stores and compares them.
struct QUAYCORE_EXPORT TimePoint
{
    std::uint64_t words[2]; ///< stored and compared, never read as a time
};

/// Both words are equal.
constexpr bool operator==(const TimePoint& a, const TimePoint& b) noexcept
{
    return a.words[0] == b.words[0] && a.words[1] == b.words[1];
}

/// One word or both differ.
constexpr bool operator!=(const TimePoint& a, const TimePoint& b) noexcept
{
    return !(a == b);
}

/// How the elements of a multi-dimensional array follow each other in memory.
///
/// Edge: whatever isn't RowMajor counts as column-major; payloads of this library then answer ColumnMajor.
enum class DataOrdering
{
    RowMajor = 0,    ///< the last index runs fastest
    ColumnMajor = 1, ///< the first index runs fastest
};

namespace Internal {
/// The element type that stores a T: T itself for the element types, the integer type of the same width and
/// sign for every other integer type (`long long`, `char`, ...), void for anything else.
template <class T>
struct StoredElement
{
private:
    static constexpr auto choose()
    {
        if constexpr (!std::is_integral_v<T>)
            return std::enable_if < std::is_floating_point_v<T> && sizeof(T) <= sizeof(double), T > {};
        else if constexpr (std::is_same_v<T, bool>)
            return std::enable_if<true, bool>{};
        else if constexpr (sizeof(T) == 1)
            return std::enable_if<true, std::conditional_t<std::is_signed_v<T>, std::int8_t, std::uint8_t>>{};
        else if constexpr (sizeof(T) == 2)
            return std::enable_if<true,
                                  std::conditional_t<std::is_signed_v<T>, std::int16_t, std::uint16_t>>{};
        else if constexpr (sizeof(T) == 4)
            return std::enable_if<true,
                                  std::conditional_t<std::is_signed_v<T>, std::int32_t, std::uint32_t>>{};
        else
            return std::enable_if<true,
                                  std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>{};
    }
    template <class Choice, class = void>
    struct TypeIn
    {
        using type = void;
    };
    template <class Choice>
    struct TypeIn<Choice, std::void_t<typename Choice::type>>
    {
        using type = typename Choice::type;
    };

public:
    using type = typename TypeIn<decltype(choose())>::type;
};
template <>
struct StoredElement<std::string>
{
    using type = std::string;
};
template <>
struct StoredElement<Duration>
{
    using type = Duration;
};
template <>
struct StoredElement<TimePoint>
{
    using type = TimePoint;
};
template <>
struct StoredElement<std::complex<double>>
{
    using type = std::complex<double>;
};
template <>
struct StoredElement<std::complex<float>>
{
    using type = std::complex<float>;
};
template <class T>
struct StoredElement<Complex<T>>
{
    // pairs of floating numbers are std::complex, and a pair of another integer type isn't reinterpreted
    using type =
        std::conditional_t<std::is_integral_v<T> && std::is_same_v<T, typename StoredElement<T>::type>,
                           Complex<T>, void>;
};

template <class T>
using StoredElementType = typename StoredElement<T>::type;

/// True for the 25 element types themselves.
template <class T>
inline constexpr bool isElementType = std::is_same_v<T, StoredElementType<T>> && !std::is_void_v<T>;

/// True for what can be stored as an element: the 25 types and the other integer types.
template <class T>
inline constexpr bool isStorable = !std::is_void_v<StoredElementType<T>>;

template <class T>
constexpr std::uint16_t codeOf() noexcept;

template <class T>
struct ComplexPart
{
};
template <class T>
struct ComplexPart<std::complex<T>>
{
    using type = T;
};
template <class T>
struct ComplexPart<Complex<T>>
{
    using type = T;
};

/// The code of an element type; 32, the run-time type, for everything that isn't one.
template <class T>
constexpr std::uint16_t codeOf() noexcept
{
    using Stored = StoredElementType<T>;
    if constexpr (std::is_void_v<Stored>)
        return 0x0020;
    else if constexpr (std::is_same_v<Stored, double>)
        return 0x0001;
    else if constexpr (std::is_same_v<Stored, float>)
        return 0x0002;
    else if constexpr (std::is_same_v<Stored, bool>)
        return 0x4003;
    else if constexpr (std::is_integral_v<Stored>)
        return static_cast<std::uint16_t>((std::is_unsigned_v<Stored> ? 0x4000 : 0) +
                                          (sizeof(Stored) == 1   ? 4
                                           : sizeof(Stored) == 2 ? 5
                                           : sizeof(Stored) == 4 ? 6
                                                                 : 7));
    else if constexpr (std::is_same_v<Stored, std::string>)
        return 0x0010;
    else if constexpr (std::is_same_v<Stored, Duration>)
        return 0x0030;
    else if constexpr (std::is_same_v<Stored, TimePoint>)
        return 0x0040;
    else
        return static_cast<std::uint16_t>(0x8000 | codeOf<typename ComplexPart<Stored>::type>());
}
} // namespace Internal

/// The element type of a variant as one 16-bit code.
///
/// The low four bits of a numeric code are the storage class (1 double, 2 single, 3 bool, 4 to 7 integers of 8
/// to 64 bits), 0x4000 marks unsigned, 0x8000 complex. The other codes are 0 null, 16 text, 32 a run-time type
/// told by its std::type_info, 48 Duration, 64 TimePoint. Any value may be held; what must act on an element
/// type rejects the codes that it doesn't know.
class QUAYCORE_EXPORT WellKnownType
{
public:
    static constexpr std::uint16_t Null = 0x0000;        ///< no element at all
    static constexpr std::uint16_t Text = 0x0010;        ///< std::string, any bytes
    static constexpr std::uint16_t RunTime = 0x0020;     ///< any other type, told by its std::type_info
    static constexpr std::uint16_t UnsignedBit = 0x4000; ///< set in bool and the unsigned integers
    static constexpr std::uint16_t ComplexBit = 0x8000;  ///< set in every complex type

    constexpr WellKnownType() noexcept = default; ///< null
    /// Any code is taken, also one that no element type has.
    constexpr WellKnownType(std::uint16_t code) noexcept
        : m_code(code)
    {
    }

    constexpr std::uint16_t code() const noexcept { return m_code; } ///< as it was given

    /// The code of T; another integer type gives that of its width and sign, any other type the run-time code.
    template <class T>
    static constexpr WellKnownType of() noexcept
    {
        return WellKnownType(Internal::codeOf<T>());
    }

    /// The smallest element type that holds the range of both, so that both convert to it, or 0 without one.
    ///
    /// Range counts, not precision: two 64-bit integers of different sign give double, as does a float with an
    /// integer of 32 bits or more. A complex side makes the result complex. Equal codes give themselves.
    /// Text, times and run-time types have a common type with nothing else.
    static WellKnownType getCommonWellKnownType(WellKnownType a, WellKnownType b) noexcept;

    /// The codes are equal; two different run-time types are, too.
    friend constexpr bool operator==(WellKnownType a, WellKnownType b) noexcept
    {
        return a.m_code == b.m_code;
    }
    /// The codes differ.
    friend constexpr bool operator!=(WellKnownType a, WellKnownType b) noexcept
    {
        return a.m_code != b.m_code;
    }

private:
    std::uint16_t m_code = Null;
};
} // namespace Brindle::Quay
