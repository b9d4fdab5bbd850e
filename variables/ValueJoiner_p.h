#pragma once

#include "foundations/variant/BVariant.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orrery {

using Brindle::Quay::BVariant;

/// Joins pieces into one value, in time linear in their elements, with the outcome of appendValues of what
/// there is and each piece in turn.
///
/// That is to the letter: an empty piece changes nothing, a single one is the result itself, the type folds
/// from the left, and the shape is that of the earliest piece that has several dimensions. Whatever
/// appendValues refuses is handed to it, so that it fails in its own words.
class ValueJoiner
{
public:
    /// `out` isn't owned, and holds what there is: nothing, or the first piece. `expected` is the number of
    /// elements that are likely to come in all; it saves copies and needn't be true.
    ValueJoiner(BVariant* out, std::uint64_t expected);

    /// Puts what was joined into *out, where finish() wasn't called because of an exception; if memory
    /// doesn't suffice for that, nothing.
    ~ValueJoiner();

    ValueJoiner(const ValueJoiner&) = delete;
    ValueJoiner& operator=(const ValueJoiner&) = delete;

    /// Whether there are no elements yet. Then the next piece may be put into *out.
    bool isEmpty() const { return !isJoining() && m_out->isEmpty(); }

    /// Append a piece. *out isn't to be used from then on until finish().
    ///
    /// Errors: those of appendValues; what was joined before is kept.
    void append(const BVariant& piece);

    /// Put what was joined into *out.
    ///
    /// Errors: std::bad_alloc.
    void finish();

private:
    bool isJoining() const { return m_capacity > 0; }
    bool tryAppend(const BVariant& piece, std::uint64_t count);
    const BVariant* fit(const BVariant& piece, std::uint64_t count, BVariant* converted) const;
    std::uint64_t capacityFor(std::uint64_t needed) const;
    void begin(const BVariant& second, std::uint64_t secondCount);
    void moveToBuffer(std::uint64_t capacity);

    BVariant* m_out;
    std::uint64_t m_expected;

    // From the second piece on:
    BVariant m_buffer;
    std::byte* m_data = nullptr; // its elements
    std::uint64_t m_capacity = 0;
    std::uint64_t m_count = 0;
    Brindle::Quay::WellKnownType m_type = Brindle::Quay::WellKnownType::Null;
    std::size_t m_elementSize = 0;
    std::vector<std::uint64_t> m_shape; // of the earliest piece with several dimensions; empty without one
};

} // namespace Orrery
