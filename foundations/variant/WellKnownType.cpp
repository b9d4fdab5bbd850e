#include "foundations/variant/WellKnownType.h"

#include "foundations/variant/ElementTypes_p.h"

#include <algorithm>

namespace Brindle::Quay {
namespace {
constexpr unsigned s_double = 1;
constexpr unsigned s_single = 2;
constexpr unsigned s_bool = 3;
constexpr unsigned s_int16 = 5;
constexpr unsigned s_int64 = 7;

/// Storage class and sign of a real number type.
struct RealType
{
    unsigned storage;
    bool isUnsigned;

    bool isFloating() const { return storage <= s_single; }
};

RealType realTypeOf(WellKnownType type)
{
    return {type.code() & 0xFU, (type.code() & WellKnownType::UnsignedBit) != 0};
}

RealType commonFloating(RealType floating, RealType other)
{
    if (floating.storage == s_double || other.storage == s_double)
        return {s_double, false};
    // 24 bits of a single hold 16, not 32
    const bool singleHoldsIt = other.isFloating() || other.storage <= s_int16;
    return {singleHoldsIt ? s_single : s_double, false};
}

RealType commonInteger(RealType a, RealType b)
{
    if (a.isUnsigned == b.isUnsigned)
        return {std::max(a.storage, b.storage), a.isUnsigned};
    const unsigned signedStorage = a.isUnsigned ? b.storage : a.storage;
    const unsigned unsignedStorage = a.isUnsigned ? a.storage : b.storage;
    if (signedStorage > unsignedStorage)
        return {signedStorage, false};
    if (unsignedStorage == s_int64)
        return {s_double, false}; // no integer holds both; range counts, not precision
    return {unsignedStorage + 1, false};
}

RealType commonReal(RealType a, RealType b)
{
    if (a.storage == s_bool)
        return b;
    if (b.storage == s_bool)
        return a;
    if (a.isFloating())
        return commonFloating(a, b);
    if (b.isFloating())
        return commonFloating(b, a);
    return commonInteger(a, b);
}
} // namespace

WellKnownType WellKnownType::getCommonWellKnownType(WellKnownType a, WellKnownType b) noexcept
{
    if (a == b)
        return a;
    if (!Internal::isNumeric(a) || !Internal::isNumeric(b))
        return Null;
    const RealType real = commonReal(realTypeOf(a), realTypeOf(b));
    const unsigned complex = (a.code() | b.code()) & ComplexBit;
    return static_cast<std::uint16_t>(complex | (real.isUnsigned ? UnsignedBit : 0U) | real.storage);
}
} // namespace Brindle::Quay
