#pragma once

#include "foundations/variant/ArrayDimensionsView.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Brindle::Quay {
/// From the indices of an element to its position in storage, and back.
///
/// `check` is true where the indices come from a caller and false where the system walks an array itself.
/// With it, an index that has a dimension must lie in it, and a sum must not exceed 64 bits, else
/// std::out_of_range "Indices out of bounds."; without it, arithmetic is modulo 2^64.
/// Edge: with fewer indices than dimensions the missing ones count as 0; an index without a dimension counts as if
///       the list of dimensions went on with ones.
class QUAYCORE_EXPORT ArrayIndexing
{
public:
    /// The sum of each index times the product of the dimensions after it.
    static std::uint64_t calculateOffsetRowMajor(const std::vector<std::uint64_t>& indices,
                                                 ArrayDimensionsView dimensions, bool check);
    /// The same for `count` indices in memory.
    static std::uint64_t calculateOffsetRowMajor(const std::uint64_t* indices, std::size_t count,
                                                 ArrayDimensionsView dimensions, bool check);

    /// The sum of each index times the product of the dimensions before it.
    static std::uint64_t calculateOffsetColumnMajor(const std::vector<std::uint64_t>& indices,
                                                    ArrayDimensionsView dimensions, bool check);
    /// The same for `count` indices in memory.
    static std::uint64_t calculateOffsetColumnMajor(const std::uint64_t* indices, std::size_t count,
                                                    ArrayDimensionsView dimensions, bool check);

    /// The indices, one per dimension, whose row-major offset is `offset`: the inverse of the first operation.
    ///
    /// Edge: an offset past the end fails with `check` ("Indices out of bounds.", *outIndices untouched); without,
    ///       the first index takes the excess, and all are 0 when a dimension is 0.
    static void CalculateIndicesRowMajor(std::vector<std::uint64_t>* outIndices, std::uint64_t offset,
                                         ArrayDimensionsView dimensions, bool check);
};
} // namespace Brindle::Quay
