#pragma once

#include "foundations/variant/BVariant.h"

#include <cstddef>
#include <cstdint>

namespace Orrery {

using Brindle::Quay::BVariant;

/// An array that is filled from its beginning with runs of equal elements.
///
/// Elements that are never filled are zero, as in a fresh array.
class SweptValues
{
public:
    /// Room for `count` elements like `sample`: of its type, and with its dimensions behind the count unless
    /// it is a scalar.
    ///
    /// Errors: those of createArray.
    SweptValues(const BVariant& sample, std::uint64_t count);

    /// Write the one element of `value` at the next `length` places.
    ///
    /// Errors: those of setElement. Without places nothing is asked of the value.
    void append(const BVariant& value, std::uint64_t length);

    /// As append() of the element of a vector at that position, which must be inside.
    void appendElement(const BVariant& vector, std::uint64_t position, std::uint64_t length);

    /// The array. To be called once, as the last operation.
    BVariant take();

private:
    bool isText() const;
    void appendFitting(const BVariant& source, std::uint64_t position, std::uint64_t length);
    const BVariant& fit(const BVariant& value, BVariant* converted) const;
    std::byte* place(std::uint64_t position) { return m_data + position * m_stride * m_elementSize; }

    Brindle::Quay::WellKnownType m_type;
    BVariant m_array;
    std::byte* m_data;
    std::size_t m_elementSize;
    std::uint64_t m_count;      // of places
    std::uint64_t m_stride = 1; // elements from one place to the next
    std::uint64_t m_written = 0;
};

} // namespace Orrery
