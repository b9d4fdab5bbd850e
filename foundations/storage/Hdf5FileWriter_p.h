#pragma once

#include "foundations/storage/ArrayAttributes.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/Hdf5ArrayWriter_p.h"
#include "foundations/storage/Hdf5AttributeWriter_p.h"
#include "foundations/storage/SaveMeter_p.h"
#include "foundations/storage/SaveOptions_p.h"
#include "foundations/storage/TreeWriter_p.h"

#include <QByteArray>
#include <QHash>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orrery {

/// Writes a whole data file: the arrays of a tree, and its structure last.
class Hdf5FileWriter
{
public:
    /// `tree` has been walked and must outlive the writer. The sources of attributes are asked here, and so the tree
    /// itself isn't needed later.
    ///
    /// Errors: throws StorageError that names the path of the array.
    Hdf5FileWriter(TreeWriter* tree, const SaveOptions& options);

    /// Write to a new file that is open for reading and writing; within an Hdf5Session.
    ///
    /// Errors: throws StorageError, and what `progress` throws. The file is of no use then.
    void Write(int descriptor, const QByteArray& uid, const DataFile::SaveProgress& progress);

private:
    struct Array
    {
        std::size_t row;
        Hdf5ArrayWriter::Source source;
        bool isPooled;
        ArrayAttributes attributes;
    };

    void WriteArrays(hid_t file, Hdf5WriteDriver* driver, SaveMeter* meter);
    void WriteAttributes(hid_t dataset, const ArrayAttributes& attributes, Hdf5AttributeWriter* writer);
    QByteArray DatasetPath(const SimpleProperty* array);

    TreeWriter* m_tree;
    SaveOptions m_options;
    std::vector<Array> m_arrays;
    QHash<const SimpleProperty*, std::size_t> m_datasets; ///< the rows of those that have one
    QHash<const SimpleProperty*, QByteArray> m_paths;     ///< of those that were asked for
};

} // namespace Orrery
