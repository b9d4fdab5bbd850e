#include "foundations/storage/Hdf5CatalogueIo_p.h"

#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/StorageError_p.h"

#include <climits>
#include <cstring>

namespace Orrery {

using namespace CatalogueFormat;

namespace {

constexpr int s_uidLength = 36;

[[noreturn]] void CannotWrite()
{
    throw StorageError(QStringLiteral("the catalogue can't be written: ") + Hdf5Session::LastError());
}

Hdf5Handle Written(hid_t id, Hdf5Handle::Closer closer)
{
    if (id < 0)
        CannotWrite();
    return Hdf5Handle(id, closer);
}

Hdf5Handle WriteDataset(hid_t file, const char* name, const Hdf5Handle& type, hsize_t count, const void* data)
{
    const Hdf5Handle space = Written(H5Screate_simple(1, &count, nullptr), &H5Sclose);
    const Hdf5Handle creation = Written(H5Pcreate(H5P_DATASET_CREATE), &H5Pclose);
    H5Pset_layout(creation.Id(), H5D_CONTIGUOUS);
    H5Pset_fill_time(creation.Id(), H5D_FILL_TIME_NEVER);
    H5Pset_obj_track_times(creation.Id(), false);
    Hdf5Handle dataset = Written(
        H5Dcreate2(file, name, type.Id(), space.Id(), H5P_DEFAULT, creation.Id(), H5P_DEFAULT), &H5Dclose);
    if (count != 0 && H5Dwrite(dataset.Id(), type.Id(), H5S_ALL, H5S_ALL, H5P_DEFAULT, data) < 0)
        CannotWrite();
    return dataset;
}

void WriteAttribute(hid_t object, const char* name, const Hdf5Handle& type, const void* data)
{
    const Hdf5Handle space = Written(H5Screate(H5S_SCALAR), &H5Sclose);
    Hdf5Handle attribute =
        Written(H5Acreate2(object, name, type.Id(), space.Id(), H5P_DEFAULT, H5P_DEFAULT), &H5Aclose);
    if (H5Awrite(attribute.Id(), type.Id(), data) < 0 || !attribute.Close())
        CannotWrite();
}

Hdf5Handle Number(hid_t type)
{
    return Written(H5Tcopy(type), &H5Tclose);
}

// Reads a scalar attribute that must have exactly this type; false if there is none like that.
bool ReadAttribute(hid_t object, const char* name, const Hdf5Handle& type, void* data)
{
    if (H5Aexists(object, name) <= 0)
        return false;
    const Hdf5Handle attribute(H5Aopen(object, name, H5P_DEFAULT), &H5Aclose);
    if (!attribute.IsValid())
        return false;
    const Hdf5Handle space(H5Aget_space(attribute.Id()), &H5Sclose);
    const Hdf5Handle stored(H5Aget_type(attribute.Id()), &H5Tclose);
    return H5Sget_simple_extent_type(space.Id()) == H5S_SCALAR && H5Tequal(stored.Id(), type.Id()) > 0 &&
           H5Aread(attribute.Id(), type.Id(), data) >= 0;
}

// Only a choice that was made is told.
void WriteOption(hid_t object, const char* name, int value)
{
    const auto number = static_cast<std::uint32_t>(value);
    if (number != 0)
        WriteAttribute(object, name, Number(H5T_STD_U32LE), &number);
}

int ReadOption(hid_t object, const char* name, int highest)
{
    std::uint32_t number = 0;
    if (!ReadAttribute(object, name, Number(H5T_STD_U32LE), &number) ||
        number > static_cast<std::uint32_t>(highest))
        return 0;
    return static_cast<int>(number);
}

Hdf5Handle OpenDataset(hid_t file, const char* name)
{
    H5L_info_t info;
    if (H5Lexists(file, name, H5P_DEFAULT) <= 0 || H5Lget_info(file, name, &info, H5P_DEFAULT) < 0 ||
        info.type != H5L_TYPE_HARD)
        throw StorageError(
            QStringLiteral("is an HDF5 file without a catalogue, not a data file of this format"));
    Hdf5Handle dataset(H5Dopen2(file, name, H5P_DEFAULT), &H5Dclose);
    if (!dataset.IsValid())
        throw StorageError(QStringLiteral("the catalogue can't be opened: ") + Hdf5Session::LastError());
    return dataset;
}

// The length of a dataset that lies in one piece in this file and has this type.
hsize_t SoundLength(hid_t file, const Hdf5Handle& dataset, const Hdf5Handle& type)
{
    const Hdf5Handle creation(H5Dget_create_plist(dataset.Id()), &H5Pclose);
    const Hdf5Handle stored(H5Dget_type(dataset.Id()), &H5Tclose);
    const Hdf5Handle space(H5Dget_space(dataset.Id()), &H5Sclose);
    hsize_t count = 0;
    if (H5Pget_layout(creation.Id()) != H5D_CONTIGUOUS || H5Pget_external_count(creation.Id()) != 0 ||
        H5Tequal(stored.Id(), type.Id()) <= 0 || H5Sget_simple_extent_ndims(space.Id()) != 1 ||
        H5Sget_simple_extent_dims(space.Id(), &count, nullptr) != 1)
        throw StorageError(QStringLiteral("the catalogue isn't stored as this format wants it"));
    const hsize_t size = H5Tget_size(stored.Id());
    hsize_t fileSize = 0;
    if (H5Fget_filesize(file, &fileSize) < 0 || count > fileSize / size ||
        H5Dget_storage_size(dataset.Id()) != count * size)
        throw StorageError(QStringLiteral("the catalogue is longer than the file"));
    return count;
}

void ReadDataset(const Hdf5Handle& dataset, const Hdf5Handle& type, hsize_t count, void* data)
{
    if (count != 0 && H5Dread(dataset.Id(), type.Id(), H5S_ALL, H5S_ALL, H5P_DEFAULT, data) < 0)
        throw StorageError(QStringLiteral("the catalogue can't be read: ") + Hdf5Session::LastError());
}

void ExpectFormat(const Hdf5Handle& rows)
{
    char format[sizeof FormatName] = {};
    std::uint32_t version = 0;
    if (!ReadAttribute(rows.Id(), "format", Hdf5Types::ForPaddedText(std::strlen(FormatName)), format) ||
        std::strcmp(format, FormatName) != 0 ||
        !ReadAttribute(rows.Id(), "version", Number(H5T_STD_U32LE), &version))
        throw StorageError(QStringLiteral("is an HDF5 file, but not a data file of this format"));
    if (version != Version)
        throw StorageError(QStringLiteral("is of format version %1; this library reads version %2")
                               .arg(version)
                               .arg(Version));
}

} // namespace

void Hdf5CatalogueIo::Write(hid_t file, const Catalogue& catalogue, const QByteArray& uid,
                            const SaveOptions& options)
{
    const auto heapSize = static_cast<hsize_t>(catalogue.heap.size());
    Hdf5Handle heap =
        WriteDataset(file, HeapName, Hdf5Types::ForBytes(), heapSize, catalogue.heap.constData());
    if (!heap.Close())
        CannotWrite();

    Hdf5Handle rows =
        WriteDataset(file, RowsName, Hdf5Types::ForRow(), catalogue.rows.size(), catalogue.rows.data());
    const std::uint32_t version = Version;
    const std::uint64_t checksum = catalogue.Checksum(version, uid);
    WriteAttribute(rows.Id(), "format", Hdf5Types::ForPaddedText(std::strlen(FormatName)), FormatName);
    WriteAttribute(rows.Id(), "version", Number(H5T_STD_U32LE), &version);
    WriteAttribute(rows.Id(), "uid", Hdf5Types::ForPaddedText(s_uidLength), uid.constData());
    WriteAttribute(rows.Id(), "checksum", Number(H5T_STD_U64LE), &checksum);
    WriteOption(rows.Id(), "compression", options.compressionLevel);
    WriteOption(rows.Id(), "packed", options.packed ? 1 : 0);
    if (!rows.Close())
        CannotWrite();
}

SaveOptions Hdf5CatalogueIo::ReadOptions(hid_t file)
{
    constexpr int highestLevel = 9;
    const Hdf5Handle rows = OpenDataset(file, RowsName);
    SaveOptions options;
    options.compressionLevel = ReadOption(rows.Id(), "compression", highestLevel);
    options.packed = ReadOption(rows.Id(), "packed", 1) == 1;
    return options;
}

QByteArray Hdf5CatalogueIo::Read(hid_t file, Catalogue* catalogue)
{
    const Hdf5Handle rows = OpenDataset(file, RowsName);
    ExpectFormat(rows);
    const Hdf5Handle heap = OpenDataset(file, HeapName);
    const Hdf5Handle rowType = Hdf5Types::ForRow();
    const Hdf5Handle byteType = Hdf5Types::ForBytes();
    const hsize_t rowCount = SoundLength(file, rows, rowType);
    const hsize_t heapSize = SoundLength(file, heap, byteType);
    if (rowCount >= NoParent || heapSize > static_cast<hsize_t>(INT_MAX) - 64)
        throw StorageError(QStringLiteral("the catalogue is too long"));

    QByteArray uid(s_uidLength, '\0');
    std::uint64_t checksum = 0;
    if (!ReadAttribute(rows.Id(), "uid", Hdf5Types::ForPaddedText(s_uidLength), uid.data()) ||
        !ReadAttribute(rows.Id(), "checksum", Number(H5T_STD_U64LE), &checksum))
        throw StorageError(QStringLiteral("the catalogue has no uid or no checksum"));
    catalogue->rows.resize(rowCount);
    ReadDataset(rows, rowType, rowCount, catalogue->rows.data());
    catalogue->heap.resize(static_cast<int>(heapSize));
    ReadDataset(heap, byteType, heapSize, catalogue->heap.data());
    if (catalogue->Checksum(Version, uid) != checksum)
        throw StorageError(QStringLiteral("the catalogue is damaged: its checksum doesn't fit its bytes"));
    return uid;
}

} // namespace Orrery
