#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/variant/BVariant.h"

#include <QByteArray>

#include <cstdint>
#include <utility>
#include <vector>

namespace Orrery {

/// The arrays of a data file: one dataset each, of its own element type and shape.
///
/// A dataset holds its elements in row-major order, so that every tool sees the right element at the right place;
/// an array that is column-major is brought back to its own order when it is read.
namespace Hdf5ArrayIo {

/// Write one array as the dataset `link` of an open group.
///
/// Errors: throws StorageError for more than 32 dimensions and for whatever HDF5 can't do.
ArrayRecord Write(hid_t group, const QByteArray& link, const Brindle::Quay::BVariant& array);

/// Read the array that Write has written there, and test its checksums.
///
/// The dataset must be what the record says: reached by a hard link, contiguous, in this very file, of this type,
/// shape and length. `fd` is the open file, from which the bytes are read.
/// Errors: throws StorageError that says what doesn't fit; nothing is allocated before the length is proved.
Brindle::Quay::BVariant Read(int fd, hid_t group, const QByteArray& link, std::uint16_t element,
                             bool columnMajor, const ArrayRecord& record);

} // namespace Hdf5ArrayIo

/// The open groups on the way to one folder of a catalogue. Arrays are met in the order of a walk, so nearly all
/// groups that the next one needs are open already.
class Hdf5Folders
{
public:
    enum Mode
    {
        OpenGroups,
        MakeGroups
    };

    /// Both must outlive this object.
    Hdf5Folders(hid_t file, const Catalogue& catalogue, Mode mode);

    /// The group of a folder's row, valid until the next call.
    ///
    /// Errors: throws StorageError, also where something else than a group stands, or a soft or external link.
    hid_t Of(std::size_t folder);

private:
    Hdf5Handle Enter(hid_t parent, const QByteArray& link) const;

    const Catalogue& m_catalogue;
    Mode m_mode;
    Hdf5Handle m_root;
    std::vector<std::pair<std::size_t, Hdf5Handle>> m_open; ///< below the root, outermost first
};

} // namespace Orrery
