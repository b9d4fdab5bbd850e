#pragma once

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/DataFile.h"
#include "foundations/variant/BVariant.h"

#include <QDir>
#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Orrery {

/// Builds a tree from a checked catalogue: each folder is made by its type name and filled, then its
/// OnDeserialization runs.
class TreeReader
{
public:
    /// Gives the array of a row.
    using ArraySource = std::function<Brindle::Quay::BVariant(std::size_t row)>;

    /// `catalogue` must outlive the reader; `filePath` is where the tree stands.
    TreeReader(const Catalogue& catalogue, const QString& filePath, ArraySource arrays);

    /// Fill the empty root of a file.
    ///
    /// Errors: throws StorageError that names the path of a node which can't be restored, also for an exception
    ///         out of its OnDeserialization. The root is then to be destroyed.
    void Read(DataFile::RootProperty* root);

private:
    std::unique_ptr<AbstractProperty> MakeNode(std::size_t index);
    std::unique_ptr<AbstractProperty> MakeFolder(std::size_t index) const;
    std::unique_ptr<AbstractProperty> MakeSimple(std::size_t index) const;
    std::unique_ptr<AbstractProperty> MakeReference(const CatalogueFormat::Row& row);
    const PropertyReference::TargetFile& FileOf(const ReferenceRecord& record);
    void Finish(std::size_t parent);
    PropertyObject& OpenFolder(std::size_t index) const;
    [[noreturn]] void Fail(std::size_t index, const QString& what, ERESULT code = ER_FAILED) const;

    const Catalogue& m_catalogue;
    QDir m_folder; ///< of the file
    ReferenceRecord m_lastRecord;
    PropertyReference::TargetFile m_lastFile; ///< of m_lastRecord
    ArraySource m_arrays;
    /// Folders that are being filled, root first.
    std::vector<std::pair<std::size_t, PropertyHandle>> m_open;
};

} // namespace Orrery
