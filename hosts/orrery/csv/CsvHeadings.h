#pragma once

#include "units/Units.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// The heading of one column: "v(out) [V]", "z[0,1].re [ohm]".
struct CsvHeading
{
    QString name;     ///< without units
    QString base;     ///< without indices and part
    std::string part; ///< ".re", ".im" or empty
    std::vector<std::uint64_t> indices;
    std::optional<Units> units;
};

/// Take a heading apart.
///
/// Shape:  brackets at the end hold the units. Behind a blank they always do; right behind the name, whole numbers with
///         commas between them are indices. "[]" is no units, "[-]" and "[1]" a plain number.
/// Errors: false for a text that is no unit; `*why` says what is wrong with it. With `ignoresUnits` such a heading has
///         none.
bool parseHeading(std::string_view field, bool ignoresUnits, CsvHeading* heading, std::string* why);

/// The columns that make one variable.
struct CsvColumn
{
    QString name;
    std::optional<Units> units;
    std::size_t first = 0;                   ///< number of its first column, from 0
    std::size_t count = 1;                   ///< of columns
    std::vector<std::uint64_t> elementShape; ///< of what stands in one record; empty for one value
    bool isComplex = false;                  ///< columns are the real and the imaginary parts in turn
};

/// Put together what belongs together: "x.re" and "x.im" are a complex variable, "m[0,0]", "m[0,1]" and so on, whole and
/// in their order, an array at each record. Other columns are variables of their own, by their whole name.
std::vector<CsvColumn> joinHeadings(const std::vector<CsvHeading>& headings);

} // namespace Orrery::Host
