#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/StoredFile_p.h"

#include <QString>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Orrery {

/// One array as it stands in an open data file. Nothing is kept of its elements.
///
/// "Stored bytes" are those that the record's checksums cover: the elements in row-major order; for text, the
/// padded texts or the lengths and characters; for a compressed array, the elements before the filters.
/// All that reads throws StorageError whose text doesn't name file or path; Describe does.
/// Threads: any. An operation that needs HDF5 takes the StorageMutex by itself; the bytes are read without it.
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

    /// "<file>: <path of the node>: <what>".
    QString Describe(const QString& what) const;

    /// Find the array's dataset and prove that it is what the record says: reached by hard links, stored in this
    /// very file, of this type, shape and length, inside the file. Without effect when that was done before.
    ///
    /// All others below do it themselves when they must. Not to be called while a lock is held that somebody waits
    /// for with the StorageMutex in his hands.
    void Locate() const;

    /// Where the stored bytes begin in File().Descriptor(); they follow each other. Not for a compressed array.
    std::uint64_t Offset() const;

    std::uint64_t BlockCount() const { return m_record.checksums.size(); }
    /// Length of a block: 4 MiB, the last one what is left.
    std::uint64_t BlockBytes(std::uint64_t block) const;

    /// Read one block of the stored bytes, whatever the layout, and test its checksum.
    void ReadBlock(std::uint64_t block, void* out) const;

    /// Read all stored bytes, block by block, each tested. Cost: straight into `out`.
    void ReadAll(void* out) const;

    /// Read and test the blocks that a run of the stored bytes touches; the ends come from kept blocks.
    void ReadRun(std::uint64_t first, std::uint64_t size, void* out) const;

private:
    struct Chunks;

    std::shared_ptr<const StoredFile> m_file;
    std::size_t m_row;
    ArrayRecord m_record;
    mutable std::atomic<bool> m_located{false};
    mutable std::uint64_t m_offset = 0;       ///< written before m_located
    mutable std::unique_ptr<Chunks> m_chunks; ///< the same, of a compressed array
};

} // namespace Orrery
