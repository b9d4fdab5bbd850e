#pragma once

#include "foundations/variant/Variant.h"

#include <cstdint>
#include <vector>

namespace TestSupport {
/// A payload as a host would bring it: an array of doubles that notes each access and may refuse it.
///
/// It stands for one that reads its elements from a file at the first access, which may fail.
class HostPayload : public Brindle::Quay::HeapVariantData
{
public:
    /// What happens at a payload that outlives it is none of its business, so the test owns the log.
    struct Log
    {
        int reads = 0;      ///< calls of constData
        int destroyed = 0;  ///< payloads gone
        bool fails = false; ///< constData throws std::runtime_error "damaged"
    };

    HostPayload(Log* log, std::vector<double> data, std::vector<std::uint64_t> dimensions,
                Brindle::Quay::DataOrdering ordering = Brindle::Quay::DataOrdering::RowMajor);
    ~HostPayload() override;

    Brindle::Quay::ArrayDimensionsView getDimensions() const override;
    Brindle::Quay::DataOrdering getDataOrdering() const override;
    Brindle::Quay::WellKnownType getWellKnownType() const override;
    const void* constData() const override;
    void* mutableData() override;

    /// A variant around a new payload.
    static Brindle::Quay::BVariant make(Log* log, std::vector<double> data,
                                        std::vector<std::uint64_t> dimensions);

private:
    Log* m_log;
    std::vector<double> m_data;
    std::vector<std::uint64_t> m_dimensions;
    Brindle::Quay::DataOrdering m_ordering;
};
} // namespace TestSupport
