#include "foundations/variant/VariantOperations.h"

#include "foundations/variant/ArrayIndexing.h"
#include "foundations/variant/ElementAccess_p.h"
#include "foundations/variant/ElementConversion_p.h"

#include <exception>
#include <stdexcept>

namespace Brindle::Quay {
using namespace Internal;

namespace {
constexpr const char* s_variantName = "Brindle::Quay::BVariant";
constexpr const char* s_intVectorName = "std::vector<int>";

std::string conversionMessageTo(const BVariant& variant, const char* targetName)
{
    const WellKnownType from = variant.getWellKnownType();
    dispatchElement(from, [](auto) {}); // a source that no element type names has its own failure
    return std::string("Cannot convert ") + s_variantName + " of type '" + elementTypeName(from) +
           "' (size: " + std::to_string(variant.elementCount()) + ") to '" + targetName + "'";
}

std::uint64_t offsetOf(const BVariant& array, const std::uint64_t* indices, std::size_t count)
{
    const ArrayDimensionsView dimensions = array.getDimensions();
    if (array.getDataOrdering() == DataOrdering::RowMajor)
        return ArrayIndexing::calculateOffsetRowMajor(indices, count, dimensions, true);
    return ArrayIndexing::calculateOffsetColumnMajor(indices, count, dimensions, true);
}

/// The conversion of a scalar in a variant's buffer, without a payload in between.
BVariant convertInline(const BVariant& variant, WellKnownType type)
{
    const WellKnownType from = variant.getWellKnownType();
    if (!canConvert(from, type))
        return {};
    return dispatchElement(type, [&](auto tag) -> BVariant {
        using T = typename decltype(tag)::type;
        T value{};
        if (!convertElements(from, variant.constData(), type, &value, 1))
            return {};
        return BVariant::scalar<T>(std::move(value), variant.getDataOrdering());
    });
}

/// The element of a payload that has exactly one, converted.
template <class T>
bool convertScalar(const BVariant& variant, WellKnownType from, T* out, int flag)
{
    if (variant.isInline()) {
        T value{};
        if (!canConvert(from, WellKnownType::of<T>()) ||
            !convertElements(from, variant.constData(), WellKnownType::of<T>(), &value, 1))
            return false;
        *out = std::move(value);
        return true;
    }
    const BVariant converted = convertedTo(variant, WellKnownType::of<T>(), flag);
    if (converted.isNull())
        return false;
    *out = readElement<T>(converted.payload(), 0);
    return true;
}

/// tryGetScalar but for the exceptions of a payload whose data can't be fetched.
template <class T>
bool readScalarInto(const BVariant& variant, T* out, int flag)
{
    const IVariantData* payload = variant.payload();
    const WellKnownType type = payload->getWellKnownType();
    const bool hasType = type == WellKnownType::of<T>();
    if (hasType && variant.isInline()) {
        *out = loadElement(static_cast<const T*>(payload->constData()));
        return true;
    }
    if (!hasType && variant.isNull())
        return false;
    if (!payload->isScalar() && !payload->getDimensions().holdsScalar())
        return false;
    if (!hasType)
        return convertScalar(variant, type, out, flag);
    *out = readElement<T>(payload, 0);
    return true;
}

/// tryGetIntVector but for the same exceptions.
bool readIntVectorInto(const BVariant& variant, std::vector<int>* out, int flag)
{
    const BVariant converted = convertedTo(variant, WellKnownType::of<int>(), flag);
    if (converted.isNull())
        return false;
    const BVariant rowMajor = converted.reordered(DataOrdering::RowMajor);
    const IterableContainer<int> elements(rowMajor);
    std::vector<int> values(elements.begin(), elements.end());
    out->swap(values);
    return true;
}
} // namespace

const char* elementTypeName(WellKnownType type) noexcept
{
    switch (type.code()) {
#define QUAY_NAME(T, name)                                                                                   \
    case codeOf<T>():                                                                                        \
        return name;
        QUAY_FOR_EACH_ELEMENT(QUAY_NAME)
#undef QUAY_NAME
    default:
        return "";
    }
}

std::size_t elementSize(WellKnownType type)
{
    return dispatchElement(type, [](auto tag) { return sizeof(typename decltype(tag)::type); });
}

std::string conversionMessage(const BVariant& variant, WellKnownType type)
{
    return conversionMessageTo(variant, elementTypeName(type));
}

BVariant convertedTo(const BVariant& variant, WellKnownType type, int flag)
{
    if (variant.getWellKnownType() == type)
        return variant;
    if (variant.isInline())
        return convertInline(variant, type);
    return BVariant::fromPayload(variant.payload()->convertedTo(type, flag));
}

void convertInPlace(BVariant& variant, WellKnownType type, int flag)
{
    BVariant converted = convertedTo(variant, type, flag);
    if (converted.isNull())
        throw std::runtime_error(conversionMessage(variant, type));
    variant = std::move(converted);
}

bool tryGetIntVector(const BVariant& variant, std::vector<int>* out, int flag)
{
    try {
        return readIntVectorInto(variant, out, flag);
    } catch (const std::exception&) {
        return false;
    }
}

std::vector<int> getIntVector(const BVariant& variant, int flag)
{
    std::vector<int> values;
    if (!readIntVectorInto(variant, &values, flag))
        throw std::runtime_error(conversionMessageTo(variant, s_intVectorName));
    return values;
}

BVariant createArray(WellKnownType type, ArrayDimensionsView dimensions, DataOrdering ordering)
{
    if (type == WellKnownType::RunTime)
        throw std::runtime_error("Creating with run-time wellknowntype is not allowed.");
    return BVariant::fromPayload(makeArray(type, dimensions, ordering, Fill::Zero).release());
}

BVariant createUninitializedArray(WellKnownType type, ArrayDimensionsView dimensions, DataOrdering ordering)
{
    if (type == WellKnownType::RunTime)
        throw std::runtime_error("Creating with run-time wellknowntype is not allowed.");
    return BVariant::fromPayload(makeArray(type, dimensions, ordering, Fill::Raw).release());
}

void copyElements(const BVariant& variant, std::uint64_t first, std::uint64_t count, void* target)
{
    const std::uint64_t size = variant.elementCount();
    if (first > size || count > size - first)
        failOutOfBounds();
    dispatchElement(variant.getWellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        if (count != 0)
            readElements(variant.payload(), first, count, static_cast<T*>(target));
    });
}

namespace Internal {
void failOutOfBounds()
{
    throw std::out_of_range("Indices out of bounds.");
}

void checkHolds(const BVariant& variant, WellKnownType type, const std::type_info& info)
{
    if (variant.isNull())
        throw std::invalid_argument("Cannot access element of null variant.");
    if (!holds(variant.payload(), type, info))
        throw std::invalid_argument("Wrong data type.");
}

const void* iterationBegin(const BVariant& variant, WellKnownType type, const std::type_info& info,
                           std::uint64_t* count)
{
    *count = variant.elementCount();
    if (*count == 0)
        return nullptr;
    if (!holds(variant.payload(), type, info))
        throw std::runtime_error("Data type mismatch, cannot provide iterable container");
    return variant.constData();
}

template <class T>
bool tryReadScalar(const BVariant& variant, T* out, int flag)
{
    try {
        return readScalarInto(variant, out, flag);
    } catch (const std::exception&) {
        return false;
    }
}

template <class T>
T readScalar(const BVariant& variant, int flag)
{
    T value{};
    if (!readScalarInto(variant, &value, flag))
        throw std::runtime_error(conversionMessage(variant, WellKnownType::of<T>()));
    return value;
}

template <class T>
void writeElement(BVariant& array, const std::uint64_t* indices, std::size_t count, const BVariant& value,
                  int flag)
{
    if (!value.holdsScalar())
        throw std::invalid_argument(std::string("The given ") + s_variantName + " must hold a scalar value.");
    T element{};
    if (!readScalarInto(value, &element, flag))
        throw std::runtime_error(conversionMessage(value, WellKnownType::of<T>()));
    const std::uint64_t offset = offsetOf(array, indices, count);
    checkElementType<T>(array);
    if (offset >= array.elementCount())
        failOutOfBounds();
    static_cast<T*>(array.mutableData())[offset] = std::move(element);
}

#define QUAY_INSTANTIATE(T, name)                                                                            \
    template QUAYCORE_EXPORT bool tryReadScalar<T>(const BVariant&, T*, int);                                \
    template QUAYCORE_EXPORT T readScalar<T>(const BVariant&, int);                                          \
    template QUAYCORE_EXPORT void writeElement<T>(BVariant&, const std::uint64_t*, std::size_t,              \
                                                  const BVariant&, int);
QUAY_FOR_EACH_ELEMENT(QUAY_INSTANTIATE)
#undef QUAY_INSTANTIATE
} // namespace Internal
} // namespace Brindle::Quay
