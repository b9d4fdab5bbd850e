#include "foundations/storage/Hdf5Folders_p.h"

#include "foundations/storage/Hdf5Form_p.h"
#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/StorageError_p.h"

#include <algorithm>

namespace Orrery {

Hdf5Handle Utf8Links()
{
    Hdf5Handle list = Owned(H5Pcreate(H5P_LINK_CREATE), &H5Pclose, "HDF5 is out of order");
    H5Pset_char_encoding(list.Id(), H5T_CSET_UTF8);
    return list;
}

Hdf5Folders::Hdf5Folders(hid_t file, const Catalogue& catalogue, Mode mode)
    : m_catalogue(catalogue)
    , m_mode(mode)
    , m_root(Owned(H5Gopen2(file, "/", H5P_DEFAULT), &H5Gclose, "the root group can't be opened"))
{
}

hid_t Hdf5Folders::Of(std::size_t folder)
{
    std::vector<std::size_t> chain;
    for (; folder != 0; folder = m_catalogue.rows[folder].parent)
        chain.push_back(folder);
    std::reverse(chain.begin(), chain.end());

    std::size_t shared = 0;
    while (shared < chain.size() && shared < m_open.size() && m_open[shared].first == chain[shared])
        ++shared;
    m_open.resize(shared);
    for (; shared < chain.size(); ++shared) {
        const QString name = m_catalogue.Name(m_catalogue.rows[chain[shared]]);
        const hid_t parent = m_open.empty() ? m_root.Id() : m_open.back().second.Id();
        m_open.emplace_back(chain[shared], Enter(parent, LinkName(name, shared == 0)));
    }
    return m_open.empty() ? m_root.Id() : m_open.back().second.Id();
}

Hdf5Handle Hdf5Folders::Enter(hid_t parent, const QByteArray& link) const
{
    if (m_mode == MakeGroups) {
        const Hdf5Handle links = Utf8Links();
        const Hdf5Handle creation = Owned(H5Pcreate(H5P_GROUP_CREATE), &H5Pclose, "HDF5 is out of order");
        H5Pset_obj_track_times(creation.Id(), false);
        return Owned(H5Gcreate2(parent, link.constData(), links.Id(), creation.Id(), H5P_DEFAULT), &H5Gclose,
                     "a group can't be made");
    }
    H5L_info_t info;
    if (H5Lget_info(parent, link.constData(), &info, H5P_DEFAULT) < 0)
        throw StorageError(QStringLiteral("the array's group is missing"));
    if (info.type != H5L_TYPE_HARD)
        throw StorageError(QStringLiteral("the array's group is a link to somewhere else"));
    Hdf5Form::ExpectSoundGroup(parent, info.u.address);
    return Owned(H5Gopen2(parent, link.constData(), H5P_DEFAULT), &H5Gclose,
                 "the array's group can't be opened");
}

} // namespace Orrery
