#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/SaveOptions_p.h"

#include <QByteArray>

namespace Orrery {

/// The catalogue as two datasets of the root group: the table, with the format's name and version, the file's uid
/// and a checksum as attributes, and the byte heap beside it.
namespace Hdf5CatalogueIo {

/// Errors: throws StorageError.
void Write(hid_t file, const Catalogue& catalogue, const QByteArray& uid, const SaveOptions& options);

/// The options that Write has kept; those of a file that has none, or none that have a meaning, are the usual ones.
SaveOptions ReadOptions(hid_t file);

/// Read what Write has written and prove that it is whole; returns the file's uid.
///
/// Errors: throws StorageError for a file of another kind, of a newer version, or damaged. Nothing is allocated
///         that is longer than the file. The rows themselves are still to be checked.
QByteArray Read(hid_t file, Catalogue* catalogue);

} // namespace Hdf5CatalogueIo

} // namespace Orrery
