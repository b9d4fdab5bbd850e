#pragma once

#include "foundations/variant/ArrayPayloads_p.h"
#include "foundations/variant/ElementConversion_p.h"

#include <new>
#include <utility>

namespace Brindle::Quay::Internal {
inline constexpr std::uint64_t scalarShape[1] = {1};

/// A scalar in a variant's buffer: a vtable pointer and the value. The ordering is part of the type, since a text
/// leaves no room for it.
template <class T, DataOrdering Ordering>
class ScalarPayload final : public IVariantData
{
public:
    explicit ScalarPayload(T&& value)
        : m_value(std::move(value))
    {
    }
    explicit ScalarPayload(const T& value)
        : m_value(value)
    {
    }

    void addRef() const noexcept override {}
    void release() const noexcept override {}
    IVariantData* detach() override { return this; }

    IVariantData* placeInto(void* buffer, std::size_t /*size*/, bool move) override
    {
        return move ? ::new (buffer) ScalarPayload(std::move(m_value))
                    : ::new (buffer) ScalarPayload(m_value);
    }

    ArrayDimensionsView getDimensions() const override { return {scalarShape, std::size_t(1)}; }
    bool isScalar() const override { return true; }
    DataOrdering getDataOrdering() const override { return Ordering; }
    WellKnownType getWellKnownType() const override { return WellKnownType::of<T>(); }
    const std::type_info& getTypeInfo() const override { return typeid(T); }
    const TypeOperations* getTypeOperations() const override { return nullptr; }

    IVariantData* reordered(DataOrdering ordering) const override
    {
        return copyPayload(this, getDimensions(), ordering, true);
    }

    bool readRun(std::uint64_t /*first*/, std::uint64_t /*count*/, void* /*target*/) const override
    {
        return false;
    }

    IVariantData* reshaped(const IVariantData* source, ArrayDimensionsView dimensions,
                           DataOrdering ordering) const override
    {
        checkCount(dimensions, source->getDimensions().elementCount());
        return copyPayload(source, dimensions, ordering, source->isScalar() && dimensions.size() == 1);
    }

    const void* constData() const override { return &m_value; }
    void* mutableData() override { return &m_value; }

    IVariantData* convertedTo(WellKnownType type, int /*flag*/) const override
    {
        if (type == WellKnownType::of<T>())
            return copyPayload(this, getDimensions(), Ordering, true);
        return convertPayload(this, type);
    }

private:
    T m_value;
};
} // namespace Brindle::Quay::Internal
