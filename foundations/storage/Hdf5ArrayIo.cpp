#include "foundations/storage/Hdf5ArrayIo_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/NameCodec_p.h"
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

// Longer texts, or ones of very uneven length, are stored end to end: a fixed length would waste more than it
// helps.
constexpr std::uint64_t s_longestPaddedText = std::uint64_t(64) * 1024;
constexpr std::uint64_t s_worthPadding = 4;
constexpr std::uint64_t s_alwaysPadded = std::uint64_t(64) * 1024;

std::vector<std::uint64_t> Dimensions(const BVariant& value)
{
    const auto view = value.getDimensions();
    return std::vector<std::uint64_t>(view.begin(), view.end());
}

Hdf5Handle Owned(hid_t id, Hdf5Handle::Closer closer, const char* what)
{
    if (id < 0)
        throw StorageError(QString::fromLatin1(what) + QStringLiteral(": ") + Hdf5Session::LastError());
    return Hdf5Handle(id, closer);
}

Hdf5Handle Space(const std::vector<hsize_t>& dimensions)
{
    return Owned(H5Screate_simple(static_cast<int>(dimensions.size()), dimensions.data(), nullptr), &H5Sclose,
                 "the array's shape can't be stored");
}

Hdf5Handle ContiguousDataset()
{
    Hdf5Handle list = Owned(H5Pcreate(H5P_DATASET_CREATE), &H5Pclose, "HDF5 is out of order");
    H5Pset_layout(list.Id(), H5D_CONTIGUOUS);
    H5Pset_fill_time(list.Id(), H5D_FILL_TIME_NEVER); // every element is written
    H5Pset_obj_track_times(list.Id(), false);         // the same tree gives the same bytes
    return list;
}

Hdf5Handle Utf8Links()
{
    Hdf5Handle list = Owned(H5Pcreate(H5P_LINK_CREATE), &H5Pclose, "HDF5 is out of order");
    H5Pset_char_encoding(list.Id(), H5T_CSET_UTF8);
    return list;
}

std::vector<std::uint64_t> Checksums(const char* data, std::uint64_t bytes)
{
    std::vector<std::uint64_t> checksums;
    for (std::uint64_t at = 0; at < bytes; at += ChecksumBlock)
        checksums.push_back(XXH3_64bits(data + at, std::min(ChecksumBlock, bytes - at)));
    return checksums;
}

void WriteDataset(hid_t group, const QByteArray& link, const Hdf5Handle& type,
                  const std::vector<hsize_t>& dimensions, const void* data, bool isEmpty)
{
    const Hdf5Handle space = Space(dimensions);
    const Hdf5Handle creation = ContiguousDataset();
    const Hdf5Handle links = Utf8Links();
    Hdf5Handle dataset = Owned(
        H5Dcreate2(group, link.constData(), type.Id(), space.Id(), links.Id(), creation.Id(), H5P_DEFAULT),
        &H5Dclose, "the array can't be written");
    if (!isEmpty && H5Dwrite(dataset.Id(), type.Id(), H5S_ALL, H5S_ALL, H5P_DEFAULT, data) < 0)
        throw StorageError(QStringLiteral("the array can't be written: ") + Hdf5Session::LastError());
    if (!dataset.Close())
        throw StorageError(QStringLiteral("the array can't be written: ") + Hdf5Session::LastError());
}

struct TextSizes
{
    std::uint64_t total = 0;
    std::uint64_t longest = 0;
    bool endsWithNul = false;
};

TextSizes Measure(const std::string* texts, std::uint64_t count)
{
    TextSizes sizes;
    for (const std::string* text = texts; text != texts + count; ++text) {
        sizes.total += text->size();
        sizes.longest = std::max<std::uint64_t>(sizes.longest, text->size());
        sizes.endsWithNul = sizes.endsWithNul || (!text->empty() && text->back() == '\0');
    }
    return sizes;
}

bool IsWorthPadding(const TextSizes& sizes, std::uint64_t count)
{
    if (sizes.endsWithNul || sizes.longest > s_longestPaddedText)
        return false;
    const std::uint64_t padded = sizes.longest * count; // both small enough after the test above
    return padded <= s_alwaysPadded || padded / s_worthPadding <= sizes.total;
}

std::string Pad(const std::string* texts, std::uint64_t count, std::uint64_t length)
{
    std::string bytes(count * length, '\0');
    for (std::uint64_t i = 0; i < count; ++i)
        std::copy(texts[i].begin(), texts[i].end(), bytes.begin() + static_cast<std::ptrdiff_t>(i * length));
    return bytes;
}

std::string Pack(const std::string* texts, std::uint64_t count, std::uint64_t total)
{
    std::string bytes;
    bytes.reserve(count * sizeof(std::uint64_t) + total);
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t size = texts[i].size();
        bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    }
    for (std::uint64_t i = 0; i < count; ++i)
        bytes.append(texts[i]);
    return bytes;
}

void WriteText(hid_t group, const QByteArray& link, const std::vector<hsize_t>& dimensions,
               const std::string* texts, std::uint64_t count, ArrayRecord* record)
{
    const TextSizes sizes = Measure(texts, count);
    std::string bytes;
    if (IsWorthPadding(sizes, count)) {
        const std::uint64_t length = std::max<std::uint64_t>(sizes.longest, 1);
        bytes = Pad(texts, count, length);
        record->layout = LayoutPaddedText;
        WriteDataset(group, link, Hdf5Types::ForPaddedText(length), dimensions, bytes.data(), count == 0);
    } else {
        bytes = Pack(texts, count, sizes.total);
        record->layout = LayoutPackedText;
        WriteDataset(group, link, Hdf5Types::ForBytes(), {bytes.size()}, bytes.data(), false);
    }
    record->storedBytes = bytes.size();
    record->checksums = Checksums(bytes.data(), bytes.size());
}

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

ArrayRecord Hdf5ArrayIo::Write(hid_t group, const QByteArray& link, const BVariant& array)
{
    ArrayRecord record;
    record.dimensions = Dimensions(array);
    if (record.dimensions.empty())
        return record;
    if (record.dimensions.size() > H5S_MAX_RANK)
        throw StorageError(QStringLiteral("an array of more than 32 dimensions can't be saved"));

    const BVariant rowMajor = array.reordered(DataOrdering::RowMajor);
    const std::uint16_t element = rowMajor.getWellKnownType().code();
    const std::uint64_t count = rowMajor.elementCount();
    const std::vector<hsize_t> dimensions(record.dimensions.begin(), record.dimensions.end());
    if (element == ElementTypes::TextCode) {
        const auto* const texts =
            count != 0 ? static_cast<const std::string*>(rowMajor.constData()) : nullptr;
        WriteText(group, link, dimensions, texts, count, &record);
        return record;
    }
    const void* const data = count != 0 ? rowMajor.constData() : nullptr;
    record.layout = LayoutPlain;
    record.storedBytes = count * ElementTypes::Size(element);
    WriteDataset(group, link, Hdf5Types::ForElement(element), dimensions, data, count == 0);
    record.checksums = Checksums(static_cast<const char*>(data), record.storedBytes);
    return record;
}

BVariant Hdf5ArrayIo::Read(int fd, hid_t group, const QByteArray& link, std::uint16_t element,
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
    return Owned(H5Gopen2(parent, link.constData(), H5P_DEFAULT), &H5Gclose,
                 "the array's group can't be opened");
}

} // namespace Orrery
