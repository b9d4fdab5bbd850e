#include "foundations/storage/StoredArray_p.h"

#include "foundations/storage/Hdf5ArrayReader_p.h"
#include "foundations/storage/Hdf5ChunkReader_p.h"
#include "foundations/storage/StorageError_p.h"

#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace Orrery {

using namespace CatalogueFormat;

StoredArray::StoredArray(std::shared_ptr<const StoredFile> file, std::size_t row)
    : m_file(std::move(file))
    , m_row(row)
    , m_record(m_file->Structure().Array(m_file->Structure().rows[row]))
{
}

std::uint16_t StoredArray::Element() const
{
    return m_file->Structure().rows[m_row].element;
}

bool StoredArray::IsColumnMajor() const
{
    return m_file->Structure().rows[m_row].ordering != 0;
}

bool StoredArray::IsCompressed() const
{
    return m_record.layout == LayoutCompressed;
}

QString StoredArray::Describe(const QString& what) const
{
    return m_file->Path() + QStringLiteral(": ") + m_file->Structure().Path(m_row) + QStringLiteral(": ") +
           what;
}

void StoredArray::Locate() const
{
    if (m_located.load(std::memory_order_acquire))
        return;
    const Hdf5Session session;
    if (m_located.load(std::memory_order_relaxed))
        return;
    if (IsCompressed())
        Hdf5ChunkReader(*m_file, m_row, m_record);
    else
        m_offset = Hdf5ArrayReader::Locate(*m_file, m_row, m_record);
    m_located.store(true, std::memory_order_release);
}

std::uint64_t StoredArray::Offset() const
{
    Locate();
    return m_offset;
}

std::uint64_t StoredArray::BlockBytes(std::uint64_t block) const
{
    return std::min(ChecksumBlock, m_record.storedBytes - block * ChecksumBlock);
}

void StoredArray::Read(std::uint64_t block, char* out, Hdf5ChunkReader* chunks) const
{
    const std::uint64_t first = block * ChecksumBlock;
    const std::uint64_t size = BlockBytes(block);
    if (chunks)
        chunks->Read(first, size, out);
    else
        m_file->ReadBytes(m_offset + first, size, out);
    if (XXH3_64bits(out, size) != m_record.checksums[block])
        throw StorageError(QStringLiteral("the array is damaged: its checksum doesn't fit its bytes"));
}

void StoredArray::ReadBlock(std::uint64_t block, void* out) const
{
    Locate();
    if (!IsCompressed()) {
        Read(block, static_cast<char*>(out), nullptr);
        return;
    }
    const Hdf5Session session;
    Hdf5ChunkReader chunks(*m_file, m_row, m_record);
    Read(block, static_cast<char*>(out), &chunks);
}

void StoredArray::ReadBlocks(const std::function<char*(std::uint64_t)>& place,
                             const std::function<void(std::uint64_t)>& use) const
{
    Locate();
    std::optional<Hdf5Session> session;
    std::optional<Hdf5ChunkReader> chunks;
    if (IsCompressed()) {
        session.emplace();
        chunks.emplace(*m_file, m_row, m_record);
    }
    for (std::uint64_t block = 0; block < BlockCount(); ++block) {
        Read(block, place(block), chunks ? &*chunks : nullptr);
        use(block);
    }
}

StoredFile::Block StoredArray::KeptBlock(std::uint64_t block) const
{
    if (StoredFile::Block kept = m_file->KeptBlock(m_row, block))
        return kept;
    const std::shared_ptr<char> bytes(new char[BlockBytes(block)], std::default_delete<char[]>());
    ReadBlock(block, bytes.get());
    m_fetchedForRuns.fetch_add(BlockBytes(block), std::memory_order_relaxed);
    m_file->KeepBlock(m_row, block, bytes);
    return bytes;
}

void StoredArray::ReadRun(std::uint64_t first, std::uint64_t size, char* out) const
{
    while (size != 0) {
        const std::uint64_t block = first / ChecksumBlock;
        const std::uint64_t skipped = first % ChecksumBlock;
        const std::uint64_t part = std::min(size, BlockBytes(block) - skipped);
        if (part == BlockBytes(block)) {
            ReadBlock(block, out);
            m_fetchedForRuns.fetch_add(part, std::memory_order_relaxed);
        } else {
            std::memcpy(out, KeptBlock(block).get() + skipped, part);
        }
        first += part;
        out += part;
        size -= part;
    }
}

} // namespace Orrery
