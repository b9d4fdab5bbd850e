#include "foundations/storage/Hdf5ArrayReader_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/variant/VariantOperations.h"

#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include <unistd.h>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;
using namespace CatalogueFormat;

namespace {

// A dataset of this library's making that is about to be read, and where its bytes lie.
struct StoredBytes
{
    Hdf5Handle type;
    std::vector<hsize_t> dimensions;
    std::uint64_t offset = 0;
};

StoredBytes Locate(hid_t group, const QByteArray& link, std::uint64_t storedBytes)
{
    H5L_info_t linkInfo;
    if (H5Lget_info(group, link.constData(), &linkInfo, H5P_DEFAULT) < 0)
        throw StorageError(QStringLiteral("the array's dataset is missing"));
    if (linkInfo.type != H5L_TYPE_HARD)
        throw StorageError(QStringLiteral("the array's dataset is a link to somewhere else"));
    const Hdf5Handle dataset = Owned(H5Dopen2(group, link.constData(), H5P_DEFAULT), &H5Dclose,
                                     "the array's dataset can't be opened");
    const Hdf5Handle creation =
        Owned(H5Dget_create_plist(dataset.Id()), &H5Pclose, "the array's dataset can't be opened");
    if (H5Pget_layout(creation.Id()) != H5D_CONTIGUOUS || H5Pget_external_count(creation.Id()) != 0)
        throw StorageError(QStringLiteral("the array's dataset isn't stored in one piece in this file"));

    StoredBytes stored;
    stored.type = Owned(H5Dget_type(dataset.Id()), &H5Tclose, "the array's dataset has no type");
    const Hdf5Handle space = Owned(H5Dget_space(dataset.Id()), &H5Sclose, "the array's dataset has no shape");
    const int rank = H5Sget_simple_extent_ndims(space.Id());
    if (rank < 0)
        throw StorageError(QStringLiteral("the array's dataset has no shape"));
    stored.dimensions.resize(static_cast<std::size_t>(rank));
    H5Sget_simple_extent_dims(space.Id(), stored.dimensions.data(), nullptr);
    if (H5Dget_storage_size(dataset.Id()) != storedBytes)
        throw StorageError(QStringLiteral("the array's dataset hasn't the length that the catalogue tells"));
    const haddr_t offset = storedBytes != 0 ? H5Dget_offset(dataset.Id()) : 0;
    if (offset == HADDR_UNDEF)
        throw StorageError(QStringLiteral("the array's elements were never written"));
    stored.offset = offset;
    return stored;
}

void ExpectShape(const StoredBytes& stored, const Hdf5Handle& type,
                 const std::vector<std::uint64_t>& dimensions)
{
    if (H5Tequal(stored.type.Id(), type.Id()) <= 0)
        throw StorageError(QStringLiteral("the array's dataset hasn't the type that the catalogue tells"));
    if (!std::equal(dimensions.begin(), dimensions.end(), stored.dimensions.begin(), stored.dimensions.end()))
        throw StorageError(QStringLiteral("the array's dataset hasn't the shape that the catalogue tells"));
}

void ExpectInFile(int fd, std::uint64_t offset, std::uint64_t bytes)
{
    const off_t end = ::lseek(fd, 0, SEEK_END);
    const auto length = end < 0 ? 0 : static_cast<std::uint64_t>(end);
    if (offset > length || bytes > length - offset)
        throw StorageError(QStringLiteral("the array reaches past the end of the file"));
}

// Block by block, each tested while it is still in the cache.
void ReadBytes(int fd, std::uint64_t offset, std::uint64_t bytes, const ArrayRecord& record, char* out)
{
    for (std::uint64_t at = 0; at < bytes; at += ChecksumBlock) {
        const std::uint64_t size = std::min(ChecksumBlock, bytes - at);
        for (std::uint64_t done = 0; done < size;) {
            const ssize_t got =
                ::pread(fd, out + at + done, size - done, static_cast<off_t>(offset + at + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                throw StorageError(QStringLiteral("the array can't be read: ") +
                                   (got < 0 ? QString::fromLocal8Bit(std::strerror(errno))
                                            : QStringLiteral("the file ends before it")));
            done += static_cast<std::uint64_t>(got);
        }
        if (XXH3_64bits(out + at, size) != record.checksums[at / ChecksumBlock])
            throw StorageError(QStringLiteral("the array is damaged: its checksum doesn't fit its bytes"));
    }
}

std::string ReadText(int fd, const StoredBytes& stored, const ArrayRecord& record)
{
    ExpectInFile(fd, stored.offset, record.storedBytes);
    std::string bytes(record.storedBytes, '\0');
    ReadBytes(fd, stored.offset, record.storedBytes, record, &bytes[0]);
    return bytes;
}

void Unpad(const std::string& bytes, std::uint64_t count, std::string* texts)
{
    const std::uint64_t length = count != 0 ? bytes.size() / count : 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t size = length;
        while (size > 0 && bytes[i * length + size - 1] == '\0')
            --size;
        texts[i].assign(bytes, i * length, size);
    }
}

void Unpack(const std::string& bytes, std::uint64_t count, std::string* texts)
{
    std::uint64_t at = count * sizeof(std::uint64_t);
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t size = 0;
        std::memcpy(&size, bytes.data() + i * sizeof size, sizeof size);
        if (size > bytes.size() - at)
            throw StorageError(QStringLiteral("the array's texts are longer than its dataset"));
        texts[i].assign(bytes, at, size);
        at += size;
    }
    if (at != bytes.size())
        throw StorageError(QStringLiteral("the array's texts are shorter than its dataset"));
}

} // namespace

BVariant Hdf5ArrayReader::Read(int fd, hid_t group, const QByteArray& link, std::uint16_t element,
                               bool columnMajor, const ArrayRecord& record)
{
    const DataOrdering ordering = columnMajor ? DataOrdering::ColumnMajor : DataOrdering::RowMajor;
    const WellKnownType type(element);
    if (record.layout == LayoutNone)
        return createArray(type, record.dimensions, ordering);

    const StoredBytes stored = Locate(group, link, record.storedBytes);
    std::string text;
    if (record.layout == LayoutPlain) {
        ExpectShape(stored, Hdf5Types::ForElement(element), record.dimensions);
        ExpectInFile(fd, stored.offset, record.storedBytes);
    } else if (record.layout == LayoutPaddedText) {
        ExpectShape(stored,
                    Hdf5Types::ForPaddedText(std::max<std::uint64_t>(H5Tget_size(stored.type.Id()), 1)),
                    record.dimensions);
        text = ReadText(fd, stored, record);
    } else {
        ExpectShape(stored, Hdf5Types::ForBytes(), {record.storedBytes});
        text = ReadText(fd, stored, record);
    }

    BVariant array = createUninitializedArray(type, record.dimensions, DataOrdering::RowMajor);
    const std::uint64_t count = array.elementCount();
    if (count != 0 && record.layout == LayoutPlain) {
        auto* const out = static_cast<char*>(array.mutableData());
        ReadBytes(fd, stored.offset, record.storedBytes, record, out);
        if (!ElementTypes::AreSound(element, out, count))
            throw StorageError(QStringLiteral("a truth value is neither 0 nor 1"));
    } else if (record.layout == LayoutPaddedText) {
        Unpad(text, count, static_cast<std::string*>(array.mutableData()));
    } else if (record.layout == LayoutPackedText) {
        Unpack(text, count, static_cast<std::string*>(array.mutableData()));
    }
    return array.reordered(ordering);
}
} // namespace Orrery
