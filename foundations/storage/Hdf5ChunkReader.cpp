#include "foundations/storage/Hdf5ChunkReader_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/Hdf5ArrayReader_p.h"
#include "foundations/storage/StorageError_p.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>

namespace Orrery {

namespace {

// Bits of a chunk's mask: which of the two filters were left out.
constexpr std::uint32_t s_withoutShuffle = 1;
constexpr std::uint32_t s_withoutDeflate = 2;

[[noreturn]] void FailDamaged()
{
    throw StorageError(QStringLiteral("the array is damaged: one of its chunks can't be decompressed"));
}

template <std::size_t Size>
void UnshuffleElements(const unsigned char* from, std::uint64_t count, unsigned char* to)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        for (std::size_t byte = 0; byte < Size; ++byte)
            to[i * Size + byte] = from[byte * count + i];
    }
}

// Shuffled, the first bytes of all elements come first, then all second bytes and so on.
void Unshuffle(const std::vector<unsigned char>& from, std::uint64_t elementSize,
               std::vector<unsigned char>* to)
{
    const std::uint64_t count = from.size() / elementSize;
    switch (elementSize) {
    case 2:
        return UnshuffleElements<2>(from.data(), count, to->data());
    case 4:
        return UnshuffleElements<4>(from.data(), count, to->data());
    case 8:
        return UnshuffleElements<8>(from.data(), count, to->data());
    case 16:
        return UnshuffleElements<16>(from.data(), count, to->data());
    default:
        std::copy(from.begin(), from.end(), to->begin());
    }
}

} // namespace

Hdf5ChunkReader::Hdf5ChunkReader(const StoredFile& file, std::size_t row, const ArrayRecord& record)
    : m_dataset(Hdf5ArrayReader::OpenCompressed(file, row, record, &m_chunk))
    , m_dimensions(record.dimensions)
    , m_elementSize(ElementTypes::Size(file.Structure().rows[row].element))
    , m_chunkBytes(std::accumulate(m_chunk.begin(), m_chunk.end(), m_elementSize, std::multiplies<>()))
    , m_loaded(UINT64_MAX)
{
    while (m_axis + 1 < m_chunk.size() && m_chunk[m_axis] == 1)
        ++m_axis;
}

Hdf5ChunkReader::Place Hdf5ChunkReader::PlaceOf(std::uint64_t byte) const
{
    // Bytes of one position of the divided dimension, and of one position of those before it.
    const std::uint64_t step = m_chunkBytes / m_chunk[m_axis];
    const std::uint64_t plane = step * m_dimensions[m_axis];
    const std::uint64_t start = byte % plane / m_chunkBytes * m_chunkBytes;
    Place place;
    place.first = byte / plane * plane + start;
    place.size = std::min(m_chunkBytes, plane - start);
    place.origin.assign(m_chunk.size(), 0);
    place.origin[m_axis] = start / step;
    std::uint64_t outer = byte / plane;
    for (std::size_t i = m_axis; i-- > 0;) {
        place.origin[i] = outer % m_dimensions[i];
        outer /= m_dimensions[i];
    }
    return place;
}

void Hdf5ChunkReader::Load(const Place& place)
{
    hsize_t size = 0;
    if (H5Dget_chunk_storage_size(m_dataset.Id(), place.origin.data(), &size) < 0 || size == 0)
        throw StorageError(QStringLiteral("the array's elements were never written"));
    if (size > compressBound(static_cast<uLong>(m_chunkBytes)))
        FailDamaged();
    m_loaded = UINT64_MAX;
    m_stored.resize(size);
    m_shuffled.resize(m_chunkBytes);
    m_elements.resize(m_chunkBytes);
    std::uint32_t mask = 0;
    if (H5Dread_chunk(m_dataset.Id(), H5P_DEFAULT, place.origin.data(), &mask, m_stored.data()) < 0)
        throw StorageError(QStringLiteral("the array can't be read: ") + Hdf5Session::LastError());

    if ((mask & s_withoutDeflate) == 0) {
        auto length = static_cast<uLongf>(m_chunkBytes);
        if (uncompress(m_shuffled.data(), &length, m_stored.data(), static_cast<uLong>(size)) != Z_OK ||
            length != m_chunkBytes)
            FailDamaged();
    } else if (size == m_chunkBytes) {
        m_shuffled.swap(m_stored);
    } else {
        FailDamaged();
    }
    if ((mask & s_withoutShuffle) == 0)
        Unshuffle(m_shuffled, m_elementSize, &m_elements);
    else
        m_shuffled.swap(m_elements);
    m_loaded = place.first;
}

void Hdf5ChunkReader::Read(std::uint64_t first, std::uint64_t size, char* out)
{
    while (size != 0) {
        const Place place = PlaceOf(first);
        if (m_loaded != place.first)
            Load(place);
        const std::uint64_t skipped = first - place.first;
        const std::uint64_t part = std::min(size, place.size - skipped);
        std::memcpy(out, m_elements.data() + skipped, part);
        first += part;
        out += part;
        size -= part;
    }
}

} // namespace Orrery
