#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/Hdf5WriteDriver_p.h"
#include "foundations/storage/SaveMeter_p.h"
#include "foundations/storage/SaveOptions_p.h"
#include "foundations/storage/StoredArray_p.h"
#include "foundations/variant/BVariant.h"

#include <QByteArray>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace Orrery {

/// Writes the arrays of one data file: one dataset each, of its own element type and shape, or a piece of the pool.
///
/// Elements are stored in row-major order, so that every tool sees the right element at the right place. HDF5 only sets
/// space aside for what isn't compressed; the elements are written past it, in pieces, so that a save tells how far it
/// is. Elements that still stand in another file go from file to file, with the checksums that they have: what is
/// damaged there is found damaged here.
class Hdf5ArrayWriter
{
public:
    /// An array on its way into the file.
    class Source
    {
    public:
        explicit Source(const Brindle::Quay::BVariant& value);

        /// How many bytes it takes, nearly: texts may be padded.
        std::uint64_t Weight() const { return m_weight; }

    private:
        friend class Hdf5ArrayWriter;

        Brindle::Quay::BVariant m_value;
        std::shared_ptr<const StoredArray> m_stored; ///< null for an array in memory
        std::uint16_t m_element;
        std::uint64_t m_weight;
    };

    /// All must outlive the writer.
    Hdf5ArrayWriter(hid_t file, Hdf5WriteDriver* driver, const SaveOptions& options, SaveMeter* meter);

    /// Whether an array is stored in the pool, without a link of its own.
    static bool IsPooled(const Source& source, const SaveOptions& options);

    /// Make the pool, for this many bytes. Errors: as Write.
    void MakePool(std::uint64_t bytes);

    /// Write one array as the dataset `link` of an open group; `*dataset` receives it, for attributes, or nothing for an
    /// array without a dataset.
    ///
    /// Errors: throws StorageError for more than 32 dimensions and for whatever HDF5 can't do, also what the meter
    ///         throws. A failing write is kept by the driver.
    ArrayRecord Write(hid_t group, const QByteArray& link, const Source& source, Hdf5Handle* dataset);

    /// Append one array to the pool. Errors: as Write.
    ArrayRecord WritePooled(const Source& source);

    /// Write what is left of the pool.
    void FlushPool();

private:
    using Dimensions = std::vector<hsize_t>;

    static ArrayRecord RecordOf(const Source& source, const SaveOptions& options);
    hid_t ElementType(std::uint16_t element);
    Hdf5Handle Make(hid_t group, const QByteArray& link, hid_t type, const Dimensions& dimensions,
                    const Hdf5Handle& creation) const;
    void Fill(hid_t dataset, const char* data, std::uint64_t bytes, std::uint64_t weight,
              ArrayRecord* record);
    void CopyFrom(const StoredArray& stored, hid_t dataset, const ArrayRecord& record);
    Hdf5Handle WriteText(hid_t group, const QByteArray& link, const Source& source, ArrayRecord* record);
    Hdf5Handle WriteCompressed(hid_t group, const QByteArray& link, const Source& source,
                               const Dimensions& dimensions, ArrayRecord* record);
    void WriteChunks(hid_t dataset, hid_t type, const Dimensions& dimensions, const Dimensions& chunk,
                     const Source& source, const char* data);
    void CopyChunks(hid_t from, hid_t to, const Dimensions& dimensions, const Dimensions& chunk,
                    const Source& source);

    hid_t m_file;
    Hdf5WriteDriver* m_driver;
    SaveOptions m_options;
    SaveMeter* m_meter;
    Hdf5Handle m_links;
    Hdf5Handle m_contiguous;
    std::map<std::uint16_t, Hdf5Handle> m_types;
    std::vector<char> m_poolBuffer;
    std::uint64_t m_poolAddress = 0; ///< where the buffer goes
    std::uint64_t m_poolLength = 0;  ///< what was appended so far
};

} // namespace Orrery
