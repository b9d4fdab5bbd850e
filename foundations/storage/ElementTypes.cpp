#include "foundations/storage/ElementTypes_p.h"

#include <algorithm>
#include <complex>
#include <cstring>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::Complex;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::Duration;
using Brindle::Quay::TimePoint;

namespace {

template <class T>
BVariant ScalarFrom(const std::uint64_t (&words)[2], DataOrdering ordering)
{
    static_assert(sizeof(T) <= sizeof words, "a scalar fits the two words of a row");
    T value;
    std::memcpy(&value, words, sizeof value);
    return BVariant::scalar<T>(value, ordering);
}

struct ElementType
{
    std::uint16_t code;
    std::uint64_t size;
    bool truth; ///< made of truth values
    BVariant (*scalar)(const std::uint64_t (&words)[2], DataOrdering ordering);
};

template <class T>
constexpr ElementType Describe(std::uint16_t code, bool truth = false)
{
    return {code, sizeof(T), truth, &ScalarFrom<T>};
}

const ElementType s_types[] = {
    Describe<double>(0x0001),
    Describe<float>(0x0002),
    Describe<std::int8_t>(0x0004),
    Describe<std::int16_t>(0x0005),
    Describe<std::int32_t>(0x0006),
    Describe<std::int64_t>(0x0007),
    {ElementTypes::TextCode, 0, false, nullptr},
    Describe<Duration>(0x0030),
    Describe<TimePoint>(0x0040),
    Describe<bool>(0x4003, true),
    Describe<std::uint8_t>(0x4004),
    Describe<std::uint16_t>(0x4005),
    Describe<std::uint32_t>(0x4006),
    Describe<std::uint64_t>(0x4007),
    Describe<std::complex<double>>(0x8001),
    Describe<std::complex<float>>(0x8002),
    Describe<Complex<std::int8_t>>(0x8004),
    Describe<Complex<std::int16_t>>(0x8005),
    Describe<Complex<std::int32_t>>(0x8006),
    Describe<Complex<std::int64_t>>(0x8007),
    Describe<Complex<bool>>(0xC003, true),
    Describe<Complex<std::uint8_t>>(0xC004),
    Describe<Complex<std::uint16_t>>(0xC005),
    Describe<Complex<std::uint32_t>>(0xC006),
    Describe<Complex<std::uint64_t>>(0xC007),
};

const ElementType* Find(std::uint16_t code)
{
    const auto* const found = std::find_if(std::begin(s_types), std::end(s_types),
                                           [code](const ElementType& type) { return type.code == code; });
    return found != std::end(s_types) ? found : nullptr;
}

} // namespace

bool ElementTypes::IsKnown(std::uint16_t code)
{
    return Find(code) != nullptr;
}

std::uint64_t ElementTypes::Size(std::uint16_t code)
{
    const ElementType* const type = Find(code);
    return type ? type->size : 0;
}

bool ElementTypes::AreSound(std::uint16_t code, const void* data, std::uint64_t count)
{
    const ElementType* const type = Find(code);
    if (!type || !type->truth)
        return type != nullptr;
    const auto* const bytes = static_cast<const unsigned char*>(data);
    return std::all_of(bytes, bytes + count * type->size, [](unsigned char byte) { return byte <= 1; });
}

BVariant ElementTypes::MakeScalar(std::uint16_t code, const std::uint64_t (&words)[2], DataOrdering ordering)
{
    const ElementType* const type = Find(code);
    return type && type->scalar ? type->scalar(words, ordering) : BVariant();
}

} // namespace Orrery
