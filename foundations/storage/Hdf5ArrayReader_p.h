#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/StoredFile_p.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orrery {

/// Finds the datasets of the arrays that Hdf5ArrayWriter has written, and proves that they are what the catalogue
/// tells: reached by hard links, stored in this very file, of the right type, shape and length.
///
/// Errors: everything here throws StorageError that says what doesn't fit; nothing is allocated before the length
///         is proved.
/// Threads: only within an Hdf5Session.
namespace Hdf5ArrayReader {

/// The position in the file of an array's elements, of any layout but LayoutNone and LayoutCompressed.
std::uint64_t Locate(const StoredFile& file, std::size_t row, const ArrayRecord& record);

/// The dataset of a compressed array; `*chunk` gets the dimensions of its chunks, which are runs of its elements.
Hdf5Handle OpenCompressed(const StoredFile& file, std::size_t row, const ArrayRecord& record,
                          std::vector<hsize_t>* chunk);

} // namespace Hdf5ArrayReader

} // namespace Orrery
