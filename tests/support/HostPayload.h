#pragma once

#include "foundations/variant/Variant.h"

#include <cstdint>
#include <stdexcept>
#include <utility>
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
                Brindle::Quay::DataOrdering ordering = Brindle::Quay::DataOrdering::RowMajor)
        : m_log(log)
        , m_data(std::move(data))
        , m_dimensions(std::move(dimensions))
        , m_ordering(ordering)
    {
    }
    ~HostPayload() override { ++m_log->destroyed; }

    Brindle::Quay::ArrayDimensionsView getDimensions() const override { return m_dimensions; }
    Brindle::Quay::DataOrdering getDataOrdering() const override { return m_ordering; }
    Brindle::Quay::WellKnownType getWellKnownType() const override
    {
        return Brindle::Quay::WellKnownType::of<double>();
    }
    const void* constData() const override
    {
        ++m_log->reads;
        if (m_log->fails)
            throw std::runtime_error("damaged");
        return m_data.data();
    }
    void* mutableData() override { return m_data.data(); }

    /// A variant around a new payload.
    static Brindle::Quay::BVariant make(Log* log, std::vector<double> data,
                                        std::vector<std::uint64_t> dimensions)
    {
        return Brindle::Quay::BVariant::fromPayload(
            new HostPayload(log, std::move(data), std::move(dimensions)));
    }

private:
    Log* m_log;
    std::vector<double> m_data;
    std::vector<std::uint64_t> m_dimensions;
    Brindle::Quay::DataOrdering m_ordering;
};
} // namespace TestSupport
