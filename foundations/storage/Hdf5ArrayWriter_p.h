#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/variant/BVariant.h"

#include <QByteArray>

namespace Orrery {

/// Writes the arrays of a data file: one dataset each, of its own element type and shape.
///
/// A dataset holds its elements in row-major order, so that every tool sees the right element at the right place.
namespace Hdf5ArrayWriter {

/// Write one array as the dataset `link` of an open group.
///
/// Errors: throws StorageError for more than 32 dimensions and for whatever HDF5 can't do.
ArrayRecord Write(hid_t group, const QByteArray& link, const Brindle::Quay::BVariant& array);

} // namespace Hdf5ArrayWriter

} // namespace Orrery
