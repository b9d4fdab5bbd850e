#include "foundations/storage/Hdf5ArrayReader_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/StorageError_p.h"

#include <algorithm>

namespace Orrery {

using namespace CatalogueFormat;

namespace {

Hdf5Handle OpenDataset(hid_t group, const QByteArray& link)
{
    H5L_info_t linkInfo;
    if (H5Lget_info(group, link.constData(), &linkInfo, H5P_DEFAULT) < 0)
        throw StorageError(QStringLiteral("the array's dataset is missing"));
    if (linkInfo.type != H5L_TYPE_HARD)
        throw StorageError(QStringLiteral("the array's dataset is a link to somewhere else"));
    return Owned(H5Dopen2(group, link.constData(), H5P_DEFAULT), &H5Dclose,
                 "the array's dataset can't be opened");
}

Hdf5Handle OpenDataset(const StoredFile& file, std::size_t row)
{
    const Row& entry = file.Structure().rows[row];
    return OpenDataset(file.Group(entry.parent), LinkName(file.Structure().Name(entry), entry.parent == 0));
}

Hdf5Handle CreationList(const Hdf5Handle& dataset)
{
    return Owned(H5Dget_create_plist(dataset.Id()), &H5Pclose, "the array's dataset can't be opened");
}

void ExpectTypeAndShape(const Hdf5Handle& dataset, const Hdf5Handle& type,
                        const std::vector<std::uint64_t>& dimensions)
{
    const Hdf5Handle stored = Owned(H5Dget_type(dataset.Id()), &H5Tclose, "the array's dataset has no type");
    if (H5Tequal(stored.Id(), type.Id()) <= 0)
        throw StorageError(QStringLiteral("the array's dataset hasn't the type that the catalogue tells"));
    const Hdf5Handle space = Owned(H5Dget_space(dataset.Id()), &H5Sclose, "the array's dataset has no shape");
    const int rank = H5Sget_simple_extent_ndims(space.Id());
    if (rank < 0)
        throw StorageError(QStringLiteral("the array's dataset has no shape"));
    std::vector<hsize_t> sizes(static_cast<std::size_t>(rank));
    H5Sget_simple_extent_dims(space.Id(), sizes.data(), nullptr);
    if (!std::equal(dimensions.begin(), dimensions.end(), sizes.begin(), sizes.end()))
        throw StorageError(QStringLiteral("the array's dataset hasn't the shape that the catalogue tells"));
}

// Where the bytes of a dataset lie that is stored in one piece in this file.
std::uint64_t ContiguousOffset(const StoredFile& file, const Hdf5Handle& dataset, std::uint64_t bytes)
{
    const Hdf5Handle creation = CreationList(dataset);
    if (H5Pget_layout(creation.Id()) != H5D_CONTIGUOUS || H5Pget_external_count(creation.Id()) != 0)
        throw StorageError(QStringLiteral("the array's dataset isn't stored in one piece in this file"));
    if (H5Dget_storage_size(dataset.Id()) != bytes)
        throw StorageError(QStringLiteral("the array's dataset hasn't the length that the catalogue tells"));
    const haddr_t offset = bytes != 0 ? H5Dget_offset(dataset.Id()) : 0;
    if (offset == HADDR_UNDEF)
        throw StorageError(QStringLiteral("the array's elements were never written"));
    const std::uint64_t length = file.Length();
    if (offset > length || bytes > length - offset)
        throw StorageError(QStringLiteral("the array reaches past the end of the file"));
    return offset;
}

// The record itself was tested with the catalogue, so a padded text's length comes out whole.
Hdf5Handle StoredType(std::uint16_t element, const ArrayRecord& record)
{
    if (record.layout == LayoutPackedText)
        return Hdf5Types::ForBytes();
    if (record.layout != LayoutPaddedText)
        return Hdf5Types::ForElement(element);
    std::uint64_t count = 1;
    for (const std::uint64_t size : record.dimensions)
        count *= size;
    return Hdf5Types::ForPaddedText(record.storedBytes / count);
}

std::uint64_t LocateInPool(const StoredFile& file, const ArrayRecord& record)
{
    const Hdf5Handle pool = OpenDataset(file.Group(0), QByteArray(PoolName));
    const hsize_t length = H5Dget_storage_size(pool.Id());
    const std::uint64_t offset = ContiguousOffset(file, pool, length);
    ExpectTypeAndShape(pool, Hdf5Types::ForBytes(), {length});
    if (record.poolOffset > length || record.storedBytes > length - record.poolOffset)
        throw StorageError(QStringLiteral("the array reaches past the end of the pool"));
    return offset + record.poolOffset;
}

// Any other filter may be a plug-in's, or ask for more memory than it gives back.
void ExpectShuffleAndDeflate(const Hdf5Handle& creation, std::uint64_t elementSize)
{
    const H5Z_filter_t expected[] = {H5Z_FILTER_SHUFFLE, H5Z_FILTER_DEFLATE};
    bool sound = H5Pget_nfilters(creation.Id()) == 2;
    for (unsigned i = 0; sound && i < 2; ++i) {
        unsigned flags = 0;
        unsigned values[1] = {};
        std::size_t valueCount = 1;
        const H5Z_filter_t filter =
            H5Pget_filter2(creation.Id(), i, &flags, &valueCount, values, 0, nullptr, nullptr);
        sound = filter == expected[i] && valueCount == 1 &&
                (filter != H5Z_FILTER_SHUFFLE || values[0] == elementSize);
    }
    if (!sound)
        throw StorageError(QStringLiteral("the array's dataset has other filters than shuffle and deflate"));
}

// Sizes of 1, then one of any size, then whole dimensions: a chunk is then a run of the elements.
bool IsRun(const std::vector<hsize_t>& chunk, const std::vector<std::uint64_t>& dimensions)
{
    std::size_t i = 0;
    while (i < chunk.size() && chunk[i] == 1)
        ++i;
    for (std::size_t j = i + 1; j < chunk.size(); ++j) {
        if (chunk[j] != dimensions[j])
            return false;
    }
    return true;
}

void ExpectSoundChunks(const std::vector<hsize_t>& chunk, const ArrayRecord& record,
                       std::uint64_t elementSize)
{
    std::uint64_t bytes = elementSize;
    for (const hsize_t size : chunk) {
        if (size == 0 || __builtin_mul_overflow(bytes, size, &bytes) || bytes > LongestChunk)
            throw StorageError(QStringLiteral("the array's chunks are too long"));
    }
    if (!IsRun(chunk, record.dimensions))
        throw StorageError(QStringLiteral("the array's chunks aren't runs of its elements"));
}

} // namespace

std::uint64_t Hdf5ArrayReader::Locate(const StoredFile& file, std::size_t row, const ArrayRecord& record)
{
    if (record.layout == LayoutPooled)
        return LocateInPool(file, record);
    const Hdf5Handle dataset = OpenDataset(file, row);
    const std::uint64_t offset = ContiguousOffset(file, dataset, record.storedBytes);
    const std::uint16_t element = file.Structure().rows[row].element;
    ExpectTypeAndShape(dataset, StoredType(element, record),
                       record.layout == LayoutPackedText ? std::vector<std::uint64_t>{record.storedBytes}
                                                         : record.dimensions);
    return offset;
}

Hdf5Handle Hdf5ArrayReader::OpenCompressed(const StoredFile& file, std::size_t row, const ArrayRecord& record,
                                           std::vector<hsize_t>* chunk)
{
    Hdf5Handle dataset = OpenDataset(file, row);
    const Hdf5Handle creation = CreationList(dataset);
    if (H5Pget_layout(creation.Id()) != H5D_CHUNKED || H5Pget_external_count(creation.Id()) != 0)
        throw StorageError(QStringLiteral("the array's dataset isn't stored in chunks in this file"));
    const std::uint16_t element = file.Structure().rows[row].element;
    const std::uint64_t elementSize = ElementTypes::Size(element);
    ExpectTypeAndShape(dataset, Hdf5Types::ForElement(element), record.dimensions);
    ExpectShuffleAndDeflate(creation, elementSize);
    chunk->resize(record.dimensions.size());
    if (H5Pget_chunk(creation.Id(), static_cast<int>(chunk->size()), chunk->data()) !=
        static_cast<int>(chunk->size()))
        throw StorageError(QStringLiteral("the array's dataset has no chunks"));
    ExpectSoundChunks(*chunk, record, elementSize);
    const std::uint64_t stored = H5Dget_storage_size(dataset.Id());
    if (stored > file.Length() || stored < record.storedBytes / MostDeflated)
        throw StorageError(QStringLiteral("the array is longer than what its chunks can hold"));
    return dataset;
}

} // namespace Orrery
