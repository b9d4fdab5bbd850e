#pragma once

#include "foundations/storage/StoredArray_p.h"
#include "foundations/variant/BVariant.h"

#include <cstddef>
#include <memory>

namespace Orrery {

/// Arrays whose elements stay in their file until somebody asks for them.
///
/// Shape, ordering and type are known at once. The first constData reads the elements, once for all copies of the
/// variant; a part of the elements is read without the rest. What can't be read is std::runtime_error with one line
/// that names file and node, each time anew: a later attempt may succeed.
namespace LazyArray {

/// The array of a row, not read yet. The file stays open until the array has been read or its last copy is gone.
Brindle::Quay::BVariant Make(std::shared_ptr<const StoredFile> file, std::size_t row);

/// The array in its file that `value` stands for, if `value` is one whose elements weren't read (or written to);
/// null for every other value. For copying it from file to file:
///
///     if (const auto stored = LazyArray::Unread(value)) {
///         const ArrayRecord& record = stored->Record();      // shape, layout, checksums carry over
///         for (block...) stored->ReadBlock(block, buffer);   // tested; any layout, unfiltered
///         // or: Offset() and storedBytes in File().Descriptor() for all but a compressed one
///     }
///
/// The result keeps the file open by itself, so a save may replace the very file that the array stands in.
std::shared_ptr<const StoredArray> Unread(const Brindle::Quay::BVariant& value);

} // namespace LazyArray

} // namespace Orrery
