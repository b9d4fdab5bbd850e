#pragma once

#include "foundations/storage/StoredArray_p.h"
#include "foundations/variant/BVariant.h"

#include <cstdint>

namespace Orrery {

/// Turns an array's stored bytes into elements.
///
/// Errors: all operations throw StorageError, also for bytes that are no values of the element type;
///         std::bad_alloc.
namespace StoredElements {

/// The whole array in its own ordering. Cost: read straight into the result, but for text.
Brindle::Quay::BVariant Read(const StoredArray& array);

/// Whether a run of the elements can be read without the others: they are of fixed length and stored in the order
/// in which the array has them in memory.
bool HasRuns(const StoredArray& array);

/// Length of one element among the stored bytes of an array that has runs.
std::uint64_t Size(const StoredArray& array);

/// Read a run of elements to `target`, which for text points to live strings. Only of an array that has runs.
void ReadRun(const StoredArray& array, std::uint64_t first, std::uint64_t count, void* target);

} // namespace StoredElements

} // namespace Orrery
