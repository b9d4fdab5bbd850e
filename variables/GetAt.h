#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/variant/BVariant.h"
#include "orrerycorevariables_export.h"

#include <cstdint>

namespace Orrery {

using Brindle::Quay::BVariant;

/// Read the element, or the sub-array, at `index` along the first axis of `variant`.
///
/// Shape:  a vector gives the one element, with one dimension of 1, and so do a 1 x n row, an n x 1 column and
///         an array whose dimensions behind the first are all 1. A higher array gives its sub-array at `index`
///         of the first dimension, without that dimension. A row of more than two dimensions (1 x 1 x n) is
///         no row here: the index stays with the first dimension.
/// Errors: ER_FAILED when the index lies past the end or the elements can't be read; ER_INVALID_ARGUMENT for a
///         null `out`. *out stays as it was on failure.
/// Edge:   an empty variant is copied to *out for any index, as a success.
/// Cost:   one element of a vector: constant, and no heap allocation. A sub-array: linear in its size.
/// Threads: reads only.
ORRERYCOREVARIABLES_EXPORT ERESULT GetAt(BVariant* out, BVariant variant, std::uint64_t index);

} // namespace Orrery
