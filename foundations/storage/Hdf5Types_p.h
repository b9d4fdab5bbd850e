#pragma once

#include "foundations/storage/CatalogueFormat_p.h"
#include "foundations/storage/Hdf5Handle_p.h"

#include <cstdint>

namespace Orrery {

/// The HDF5 datatypes of a data file. What a type looks like in a file is also what it looks like in memory: the
/// file is little-endian, and so is every machine that this library runs on.
namespace Hdf5Types {

/// Datatype of one element of a known type other than text, as other tools expect it: complex as the compound
/// {r, i}, a truth value as the enumeration {FALSE, TRUE}, a time as the compound of its two words.
Hdf5Handle ForElement(std::uint16_t code);

/// UTF-8 text of a fixed number of bytes, filled up with NUL; 1 byte at least.
Hdf5Handle ForPaddedText(std::uint64_t bytes);

/// The catalogue's row.
Hdf5Handle ForRow();

/// Plain bytes.
Hdf5Handle ForBytes();

} // namespace Hdf5Types

} // namespace Orrery
