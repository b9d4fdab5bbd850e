#include "foundations/storage/Hdf5FileWalk_p.h"

#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/StorageError_p.h"

#include <vector>

namespace Orrery {

using namespace CatalogueFormat;

namespace {

// A tree's own groups are no deeper; what is can only be a forgery that wants the stack.
constexpr int s_deepest = 1001;

// An attribute of more bytes stands outside its object's header; none of ours does.
constexpr std::uint64_t s_longestAttribute = std::uint64_t(64) * 1024;

extern "C" herr_t OrreryKeepName(hid_t /*object*/, const char* name, const void* /*info*/, void* names)
{
    static_cast<std::vector<QByteArray>*>(names)->emplace_back(name);
    return 0;
}

herr_t KeepLink(hid_t group, const char* name, const H5L_info_t* info, void* names)
{
    return OrreryKeepName(group, name, info, names);
}

herr_t KeepAttribute(hid_t object, const char* name, const H5A_info_t* info, void* names)
{
    return OrreryKeepName(object, name, info, names);
}

QString Reason()
{
    return QStringLiteral(": ") + Hdf5Session::LastError();
}

// Where a soft link leads, or an external one, as "FILE, object PATH".
QString TargetOf(hid_t group, const QByteArray& name, const H5L_info_t& info)
{
    std::vector<char> value(info.u.val_size + 1, '\0');
    if (H5Lget_val(group, name.constData(), value.data(), info.u.val_size, H5P_DEFAULT) < 0)
        return QStringLiteral("?");
    if (info.type != H5L_TYPE_EXTERNAL)
        return QString::fromUtf8(value.data());
    const char* file = nullptr;
    const char* object = nullptr;
    if (H5Lunpack_elink_val(value.data(), info.u.val_size, nullptr, &file, &object) < 0)
        return QStringLiteral("?");
    return QString::fromUtf8(file) + QStringLiteral(", object ") + QString::fromUtf8(object);
}

} // namespace

Hdf5FileWalk::Hdf5FileWalk(hid_t file, const Catalogue& catalogue, const DataFileCheck::Report& report)
    : m_file(file)
    , m_catalogue(catalogue)
    , m_report(report)
{
}

void Hdf5FileWalk::Run()
{
    IndexRows();
    const Hdf5Handle root(H5Gopen2(m_file, "/", H5P_DEFAULT), &H5Gclose);
    if (!root.IsValid()) {
        Tell(DataFileCheck::Error, "/", QStringLiteral("the root group can't be opened") + Reason());
        return;
    }
    H5O_info_t info;
    if (H5Oget_info2(root.Id(), &info, H5O_INFO_BASIC) >= 0)
        m_seen.insert(info.addr);
    LookAtGroup({root.Id(), 0, QByteArray(), 0});
}

void Hdf5FileWalk::IndexRows()
{
    for (std::size_t i = 1; i < m_catalogue.rows.size(); ++i) {
        const Row& row = m_catalogue.rows[i];
        if (row.kind == KindFolder || row.form == FormArray)
            m_rows.insert({row.parent, LinkName(m_catalogue.Name(row), row.parent == 0)},
                          static_cast<std::uint32_t>(i));
    }
}

// The names first: an iteration of HDF5's must not be left by an exception.
void Hdf5FileWalk::LookAtGroup(const Group& group)
{
    LookAtAttributes(group.id, group.path.isEmpty() ? QByteArrayLiteral("/") : group.path);
    std::vector<QByteArray> names;
    if (H5Literate(group.id, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, &KeepLink, &names) < 0)
        Tell(DataFileCheck::Error, group.path, QStringLiteral("the group's links can't be read") + Reason());
    for (const QByteArray& name : names)
        LookAtLink(group, name);
}

void Hdf5FileWalk::LookAtLink(const Group& group, const QByteArray& name)
{
    const QByteArray path = group.path + '/' + name;
    H5L_info_t info;
    if (H5Lget_info(group.id, name.constData(), &info, H5P_DEFAULT) < 0) {
        Tell(DataFileCheck::Error, path, QStringLiteral("the link can't be read") + Reason());
        return;
    }
    if (info.type == H5L_TYPE_HARD)
        LookAtObject(group, name, path);
    else if (info.type == H5L_TYPE_SOFT)
        Tell(DataFileCheck::Warning, path,
             QStringLiteral("a soft link that the tree doesn't know, to ") + TargetOf(group.id, name, info));
    else
        Tell(DataFileCheck::Error, path,
             QStringLiteral("a link that leads out of the file, to ") + TargetOf(group.id, name, info));
}

void Hdf5FileWalk::LookAtObject(const Group& group, const QByteArray& name, const QByteArray& path)
{
    const std::uint32_t row = RowOf(group, name);
    const bool isKnown = row != NoParent || IsOfCatalogue(group, name);
    const Hdf5Handle object(H5Oopen(group.id, name.constData(), H5P_DEFAULT), &H5Oclose);
    H5O_info_t info;
    if (!object.IsValid() || H5Oget_info2(object.Id(), &info, H5O_INFO_BASIC) < 0) {
        Tell(DataFileCheck::Error, path, QStringLiteral("the object can't be opened") + Reason());
        return;
    }
    if (m_seen.contains(info.addr)) {
        Tell(DataFileCheck::Warning, path, QStringLiteral("another link to an object that has one already"));
        return;
    }
    m_seen.insert(info.addr);
    // Inside a strange group everything is strange, and one line tells it.
    const bool isTold = !isKnown && group.row != NoParent;
    if (info.type == H5O_TYPE_GROUP) {
        if (isTold)
            Tell(DataFileCheck::Warning, path, QStringLiteral("a group that the tree doesn't know"));
        if (group.depth < s_deepest)
            LookAtGroup({object.Id(), row, path, group.depth + 1});
        else
            Tell(DataFileCheck::Error, path, QStringLiteral("the group is too deep in the file"));
    } else if (info.type == H5O_TYPE_DATASET) {
        if (isTold)
            Tell(DataFileCheck::Warning, path, QStringLiteral("a dataset that the tree doesn't know"));
        LookAtDataset(object.Id(), isKnown, path);
        LookAtAttributes(object.Id(), path);
    } else if (isTold) {
        Tell(DataFileCheck::Warning, path, QStringLiteral("an object that the tree doesn't know"));
    }
}

// What the tree's own datasets have to be is tested as they are read.
void Hdf5FileWalk::LookAtDataset(hid_t dataset, bool isKnown, const QByteArray& path)
{
    const Hdf5Handle creation(H5Dget_create_plist(dataset), &H5Pclose);
    if (!creation.IsValid()) {
        if (!isKnown)
            Tell(DataFileCheck::Warning, path, QStringLiteral("the dataset can't be opened") + Reason());
        return;
    }
    if (H5Pget_external_count(creation.Id()) > 0)
        Tell(DataFileCheck::Error, path, QStringLiteral("the dataset's bytes lie in another file"));
    if (H5Pget_layout(creation.Id()) == H5D_VIRTUAL)
        Tell(DataFileCheck::Error, path, QStringLiteral("the dataset is put together from other ones"));
}

void Hdf5FileWalk::LookAtAttributes(hid_t object, const QByteArray& path)
{
    std::vector<QByteArray> names;
    if (H5Aiterate2(object, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, &KeepAttribute, &names) < 0)
        Tell(DataFileCheck::Warning, path, QStringLiteral("the attributes can't be read") + Reason());
    for (const QByteArray& name : names) {
        const Hdf5Handle attribute(H5Aopen(object, name.constData(), H5P_DEFAULT), &H5Aclose);
        const Hdf5Handle type(attribute.IsValid() ? H5Aget_type(attribute.Id()) : H5I_INVALID_HID, &H5Tclose);
        const Hdf5Handle space(attribute.IsValid() ? H5Aget_space(attribute.Id()) : H5I_INVALID_HID,
                               &H5Sclose);
        const hsize_t size = attribute.IsValid() ? H5Aget_storage_size(attribute.Id()) : 0;
        bool isRead = type.IsValid() && space.IsValid();
        if (isRead && size > 0 && size <= s_longestAttribute) {
            const hsize_t count = static_cast<hsize_t>(H5Sget_simple_extent_npoints(space.Id()));
            isRead = count <= s_longestAttribute && H5Tget_size(type.Id()) <= s_longestAttribute;
            std::vector<char> value(isRead ? count * H5Tget_size(type.Id()) : 0);
            isRead = isRead && H5Aread(attribute.Id(), type.Id(), value.data()) >= 0;
            if (isRead)
                H5Dvlen_reclaim(type.Id(), space.Id(), H5P_DEFAULT, value.data());
        }
        if (!isRead)
            Tell(DataFileCheck::Warning, path,
                 QStringLiteral("the attribute ") + QString::fromUtf8(name) +
                     QStringLiteral(" can't be read") + Reason());
    }
}

bool Hdf5FileWalk::IsOfCatalogue(const Group& group, const QByteArray& name) const
{
    return group.path.isEmpty() && (name == RowsName || name == HeapName || name == PoolName);
}

std::uint32_t Hdf5FileWalk::RowOf(const Group& group, const QByteArray& name) const
{
    return group.row == NoParent ? NoParent : m_rows.value({group.row, name}, NoParent);
}

void Hdf5FileWalk::Tell(DataFileCheck::Severity severity, const QByteArray& path, const QString& text) const
{
    m_report({severity, OneLine(QString::fromUtf8(path)), OneLine(text)});
}

} // namespace Orrery
