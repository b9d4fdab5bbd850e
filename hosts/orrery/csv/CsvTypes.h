#pragma once

#include "foundations/variant/WellKnownType.h"

#include <string>
#include <string_view>

namespace Orrery::Host {

/// Finds out, cell by cell, of what type a column is: bool where all cells are "true" or "false", std::int64_t where all
/// are whole numbers, std::uint64_t where some of those are above its range and none is below 0, double where all are
/// numbers or empty, else text.
class CsvTypes
{
public:
    /// Take one more cell in. `isDecimalComma`: the fraction stands behind a comma.
    void add(std::string_view cell, bool isDecimalComma);

    /// Whether all cells so far are numbers, or empty.
    bool isNumeric() const { return m_isReal; }

    /// Double for a column without values.
    Brindle::Quay::WellKnownType type() const;

private:
    void addNumber(std::string_view cell, bool isDecimalComma);

    bool m_isBoolean = true;
    bool m_isSigned = true;
    bool m_isUnsigned = true;
    bool m_isReal = true;
    bool m_hasValues = false;
};

/// A cell as a number: what parseNumber() reads, or with a decimal comma; NaN for an empty one.
///
/// Errors: false for anything else.
bool parseCell(std::string_view cell, bool isDecimalComma, double* value);

} // namespace Orrery::Host
