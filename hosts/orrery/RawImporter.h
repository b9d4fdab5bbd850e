#pragma once

#include "hosts/orrery/RawFile.h"
#include "hosts/orrery/SweepValues.h"
#include "results/Result.h"
#include "results/ResultData.h"
#include "units/Units.h"

#include <QHash>
#include <QMap>
#include <QString>

#include <utility>
#include <vector>

namespace Orrery::Host {

/// Puts the plots of a raw file into a Result: one ResultData for each, one ExplicitDataVar for each vector.
///
/// Names:  a folder is called by the kind of its run and a number from 1 for each kind, "dc1", "ac1", "tran2",
///         as people know them from simulators; a kind that isn't known by its own words, "my-analysis1". A
///         vector keeps its name unless vectorNames() says another one.
/// Texts:  the header of a plot stands in the setup folder, in a hidden folder of the plot's name: "Title", "Date",
///         "Plotname", "Flags", and "Command" and "Option" where there are such lines. "Type" of a variable says what
///         its values measure. The application of the result is what the first command line says of it, if any.
/// Units:  those that the type of a vector has in such files, where it has any; display units are the first of the
///         given ones that measure the same.
/// Axes:   the first vector is what the others are plotted against: each that has the same dimensions refers to it as
///         its one independent variable. In a nested sweep it is the innermost one and begins anew with each run. A plot of
///         results that lie beside each other, such as an operating point, has no axis.
class RawImporter
{
public:
    /// `result` receives the folders; it is not owned and must outlive the importer.
    explicit RawImporter(Result* result, std::vector<Units> displayUnits = {})
        : m_result(result)
        , m_displayUnits(std::move(displayUnits))
    {
    }

    /// Add a folder for this plot behind those that were added before. Returns it; the result owns it.
    ///
    /// Errors: Failure when the tree refuses a node; one that only importers fill never does.
    ResultData* add(RawPlot plot);

    /// Add a sweep, "dc-sweep", over the plots of each kind that has as many as there are values. The parameter goes
    /// into the setup folder.
    ///
    /// Errors: Failure when no kind has that many plots; also as add().
    void addSweep(const SweepValues& sweep);

    /// The vectors that got another name than they would have had by themselves, with it, each once.
    const QMap<QString, QString>& renamed() const { return m_renamed; }

private:
    QString folderName(const QString& kind);
    QString plotCounts() const;

    Result* m_result;
    std::vector<Units> m_displayUnits;
    QHash<QString, int> m_numbers;                   // the last one of each kind
    QMap<QString, std::vector<ResultData*>> m_plots; // by kind
    QMap<QString, QString> m_renamed;
};

} // namespace Orrery::Host
