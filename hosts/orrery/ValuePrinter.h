#pragma once

#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/Output.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Orrery::Host {

/// Values for a person and for simple tools.
///
/// Shape:  a vector is one value a line, a matrix one row a line with tabs between the values. A higher array is
///         its matrices one after another, each below a line "[i,j,:,:]" and parted by an empty line. Control
///         characters in text are shown as \n and the like.
void printValues(Output& out, const Selection& values);

/// Values under a heading.
struct ValueColumn
{
    std::string name;
    std::string unitsSuffix; ///< such as " [V]"; empty without units
    Selection values;
};

/// Whether the first column of CSV tells the offsets.
enum class CsvOffsets
{
    Shown,
    Hidden,
};

/// Values as CSV (RFC 4180, lines end with LF): a header line, then one record for each offset. The columns have the
/// same offsets.
///
/// Shape:  columns "offset" and the names; an element that is an array has one column for each of its values,
///         "name[i,j]"; a complex value has two, "name.re" and "name.im". Behind each stand the units.
void printCsvHeader(Output& out, const std::vector<ValueColumn>& columns,
                    CsvOffsets offsets = CsvOffsets::Shown);

/// Errors: Failure for columns of unlike offsets.
void printCsvRecords(Output& out, const std::vector<ValueColumn>& columns,
                     CsvOffsets offsets = CsvOffsets::Shown);

/// Values as a table for a person: a line of names, then one line for each value of the last column, which may be
/// printed in several pieces.
///
/// Shape:  columns are as wide as what stands near the beginning needs; a wider value pushes the rest of its line.
class TablePrinter
{
public:
    /// `showsOffset`: the offset of each line stands first, as it does where elements are arrays.
    TablePrinter(Output& out, bool showsOffset)
        : m_out(out)
        , m_showsOffset(showsOffset)
    {
    }

    /// Errors: Failure for a column that has neither one value for each offset nor as many as the last one.
    void print(const std::vector<ValueColumn>& columns);

private:
    void printHeading(const std::vector<ValueColumn>& columns);
    void printLine(const std::vector<std::string>& cells, Ink ink = Ink::Plain);

    Output& m_out;
    bool m_showsOffset;
    std::vector<std::size_t> m_widths; // none before the heading
};

} // namespace Orrery::Host
