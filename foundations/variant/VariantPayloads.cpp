#include "foundations/variant/VariantPayloads.h"

#include "foundations/variant/ArrayPayloads_p.h"
#include "foundations/variant/ScalarPayload_p.h"

#include <new>
#include <stdexcept>

namespace Brindle::Quay {
namespace {
using namespace Internal;

/// The content of a null variant: no type, no dimensions, no elements, and no owners to count.
class NullPayload final : public IVariantData
{
public:
    constexpr NullPayload() noexcept = default;

    void addRef() const noexcept override {}
    void release() const noexcept override {}
    IVariantData* detach() override { return this; }
    IVariantData* placeInto(void* /*buffer*/, std::size_t /*size*/, bool /*move*/) override
    {
        return nullptr;
    }
    ArrayDimensionsView getDimensions() const override { return {}; }
    bool isScalar() const override { return false; }
    DataOrdering getDataOrdering() const override { return DataOrdering::RowMajor; }
    WellKnownType getWellKnownType() const override { return WellKnownType::Null; }
    const std::type_info& getTypeInfo() const override { return typeid(void); }
    const TypeOperations* getTypeOperations() const override { return nullptr; }
    IVariantData* reordered(DataOrdering /*ordering*/) const override { return constructVariantNull(); }
    bool readRun(std::uint64_t /*first*/, std::uint64_t /*count*/, void* /*target*/) const override
    {
        return false;
    }
    IVariantData* reshaped(const IVariantData* /*source*/, ArrayDimensionsView dimensions,
                           DataOrdering /*ordering*/) const override
    {
        checkCount(dimensions, 0);
        return constructVariantNull();
    }
    const void* constData() const override { return nullptr; }
    void* mutableData() override { return nullptr; }
    IVariantData* convertedTo(WellKnownType /*type*/, int /*flag*/) const override { return nullptr; }
};

/// Keeps the null payload out of the destructors at exit: variants in other libraries may outlive this one.
union NullHolder
{
    constexpr NullHolder() noexcept
        : payload()
    {
    }
    ~NullHolder() {}

    NullPayload payload;
};

NullHolder s_null; // initialised at compile time, so that static variants anywhere can be null

template <class T>
ArrayDimensionsView dimensionsOr(ArrayDimensionsView dimensions, const T& oneDimension)
{
    return dimensions.empty() ? ArrayDimensionsView(&oneDimension, std::size_t(1)) : dimensions;
}
} // namespace

IVariantData* constructVariantNull() noexcept
{
    return &s_null.payload;
}

template <class T>
IVariantData* constructVariantScalar(void* buffer, std::size_t size, T value, DataOrdering ordering)
{
    using RowMajor = ScalarPayload<T, DataOrdering::RowMajor>;
    using ColumnMajor = ScalarPayload<T, DataOrdering::ColumnMajor>;
    static_assert(sizeof(RowMajor) <= variantBufferSize);
    static_assert(alignof(RowMajor) <= alignof(void*)); // NOLINT(misc-redundant-expression): not for all T
    if (size < sizeof(RowMajor))
        throw std::length_error("The buffer is too small for a scalar.");
    if (ordering == DataOrdering::RowMajor)
        return ::new (buffer) RowMajor(std::move(value));
    return ::new (buffer) ColumnMajor(std::move(value));
}

template <class T>
IVariantData* constructVariantVectorWithoutDataWithDimsUnresolved(ArrayDimensionsView dimensions,
                                                                  DataOrdering ordering)
{
    return ArrayPayload<T>::make(dimensions, ordering, Fill::Raw);
}

template <class T>
IVariantData* constructVariantVectorWithDataWithDimsUnresolved(const T* data, std::uint64_t count,
                                                               ArrayDimensionsView dimensions,
                                                               DataOrdering ordering)
{
    const ArrayDimensionsView shape = dimensionsOr(dimensions, count);
    checkCount(shape, count);
    auto* payload = ArrayPayload<T>::make(shape, ordering, Fill::Raw);
    PayloadPtr owner(payload);
    copyRun(data, count, payload->data());
    return owner.release();
}

template <class T>
IVariantData* constructVariantDataFromMovedVector(std::vector<T>&& data, ArrayDimensionsView dimensions,
                                                  DataOrdering ordering)
{
    const std::uint64_t count = data.size();
    const ArrayDimensionsView shape = dimensionsOr(dimensions, count);
    checkCount(shape, count);
    if constexpr (std::is_same_v<T, bool>) {
        auto* payload = ArrayPayload<bool>::make(shape, ordering, Fill::Raw);
        std::copy(data.begin(), data.end(), payload->data()); // packed bits become bytes
        return payload;
    } else {
        return new VectorPayload<T>(std::move(data), shape, ordering);
    }
}

#define QUAY_INSTANTIATE(T, name)                                                                            \
    template QUAYCORE_EXPORT IVariantData* constructVariantScalar<T>(void*, std::size_t, T, DataOrdering);   \
    template QUAYCORE_EXPORT IVariantData* constructVariantVectorWithoutDataWithDimsUnresolved<T>(           \
        ArrayDimensionsView, DataOrdering);                                                                  \
    template QUAYCORE_EXPORT IVariantData* constructVariantVectorWithDataWithDimsUnresolved<T>(              \
        const T*, std::uint64_t, ArrayDimensionsView, DataOrdering);                                         \
    template QUAYCORE_EXPORT IVariantData* constructVariantDataFromMovedVector<T>(                           \
        std::vector<T>&&, ArrayDimensionsView, DataOrdering);
QUAY_FOR_EACH_ELEMENT(QUAY_INSTANTIATE)
#undef QUAY_INSTANTIATE
} // namespace Brindle::Quay
