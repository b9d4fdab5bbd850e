#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/StoredFile_p.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orrery {

/// Reads the elements of one compressed array.
///
/// The chunks come from HDF5 as they stand in the file and are undone here: HDF5's own filter lets a short chunk
/// grow to any length before it looks whether that is the one wanted.
/// Errors: all operations throw StorageError.
/// Threads: it lives within an Hdf5Session.
class Hdf5ChunkReader
{
public:
    /// All three must outlive this object.
    Hdf5ChunkReader(const StoredFile& file, std::size_t row, const ArrayRecord& record);

    /// Bytes of the row-major elements, from `first` on.
    void Read(std::uint64_t first, std::uint64_t size, char* out);

private:
    struct Place
    {
        std::vector<hsize_t> origin; ///< the chunk's first element
        std::uint64_t first = 0;     ///< the byte that the chunk begins with
        std::uint64_t size = 0;      ///< its bytes that belong to the array
    };

    Place PlaceOf(std::uint64_t byte) const;
    void Load(const Place& place);

    std::vector<hsize_t> m_chunk; ///< before the dataset, whose opening fills it
    Hdf5Handle m_dataset;
    const std::vector<std::uint64_t>& m_dimensions;
    std::uint64_t m_elementSize;
    std::uint64_t m_chunkBytes;
    std::size_t m_axis = 0; ///< the dimension that the chunks divide
    std::uint64_t m_loaded; ///< first byte of the chunk in m_elements; UINT64_MAX for none
    std::vector<unsigned char> m_stored;
    std::vector<unsigned char> m_shuffled;
    std::vector<unsigned char> m_elements;
};

} // namespace Orrery
