#include "foundations/variant/ElementTypes_p.h"
#include "foundations/variant/VariantOperations.h"

#include <algorithm>
#include <complex>
#include <cstring>
#include <exception>

namespace Brindle::Quay {
using namespace Internal;

namespace {
template <class T>
inline constexpr bool comparesByValue = std::is_floating_point_v<T> || std::is_same_v<T, std::string>;
template <class T>
inline constexpr bool comparesByValue<std::complex<T>> = true;

template <class T>
bool elementsEqual(const T* a, const T* b, std::uint64_t count)
{
    if constexpr (comparesByValue<T>)
        return std::equal(a, a + count, b); // NaN equals nothing, not even itself
    else
        return std::memcmp(a, b, count * sizeof(T)) == 0;
}

bool runTimeElementsEqual(const BVariant& a, const BVariant& b, int flag)
{
    if (a.getTypeInfo() != b.getTypeInfo())
        return false;
    const std::uint64_t count = a.elementCount();
    if (count == 0)
        return true;
    const TypeOperations* operations = a.payload()->getTypeOperations();
    return operations && operations->equal(a.constData(), b.constData(), count, flag);
}

/// `variant` in that ordering where the ordering matters.
BVariant inOrdering(const BVariant& variant, DataOrdering ordering)
{
    return variant.getDimensions().isMultiDimensional() ? variant.reordered(ordering) : variant;
}

/// Both as `type`, in a's ordering, compared; false when one of them can't be converted.
bool equalAs(WellKnownType type, const BVariant& a, const BVariant& b, int flag)
{
    const BVariant first = convertedTo(a, type, flag);
    const BVariant second = convertedTo(b, type, flag);
    if (first.isNull() || second.isNull())
        return false;
    const BVariant ordered = inOrdering(second, first.getDataOrdering());
    return rawElementsEqual(type, first.constData(), ordered.constData(), first.elementCount());
}

bool tryEqualWithConversion(const BVariant& a, const BVariant& b, int flag)
{
    const WellKnownType typeA = a.getWellKnownType();
    const WellKnownType typeB = b.getWellKnownType();
    const bool areRunTime = typeA == WellKnownType::RunTime && typeB == WellKnownType::RunTime;
    if (areRunTime && a.isScalar() && b.isScalar())
        return exactlyEqual(a, b);
    if (a.isEmpty())
        return b.isEmpty();
    if (a.getDimensions() != b.getDimensions())
        return false;
    if (areRunTime)
        return runTimeElementsEqual(a, inOrdering(b, a.getDataOrdering()), 0);
    const WellKnownType common = WellKnownType::getCommonWellKnownType(typeA, typeB);
    return common != WellKnownType::Null && equalAs(common, a, b, flag);
}
} // namespace

bool rawElementsEqual(WellKnownType type, const void* a, const void* b, std::uint64_t count)
{
    return dispatchElement(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        return count == 0 || elementsEqual(static_cast<const T*>(a), static_cast<const T*>(b), count);
    });
}

bool exactlyEqual(const BVariant& a, const BVariant& b)
{
    const WellKnownType type = a.getWellKnownType();
    if (type != b.getWellKnownType())
        return false;
    if (type == WellKnownType::Null)
        return true;
    if (a.getDimensions() != b.getDimensions() || a.getDataOrdering() != b.getDataOrdering())
        return false;
    if (type == WellKnownType::RunTime)
        return runTimeElementsEqual(a, b, 1);
    return rawElementsEqual(type, a.constData(), b.constData(), a.elementCount());
}

bool equalWithConversion(const BVariant& a, const BVariant& b, int flag)
{
    try {
        return tryEqualWithConversion(a, b, flag);
    } catch (const std::exception&) {
        return false;
    }
}
} // namespace Brindle::Quay
