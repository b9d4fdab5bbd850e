#pragma once

#include "foundations/variant/ElementTypes_p.h"
#include "foundations/variant/HeapVariantData.h"
#include "foundations/variant/VariantPayloads.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Brindle::Quay::Internal {
/// What a new array's memory holds. Text elements are live, empty strings either way.
enum class Fill
{
    Raw, ///< anything: the maker writes every element
    Zero,
};

/// Owns one ownership of a heap payload.
struct ReleasePayload
{
    void operator()(IVariantData* payload) const noexcept { payload->release(); }
};
using PayloadPtr = std::unique_ptr<IVariantData, ReleasePayload>;

/// The dimensions inside a payload; up to three without a heap block of their own.
class StoredDimensions
{
public:
    explicit StoredDimensions(ArrayDimensionsView dimensions)
        : m_count(dimensions.size())
    {
        if (m_count > m_few.size())
            m_many = std::make_unique<std::uint64_t[]>(m_count);
        std::copy(dimensions.begin(), dimensions.end(), m_many ? m_many.get() : m_few.data());
    }

    ArrayDimensionsView view() const noexcept { return {m_many ? m_many.get() : m_few.data(), m_count}; }

private:
    std::array<std::uint64_t, 3> m_few = {};
    std::size_t m_count;
    std::unique_ptr<std::uint64_t[]> m_many;
};

/// A heap payload that keeps its shape itself.
class ShapedPayload : public HeapVariantData
{
public:
    ArrayDimensionsView getDimensions() const final { return m_dimensions.view(); }
    bool isScalar() const final { return m_isScalar; }
    DataOrdering getDataOrdering() const final { return m_ordering; }

protected:
    ShapedPayload(ArrayDimensionsView dimensions, DataOrdering ordering, bool isScalar)
        : m_dimensions(dimensions)
        , m_ordering(normalized(ordering))
        , m_isScalar(isScalar)
    {
    }

private:
    StoredDimensions m_dimensions;
    DataOrdering m_ordering;
    bool m_isScalar;
};

/// Memory for an array payload: `headerSize` bytes for the object, then, 64-byte aligned, `count` elements.
///
/// Errors: std::length_error when that exceeds the address space, std::bad_alloc.
void* allocateArrayBlock(std::size_t headerSize, std::uint64_t count, std::size_t elementSize, Fill fill);
void freeArrayBlock(void* block) noexcept;

inline constexpr std::size_t arrayAlignment = 64;

/// An array in one block: this object, then its elements.
template <class T>
class ArrayPayload final : public ShapedPayload
{
public:
    /// Returns a payload with one owner.
    static ArrayPayload* make(ArrayDimensionsView dimensions, DataOrdering ordering, Fill fill,
                              bool isScalar = false)
    {
        const std::uint64_t count = checkedElementCount(dimensions);
        return new (count, fill) ArrayPayload(dimensions, ordering, isScalar, count);
    }

    ~ArrayPayload() override
    {
        if constexpr (!std::is_trivially_destructible_v<T>)
            std::destroy_n(data(), m_count);
    }

    WellKnownType getWellKnownType() const override { return WellKnownType::of<T>(); }
    const std::type_info& getTypeInfo() const override { return typeid(T); }
    const void* constData() const override { return data(); }
    void* mutableData() override { return data(); }

    T* data() noexcept { return m_data; }
    const T* data() const noexcept { return m_data; }

    static void operator delete(void* block) noexcept { freeArrayBlock(block); }

private:
    ArrayPayload(ArrayDimensionsView dimensions, DataOrdering ordering, bool isScalar, std::uint64_t count)
        : ShapedPayload(dimensions, ordering, isScalar)
        , m_data(elementsOf(this))
        , m_count(count)
    {
        if constexpr (!std::is_trivially_destructible_v<T>)
            std::uninitialized_value_construct_n(m_data, count);
    }

    static void* operator new(std::size_t size, std::uint64_t count, Fill fill)
    {
        return allocateArrayBlock(size, count, sizeof(T),
                                  std::is_trivially_destructible_v<T> ? fill : Fill::Raw);
    }
    static void operator delete(void* block, std::uint64_t, Fill) noexcept { freeArrayBlock(block); }

    static T* elementsOf(ArrayPayload* header)
    {
        const auto end = reinterpret_cast<std::uintptr_t>(header + 1);
        return reinterpret_cast<T*>((end + arrayAlignment - 1) / arrayAlignment * arrayAlignment);
    }

    T* m_data;
    std::uint64_t m_count;
};

/// An array that holds the vector it was made from.
template <class T>
class VectorPayload final : public ShapedPayload
{
public:
    VectorPayload(std::vector<T>&& data, ArrayDimensionsView dimensions, DataOrdering ordering)
        : ShapedPayload(dimensions, ordering, false)
        , m_data(std::move(data))
    {
    }

    WellKnownType getWellKnownType() const override { return WellKnownType::of<T>(); }
    const std::type_info& getTypeInfo() const override { return typeid(T); }
    const void* constData() const override { return m_data.data(); }
    void* mutableData() override { return m_data.data(); }

private:
    std::vector<T> m_data;
};

/// The data of another heap payload under a shape or ordering of its own.
class ViewPayload final : public ShapedPayload
{
public:
    /// Shares `source`, or what `source` is itself a view of, so that views never stack up.
    static IVariantData* make(const IVariantData* source, ArrayDimensionsView dimensions,
                              DataOrdering ordering, bool isScalar);
    ~ViewPayload() override;

    IVariantData* detach() override;
    WellKnownType getWellKnownType() const override { return m_source->getWellKnownType(); }
    const std::type_info& getTypeInfo() const override { return m_source->getTypeInfo(); }
    const TypeOperations* getTypeOperations() const override { return m_source->getTypeOperations(); }
    bool readRun(std::uint64_t first, std::uint64_t count, void* target) const override;
    const void* constData() const override { return m_source->constData(); }
    void* mutableData() override { return m_source->mutableData(); }

private:
    ViewPayload(IVariantData* source, ArrayDimensionsView dimensions, DataOrdering ordering, bool isScalar);

    IVariantData* m_source; ///< one ownership
};

template <class T>
void copyRun(const T* source, std::uint64_t count, T* target)
{
    if (count == 0)
        return;
    if constexpr (std::is_trivially_copyable_v<T>)
        std::memcpy(static_cast<void*>(target), source, count * sizeof(T));
    else
        std::copy_n(source, count, target);
}

/// An array named at run time, with one owner.
PayloadPtr makeArray(WellKnownType type, ArrayDimensionsView dimensions, DataOrdering ordering, Fill fill,
                     bool isScalar = false);

/// A copy of the elements of any payload of a well-known type, in its storage order, under another shape.
IVariantData* copyPayload(const IVariantData* source, ArrayDimensionsView dimensions, DataOrdering ordering,
                          bool isScalar);

/// `source` converted on the heap, or none; never `source` itself.
IVariantData* convertPayload(const IVariantData* source, WellKnownType type);

/// Errors: std::invalid_argument when the dimensions don't have that many elements.
void checkCount(ArrayDimensionsView dimensions, std::uint64_t count);
} // namespace Brindle::Quay::Internal
