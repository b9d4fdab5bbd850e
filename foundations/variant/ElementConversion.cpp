#include "foundations/variant/ElementConversion_p.h"

#include "foundations/variant/ElementTypes_p.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

namespace Brindle::Quay::Internal {
namespace {
// ---- one number -------------------------------------------------------------------------------------------------

/// 2 to the power of the value bits of an integer: the first number above its range, exact in every floating type.
template <class Floating, class Integer>
constexpr Floating firstAbove()
{
    Floating power = 1;
    for (int i = 0; i < std::numeric_limits<Integer>::digits; ++i)
        power *= 2;
    return power;
}

/// Whether the value, cut toward zero, is in the range of Integer; false for NaN.
template <class Integer, class Floating>
bool fitsInteger(Floating value)
{
    constexpr Floating above = firstAbove<Floating, Integer>();
    if constexpr (std::is_unsigned_v<Integer>)
        return value > Floating(-1) && value < above;
    else if constexpr (std::numeric_limits<Floating>::digits > std::numeric_limits<Integer>::digits)
        return value > -above - 1 && value < above; // what is cut off may lie below the lowest integer
    else
        return value >= -above && value < above; // so far out, floating numbers have no fraction
}

template <class To, class From>
constexpr bool fitsAmongIntegers(From value)
{
    using Limits = std::numeric_limits<To>;
    if constexpr (std::is_signed_v<From> == std::is_signed_v<To>)
        return value >= Limits::min() && value <= Limits::max();
    else if constexpr (std::is_signed_v<From>)
        return value >= 0 && static_cast<std::make_unsigned_t<From>>(value) <= Limits::max();
    else
        return value <= static_cast<std::make_unsigned_t<To>>(Limits::max());
}

/// A double that is finite and rounds to a single beyond the largest one.
inline bool overflowsSingle(double value)
{
    constexpr double halfStepAboveLargest = 0x1.ffffffp127;
    return std::fabs(value) >= halfStepAboveLargest && std::fabs(value) <= std::numeric_limits<double>::max();
}

template <class To, class From>
bool fits(From value)
{
    if constexpr (std::is_same_v<To, bool> || std::is_same_v<From, bool> || std::is_same_v<To, From>)
        return true;
    else if constexpr (std::is_same_v<To, float> && std::is_same_v<From, double>)
        return !overflowsSingle(value);
    else if constexpr (std::is_floating_point_v<To>)
        return true; // 2^64 is far inside the range of a single
    else if constexpr (std::is_floating_point_v<From>)
        return fitsInteger<To>(value);
    else
        return fitsAmongIntegers<To>(value);
}

template <class To, class From>
To cast(From value)
{
    if constexpr (std::is_same_v<To, bool>)
        return value != From(0);
    else
        return static_cast<To>(value);
}

// ---- runs of numbers --------------------------------------------------------------------------------------------

/// Steps are in parts: 1 for real numbers, 2 for one part of complex ones.
using ConvertRun = bool (*)(const void* source, unsigned sourceStep, void* target, unsigned targetStep,
                            std::uint64_t count);

/// Without a branch in the loop, so that it can be vectorised; a value that doesn't fit is replaced by 0, whose
/// conversion is defined, and reported at the end of the block.
template <class From, class To, unsigned SourceStep, unsigned TargetStep>
bool convertBlock(const From* source, To* target, std::uint64_t count)
{
    bool good = true;
    for (std::uint64_t i = 0; i < count; ++i) {
        const From value = loadElement(source + i * SourceStep);
        const bool isGood = fits<To>(value);
        good = good && isGood;
        target[i * TargetStep] = cast<To>(isGood ? value : From(0));
    }
    return good;
}

template <class From, class To, unsigned SourceStep, unsigned TargetStep>
bool convertBlocks(const From* source, To* target, std::uint64_t count)
{
    constexpr std::uint64_t blockSize = 1024;
    for (std::uint64_t done = 0; done < count; done += blockSize) {
        const std::uint64_t block = std::min(blockSize, count - done);
        if (!convertBlock<From, To, SourceStep, TargetStep>(source + done * SourceStep,
                                                            target + done * TargetStep, block))
            return false;
    }
    return true;
}

template <class From, class To>
bool convertRun(const void* source, unsigned sourceStep, void* target, unsigned targetStep,
                std::uint64_t count)
{
    const auto* from = static_cast<const From*>(source);
    auto* to = static_cast<To*>(target);
    if (sourceStep == 2)
        return convertBlocks<From, To, 2, 1>(from, to, count);
    if (targetStep == 2)
        return convertBlocks<From, To, 1, 2>(from, to, count);
    return convertBlocks<From, To, 1, 1>(from, to, count);
}

/// The 11 real types, in the order of partIndex.
constexpr std::size_t s_realTypes = 11;

template <class From>
constexpr std::array<ConvertRun, s_realTypes> convertRow()
{
    return {
        &convertRun<From, double>,        &convertRun<From, float>,        &convertRun<From, bool>,
        &convertRun<From, std::int8_t>,   &convertRun<From, std::int16_t>, &convertRun<From, std::int32_t>,
        &convertRun<From, std::int64_t>,  &convertRun<From, std::uint8_t>, &convertRun<From, std::uint16_t>,
        &convertRun<From, std::uint32_t>, &convertRun<From, std::uint64_t>};
}

constexpr std::array<std::array<ConvertRun, s_realTypes>, s_realTypes> s_convertRun = {
    convertRow<double>(),        convertRow<float>(),        convertRow<bool>(),
    convertRow<std::int8_t>(),   convertRow<std::int16_t>(), convertRow<std::int32_t>(),
    convertRow<std::int64_t>(),  convertRow<std::uint8_t>(), convertRow<std::uint16_t>(),
    convertRow<std::uint32_t>(), convertRow<std::uint64_t>()};

/// Position of a number type's part in the tables above: the storage class, the unsigned integers after the others.
std::size_t partIndex(WellKnownType type)
{
    const std::size_t storage = type.code() & 0xFU;
    const bool isUnsignedInteger = storage >= 4 && (type.code() & WellKnownType::UnsignedBit) != 0;
    return storage - 1 + (isUnsignedInteger ? 4 : 0);
}

std::size_t partSize(WellKnownType type)
{
    constexpr std::array<std::size_t, 8> sizes = {0, 8, 4, 1, 1, 2, 4, 8};
    return sizes[type.code() & 0xFU];
}

template <class Part>
bool imaginaryPartsAreZero(const Part* parts, std::uint64_t count)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!(loadElement(parts + 2 * i + 1) == Part(0))) // NaN isn't zero
            return false;
    }
    return true;
}

bool imaginaryPartsAreZero(WellKnownType type, const void* source, std::uint64_t count)
{
    return dispatchElement(partOf(type), [&](auto tag) {
        using Part = typename decltype(tag)::type;
        if constexpr (std::is_arithmetic_v<Part>)
            return imaginaryPartsAreZero(static_cast<const Part*>(source), count);
        else
            return false;
    });
}

bool convertNumbers(WellKnownType from, const void* source, WellKnownType to, void* target,
                    std::uint64_t count)
{
    const ConvertRun convert = s_convertRun[partIndex(from)][partIndex(to)];
    if (isComplex(from) && isComplex(to))
        return convert(source, 1, target, 1, 2 * count);
    if (isComplex(from))
        return imaginaryPartsAreZero(from, source, count) && convert(source, 2, target, 1, count);
    if (isComplex(to)) {
        std::memset(target, 0,
                    2 * count * partSize(to)); // the imaginary parts; all zero bits are 0 in each type
        return convert(source, 1, target, 2, count);
    }
    return convert(source, 1, target, 1, count);
}

// ---- text -------------------------------------------------------------------------------------------------------

template <class Number>
bool parseWhole(std::string_view text, Number* out)
{
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, *out);
    return result.ec == std::errc() && result.ptr == end;
}

template <class To, class From>
bool castIfFits(From value, To* out)
{
    if (!fits<To>(value))
        return false;
    *out = cast<To>(value);
    return true;
}

template <class To>
bool parseNumber(std::string_view text, To* out)
{
    double value = 0;
    if constexpr (std::is_floating_point_v<To>) {
        // in its own precision first: by way of double it would be rounded twice
        return parseWhole(text, out) || (parseWhole(text, &value) && castIfFits(value, out));
    } else {
        std::int64_t negative = 0;
        std::uint64_t positive = 0;
        if (parseWhole(text, &positive))
            return castIfFits(positive, out);
        if (parseWhole(text, &negative))
            return castIfFits(negative, out);
        return parseWhole(text, &value) && castIfFits(value, out);
    }
}

template <class To>
bool convertFromText(const std::string* source, To* target, std::uint64_t count)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!parseNumber(source[i], &target[i]))
            return false;
    }
    return true;
}

template <class From>
void convertToText(const From* source, std::string* target, std::uint64_t count)
{
    std::array<char, 64> text; // the longest shortest text of a double has 24 characters
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), source[i]);
        target[i].assign(text.data(), result.ptr);
    }
}

template <class T>
inline constexpr bool isTextNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

bool isTextNumberType(WellKnownType type)
{
    return isNumeric(type) && !isComplex(type) && type != WellKnownType::of<bool>();
}

bool convertTexts(const std::string* source, WellKnownType to, void* target, std::uint64_t count)
{
    return dispatchElement(to, [&](auto tag) {
        using To = typename decltype(tag)::type;
        if constexpr (isTextNumber<To>)
            return convertFromText(source, static_cast<To*>(target), count);
        else
            return false;
    });
}

bool convertToTexts(WellKnownType from, const void* source, std::string* target, std::uint64_t count)
{
    return dispatchElement(from, [&](auto tag) {
        using From = typename decltype(tag)::type;
        if constexpr (isTextNumber<From>) {
            convertToText(static_cast<const From*>(source), target, count);
            return true;
        } else {
            return false;
        }
    });
}
} // namespace

bool canConvert(WellKnownType from, WellKnownType to) noexcept
{
    if (isNumeric(from) && isNumeric(to))
        return true;
    return (from == WellKnownType::Text && isTextNumberType(to)) ||
           (isTextNumberType(from) && to == WellKnownType::Text);
}

bool convertElements(WellKnownType from, const void* source, WellKnownType to, void* target,
                     std::uint64_t count)
{
    if (count == 0)
        return true;
    if (from == WellKnownType::Text)
        return convertTexts(static_cast<const std::string*>(source), to, target, count);
    if (to == WellKnownType::Text)
        return convertToTexts(from, source, static_cast<std::string*>(target), count);
    return convertNumbers(from, source, to, target, count);
}
} // namespace Brindle::Quay::Internal
