#include "foundations/storage/Hdf5ArrayWriter_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5ArrayReader_p.h"
#include "foundations/storage/Hdf5Folders_p.h"
#include "foundations/storage/Hdf5Types_p.h"
#include "foundations/storage/LazyArray_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/variant/VariantOperations.h"

#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>
#include <string>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using namespace CatalogueFormat;

namespace {

constexpr std::uint64_t s_kibibyte = 1024;

// Longer texts, or ones of very uneven length, are stored end to end: a fixed length would waste more than it
// helps.
constexpr std::uint64_t s_longestPaddedText = 64 * s_kibibyte;
constexpr std::uint64_t s_worthPadding = 4;
constexpr std::uint64_t s_alwaysPadded = 64 * s_kibibyte;

// Below, the index of the chunks and the call for each array cost more than the disk space is worth.
constexpr std::uint64_t s_worthCompressing = 64 * s_kibibyte;
constexpr std::uint64_t s_chunk = 1024 * s_kibibyte;

// A dataset costs as much time as some ten thousands of bytes, and a longer array doesn't feel it.
constexpr std::uint64_t s_longestPooled = 256 * s_kibibyte;
constexpr std::uint64_t s_poolBuffer = 1024 * s_kibibyte;

[[noreturn]] void CannotWrite()
{
    throw StorageError(QStringLiteral("the array can't be written: ") + Hdf5Session::LastError());
}

Hdf5Handle ContiguousDataset()
{
    Hdf5Handle list = Owned(H5Pcreate(H5P_DATASET_CREATE), &H5Pclose, "HDF5 is out of order");
    H5Pset_layout(list.Id(), H5D_CONTIGUOUS);
    H5Pset_alloc_time(list.Id(), H5D_ALLOC_TIME_EARLY); // the elements are written to their place directly
    H5Pset_fill_time(list.Id(), H5D_FILL_TIME_NEVER);   // every element is written
    H5Pset_obj_track_times(list.Id(), false);           // the same tree gives the same bytes
    return list;
}

Hdf5Handle CompressedDataset(const std::vector<hsize_t>& chunk, int level)
{
    Hdf5Handle list = Owned(H5Pcreate(H5P_DATASET_CREATE), &H5Pclose, "HDF5 is out of order");
    H5Pset_fill_time(list.Id(), H5D_FILL_TIME_NEVER);
    H5Pset_obj_track_times(list.Id(), false);
    if (H5Pset_chunk(list.Id(), static_cast<int>(chunk.size()), chunk.data()) < 0 ||
        H5Pset_shuffle(list.Id()) < 0 || H5Pset_deflate(list.Id(), static_cast<unsigned int>(level)) < 0)
        throw StorageError(QStringLiteral("the array can't be compressed: ") + Hdf5Session::LastError());
    return list;
}

// A chunk is a run of the row-major elements: sizes of 1, then one that brings it to its length, then whole
// dimensions. So each goes through the filters as it lies in memory.
std::vector<hsize_t> ChunkOf(const std::vector<hsize_t>& dimensions, std::uint64_t elementSize)
{
    std::vector<hsize_t> chunk = dimensions;
    std::uint64_t inner = std::accumulate(dimensions.begin(), dimensions.end(), elementSize,
                                          [](std::uint64_t a, std::uint64_t b) { return a * b; });
    for (hsize_t& size : chunk) {
        inner /= size;
        size = inner >= s_chunk ? 1 : std::min<hsize_t>(size, (s_chunk + inner - 1) / inner);
        if (inner < s_chunk)
            break;
    }
    return chunk;
}

std::uint64_t Checksum(const char* data, std::uint64_t bytes)
{
    return XXH3_64bits(data, bytes);
}

std::vector<std::uint64_t> Checksums(const char* data, std::uint64_t bytes)
{
    std::vector<std::uint64_t> checksums;
    for (std::uint64_t at = 0; at < bytes; at += ChecksumBlock)
        checksums.push_back(Checksum(data + at, std::min(ChecksumBlock, bytes - at)));
    return checksums;
}

std::uint64_t AddressOf(hid_t dataset)
{
    const haddr_t address = H5Dget_offset(dataset);
    if (address == HADDR_UNDEF)
        CannotWrite();
    return address;
}

const std::string* TextsOf(const BVariant& value)
{
    return value.elementCount() != 0 ? static_cast<const std::string*>(value.constData()) : nullptr;
}

// Row-major elements; null for none.
const char* BytesOf(const BVariant& rowMajor)
{
    return rowMajor.elementCount() != 0 ? static_cast<const char*>(rowMajor.constData()) : nullptr;
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

std::uint64_t TextWeight(const BVariant& value)
{
    const BVariant& texts = value;
    return Measure(TextsOf(texts), texts.elementCount()).total;
}

std::uint64_t WeightOf(const BVariant& value, std::uint16_t element)
{
    return element == ElementTypes::TextCode ? TextWeight(value)
                                             : value.elementCount() * ElementTypes::Size(element);
}

// What stands in memory or in another file, piece by piece, in row-major order.
const char* Piece(const StoredArray* stored, const char* data, std::uint64_t at, std::uint64_t size,
                  std::vector<char>* buffer)
{
    if (!stored)
        return data + at;
    buffer->resize(size);
    // A compressed source must be unpacked, which finds what is damaged; other bytes are taken as they are.
    if (stored->Record().layout == LayoutCompressed)
        stored->ReadRun(at, size, buffer->data());
    else
        stored->File().ReadBytes(stored->Offset() + at, size, buffer->data());
    return buffer->data();
}

struct Chunk
{
    std::vector<hsize_t> start; ///< its first element
    std::vector<hsize_t> count; ///< its elements that belong to the array
    std::uint64_t first = 0;    ///< the byte of the row-major elements that it begins with
    std::uint64_t bytes = 0;
};

// All chunks in the order of their elements, none of which is divided by two dimensions; see ChunkOf.
void ForEachChunk(const std::vector<hsize_t>& dimensions, const std::vector<hsize_t>& chunk,
                  std::uint64_t elementSize, const std::function<void(const Chunk&)>& action)
{
    std::size_t split = 0; // the dimension that a chunk takes a part of
    while (split + 1 < chunk.size() && chunk[split] == 1)
        ++split;
    std::uint64_t inner = elementSize;
    for (std::size_t i = split + 1; i < dimensions.size(); ++i)
        inner *= dimensions[i];

    Chunk part;
    part.start.assign(dimensions.size(), 0);
    part.count = chunk;
    while (part.start[0] < dimensions[0]) {
        part.count[split] = std::min(chunk[split], dimensions[split] - part.start[split]);
        part.bytes = part.count[split] * inner;
        action(part);
        part.first += part.bytes;
        part.start[split] += part.count[split];
        for (std::size_t i = split; i > 0 && part.start[i] >= dimensions[i]; --i) {
            part.start[i] = 0;
            ++part.start[i - 1];
        }
    }
}

// Whether a dataset's chunks went through the same filters as CompressedDataset asks for.
bool IsCompressedAt(hid_t dataset, int level)
{
    const Hdf5Handle list = Owned(H5Dget_create_plist(dataset), &H5Pclose, "the array can't be read");
    unsigned int flags = 0;
    unsigned int setting = 0;
    std::size_t settings = 0;
    const auto filter = [&](unsigned int number) {
        return H5Pget_filter2(list.Id(), number, &flags, &settings, &setting, 0, nullptr, nullptr);
    };
    if (H5Pget_nfilters(list.Id()) != 2 || filter(0) != H5Z_FILTER_SHUFFLE)
        return false;
    settings = 1;
    return filter(1) == H5Z_FILTER_DEFLATE && setting == static_cast<unsigned int>(level);
}

// For texts in memory it isn't decided yet how they are stored; padded stands for both.
Layout LayoutOf(const ArrayRecord& record, std::uint16_t element, const SaveOptions& options)
{
    if (element == ElementTypes::TextCode)
        return record.layout == LayoutPackedText ? LayoutPackedText : LayoutPaddedText;
    if (options.packed && record.storedBytes != 0 && record.storedBytes <= s_longestPooled)
        return LayoutPooled;
    if (options.compressionLevel > 0 && record.storedBytes >= s_worthCompressing)
        return LayoutCompressed;
    return LayoutPlain;
}

} // namespace

Hdf5ArrayWriter::Source::Source(const BVariant& value)
    : m_value(value)
    , m_stored(LazyArray::Unread(value))
    , m_element(value.getWellKnownType().code())
    , m_weight(m_stored ? m_stored->Record().storedBytes : WeightOf(value, m_element))
{
}

Hdf5ArrayWriter::Hdf5ArrayWriter(hid_t file, Hdf5WriteDriver* driver, const SaveOptions& options,
                                 SaveMeter* meter)
    : m_file(file)
    , m_driver(driver)
    , m_options(options)
    , m_meter(meter)
    , m_links(Utf8Links())
    , m_contiguous(ContiguousDataset())
{
}

ArrayRecord Hdf5ArrayWriter::RecordOf(const Source& source, const SaveOptions& options)
{
    ArrayRecord record;
    if (source.m_stored) {
        record = source.m_stored->Record();
        record.poolOffset = 0;
    } else {
        const auto view = source.m_value.getDimensions();
        record.dimensions.assign(view.begin(), view.end());
        record.storedBytes = source.m_weight;
    }
    record.layout = record.dimensions.empty() ? LayoutNone : LayoutOf(record, source.m_element, options);
    return record;
}

bool Hdf5ArrayWriter::IsPooled(const Source& source, const SaveOptions& options)
{
    return options.packed && RecordOf(source, options).layout == LayoutPooled;
}

hid_t Hdf5ArrayWriter::ElementType(std::uint16_t element)
{
    auto found = m_types.find(element);
    if (found == m_types.end())
        found = m_types.emplace(element, Hdf5Types::ForElement(element)).first;
    return found->second.Id();
}

Hdf5Handle Hdf5ArrayWriter::Make(hid_t group, const QByteArray& link, hid_t type,
                                 const Dimensions& dimensions, const Hdf5Handle& creation) const
{
    const Hdf5Handle space =
        Owned(H5Screate_simple(static_cast<int>(dimensions.size()), dimensions.data(), nullptr), &H5Sclose,
              "the array's shape can't be stored");
    return Owned(
        H5Dcreate2(group, link.constData(), type, space.Id(), m_links.Id(), creation.Id(), H5P_DEFAULT),
        &H5Dclose, "the array can't be written");
}

// Block by block, each written while it is still in the cache.
void Hdf5ArrayWriter::Fill(hid_t dataset, const char* data, std::uint64_t bytes, std::uint64_t weight,
                           ArrayRecord* record)
{
    record->storedBytes = bytes;
    record->checksums.clear();
    const std::uint64_t address = bytes != 0 ? AddressOf(dataset) : 0;
    for (std::uint64_t at = 0; at < bytes; at += ChecksumBlock) {
        const std::uint64_t size = std::min(ChecksumBlock, bytes - at);
        record->checksums.push_back(Checksum(data + at, size));
        m_driver->Write(address + at, data + at, size);
        m_meter->Advance(size * weight / bytes); // texts take more bytes than they count for
    }
}

void Hdf5ArrayWriter::CopyFrom(const StoredArray& stored, hid_t dataset, const ArrayRecord& record)
{
    if (record.storedBytes == 0)
        return;
    const std::uint64_t address = AddressOf(dataset);
    const bool inPlace = stored.Record().layout != LayoutCompressed;
    const std::uint64_t offset = inPlace ? stored.Offset() : 0;
    std::vector<char> buffer(inPlace ? 0 : std::min(ChecksumBlock, record.storedBytes));
    for (std::uint64_t at = 0; at < record.storedBytes; at += ChecksumBlock) {
        const std::uint64_t size = std::min(ChecksumBlock, record.storedBytes - at);
        if (inPlace) {
            m_driver->Copy(stored.File().Descriptor(), offset + at, address + at, size);
        } else {
            stored.ReadBlock(at / ChecksumBlock, buffer.data());
            m_driver->Write(address + at, buffer.data(), size);
        }
        m_meter->Advance(size);
    }
}

ArrayRecord Hdf5ArrayWriter::Write(hid_t group, const QByteArray& link, const Source& source,
                                   Hdf5Handle* dataset)
{
    ArrayRecord record = RecordOf(source, m_options);
    if (record.layout == LayoutNone)
        return record;
    if (record.dimensions.size() > H5S_MAX_RANK)
        throw StorageError(QStringLiteral("an array of more than 32 dimensions can't be saved"));
    const Dimensions dimensions(record.dimensions.begin(), record.dimensions.end());
    if (source.m_element == ElementTypes::TextCode) {
        *dataset = WriteText(group, link, source, &record);
        return record;
    }
    if (record.layout == LayoutCompressed) {
        *dataset = WriteCompressed(group, link, source, dimensions, &record);
        return record;
    }
    *dataset = Make(group, link, ElementType(source.m_element), dimensions, m_contiguous);
    if (source.m_stored) {
        CopyFrom(*source.m_stored, dataset->Id(), record);
    } else {
        const BVariant rowMajor = source.m_value.reordered(DataOrdering::RowMajor);
        Fill(dataset->Id(), BytesOf(rowMajor), record.storedBytes, record.storedBytes, &record);
    }
    return record;
}

Hdf5Handle Hdf5ArrayWriter::WriteText(hid_t group, const QByteArray& link, const Source& source,
                                      ArrayRecord* record)
{
    const Dimensions dimensions(record->dimensions.begin(), record->dimensions.end());
    const std::uint64_t count = source.m_value.elementCount();
    const auto make = [&](std::uint64_t bytes) {
        if (record->layout == LayoutPackedText)
            return Make(group, link, Hdf5Types::ForBytes().Id(), {bytes}, m_contiguous);
        const std::uint64_t length = count != 0 ? std::max<std::uint64_t>(bytes / count, 1) : 1;
        return Make(group, link, Hdf5Types::ForPaddedText(length).Id(), dimensions, m_contiguous);
    };
    if (source.m_stored) {
        Hdf5Handle dataset = make(record->storedBytes);
        CopyFrom(*source.m_stored, dataset.Id(), *record);
        return dataset;
    }
    const BVariant rowMajor = source.m_value.reordered(DataOrdering::RowMajor);
    const std::string* const texts = TextsOf(rowMajor);
    const TextSizes sizes = Measure(texts, count);
    const bool padded = IsWorthPadding(sizes, count);
    record->layout = padded ? LayoutPaddedText : LayoutPackedText;
    const std::string bytes = padded ? Pad(texts, count, std::max<std::uint64_t>(sizes.longest, 1))
                                     : Pack(texts, count, sizes.total);
    Hdf5Handle dataset = make(bytes.size());
    Fill(dataset.Id(), bytes.data(), bytes.size(), source.m_weight, record);
    return dataset;
}

Hdf5Handle Hdf5ArrayWriter::WriteCompressed(hid_t group, const QByteArray& link, const Source& source,
                                            const Dimensions& dimensions, ArrayRecord* record)
{
    const hid_t type = ElementType(source.m_element);
    Dimensions chunk;
    if (source.m_stored && source.m_stored->Record().layout == LayoutCompressed) {
        const StoredArray& stored = *source.m_stored;
        const Hdf5Handle from =
            Hdf5ArrayReader::OpenCompressed(stored.File(), stored.RowIndex(), stored.Record(), &chunk);
        if (IsCompressedAt(from.Id(), m_options.compressionLevel)) {
            Hdf5Handle dataset =
                Make(group, link, type, dimensions, CompressedDataset(chunk, m_options.compressionLevel));
            CopyChunks(from.Id(), dataset.Id(), dimensions, chunk, source);
            return dataset;
        }
    }
    chunk = ChunkOf(dimensions, ElementTypes::Size(source.m_element));
    Hdf5Handle dataset =
        Make(group, link, type, dimensions, CompressedDataset(chunk, m_options.compressionLevel));
    if (source.m_stored) {
        WriteChunks(dataset.Id(), type, dimensions, chunk, source, nullptr);
        return dataset;
    }
    const BVariant rowMajor = source.m_value.reordered(DataOrdering::RowMajor);
    const char* const data = BytesOf(rowMajor);
    record->checksums = Checksums(data, record->storedBytes);
    WriteChunks(dataset.Id(), type, dimensions, chunk, source, data);
    return dataset;
}

void Hdf5ArrayWriter::WriteChunks(hid_t dataset, hid_t type, const Dimensions& dimensions,
                                  const Dimensions& chunk, const Source& source, const char* data)
{
    const Hdf5Handle space = Owned(H5Dget_space(dataset), &H5Sclose, "the array can't be written");
    std::vector<char> buffer;
    ForEachChunk(dimensions, chunk, ElementTypes::Size(source.m_element), [&](const Chunk& part) {
        const char* const piece = Piece(source.m_stored.get(), data, part.first, part.bytes, &buffer);
        const Hdf5Handle run =
            Owned(H5Screate_simple(static_cast<int>(part.count.size()), part.count.data(), nullptr),
                  &H5Sclose, "the array can't be written");
        if (H5Sselect_hyperslab(space.Id(), H5S_SELECT_SET, part.start.data(), nullptr, part.count.data(),
                                nullptr) < 0 ||
            H5Dwrite(dataset, type, run.Id(), space.Id(), H5P_DEFAULT, piece) < 0)
            CannotWrite();
        m_meter->Advance(part.bytes);
    });
}

// As they went through the filters: quicker, and what is damaged stays what it is.
void Hdf5ArrayWriter::CopyChunks(hid_t from, hid_t to, const Dimensions& dimensions, const Dimensions& chunk,
                                 const Source& source)
{
    std::vector<char> buffer;
    ForEachChunk(dimensions, chunk, ElementTypes::Size(source.m_element), [&](const Chunk& part) {
        hsize_t size = 0;
        if (H5Dget_chunk_storage_size(from, part.start.data(), &size) < 0 || size == 0)
            throw StorageError(QStringLiteral("the array's elements were never written"));
        if (size > 2 * LongestChunk)
            throw StorageError(QStringLiteral("the array is damaged: one of its chunks is too long"));
        buffer.resize(size);
        std::uint32_t mask = 0;
        if (H5Dread_chunk(from, H5P_DEFAULT, part.start.data(), &mask, buffer.data()) < 0)
            throw StorageError(QStringLiteral("the array can't be read: ") + Hdf5Session::LastError());
        if (H5Dwrite_chunk(to, H5P_DEFAULT, mask, part.start.data(), size, buffer.data()) < 0)
            CannotWrite();
        m_meter->Advance(part.bytes);
    });
}

void Hdf5ArrayWriter::MakePool(std::uint64_t bytes)
{
    const Hdf5Handle type = Hdf5Types::ForBytes();
    const Hdf5Handle dataset = Make(m_file, PoolName, type.Id(), {bytes}, m_contiguous);
    m_poolAddress = AddressOf(dataset.Id());
    m_poolBuffer.reserve(s_poolBuffer + s_longestPooled);
}

ArrayRecord Hdf5ArrayWriter::WritePooled(const Source& source)
{
    ArrayRecord record = RecordOf(source, m_options);
    if (record.dimensions.size() > H5S_MAX_RANK)
        throw StorageError(QStringLiteral("an array of more than 32 dimensions can't be saved"));
    record.poolOffset = m_poolLength;
    const std::size_t before = m_poolBuffer.size();
    m_poolBuffer.resize(before + record.storedBytes);
    char* const place = m_poolBuffer.data() + before;
    if (source.m_stored) {
        std::vector<char> buffer;
        std::memcpy(place, Piece(source.m_stored.get(), nullptr, 0, record.storedBytes, &buffer),
                    record.storedBytes);
    } else {
        const BVariant rowMajor = source.m_value.reordered(DataOrdering::RowMajor);
        std::memcpy(place, BytesOf(rowMajor), record.storedBytes);
        record.checksums = Checksums(place, record.storedBytes);
    }
    m_poolLength += record.storedBytes;
    m_meter->Advance(record.storedBytes);
    if (m_poolBuffer.size() >= s_poolBuffer)
        FlushPool();
    return record;
}

void Hdf5ArrayWriter::FlushPool()
{
    m_driver->Write(m_poolAddress, m_poolBuffer.data(), m_poolBuffer.size());
    m_poolAddress += m_poolBuffer.size();
    m_poolBuffer.clear();
}

} // namespace Orrery
