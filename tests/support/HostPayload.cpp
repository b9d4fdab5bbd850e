#include "tests/support/HostPayload.h"

#include <stdexcept>
#include <utility>

namespace TestSupport {
using namespace Brindle::Quay;

HostPayload::HostPayload(Log* log, std::vector<double> data, std::vector<std::uint64_t> dimensions,
                         DataOrdering ordering)
    : m_log(log)
    , m_data(std::move(data))
    , m_dimensions(std::move(dimensions))
    , m_ordering(ordering)
{
}

HostPayload::~HostPayload()
{
    ++m_log->destroyed;
}

ArrayDimensionsView HostPayload::getDimensions() const
{
    return m_dimensions;
}

DataOrdering HostPayload::getDataOrdering() const
{
    return m_ordering;
}

WellKnownType HostPayload::getWellKnownType() const
{
    return WellKnownType::of<double>();
}

const void* HostPayload::constData() const
{
    ++m_log->reads;
    if (m_log->fails)
        throw std::runtime_error("damaged");
    return m_data.data();
}

void* HostPayload::mutableData()
{
    return m_data.data();
}

BVariant HostPayload::make(Log* log, std::vector<double> data, std::vector<std::uint64_t> dimensions)
{
    return BVariant::fromPayload(new HostPayload(log, std::move(data), std::move(dimensions)));
}
} // namespace TestSupport
