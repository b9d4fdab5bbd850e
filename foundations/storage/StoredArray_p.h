#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/StoredFile_p.h"

#include <QString>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace Orrery {

class Hdf5ChunkReader;

/// One array as it stands in an open data file. Nothing is kept of its elements, but for a few blocks of an array
/// that is read in parts.
///
/// "Stored bytes" are those that the record's checksums cover: the elements in row-major order; for text, the
/// padded texts or the lengths and characters; for a compressed array, the elements before the filters.
/// Errors: all that reads throws StorageError whose text names neither file nor node; Describe does.
/// Threads: any. What needs HDF5 takes the StorageMutex by itself, for as long as it decompresses; the bytes of all
///          other arrays are read without it. A thread may not hold a lock here that somebody with the StorageMutex
///          in his hands waits for, but for an array that isn't compressed and was located before.
class StoredArray
{
public:
    /// `row` is one of an array. Nothing is read from the file yet.
    StoredArray(std::shared_ptr<const StoredFile> file, std::size_t row);

    const StoredFile& File() const { return *m_file; }
    std::size_t RowIndex() const { return m_row; }
    const ArrayRecord& Record() const { return m_record; } ///< with layout, storedBytes and checksums
    std::uint16_t Element() const;                         ///< element type code
    bool IsColumnMajor() const;
    bool IsCompressed() const;

    /// "<file>: <path of the node>: <what>".
    QString Describe(const QString& what) const;

    /// Find the array's dataset and prove that it is what the record says; all others below do it themselves.
    /// Without effect when that was done before.
    void Locate() const;

    /// Where the stored bytes begin in File().Descriptor(); they follow each other. Not for a compressed array.
    std::uint64_t Offset() const;

    std::uint64_t BlockCount() const { return m_record.checksums.size(); }
    /// Length of a block: 4 MiB, the last one what is left.
    std::uint64_t BlockBytes(std::uint64_t block) const;

    /// Read one block of the stored bytes, whatever the layout, and test its checksum.
    void ReadBlock(std::uint64_t block, void* out) const;

    /// Read all stored bytes, block by block, each tested while it is still in the cache.
    ///
    /// `place(block)` says where a block is to go, and `use(block)` may work on it there.
    void ReadBlocks(const std::function<char*(std::uint64_t)>& place,
                    const std::function<void(std::uint64_t)>& use) const;

    /// Read and test the blocks that a run of the stored bytes touches; the ends come from kept blocks.
    void ReadRun(std::uint64_t first, std::uint64_t size, char* out) const;

    /// Bytes that all runs together have fetched from the file.
    std::uint64_t FetchedForRuns() const { return m_fetchedForRuns.load(std::memory_order_relaxed); }

private:
    void Read(std::uint64_t block, char* out, Hdf5ChunkReader* chunks) const;
    StoredFile::Block KeptBlock(std::uint64_t block) const;

    std::shared_ptr<const StoredFile> m_file;
    std::size_t m_row;
    ArrayRecord m_record;
    mutable std::atomic<bool> m_located{false};
    mutable std::atomic<std::uint64_t> m_fetchedForRuns{0};
    mutable std::uint64_t m_offset = 0; ///< written before m_located
};

} // namespace Orrery
