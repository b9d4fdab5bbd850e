#pragma once

#include "foundations/variant/BVariant.h"
#include "hosts/orrery/SourceFile.h"
#include "units/Units.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

struct CsvOptions
{
    std::optional<char> separator; ///< if not given, it is taken from the header
    bool isDecimalComma = false;
    bool ignoresUnits = false; ///< a text in brackets that is no unit is dropped
};

/// One variable of a CSV file.
struct CsvVariable
{
    QString name;
    std::optional<Units> units;
    Brindle::Quay::BVariant data; ///< a record is an element of its first dimension
    bool isSingle = true;         ///< one real value, or one text, in each record
};

struct CsvTable
{
    std::vector<CsvVariable> variables; ///< at least one
    QStringList comments;
};

/// Read a CSV file: a header of names with their units in brackets, then one record for each offset.
///
/// Shape:  columns are put together as joinHeadings() says.
/// Units:  those in the brackets. A column that has some holds numbers.
/// Errors: Failure for a file that can't be read or is malformed anywhere: the file, the line, what was expected and
///         what stands there.
/// Edge:   the type of a column is that of CsvTypes; an empty cell is NaN among numbers. Complex columns are double.
/// Cost:   two passes through the file, the first of which finds the types; memory is what the values take, and the
///         longest record.
CsvTable readCsv(const std::string& path, const CsvOptions& options,
                 const SourceFile::Progress& progress = {});

} // namespace Orrery::Host
