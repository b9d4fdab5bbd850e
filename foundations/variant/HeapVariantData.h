#pragma once

#include "foundations/variant/IVariantData.h"
#include "quaycore_export.h"

#include <atomic>
#include <cstddef>

namespace Brindle::Quay {
/// Base of payloads on the heap: the count of owners, and everything that follows from shape, type and data.
///
/// A subclass gives getDimensions, getDataOrdering, getWellKnownType, constData and mutableData, and is made with
/// new; it starts with one owner. mutableData is called on a payload with one owner only. The operations given
/// here work for the 25 element types; a payload of a run-time type overrides the lot.
/// Threads: the count is atomic.
class QUAYCORE_EXPORT HeapVariantData : public IVariantData
{
public:
    HeapVariantData(const HeapVariantData&) = delete;
    HeapVariantData& operator=(const HeapVariantData&) = delete;
    ~HeapVariantData() override;

    void addRef() const noexcept final { m_owners.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept final
    {
        // A sole owner needs no locked operation: nobody else can be about to add one.
        if (m_owners.load(std::memory_order_acquire) == 1 ||
            m_owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    /// This payload when it has one owner; else a copy in memory, made through constData.
    IVariantData* detach() override;
    IVariantData* placeInto(void* buffer, std::size_t size, bool move) override;
    bool isScalar() const override;
    const std::type_info& getTypeInfo() const override;
    const TypeOperations* getTypeOperations() const override;
    IVariantData* reordered(DataOrdering ordering) const override;
    bool readRun(std::uint64_t first, std::uint64_t count, void* target) const override;
    IVariantData* reshaped(const IVariantData* source, ArrayDimensionsView dimensions,
                           DataOrdering ordering) const override;
    IVariantData* convertedTo(WellKnownType type, int flag) const override;

protected:
    HeapVariantData() = default;

    /// Whether there is more than one owner.
    bool isShared() const noexcept { return m_owners.load(std::memory_order_acquire) != 1; }

private:
    mutable std::atomic<std::size_t> m_owners{1};
};
} // namespace Brindle::Quay
