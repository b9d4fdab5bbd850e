#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/variant/BVariant.h"

#include <QByteArray>

#include <cstdint>

namespace Orrery {

/// Reads the arrays that Hdf5ArrayWriter has written.
///
/// An array that is column-major, whose dataset is row-major like all, is brought back to its own order.
namespace Hdf5ArrayReader {

/// Read the array of a record, and test its checksums.
///
/// The dataset must be what the record says: reached by a hard link, contiguous, in this very file, of this type,
/// shape and length. `fd` is the open file, from which the bytes are read.
/// Errors: throws StorageError that says what doesn't fit; nothing is allocated before the length is proved.
Brindle::Quay::BVariant Read(int fd, hid_t group, const QByteArray& link, std::uint16_t element,
                             bool columnMajor, const ArrayRecord& record);

} // namespace Hdf5ArrayReader

} // namespace Orrery
