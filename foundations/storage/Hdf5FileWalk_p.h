#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/DataFileCheck.h"
#include "foundations/storage/Hdf5Handle_p.h"

#include <QByteArray>
#include <QHash>
#include <QPair>
#include <QSet>

#include <cstdint>

namespace Orrery {

/// The part of a DataFileCheck that looks at a file as another HDF5 program sees it: what stands there beside the
/// tree, what leads out of the file, and the attributes.
class Hdf5FileWalk
{
public:
    /// `catalogue` is the file's own, and checked. All must outlive the walk.
    Hdf5FileWalk(hid_t file, const Catalogue& catalogue, const DataFileCheck::Report& report);

    void Run();

private:
    // A group of the file: its row in the catalogue, or NoParent for one that the tree doesn't know.
    struct Group
    {
        hid_t id;
        std::uint32_t row;
        QByteArray path;
        int depth;
    };

    void IndexRows();
    void LookAtGroup(const Group& group);
    void LookAtLink(const Group& group, const QByteArray& name);
    void LookAtObject(const Group& group, const QByteArray& name, const QByteArray& path);
    void LookAtDataset(hid_t dataset, bool isKnown, const QByteArray& path);
    void LookAtAttributes(hid_t object, const QByteArray& path);
    bool IsOfCatalogue(const Group& group, const QByteArray& name) const;
    std::uint32_t RowOf(const Group& group, const QByteArray& name) const;
    void Tell(DataFileCheck::Severity severity, const QByteArray& path, const QString& text) const;

    hid_t m_file;
    const Catalogue& m_catalogue;
    const DataFileCheck::Report& m_report;
    QHash<QPair<std::uint32_t, QByteArray>, std::uint32_t> m_rows; ///< by folder and link
    QSet<quint64> m_seen;                                          ///< addresses of objects
};

} // namespace Orrery
