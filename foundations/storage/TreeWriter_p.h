#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/storage/Catalogue_p.h"
#include "foundations/variant/BVariant.h"

#include <QDir>
#include <QFileInfo>
#include <QString>

#include <cstddef>
#include <vector>

namespace Orrery {

class PropertyReference;
class SimpleProperty;

/// Turns a tree into a catalogue and a list of the arrays that are to be stored beside it.
///
/// Only serializable nodes are written; a folder that isn't takes everything below it along.
class TreeWriter
{
public:
    struct PendingArray
    {
        std::size_t row; ///< whose array record is still to be set
        Brindle::Quay::BVariant value;
        const SimpleProperty* node; ///< whose value it is; valid as long as the tree stays as it is
    };

    /// `filePath` is where the tree will stand, from which other files are told by relative paths.
    explicit TreeWriter(const QString& filePath);

    /// Errors: throws StorageError that names the path of a node which can't be saved.
    void Write(const PropertyObject& root);

    Catalogue catalogue;
    std::vector<PendingArray> arrays; ///< in the order of their rows

private:
    std::size_t AddRow(const AbstractProperty& node, CatalogueFormat::Kind kind, std::uint32_t parent);
    void WriteFolder(const PropertyObject& folder, std::uint32_t parent);
    void WriteNode(const AbstractProperty& node, std::uint32_t parent);
    void WriteSimple(const SimpleProperty& simple, std::uint32_t parent);
    void WriteReference(const PropertyReference& reference, std::uint32_t parent);
    const QString& RelativeFile(const QString& path);
    QString FindRelativeFile(const QFileInfo& file) const;

    QDir m_folder;          // where the file will stand
    QString m_lastFile;     // that was asked for
    QString m_lastRelative; // and what came of it
};

} // namespace Orrery
