#include "foundations/storage/Hdf5ArrayWriter_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5Folders_p.h"
#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/variant/VariantOperations.h"

#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
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
} // namespace

ArrayRecord Hdf5ArrayWriter::Write(hid_t group, const QByteArray& link, const BVariant& array)
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
} // namespace Orrery
