#pragma once

#include "tests/units/UnitTables.h"

#include <QString>

namespace Orrery::UnitsTest {

/// What a text means as an SI string.
struct PlainResult
{
    bool accepted = false;
    Exponents exponents{}; ///< of the unit; of no meaning for a refused text
    double scale = 1.0;    ///< of a refused text: what the last level that passes its scale up has left
    double logScale = 0.0;
};

/// Reads an SI string by recursive descent, one regular expression made for each term: slow, and plain enough to be
/// checked by reading.
///
/// Edge: nests as deep as the text's parentheses and products; for texts of thousands of levels it is no oracle.
PlainResult parsePlainly(const QString& text);

} // namespace Orrery::UnitsTest
