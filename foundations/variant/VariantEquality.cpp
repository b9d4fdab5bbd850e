#include "foundations/variant/ElementTypes_p.h"
#include "foundations/variant/VariantOperations.h"

#include <algorithm>
#include <complex>
#include <cstring>
#include <exception>
#include <memory>

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

/// The elements of a payload piece by piece: from where they stand outside the memory, if the payload can read parts,
/// so that no array is brought into it only to be compared.
template <class T>
class Pieces
{
public:
    static constexpr std::uint64_t length = (std::uint64_t(4) << 20U) / sizeof(T);

    Pieces(const IVariantData* payload, std::uint64_t count)
        : m_payload(payload)
        , m_buffer(new T[std::min(length, count)])
    {
    }

    const T* read(std::uint64_t first, std::uint64_t count)
    {
        if (!m_elements && m_payload->readRun(first, count, m_buffer.get()))
            return m_buffer.get();
        if (!m_elements)
            m_elements = static_cast<const T*>(m_payload->constData());
        return m_elements + first;
    }

private:
    const IVariantData* m_payload;
    const T* m_elements = nullptr;
    std::unique_ptr<T[]> m_buffer; ///< no page of it is touched for elements in memory
};

template <class T>
bool piecesEqual(const IVariantData* a, const IVariantData* b, std::uint64_t count)
{
    Pieces<T> first(a, count);
    Pieces<T> second(b, count);
    for (std::uint64_t at = 0; at < count; at += Pieces<T>::length) {
        const std::uint64_t size = std::min(Pieces<T>::length, count - at);
        if (!elementsEqual(first.read(at, size), second.read(at, size), size))
            return false;
    }
    return true;
}

/// The elements of two payloads of the same type in storage order.
bool payloadsEqual(const IVariantData* a, const IVariantData* b, std::uint64_t count)
{
    constexpr std::uint64_t fewBytes = std::uint64_t(64) << 10U;
    const WellKnownType type = a->getWellKnownType();
    return dispatchElement(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        // only NaN is different from itself
        if (a == b && (!comparesByValue<T> || std::is_same_v<T, std::string>))
            return true;
        if (std::is_same_v<T, std::string> || count <= fewBytes / sizeof(T))
            return rawElementsEqual(type, a->constData(), b->constData(), count);
        return piecesEqual<T>(a, b, count);
    });
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
    return payloadsEqual(first.payload(), ordered.payload(), first.elementCount());
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
    return payloadsEqual(a.payload(), b.payload(), a.elementCount());
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
