#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace Orrery {

/// Properties of a link whose name is UTF-8. Errors: throws StorageError.
Hdf5Handle Utf8Links();

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
