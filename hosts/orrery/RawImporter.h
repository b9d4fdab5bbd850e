#pragma once

#include "foundations/property/PropertyObject.h"
#include "hosts/orrery/RawFile.h"

#include <QHash>
#include <QString>

namespace Orrery::Host {

/// Puts the plots of a raw file into a tree: one folder for each, one ExplicitDataVar for each vector.
///
/// Names:  a folder is called by the kind of its run and a number from 1 for each kind, "dc1", "ac1", "tran2",
///         as people know them from simulators; a kind that isn't known by its own words, "my-analysis1". A
///         vector keeps its name; if the folder has it already, "_2" and so on is put behind it.
/// Texts:  "Title", "Date", "Plotname", "Flags", and "Command" and "Option" where there are such lines, are text
///         values of the folder; "Type" of a variable says what its values measure.
/// Units:  those that the type of a vector has in such files, where it has any.
/// Axes:   the first vector is what the others are plotted against: each that has the same dimensions refers to it as
///         its one independent variable. In a nested sweep it is the innermost one and begins anew with each run. A plot of
///         results that lie beside each other, such as an operating point, has no axis.
class RawImporter
{
public:
    /// `root` receives the folders; it is not owned and must outlive the importer.
    explicit RawImporter(PropertyObject* root)
        : m_root(root)
    {
    }

    /// Add a folder for this plot behind those that were added before. Returns it; the root owns it.
    ///
    /// Errors: Failure when the tree refuses a node; one that only importers fill never does.
    PropertyObject* add(RawPlot plot);

private:
    QString folderName(const QString& kind);

    PropertyObject* m_root;
    QHash<QString, int> m_numbers; // the last one of each kind
};

} // namespace Orrery::Host
