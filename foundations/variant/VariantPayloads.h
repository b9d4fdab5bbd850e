#pragma once

#include "foundations/variant/HeapVariantData.h"
#include "foundations/variant/IVariantData.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Brindle::Quay {
/// The bytes of a variant's own buffer.
inline constexpr std::size_t variantBufferSize = 40;

/// The one null payload. A variant holds it like a heap payload; it counts no owners and is never destroyed.
///
/// Threads: safe at any time, also in static initialisers of other libraries.
QUAYCORE_EXPORT IVariantData* constructVariantNull() noexcept;

/// Builds a scalar in `buffer`, which is aligned like a pointer and has at least 40 bytes. One for each of the 25
/// element types.
///
/// Errors: std::length_error for a buffer that is too small.
template <class T>
QUAYCORE_EXPORT IVariantData* constructVariantScalar(void* buffer, std::size_t size, T value,
                                                     DataOrdering ordering = DataOrdering::RowMajor);

/// Builds a copy of the scalar `source`, which lies in a buffer, in another buffer.
inline IVariantData* copyConstructVariantScalar(void* buffer, std::size_t size, const IVariantData* source)
{
    // copying leaves the source as it is, which the one operation for both can't promise by its signature
    return const_cast<IVariantData*>(source)->placeInto(buffer, size, false);
}

/// Takes the scalar `source`, which lies in a buffer, over into another buffer; `source` can only be destroyed.
inline IVariantData* moveConstructVariantScalar(void* buffer, std::size_t size, IVariantData* source) noexcept
{
    return source->placeInto(buffer, size, true);
}

/// An array of T, one of the 25 element types, whose elements the caller writes before any is read.
///
/// Returns a payload with one owner. Text elements are empty strings, all others are raw memory.
/// Errors: std::length_error when the elements exceed the address space, std::bad_alloc.
/// Cost:   one allocation, 64-byte aligned data; no element is touched.
template <class T>
QUAYCORE_EXPORT IVariantData*
constructVariantVectorWithoutDataWithDimsUnresolved(ArrayDimensionsView dimensions, DataOrdering ordering);

/// An array with a copy of `count` elements at `data`. One for each of the 25 element types.
///
/// Shape:  no dimensions mean one as long as the data.
/// Errors: std::invalid_argument when the dimensions don't have `count` elements; std::bad_alloc.
template <class T>
QUAYCORE_EXPORT IVariantData*
constructVariantVectorWithDataWithDimsUnresolved(const T* data, std::uint64_t count,
                                                 ArrayDimensionsView dimensions, DataOrdering ordering);

/// An array that holds `data` itself: no element is copied, but those of a std::vector<bool>. One for each of the
/// 25 element types.
///
/// Shape:  no dimensions mean one as long as the data.
/// Errors: std::invalid_argument when the dimensions don't have as many elements as the data.
template <class T>
QUAYCORE_EXPORT IVariantData* constructVariantDataFromMovedVector(std::vector<T>&& data,
                                                                  ArrayDimensionsView dimensions,
                                                                  DataOrdering ordering);

/// The product of the dimensions, 0 without any.
///
/// Errors: std::length_error when it doesn't fit 64 bits.
QUAYCORE_EXPORT std::uint64_t checkedElementCount(ArrayDimensionsView dimensions);
} // namespace Brindle::Quay
