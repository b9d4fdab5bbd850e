#pragma once

#include "foundations/variant/BVariant.h"
#include "hosts/orrery/SourceFile.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace Orrery::Host {

/// One vector of a plot with its values.
struct RawVector
{
    QString name;
    QString type;                 ///< what the values measure: "voltage", "time"; not a data type
    Brindle::Quay::BVariant data; ///< double, float or std::complex<double>, in the vector's own shape
};

/// One plot: a run of a simulator, or a part of one.
struct RawPlot
{
    QString title;
    QString date;
    QString name; ///< the kind of run, such as "AC Analysis"
    QString flags;
    QStringList commands;
    QStringList options;
    std::vector<RawVector> vectors;
};

/// Reader of SPICE raw files, plot by plot.
///
/// Shape:  a vector has the dimensions that its line in the header gives it, else those of the plot; the fill
///         behind a vector that is shorter than the plot is dropped.
/// Errors: Failure for a file that can't be read or is malformed anywhere: the file, the line or byte, what was
///         expected and what stands there.
/// Edge:   values keep every bit; "nan" and "inf" in text are values, as simulators write them.
/// Cost:   one pass through the file, and never more memory than a small multiple of its size.
class RawFile
{
public:
    explicit RawFile(const std::string& path, SourceFile::Progress progress = {});

    /// Read the next plot. False when there is none; a file holds at least one.
    bool next(RawPlot* plot);

private:
    SourceFile m_file;
    bool m_isFirst = true;
};

} // namespace Orrery::Host
