#pragma once

#include "hosts/orrery/SourceFile.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>
#include <vector>

namespace Orrery::Host {

/// One vector of a plot, as its line in the header tells it.
struct RawColumn
{
    QString name;
    QString type;                          ///< what the values measure: "voltage", "time"; not a data type
    std::vector<std::uint64_t> dimensions; ///< never empty; the last one varies fastest
    std::uint64_t length = 0;              ///< product of the dimensions, at most the number of points
};

/// How the values of a plot stand in the file.
enum class RawLayout
{
    Text,         ///< a point is its number and one text for each value
    Binary,       ///< a point is one double, or one pair of them, for each vector
    NarrowBinary, ///< a point is a double for the first vector and a float for each other
};

/// The text before the values of one plot.
struct RawHeader
{
    QString title;
    QString date;
    QString plotName;
    QString flags;
    QStringList commands;
    QStringList options;
    bool isComplex = false;
    bool isPadded = true; ///< a vector that is shorter than the plot is filled up to its number of points
    RawLayout layout = RawLayout::Text;
    std::uint64_t points = 0;
    std::vector<RawColumn> columns; ///< at least one
};

/// Read the header of the next plot, up to and including the line that its values follow.
///
/// Lines "Key: text" may stand in any order before "Variables:"; keys have no case. "Plotname", "Flags", "No.
/// Variables" and "No. Points" must be there; keys that aren't known are passed over.
/// Errors: false when only blank lines are left, unless this is the first plot. Failure for everything that
///         isn't a header.
/// Cost:   memory is bounded by the length of the file.
bool readRawHeader(SourceFile& file, RawHeader* header, bool isFirst);

} // namespace Orrery::Host
