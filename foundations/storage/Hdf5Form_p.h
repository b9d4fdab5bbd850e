#pragma once

#include <hdf5.h>

namespace Orrery {

/// Whether what HDF5 is about to read has the form in which this library writes it, that of HDF5 1.8: there, each piece
/// of the structure has a checksum of HDF5's own, so that damage is an error. In the older form it is taken as it is,
/// and HDF5 1.10 can follow damaged pieces in a circle, for ever or until there is no memory.
namespace Hdf5Form {

/// Test the start of a file of at least one byte, and the header of its root group, before HDF5 sees them.
///
/// Errors: throws StorageError.
void ExpectSound(int descriptor);

/// Test the header of a group that a hard link leads to, before it is opened. Within an Hdf5Session.
///
/// Errors: throws StorageError.
void ExpectSoundGroup(hid_t parent, haddr_t address);

} // namespace Hdf5Form

} // namespace Orrery
