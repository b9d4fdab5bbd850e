#pragma once

#include "foundations/variant/Variant.h"

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace TestSupport {
using Brindle::Quay::Complex;
using Brindle::Quay::Duration;
using Brindle::Quay::TimePoint;

/// What an element is, beside its code: it decides what it converts to.
enum class ElementKind
{
    Boolean,
    Integer,
    Floating,
    Text,
    Time
};

/// One row of the list of element types, for tests that pick the type at run time.
struct ElementRow
{
    std::uint16_t code;
    const char* name;
    ElementKind kind; ///< of the parts, for a complex type
    bool isComplex;
};

/// The 25 element types in the order of their codes.
const std::vector<ElementRow>& elementRows();

/// The row of `code`; a code without a row throws std::out_of_range.
const ElementRow& elementRow(std::uint16_t code);

/// All 25 element types, for TYPED_TEST_SUITE.
using ElementTypes =
    ::testing::Types<double, float, std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::string,
                     Duration, TimePoint, bool, std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t,
                     std::complex<double>, std::complex<float>, Complex<std::int8_t>, Complex<std::int16_t>,
                     Complex<std::int32_t>, Complex<std::int64_t>, Complex<bool>, Complex<std::uint8_t>,
                     Complex<std::uint16_t>, Complex<std::uint32_t>, Complex<std::uint64_t>>;

/// The code that stands for T in every file and message; written out here, not taken from the library.
template <class T>
inline constexpr std::uint16_t elementCode = 0;
template <>
inline constexpr std::uint16_t elementCode<double> = 0x0001;
template <>
inline constexpr std::uint16_t elementCode<float> = 0x0002;
template <>
inline constexpr std::uint16_t elementCode<std::int8_t> = 0x0004;
template <>
inline constexpr std::uint16_t elementCode<std::int16_t> = 0x0005;
template <>
inline constexpr std::uint16_t elementCode<std::int32_t> = 0x0006;
template <>
inline constexpr std::uint16_t elementCode<std::int64_t> = 0x0007;
template <>
inline constexpr std::uint16_t elementCode<std::string> = 0x0010;
template <>
inline constexpr std::uint16_t elementCode<Duration> = 0x0030;
template <>
inline constexpr std::uint16_t elementCode<TimePoint> = 0x0040;
template <>
inline constexpr std::uint16_t elementCode<bool> = 0x4003;
template <>
inline constexpr std::uint16_t elementCode<std::uint8_t> = 0x4004;
template <>
inline constexpr std::uint16_t elementCode<std::uint16_t> = 0x4005;
template <>
inline constexpr std::uint16_t elementCode<std::uint32_t> = 0x4006;
template <>
inline constexpr std::uint16_t elementCode<std::uint64_t> = 0x4007;
template <>
inline constexpr std::uint16_t elementCode<std::complex<double>> = 0x8001;
template <>
inline constexpr std::uint16_t elementCode<std::complex<float>> = 0x8002;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::int8_t>> = 0x8004;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::int16_t>> = 0x8005;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::int32_t>> = 0x8006;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::int64_t>> = 0x8007;
template <>
inline constexpr std::uint16_t elementCode<Complex<bool>> = 0xC003;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::uint8_t>> = 0xC004;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::uint16_t>> = 0xC005;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::uint32_t>> = 0xC006;
template <>
inline constexpr std::uint16_t elementCode<Complex<std::uint64_t>> = 0xC007;

/// Sample values of one element type: `first` and `second` differ, `other` differs from both where the type
/// has three values, and `extreme` is one at the end of its range.
///
/// A text sample is longer than the short-string buffer and another holds a NUL, since both go wrong easily.
template <class T>
struct Samples
{
    static T first() { return T(3); }
    static T second() { return T(7); }
    static T other() { return T(100); }
    static T extreme() { return std::numeric_limits<T>::max(); }
};

template <>
struct Samples<bool>
{
    static bool first() { return true; }
    static bool second() { return false; }
    static bool other() { return true; }
    static bool extreme() { return true; }
};

template <>
struct Samples<std::string>
{
    static std::string first() { return "three"; }
    static std::string second() { return std::string("se\0ven", 6); }
    static std::string other() { return "a text that is longer than any short-string buffer holds"; }
    static std::string extreme() { return {}; }
};

template <class T>
struct Samples<std::complex<T>>
{
    static std::complex<T> first() { return {T(3), T(-4)}; }
    static std::complex<T> second() { return {T(3), T(4)}; } // differs in its imaginary part alone
    static std::complex<T> other() { return {T(0.5), T(0)}; }
    static std::complex<T> extreme()
    {
        return {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
    }
};

template <class T>
struct Samples<Complex<T>>
{
    static Complex<T> make(T real, T imag)
    {
        Complex<T> made{};
        made.real = real;
        made.imag = imag;
        return made;
    }
    static Complex<T> first() { return make(Samples<T>::first(), Samples<T>::second()); }
    static Complex<T> second() { return make(Samples<T>::first(), Samples<T>::first()); }
    static Complex<T> other() { return make(Samples<T>::second(), Samples<T>::other()); }
    static Complex<T> extreme()
    {
        return make(std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest());
    }
};

template <class T>
struct TwoWordSamples
{
    static T make(std::uint64_t low, std::uint64_t high)
    {
        T made{};
        made.words[0] = low;
        made.words[1] = high;
        return made;
    }
    static T first() { return make(1, 2); }
    static T second() { return make(1, 3); } // differs in its second word alone
    static T other() { return make(9, 2); }
    static T extreme() { return make(~std::uint64_t{0}, ~std::uint64_t{0}); }
};

template <>
struct Samples<Duration> : TwoWordSamples<Duration>
{
};

template <>
struct Samples<TimePoint> : TwoWordSamples<TimePoint>
{
};

/// Names the suites of TYPED_TEST_SUITE by their element type: "SliceOf/int8_t".
struct ElementTypeName
{
    template <class T>
    static std::string GetName(int)
    {
        return suiteName(elementCode<T>);
    }

private:
    /// The name of the type without what a test name can't hold.
    static std::string suiteName(std::uint16_t code);
};

/// Whether two elements are the same value: NaN isn't itself, 0.0 is -0.0.
template <class T>
bool sameElement(const T& a, const T& b)
{
    return a == b;
}

template <class T>
bool sameElement(const Complex<T>& a, const Complex<T>& b)
{
    return a.real == b.real && a.imag == b.imag;
}

inline bool sameElement(const Duration& a, const Duration& b)
{
    return a.words[0] == b.words[0] && a.words[1] == b.words[1];
}

inline bool sameElement(const TimePoint& a, const TimePoint& b)
{
    return a.words[0] == b.words[0] && a.words[1] == b.words[1];
}

/// `count` elements that run through the samples of T in turn.
template <class T>
std::vector<T> sampleElements(std::size_t count)
{
    const T values[] = {Samples<T>::first(), Samples<T>::second(), Samples<T>::other(),
                        Samples<T>::extreme()};
    std::vector<T> made;
    for (std::size_t i = 0; i < count; ++i)
        made.push_back(values[i % 4]);
    return made;
}
} // namespace TestSupport
