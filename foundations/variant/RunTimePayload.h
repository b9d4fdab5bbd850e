#pragma once

#include "foundations/variant/VariantPayloads.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// Payloads of types that the library doesn't know: the scalars behind BVariant::runTime.
namespace Brindle::Quay::Internal {
inline constexpr std::uint64_t scalarDimension[1] = {1};

template <class T>
bool equalRunTimeElements(const void* first, const void* second, std::uint64_t count, int /*flag*/)
{
    const T* a = static_cast<const T*>(first);
    const T* b = static_cast<const T*>(second);
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!(a[i] == b[i]))
            return false;
    }
    return true;
}

template <class T>
inline constexpr TypeOperations runTimeOperations = {&equalRunTimeElements<T>};

/// A run-time scalar on the heap, for values that don't fit a variant's buffer.
template <class T>
class RunTimeHeapScalar final : public HeapVariantData
{
public:
    RunTimeHeapScalar(T value, ArrayDimensionsView dimensions, DataOrdering ordering)
        : m_value(std::move(value))
        , m_dimensions(dimensions.toVector())
        , m_ordering(ordering)
    {
    }

    IVariantData* detach() override
    {
        if (!isShared())
            return this;
        auto* copy = new RunTimeHeapScalar(m_value, m_dimensions, m_ordering);
        release();
        return copy;
    }
    ArrayDimensionsView getDimensions() const override { return m_dimensions; }
    bool isScalar() const override { return m_dimensions.size() == 1; }
    DataOrdering getDataOrdering() const override { return m_ordering; }
    WellKnownType getWellKnownType() const override { return WellKnownType::RunTime; }
    const std::type_info& getTypeInfo() const override { return typeid(T); }
    const TypeOperations* getTypeOperations() const override { return &runTimeOperations<T>; }
    IVariantData* reordered(DataOrdering ordering) const override
    {
        return new RunTimeHeapScalar(m_value, m_dimensions, ordering);
    }
    IVariantData* reshaped(const IVariantData* /*source*/, ArrayDimensionsView dimensions,
                           DataOrdering ordering) const override
    {
        if (!dimensions.holdsScalar())
            throw std::invalid_argument("The dimensions don't match the number of elements.");
        return new RunTimeHeapScalar(m_value, dimensions, ordering);
    }
    const void* constData() const override { return &m_value; }
    void* mutableData() override { return &m_value; }
    IVariantData* convertedTo(WellKnownType /*type*/, int /*flag*/) const override { return nullptr; }

private:
    T m_value;
    std::vector<std::uint64_t> m_dimensions;
    DataOrdering m_ordering;
};

/// A run-time scalar in a variant's buffer.
template <class T>
class RunTimeScalar final : public IVariantData
{
public:
    explicit RunTimeScalar(T value)
        : m_value(std::move(value))
    {
    }

    void addRef() const noexcept override {}
    void release() const noexcept override {}
    IVariantData* detach() override { return this; }
    IVariantData* placeInto(void* buffer, std::size_t /*size*/, bool move) override
    {
        return move ? ::new (buffer) RunTimeScalar(std::move(m_value))
                    : ::new (buffer) RunTimeScalar(m_value);
    }
    ArrayDimensionsView getDimensions() const override { return {scalarDimension, std::size_t(1)}; }
    bool isScalar() const override { return true; }
    DataOrdering getDataOrdering() const override { return DataOrdering::RowMajor; }
    WellKnownType getWellKnownType() const override { return WellKnownType::RunTime; }
    const std::type_info& getTypeInfo() const override { return typeid(T); }
    const TypeOperations* getTypeOperations() const override { return &runTimeOperations<T>; }
    IVariantData* reordered(DataOrdering ordering) const override
    {
        return new RunTimeHeapScalar<T>(m_value, getDimensions(), ordering);
    }
    bool readRun(std::uint64_t, std::uint64_t, void*) const override { return false; }
    IVariantData* reshaped(const IVariantData* /*source*/, ArrayDimensionsView dimensions,
                           DataOrdering ordering) const override
    {
        if (!dimensions.holdsScalar())
            throw std::invalid_argument("The dimensions don't match the number of elements.");
        return new RunTimeHeapScalar<T>(m_value, dimensions, ordering);
    }
    const void* constData() const override { return &m_value; }
    void* mutableData() override { return &m_value; }
    IVariantData* convertedTo(WellKnownType /*type*/, int /*flag*/) const override { return nullptr; }

private:
    T m_value;
};

/// Whether a T goes into the buffer: it must fit, and moving it must not throw, since moving a variant doesn't.
template <class T>
inline constexpr bool fitsBuffer = sizeof(RunTimeScalar<T>) <= variantBufferSize &&
                                   alignof(T) <= alignof(void*) && std::is_nothrow_move_constructible_v<T>;
} // namespace Brindle::Quay::Internal
